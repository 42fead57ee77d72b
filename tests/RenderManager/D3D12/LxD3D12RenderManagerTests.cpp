// The Direct3D 12 render manager on a real device (Wine + lavapipe in the Windows lane): creation and its messages,
// frames presenting through the swap chain, clears, draws, viewport and scissor, worker threads, indirect draws and
// dispatches, bundles, fences, GPU timers and the upload retry, each checked in pixels or values read back.
// The pipeline states are made here from HLSL until effects can make them.
#include "support/LxTestSupport.h"

#include "Common/LxImageData2D.h"
#include "D3D12/LxD3D12TestHelpers.h"
#include "D3D12/LxPlatformLimitations.h"
#include "GPUResourceManager/LxUploadHeap.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

using LxD3D12Test::ComPtr;
using Prim = LxRenderManager::PrimType;

namespace
{
constexpr UINT kSize = 64;
const wchar_t kWindowClass[] = L"LxD3D12RenderManagerTestWindow";

// Colour from root constants; a triangle of SV_VertexID corners scaled and offset, so one shader draws a
// full-screen triangle (scale 1) or a small one around the centre (scale 0.25).
const char* const kSource = R"hlsl(
cbuffer DrawConstants : register(b0)
{
    float4 g_Color;
    float  g_Scale;
    float2 g_Offset;
    float  g_Depth;
};
static const float2 kCorners[3] = { float2(-1.0, -1.0), float2(-1.0, 3.0), float2(3.0, -1.0) };
float4 VSMain(uint id : SV_VertexID) : SV_Position
{
    return float4(kCorners[id] * g_Scale + g_Offset, g_Depth, 1.0);
}
float4 PSMain() : SV_Target { return g_Color; }

RWByteAddressBuffer g_Out : register(u0);
[numthreads(1, 1, 1)]
void CSMain(uint3 group : SV_GroupID)
{
    g_Out.Store(group.x * 4, group.x + 100);
}
)hlsl";

struct DrawConstants
{
    float color[4];
    float scale;
    float offset[2];
    float depth;
};

using LxD3D12Test::PixelAt;
using LxD3D12Test::Rgba;
using LxD3D12Test::TestWindow;

LxD3D12RenderManager::CreationDesc MakeDesc(HWND window, unsigned frames = 2)
{
    return LxD3D12Test::MakeRenderManagerDesc(window, kSize, frames);
}

// Clear values and draw colours are k/255 exactly, so every pixel compares exactly.
const Rgba kClear = {51, 102, 153, 255};
const Rgba kRed = {255, 0, 0, 255};
const Rgba kGreen = {0, 255, 0, 255};
const Rgba kBlue = {0, 0, 255, 255};

DrawConstants Constants(const Rgba& c, float scale = 1.0f, float x = 0.0f, float y = 0.0f, float depth = 0.5f)
{
    return {{c[0] / 255.0f, c[1] / 255.0f, c[2] / 255.0f, c[3] / 255.0f}, scale, {x, y}, depth};
}

// One render manager, window and pipeline for the whole executable (creation costs most of a test's time).
class D3D12RenderManagerTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {

        s_window = new TestWindow();
        if (!s_window->Create(kWindowClass, kSize, kSize))
            return;
        if (!LxD3D12RenderManager::Init(MakeDesc(s_window->Handle())))
            return;
        s_rm = LxD3D12RenderManager::GetD3D12Ptr();
        MakePipelines();
    }
    static void TearDownTestSuite()
    {
        s_graphics.Reset();
        s_compute.Reset();
        s_root.Reset();
        s_computeRoot.Reset();
        LxRenderManager::ShutDown();
        LxRenderManager::SetCreateFunction(nullptr);
        s_rm = nullptr;
        delete s_window;
        s_window = nullptr;
    }
    void SetUp() override
    {
        ASSERT_NE(s_rm, nullptr) << "render manager creation failed";
        ASSERT_NE(s_graphics, nullptr) << s_pipelineErrors;
        s_rm->SetClearColor(kClear[0] / 255.0f, kClear[1] / 255.0f, kClear[2] / 255.0f, 1.0f);
        s_rm->SetClearDepth(1.0f);
    }

    static void MakePipelines()
    {
        ID3D12Device* device = s_rm->GetDevice();
        D3D12_ROOT_PARAMETER param = {};
        param.ParameterType = D3D12_ROOT_PARAMETER_TYPE_32BIT_CONSTANTS;
        param.Constants.Num32BitValues = sizeof(DrawConstants) / 4;
        param.ShaderVisibility = D3D12_SHADER_VISIBILITY_ALL;
        s_root = MakeRoot(device, param);
        D3D12_ROOT_PARAMETER uav = {};
        uav.ParameterType = D3D12_ROOT_PARAMETER_TYPE_UAV;
        uav.ShaderVisibility = D3D12_SHADER_VISIBILITY_ALL;
        s_computeRoot = MakeRoot(device, uav);
        ComPtr<ID3DBlob> vs = LxD3D12Test::CompileShader(kSource, "VSMain", "vs_5_0", &s_pipelineErrors);
        ComPtr<ID3DBlob> ps = LxD3D12Test::CompileShader(kSource, "PSMain", "ps_5_0", &s_pipelineErrors);
        ComPtr<ID3DBlob> cs = LxD3D12Test::CompileShader(kSource, "CSMain", "cs_5_0", &s_pipelineErrors);
        if (!vs || !ps || !cs || !s_root || !s_computeRoot)
            return;
        D3D12_GRAPHICS_PIPELINE_STATE_DESC desc =
            LxD3D12Test::TrianglePipelineDesc(s_root.Get(), vs.Get(), ps.Get(), DXGI_FORMAT_R8G8B8A8_UNORM);
        desc.DepthStencilState.DepthEnable = TRUE;
        desc.DepthStencilState.DepthWriteMask = D3D12_DEPTH_WRITE_MASK_ALL;
        desc.DepthStencilState.DepthFunc = D3D12_COMPARISON_FUNC_LESS;
        desc.DSVFormat = DXGI_FORMAT_D32_FLOAT;
        if (FAILED(device->CreateGraphicsPipelineState(&desc, IID_PPV_ARGS(&s_graphics))))
            s_pipelineErrors = "CreateGraphicsPipelineState failed";
        D3D12_COMPUTE_PIPELINE_STATE_DESC cdesc = {};
        cdesc.pRootSignature = s_computeRoot.Get();
        cdesc.CS = {cs->GetBufferPointer(), cs->GetBufferSize()};
        if (FAILED(device->CreateComputePipelineState(&cdesc, IID_PPV_ARGS(&s_compute))))
            s_pipelineErrors = "CreateComputePipelineState failed";
    }
    static ComPtr<ID3D12RootSignature> MakeRoot(ID3D12Device* device, const D3D12_ROOT_PARAMETER& param)
    {
        return LxD3D12Test::CreateRootSignature(device, {1, &param, 0, nullptr, D3D12_ROOT_SIGNATURE_FLAG_NONE});
    }

    // Pipeline and constants on the calling worker's current list (or `list`).
    static void BindPipeline(const DrawConstants& c, ID3D12GraphicsCommandList* list = nullptr)
    {
        if (!list)
            list = s_rm->GetCurrentD3D12CommandList();
        list->SetPipelineState(s_graphics.Get());
        list->SetGraphicsRootSignature(s_root.Get());
        list->SetGraphicsRoot32BitConstants(0, sizeof(DrawConstants) / 4, &c, 0);
    }

    static void ExpectPixel(const LxImageData2D& image, unsigned x, unsigned y, const Rgba& expected, const char* what)
    {
        const Rgba got = PixelAt(image, x, y);
        EXPECT_EQ(got, expected) << what << " at (" << x << ", " << y << "): read " << LxD3D12Test::RgbaText(got)
                                 << ", expected " << LxD3D12Test::RgbaText(expected);
    }

    // Hands the calling worker a fresh frame list after its current one was submitted.
    static void NewCurrentList() { s_rm->SetCurrentCommandList(s_rm->CreateCommandList(LxCommandList::DIRECT, true)); }

    static TestWindow* s_window;
    static LxD3D12RenderManager* s_rm;
    static ComPtr<ID3D12RootSignature> s_root, s_computeRoot;
    static ComPtr<ID3D12PipelineState> s_graphics, s_compute;
    static std::string s_pipelineErrors;
};
TestWindow* D3D12RenderManagerTest::s_window = nullptr;
LxD3D12RenderManager* D3D12RenderManagerTest::s_rm = nullptr;
ComPtr<ID3D12RootSignature> D3D12RenderManagerTest::s_root, D3D12RenderManagerTest::s_computeRoot;
ComPtr<ID3D12PipelineState> D3D12RenderManagerTest::s_graphics, D3D12RenderManagerTest::s_compute;
std::string D3D12RenderManagerTest::s_pipelineErrors;

TEST_F(D3D12RenderManagerTest, ClearsAndDrawsATriangleThroughTheRenderManager)
{
    LxTest::LogCapture log;
    for (int frame = 0; frame < 3; ++frame) // through both back buffers and back
    {
        SCOPED_TRACE("frame " + std::to_string(frame));
        ASSERT_TRUE(s_rm->BeginScene());
        s_rm->Clear(true, true, false);
        BindPipeline(Constants(kRed, 0.25f));
        s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
        EXPECT_EQ(s_rm->GetFrameStats().GetValue(LX_FRAME_STAT_TRIANGLES), 1u);
        EXPECT_EQ(s_rm->GetFrameStats().GetValue(LX_FRAME_STAT_NON_INDEXED_DRAWS), 1u);
        LxImageData2D image;
        ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
        ASSERT_EQ(image.GetWidth(), kSize);
        ExpectPixel(image, kSize / 2, kSize / 2, kRed, "triangle");
        ExpectPixel(image, 0, 0, kClear, "corner");
        ExpectPixel(image, kSize - 1, kSize - 1, kClear, "corner");
        ASSERT_TRUE(s_rm->EndScene());
    }
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12RenderManagerTest, DepthClearViewportAndScissorShowInPixels)
{
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->SetClearDepth(0.25f);
    s_rm->Clear(true, true, true);
    LxImageData2D depth;
    ASSERT_TRUE(s_rm->CaptureRenderTarget(s_rm->GetDefaultDepthBuffer(), D3D12_RESOURCE_STATE_DEPTH_WRITE, &depth));
    EXPECT_EQ(depth.GetPixel(0, 0)[0], 0.25);
    EXPECT_EQ(depth.GetPixel(kSize - 1, kSize / 2)[0], 0.25);

    // Full-screen triangles: one behind the cleared depth (0.5 > 0.25, fails LESS), one in front, drawn into the
    // left half (viewport) cut to the top half (scissor): only the top-left quadrant changes.
    s_rm->Viewport(0, 0, kSize / 2, kSize);
    s_rm->Scissor(0, 0, kSize, kSize / 2);
    float x, y, w, h;
    s_rm->GetViewport(&x, &y, &w, &h);
    EXPECT_EQ(w, float(kSize / 2));
    BindPipeline(Constants(kRed, 1.0f, 0.0f, 0.0f, 0.5f));
    s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
    BindPipeline(Constants(kGreen, 1.0f, 0.0f, 0.0f, 0.125f));
    s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
    ExpectPixel(image, 4, 4, kGreen, "top-left quadrant");
    ExpectPixel(image, kSize / 2 - 1, kSize / 2 - 1, kGreen, "top-left quadrant edge");
    ExpectPixel(image, kSize / 2 + 1, 4, kClear, "right of the viewport");
    ExpectPixel(image, 4, kSize / 2 + 1, kClear, "below the scissor");
    ASSERT_TRUE(s_rm->EndScene());

    // The next frame starts with a full viewport and scissor again.
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->GetViewport(&x, &y, &w, &h);
    EXPECT_EQ(w, float(kSize));
    unsigned sx, sy, sw, sh;
    s_rm->GetScissor(&sx, &sy, &sw, &sh);
    EXPECT_EQ(sh, kSize);
    ASSERT_TRUE(s_rm->EndScene());
}

TEST_F(D3D12RenderManagerTest, BackBufferTargetGoesThroughThePortableViews)
{
    ASSERT_TRUE(s_rm->BeginScene());
    LxArray<LxCountedPtr<LxGPURenderableResourceView>> views;
    LxCountedPtr<LxGPUDepthStencilResourceView> depth;
    s_rm->GetRenderTargets(&views, &depth);
    ASSERT_EQ(views.GetCount(), 1u);
    EXPECT_EQ(views[0]->GetRMTargetType(), LxGPURenderableResourceView::RM_TARGET_BACK_BUFFER);
    s_rm->SetRenderTargets(1, views.GetData(), depth);
    EXPECT_EQ(s_rm->GetNumRenderTargets(), 1u);
    // Clear the bound target through its index: index 1 names no target and clears nothing.
    s_rm->SetClearColor(kBlue[0] / 255.0f, kBlue[1] / 255.0f, kBlue[2] / 255.0f, 1.0f);
    s_rm->Clear(true, false, false, 0);
    s_rm->SetClearColor(kRed[0] / 255.0f, kRed[1] / 255.0f, kRed[2] / 255.0f, 1.0f);
    s_rm->Clear(true, false, false, 1);
    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
    ExpectPixel(image, 5, 7, kBlue, "cleared through the back-buffer view");
    ASSERT_TRUE(s_rm->EndScene());
}

TEST_F(D3D12RenderManagerTest, BeginningFrameFPlus1WaitsForFrame1)
{
    // The GPU queue stalls behind a fence that a helper thread raises later, so frame 1 cannot complete until then.
    const unsigned frames = s_rm->GetFrameRing().GetFramesInFlight();
    ComPtr<ID3D12Fence> blocker;
    ASSERT_HRESULT_SUCCEEDED(s_rm->GetDevice()->CreateFence(0, D3D12_FENCE_FLAG_NONE, IID_PPV_ARGS(&blocker)));
    ASSERT_TRUE(s_rm->BeginScene());
    ASSERT_HRESULT_SUCCEEDED(s_rm->GetCommandQueue()->Wait(blocker.Get(), 1));
    s_rm->Clear(true, false, false);
    ASSERT_TRUE(s_rm->EndScene());
    const unsigned long long frame1 = s_rm->GetFrameRing().GetNextFenceValue() - 1;
    std::atomic<bool> released{false};
    std::thread gpu(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            released = true;
            blocker->Signal(1);
        });
    EXPECT_LT(s_rm->GetFrameFence()->GetCompletedValue(), frame1);
    for (unsigned f = 1; f < frames; ++f)
    {
        ASSERT_TRUE(s_rm->BeginScene());
        ASSERT_TRUE(s_rm->EndScene());
    }
    ASSERT_TRUE(s_rm->BeginScene()); // frame F + 1 reuses frame 1's slot
    EXPECT_TRUE(released.load());
    EXPECT_GE(s_rm->GetFrameFence()->GetCompletedValue(), frame1);
    ASSERT_TRUE(s_rm->EndScene());
    gpu.join();
}

TEST_F(D3D12RenderManagerTest, WorkersRecordTheirOwnListsInOneFrame)
{
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);
    // The frame's clear and barrier go first; the workers' lists follow it on the queue.
    ASSERT_TRUE(s_rm->CloseAndAppendCommandList(s_rm->GetCurrentCommandList()));
    ASSERT_TRUE(s_rm->ExecuteCommandLists());

    const Rgba colors[3] = {kRed, kGreen, kBlue};
    std::atomic<int> failures{0};
    std::vector<std::thread> workers;
    for (int w = 1; w <= 3; ++w)
    {
        workers.emplace_back(
            [&, w]
            {
                s_rm->SetWorkerIndex(w);
                NewCurrentList();
                if (!s_rm->GetCurrentD3D12CommandList())
                {
                    ++failures;
                    return;
                }
                // Worker w owns the vertical band w - 1 of three.
                const unsigned band = kSize / 4;
                s_rm->ViewportAndScissor((w - 1) * band, 0, band, kSize);
                BindPipeline(Constants(colors[w - 1]));
                s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
                if (!s_rm->CloseAndAppendCommandList(s_rm->GetCurrentCommandList()) || !s_rm->ExecuteCommandLists())
                    ++failures;
                s_rm->SetCurrentCommandList(LxCountedPtr<LxCommandList>());
            });
    }
    for (std::thread& t : workers)
        t.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(s_rm->GetFrameStats().GetValue(LX_FRAME_STAT_NON_INDEXED_DRAWS), 3u);
    // The main thread's viewport was not touched by the workers.
    float x, y, w, h;
    s_rm->GetViewport(&x, &y, &w, &h);
    EXPECT_EQ(w, float(kSize));

    NewCurrentList();
    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
    for (int band = 0; band < 3; ++band)
        ExpectPixel(image, band * kSize / 4 + 2, kSize / 2, colors[band], "worker band");
    ExpectPixel(image, 3 * kSize / 4 + 2, kSize / 2, kClear, "no worker's band");
    ASSERT_TRUE(s_rm->EndScene());
}

TEST_F(D3D12RenderManagerTest, IndirectDrawAndDispatchThroughCommandSignatures)
{
    ID3D12Device* device = s_rm->GetDevice();
    // Arguments in an upload buffer (its generic-read state includes indirect arguments).
    ComPtr<ID3D12Resource> args = LxD3D12Test::CreateBuffer(device, D3D12_HEAP_TYPE_UPLOAD, 256);
    ASSERT_NE(args, nullptr);
    {
        unsigned char* p = nullptr;
        ASSERT_HRESULT_SUCCEEDED(args->Map(0, nullptr, reinterpret_cast<void**>(&p)));
        const D3D12_DRAW_ARGUMENTS draw = {3, 1, 0, 0};
        const D3D12_DISPATCH_ARGUMENTS dispatch = {3, 1, 1};
        std::memcpy(p, &draw, sizeof(draw));
        std::memcpy(p + 64, &dispatch, sizeof(dispatch));
        args->Unmap(0, nullptr);
    }
    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = D3D12_HEAP_TYPE_DEFAULT;
    D3D12_RESOURCE_DESC desc = {};
    desc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
    desc.Width = 256;
    desc.Height = desc.DepthOrArraySize = desc.MipLevels = desc.SampleDesc.Count = 1;
    desc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
    desc.Flags = D3D12_RESOURCE_FLAG_ALLOW_UNORDERED_ACCESS;
    ComPtr<ID3D12Resource> out;
    ASSERT_HRESULT_SUCCEEDED(device->CreateCommittedResource(
        &heap, D3D12_HEAP_FLAG_NONE, &desc, D3D12_RESOURCE_STATE_COPY_DEST, nullptr, IID_PPV_ARGS(&out)));
    ComPtr<ID3D12Resource> zeros = LxD3D12Test::CreateBuffer(device, D3D12_HEAP_TYPE_UPLOAD, 256);
    ASSERT_NE(zeros, nullptr);
    {
        void* p = nullptr;
        ASSERT_HRESULT_SUCCEEDED(zeros->Map(0, nullptr, &p));
        std::memset(p, 0, 256);
        zeros->Unmap(0, nullptr);
    }
    ComPtr<ID3D12Resource> readback = LxD3D12Test::CreateBuffer(device, D3D12_HEAP_TYPE_READBACK, 256);
    ASSERT_NE(readback, nullptr);

    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);
    BindPipeline(Constants(kBlue, 0.25f));
    s_rm->DrawInstancedIndirect(LxRenderManager::PRIM_TRIANGLE_LIST, args.Get(), 0);
    ID3D12GraphicsCommandList* list = s_rm->GetCurrentD3D12CommandList();
    list->CopyBufferRegion(out.Get(), 0, zeros.Get(), 0, 256);
    const D3D12_RESOURCE_BARRIER toUav =
        LxD3D12TransitionBarrier(out.Get(), D3D12_RESOURCE_STATE_COPY_DEST, D3D12_RESOURCE_STATE_UNORDERED_ACCESS);
    list->ResourceBarrier(1, &toUav);
    list->SetPipelineState(s_compute.Get());
    list->SetComputeRootSignature(s_computeRoot.Get());
    list->SetComputeRootUnorderedAccessView(0, out->GetGPUVirtualAddress());
    s_rm->DispatchIndirect(args.Get(), 64);
    const D3D12_RESOURCE_BARRIER toCopy =
        LxD3D12TransitionBarrier(out.Get(), D3D12_RESOURCE_STATE_UNORDERED_ACCESS, D3D12_RESOURCE_STATE_COPY_SOURCE);
    list->ResourceBarrier(1, &toCopy);
    list->CopyBufferRegion(readback.Get(), 0, out.Get(), 0, 256);
    EXPECT_EQ(s_rm->GetFrameStats().GetValue(LX_FRAME_STAT_NON_INDEXED_DRAWS), 1u);
    EXPECT_EQ(s_rm->GetFrameStats().GetValue(LX_FRAME_STAT_INDIRECT_DISPATCHES), 1u);

    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureBackBuffer(&image)); // also submits and waits for the dispatch and copy
    ExpectPixel(image, kSize / 2, kSize / 2, kBlue, "indirect triangle");
    ExpectPixel(image, 0, 0, kClear, "corner");
    ASSERT_TRUE(s_rm->EndScene());

    unsigned* values = nullptr;
    ASSERT_HRESULT_SUCCEEDED(readback->Map(0, nullptr, reinterpret_cast<void**>(&values)));
    EXPECT_EQ(values[0], 100u);
    EXPECT_EQ(values[1], 101u);
    EXPECT_EQ(values[2], 102u);
    EXPECT_EQ(values[3], 0u); // three groups only
    readback->Unmap(0, nullptr);
}

TEST_F(D3D12RenderManagerTest, BundleRecordsAndExecutesInsideTheFrameList)
{
    LxTest::LogCapture log;
    LxCountedPtr<LxCommandList> bundle = s_rm->CreateCommandList(LxCommandList::BUNDLE, false);
    ASSERT_TRUE(bundle);
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);
    LxCountedPtr<LxCommandList> frameList = s_rm->GetCurrentCommandList();
    // Recorded through the render manager: the bundle is the current list while it records.
    s_rm->SetCurrentCommandList(bundle);
    BindPipeline(Constants(kGreen, 0.25f));
    s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
    s_rm->SetCurrentCommandList(frameList);
    frameList = LxCountedPtr<LxCommandList>();
    s_rm->GetCurrentD3D12CommandList()->SetGraphicsRootSignature(s_root.Get());
    ASSERT_TRUE(s_rm->ExecuteBundle(bundle));
    EXPECT_TRUE(bundle->IsClosed());
    EXPECT_EQ(s_rm->GetFrameStats().GetValue(LX_FRAME_STAT_BUNDLES), 1u);
    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
    // Where bundles execute nothing, the frame keeps its clear colour.
    const bool drawsNothing = LxPlatformLimitations::Applies(LxPlatformLimitations::kBundlesDrawNothing);
    ExpectPixel(image, kSize / 2, kSize / 2, drawsNothing ? kClear : kGreen, "bundle triangle");
    ASSERT_TRUE(s_rm->EndScene());
    // A bundle is never submitted to a queue.
    EXPECT_FALSE(s_rm->CloseAndAppendCommandList(bundle));
    EXPECT_EQ(log.ErrorCount(), 1) << log.All();
}

TEST_F(D3D12RenderManagerTest, FencesSignalAndWait)
{
    LxFence* fence = s_rm->CreateFence(5);
    ASSERT_NE(fence, nullptr);
    EXPECT_EQ(fence->GetCompletedValue(), 5u);
    EXPECT_TRUE(fence->Wait(3)); // already reached
    ASSERT_TRUE(fence->Signal(9));
    EXPECT_TRUE(fence->Wait(9));
    EXPECT_EQ(fence->GetCompletedValue(), 9u);
    // Waits from several threads at once each return once their value is reached.
    ASSERT_TRUE(fence->Signal(12));
    std::thread other([&] { EXPECT_TRUE(fence->Wait(12)); });
    EXPECT_TRUE(fence->Wait(11));
    other.join();
    delete fence;
}

TEST_F(D3D12RenderManagerTest, GPUTimersMeasureEveryFrame)
{
    LxTest::LogCapture log;
    const int timer = s_rm->CreateGPUTimer("draw");
    ASSERT_GE(timer, 0);
    s_rm->StopGPUTimer(timer); // outside a frame: no list
    const unsigned frames = s_rm->GetFrameRing().GetFramesInFlight() + 3;
    for (unsigned f = 0; f < frames; ++f)
    {
        ASSERT_TRUE(s_rm->BeginScene());
        if (f == 0)
        {
            log.Clear();
            s_rm->StopGPUTimer(timer);
            EXPECT_TRUE(log.Contains("LxD3D12FrameGPUTimers::StopTimer timer not yet started", LX_LOG_ERROR))
                << log.All();
        }
        s_rm->StartGPUTimer(timer);
        s_rm->Clear(true, true, false);
        BindPipeline(Constants(kRed));
        s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
        s_rm->StopGPUTimer(timer);
        ASSERT_TRUE(s_rm->EndScene());
    }
    const LxGPUTimerResults& results = s_rm->GetGPUTimerResults();
    ASSERT_GT(results.GetCount(), unsigned(timer));
    const LxGPUTimerResult& r = results.timers[timer];
    EXPECT_EQ(r.name, "draw");
    // Results trail by the frames in flight.
    EXPECT_GE(r.frames, 3u);
    EXPECT_LE(r.minMs, r.averageMs);
    EXPECT_LE(r.averageMs, r.maxMs);
    EXPECT_GE(r.minMs, 0.0);
    EXPECT_LT(r.maxMs, 1000.0);
}

TEST_F(D3D12RenderManagerTest, FailedUploadIsRetriedAfterAFlush)
{
    // A small ring over CPU memory, recycled behind the frame fence like the resource manager's.
    static unsigned char memory[1024];
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(memory, sizeof(memory), nullptr));
    s_rm->GetFrameRing().AddFrameEndListener(&heap);
    ComPtr<ID3D12Fence> blocker;
    ASSERT_HRESULT_SUCCEEDED(s_rm->GetDevice()->CreateFence(0, D3D12_FENCE_FLAG_NONE, IID_PPV_ARGS(&blocker)));

    LxUploadAllocation a;
    ASSERT_TRUE(s_rm->BeginScene());
    ASSERT_HRESULT_SUCCEEDED(s_rm->GetCommandQueue()->Wait(blocker.Get(), 1));
    ASSERT_TRUE(s_rm->AllocateUpload(heap, 1024, 16, &a)); // the whole ring, held by frame 1
    ASSERT_TRUE(s_rm->EndScene());
    std::thread gpu(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            blocker->Signal(1);
        });
    ASSERT_TRUE(s_rm->BeginScene());
    // Frame 1 has not completed: the ring is full until the flush waits for it.
    EXPECT_TRUE(s_rm->AllocateUpload(heap, 512, 16, &a));
    EXPECT_EQ(a.size, 512u);

    LxTest::LogCapture log;
    EXPECT_FALSE(s_rm->AllocateUpload(heap, 4096, 16, &a));
    EXPECT_EQ(log.Count("Flushed upload heap but allocation still failed"), 1) << log.All();
    EXPECT_TRUE(log.Contains("Allocation is greater than upload heap size", LX_LOG_ERROR)) << log.All();
    NewCurrentList(); // the flush submitted the closed lists only; the open one records on
    ASSERT_TRUE(s_rm->EndScene());
    gpu.join();
    s_rm->Flush();
    s_rm->GetFrameRing().RemoveFrameEndListener(&heap);
}

TEST_F(D3D12RenderManagerTest, OperationsDirect3D12LacksAreReportedByName)
{
    LxTest::LogCapture log;
    s_rm->DrawAuto(LxRenderManager::PRIM_TRIANGLE_LIST);
    EXPECT_EQ(s_rm->CreateOcclusionQuery(), nullptr);
    EXPECT_EQ(s_rm->CreateSOStatisticsQuery(), nullptr);
    EXPECT_EQ(s_rm->CreateGPUPerformanceCounter(LX_GPU_COUNTER_GPU_IDLE), nullptr);
    EXPECT_EQ(s_rm->CreateRenderingPredicate(LX_PREDICATE_OCCLUSION, false), nullptr);
    s_rm->SetPredication(nullptr, false);
    EXPECT_EQ(s_rm->CreateCommandQueue(LxCommandList::BUNDLE), nullptr);
    for (const char* name : {"DrawAuto", "CreateOcclusionQuery", "CreateSOStatisticsQuery",
                             "CreateGPUPerformanceCounter", "CreateRenderingPredicate", "SetPredication"})
        EXPECT_EQ(log.Count(std::string("LxD3D12RenderManager::") + name + " ::: IMPLEMENT ME!", LX_LOG_ERROR), 1)
            << name << "\n"
            << log.All();
    EXPECT_EQ(log.Count("Queue type cannot be BUNDLE", LX_LOG_ERROR), 1);

    // Queues of the other kinds are made, owned by the caller.
    for (LxCommandList::Type type : {LxCommandList::DIRECT, LxCommandList::COMPUTE, LxCommandList::COPY})
    {
        LxCommandQueue* queue = s_rm->CreateCommandQueue(type);
        ASSERT_NE(queue, nullptr);
        EXPECT_EQ(queue->GetType(), type);
        delete queue;
    }
}

// Creation failures the platform can be made to produce, each with its message; the shared manager is replaced by
// a second one for the duration (a second device on the same window is fine once the first swap chain is gone).
TEST(D3D12RenderManagerCreation, EveryProvokableCreationMessageIsLogged)
{
    TestWindow window;
    ASSERT_TRUE(window.Create(kWindowClass, kSize, kSize));
    struct Case
    {
        const char* what;
        void (*edit)(LxD3D12RenderManager::CreationDesc*);
        std::vector<std::string> lines; // empty: creation succeeds
    };
    const Case cases[] = {
        {"no window for the swap chain",
         [](LxD3D12RenderManager::CreationDesc* d) { d->swapChainDesc.OutputWindow = nullptr; },
         {"Error while trying to create D3D12 swap chain!",
          "Arguments:64x64, format 28, 2 buffers, swap effect 4, flags 0x0, windowed 1"}},
        {"render-target heap without room for the back buffers",
         [](LxD3D12RenderManager::CreationDesc* d) { d->renderTargetDescriptors = 1; },
         {"Error creating render target view heap."}},
        {"depth heap without room for the default depth buffer",
         [](LxD3D12RenderManager::CreationDesc* d) { d->depthStencilDescriptors = 0; },
         {"Error creating depth stencil view heap."}},
        {"empty shader resource heap",
         [](LxD3D12RenderManager::CreationDesc* d) { d->shaderResourceDescriptors = 0; },
         {"Error creating shader resource view heap."}},
        {"empty sampler heap",
         [](LxD3D12RenderManager::CreationDesc* d) { d->samplerDescriptors = 0; },
         {"Error creating sampler heap."}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        LxTest::LogCapture log;
        LxD3D12RenderManager manager;
        LxD3D12RenderManager::CreationDesc desc = MakeDesc(window.Handle());
        c.edit(&desc);
        EXPECT_FALSE(manager.Initialize(desc));
        EXPECT_FALSE(manager.IsInitialized());
        for (const std::string& line : c.lines)
            EXPECT_EQ(log.Count(line, LX_LOG_ERROR), 1) << line << "\n" << log.All();
    }

    // Feature level 12_1 asked: a device at 12_1, or the device message naming what was asked.
    {
        LxTest::LogCapture log;
        LxD3D12RenderManager manager;
        LxD3D12RenderManager::CreationDesc desc = MakeDesc(window.Handle());
        desc.minFeatureLevel = D3D_FEATURE_LEVEL_12_1;
        desc.debugLayer = true;
        desc.samplerDescriptors = 0; // ends creation right after the device and swap chain
        EXPECT_FALSE(manager.Initialize(desc));
        const bool created = log.Contains("Using feature level");
        if (created)
            EXPECT_EQ(log.Count("Using feature level D3D_FEATURE_LEVEL_12_1", LX_LOG_MESSAGE), 1) << log.All();
        else
            EXPECT_EQ(log.Count("Arguments:adapter default, minimum feature level D3D_FEATURE_LEVEL_12_1, driver "
                                "hardware",
                                LX_LOG_ERROR),
                      1)
                << log.All();
        EXPECT_EQ(log.Count("Error while trying to create D3D12 device!", LX_LOG_ERROR), created ? 0 : 1);
        // The debug layer: on where the platform has one, else a warning and creation goes on.
        const bool noDebugLayer = LxPlatformLimitations::Applies(LxPlatformLimitations::kNoDebugLayer);
        EXPECT_EQ(log.Count("Using D3D12 debug layer."), noDebugLayer ? 0 : 1) << log.All();
    }
}
} // namespace

namespace
{
// A full-screen run goes full screen at creation and leaves it before the swap chain is released. Both shut-down
// messages about the full-screen state stay silent here: this platform's swap chain answers and leaves full screen
// even once the window is gone, so neither failure can be provoked.
TEST(D3D12RenderManagerCreation, FullScreenIsLeftBeforeShutDown)
{
    TestWindow window;
    ASSERT_TRUE(window.Create(kWindowClass, kSize, kSize));
    LxTest::LogCapture log;
    LxD3D12RenderManager manager;
    LxD3D12RenderManager::CreationDesc desc = MakeDesc(window.Handle());
    desc.fullScreen = true;
    ASSERT_TRUE(manager.Initialize(desc)) << log.All();
    ComPtr<IDXGISwapChain3> chain = manager.GetSwapChain();
    BOOL fullScreen = FALSE;
    ASSERT_HRESULT_SUCCEEDED(chain->GetFullscreenState(&fullScreen, nullptr));
    EXPECT_TRUE(fullScreen);
    manager.Release();
    ASSERT_HRESULT_SUCCEEDED(chain->GetFullscreenState(&fullScreen, nullptr));
    EXPECT_FALSE(fullScreen) << "the swap chain was released in full screen";
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}
} // namespace
