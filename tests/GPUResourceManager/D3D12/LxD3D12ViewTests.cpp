// Views of Direct3D 12 resources and the frame they are used in, with the resource manager initialised on the
// render manager's device the way a demo does it: textures sampled through views in pixels, render-target,
// depth-stencil and unordered-access views bound, cleared and read back, every view kind the resource types allow,
// and many real frames of uploads and frame descriptors that must never overwrite what a frame in flight reads.
#include "D3D12/LxD3D12TestExpectations.h"
#include "D3D12/LxD3D12TestHelpers.h"
#include "support/LxTestSupport.h"

#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "GPUResourceManager/D3D12/LxD3D12ReadbackBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12ViewDescriptor.h"
#include "GPUResourceManager/LxGPUStructuredBuffer.h"
#include "GPUResourceManager/LxGPUTexture2DArray.h"
#include "GPUResourceManager/LxGPUTexture3D.h"
#include "GPUResourceManager/LxGPUTextureCubeArray.h"
#include "GPUResourceManager/LxGPUVertexBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using LxD3D12Test::ComPtr;
using LxD3D12Test::Rgba;

namespace
{
constexpr UINT kSize = 64;
const wchar_t kWindowClass[] = L"LxD3D12ViewTestWindow";
// The upload ring the render manager is told about; the resource manager must take it.
const unsigned long long kViewUploadHeapSize = 12 * 1024 * 1024;

// A full-screen triangle whose texture coordinates follow the screen (0,0 top left), sampled with point filtering.
const char* const kSampleSource = R"hlsl(
Texture2D g_Texture : register(t0);
SamplerState g_Point : register(s0);
struct VSOut { float4 pos : SV_Position; float2 uv : TEXCOORD0; };
static const float2 kCorners[3] = { float2(-1.0, -1.0), float2(-1.0, 3.0), float2(3.0, -1.0) };
VSOut VSMain(uint id : SV_VertexID)
{
    VSOut o;
    o.pos = float4(kCorners[id], 0.5, 1.0);
    o.uv = kCorners[id] * float2(0.5, -0.5) + 0.5;
    return o;
}
float4 PSMain(VSOut i) : SV_Target { return g_Texture.Sample(g_Point, i.uv); }
)hlsl";
// The same through an array view: slice 0 of the view.
const char* const kSampleArraySource = R"hlsl(
Texture2DArray g_Texture : register(t0);
SamplerState g_Point : register(s0);
struct VSOut { float4 pos : SV_Position; float2 uv : TEXCOORD0; };
float4 PSMain(VSOut i) : SV_Target { return g_Texture.Sample(g_Point, float3(i.uv, 0.0)); }
)hlsl";

const Rgba kRed = {255, 0, 0, 255};
const Rgba kGreen = {0, 255, 0, 255};
const Rgba kBlue = {0, 0, 255, 255};
const Rgba kWhite = {255, 255, 255, 255};
const Rgba kGrey = {51, 102, 153, 255};

LxD3D12GPUResourceManager* ViewManager()
{
    return LxD3D12GPUResourceManager::GetD3D12Ptr();
}

// RGBA8 texels of the given colours, one after the other.
LxCountedPtr<LxMemoryBuffer> Texels(const std::vector<Rgba>& colours)
{
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(static_cast<unsigned>(colours.size() * 4));
    unsigned char* p = static_cast<unsigned char*>(buffer->GetData());
    for (const Rgba& c : colours)
        for (int channel : c)
            *p++ = static_cast<unsigned char>(channel);
    return LxCountedPtr<LxMemoryBuffer>(buffer);
}

LxCountedPtr<LxGPUTexture2DArray> Texture(unsigned width, unsigned height, unsigned mips, unsigned slices,
                                          unsigned bind, LxCountedPtr<LxMemoryBuffer> data,
                                          LxGPUResourceFormat format = LX_FORMAT_R8G8B8A8_UNORM, unsigned samples = 1,
                                          const LxGPUClearValue* clear = nullptr)
{
    return LxGPUResourceManager::GetRef().CreateTexture2DArray(
        LxGPUResource::GPU_RESOURCE_STATIC, width, height, format,
        mips > 1 ? LxGPUTexture::MIP_USER_SUPPLIED : LxGPUTexture::MIP_NONE, mips, slices, bind, 0, data, LxString(),
        samples, clear);
}

LxGPUResourceViewDescription ViewOf(LxGPUResource* resource, LxGPUResourceViewType type, unsigned short firstMip,
                                    unsigned short mips, unsigned short firstSlice, unsigned short slices)
{
    LxGPUResourceViewDescription desc = resource->GetDefaultViewDescription(type);
    desc.resourceDesc = LxGPUResourceDescription::Texture(firstMip, mips, firstSlice, slices);
    return desc;
}

// A window, a render manager on it and the resource manager initialised on the render manager's device, for the
// whole executable; and the sampling pipelines.
class D3D12Views : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_window.reset(new LxD3D12Test::TestWindow());
        if (!s_window->Create(kWindowClass, kSize, kSize))
            return;
        LxD3D12RenderManager::CreationDesc desc = LxD3D12Test::MakeRenderManagerDesc(s_window->Handle(), kSize);
        desc.uploadHeapSize = kViewUploadHeapSize;
        if (!LxD3D12RenderManager::Init(desc))
            return;
        s_rm = LxD3D12RenderManager::GetD3D12Ptr();
        // The demo's path: no registration call, defaults for the sizes.
        if (!LxGPUResourceManager::GetRef().Initialize(0, 0))
            return;
        MakePipelines();
    }
    static void TearDownTestSuite()
    {
        s_sample.Reset();
        s_sampleArray.Reset();
        s_root.Reset();
        LxGPUResourceManager::ShutDown();
        LxRenderManager::ShutDown();
        LxRenderManager::SetCreateFunction(nullptr);
        s_rm = nullptr;
        s_window.reset();
    }
    void SetUp() override
    {
        ASSERT_NE(s_rm, nullptr) << "render manager creation failed";
        ASSERT_NE(ViewManager(), nullptr) << "the Direct3D 12 resource manager is not the singleton";
        ASSERT_NE(ViewManager()->GetDevice(), nullptr) << "resource manager initialisation failed";
        ASSERT_NE(s_sample, nullptr) << s_errors;
        ASSERT_NE(s_sampleArray, nullptr) << s_errors;
        s_rm->SetClearColor(kGrey[0] / 255.0f, kGrey[1] / 255.0f, kGrey[2] / 255.0f, 1.0f);
    }

    static void MakePipelines()
    {
        ID3D12Device* device = s_rm->GetDevice();
        const D3D12_DESCRIPTOR_RANGE range = {D3D12_DESCRIPTOR_RANGE_TYPE_SRV, 1, 0, 0, 0};
        D3D12_ROOT_PARAMETER table = {};
        table.ParameterType = D3D12_ROOT_PARAMETER_TYPE_DESCRIPTOR_TABLE;
        table.DescriptorTable = {1, &range};
        table.ShaderVisibility = D3D12_SHADER_VISIBILITY_PIXEL;
        D3D12_STATIC_SAMPLER_DESC sampler = {};
        sampler.Filter = D3D12_FILTER_MIN_MAG_MIP_POINT;
        sampler.AddressU = sampler.AddressV = sampler.AddressW = D3D12_TEXTURE_ADDRESS_MODE_CLAMP;
        sampler.MaxLOD = D3D12_FLOAT32_MAX;
        sampler.ShaderVisibility = D3D12_SHADER_VISIBILITY_PIXEL;
        s_root = LxD3D12Test::CreateRootSignature(device, {1, &table, 1, &sampler, D3D12_ROOT_SIGNATURE_FLAG_NONE},
                                                  &s_errors);
        ComPtr<ID3DBlob> vs = LxD3D12Test::CompileShader(kSampleSource, "VSMain", "vs_5_0", &s_errors);
        ComPtr<ID3DBlob> ps = LxD3D12Test::CompileShader(kSampleSource, "PSMain", "ps_5_0", &s_errors);
        ComPtr<ID3DBlob> psArray = LxD3D12Test::CompileShader(kSampleArraySource, "PSMain", "ps_5_0", &s_errors);
        if (!s_root || !vs || !ps || !psArray)
            return;
        D3D12_GRAPHICS_PIPELINE_STATE_DESC desc =
            LxD3D12Test::TrianglePipelineDesc(s_root.Get(), vs.Get(), ps.Get(), DXGI_FORMAT_R8G8B8A8_UNORM);
        desc.DSVFormat = DXGI_FORMAT_D32_FLOAT; // the default depth buffer stays bound (depth test off)
        if (FAILED(device->CreateGraphicsPipelineState(&desc, IID_PPV_ARGS(&s_sample))))
            s_errors += "CreateGraphicsPipelineState failed";
        desc.PS = {psArray->GetBufferPointer(), psArray->GetBufferSize()};
        if (FAILED(device->CreateGraphicsPipelineState(&desc, IID_PPV_ARGS(&s_sampleArray))))
            s_errors += "CreateGraphicsPipelineState (array) failed";
    }

    // Inside a frame: draws the full-screen triangle sampling `view` through a frame descriptor, as draw-time
    // binding does, after moving its resource into the pixel-shader state.
    static void DrawSampled(LxGPUSamplingResourceView* view, ID3D12PipelineState* pipeline)
    {
        D3D12_CPU_DESCRIPTOR_HANDLE source = {};
        ASSERT_TRUE(LxD3D12GPUResourceManager::ResolveView(view, &source));
        D3D12_CPU_DESCRIPTOR_HANDLE cpu = {};
        D3D12_GPU_DESCRIPTOR_HANDLE gpu = {};
        ASSERT_TRUE(ViewManager()->AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV, 1, &cpu, &gpu));
        s_rm->GetDevice()->CopyDescriptorsSimple(1, cpu, source, D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV);
        ID3D12GraphicsCommandList* list = s_rm->GetCurrentD3D12CommandList();
        ASSERT_NE(list, nullptr);
        LxD3D12GPUResourceManager::Transition(list, view->GetResource(), D3D12_RESOURCE_STATE_PIXEL_SHADER_RESOURCE);
        list->SetPipelineState(pipeline);
        list->SetGraphicsRootSignature(s_root.Get());
        list->SetGraphicsRootDescriptorTable(0, gpu);
        s_rm->DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
    }

    static void ExpectPixel(const LxImageData2D& image, unsigned x, unsigned y, const Rgba& expected, const char* what)
    {
        const Rgba got = LxD3D12Test::PixelAt(image, x, y);
        EXPECT_EQ(got, expected) << what << " at (" << x << ", " << y << "): read " << LxD3D12Test::RgbaText(got)
                                 << ", expected " << LxD3D12Test::RgbaText(expected);
    }

    static std::unique_ptr<LxD3D12Test::TestWindow> s_window;
    static LxD3D12RenderManager* s_rm;
    static ComPtr<ID3D12RootSignature> s_root;
    static ComPtr<ID3D12PipelineState> s_sample, s_sampleArray;
    static std::string s_errors;
};
std::unique_ptr<LxD3D12Test::TestWindow> D3D12Views::s_window;
LxD3D12RenderManager* D3D12Views::s_rm = nullptr;
ComPtr<ID3D12RootSignature> D3D12Views::s_root;
ComPtr<ID3D12PipelineState> D3D12Views::s_sample, D3D12Views::s_sampleArray;
std::string D3D12Views::s_errors;
} // namespace

TEST_F(D3D12Views, ResourceManagerSharesTheRenderManagersShaderVisibleHeaps)
{
    EXPECT_TRUE(ViewManager()->IsSharingRenderManagerHeaps());
    EXPECT_EQ(ViewManager()->GetUploadHeap().GetCapacity(), kViewUploadHeapSize);
    EXPECT_EQ(ViewManager()->GetFrameHeap(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV),
              s_rm->GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV));
    EXPECT_EQ(ViewManager()->GetFrameHeap(D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER),
              s_rm->GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER));
    EXPECT_EQ(ViewManager()->GetFrameHeap(D3D12_DESCRIPTOR_HEAP_TYPE_RTV), nullptr);
    // The heaps views live in are not shader-visible (so descriptors can be copied out of them).
    EXPECT_EQ(ViewManager()->GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV).GetGPUHandle(0).ptr, 0u);
    D3D12_CPU_DESCRIPTOR_HANDLE cpu = {};
    D3D12_GPU_DESCRIPTOR_HANDLE gpu = {};
    ASSERT_TRUE(ViewManager()->AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER, 2, &cpu, &gpu));
    const D3D12_CPU_DESCRIPTOR_HANDLE start =
        s_rm->GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER)->GetCPUDescriptorHandleForHeapStart();
    EXPECT_GE(cpu.ptr, start.ptr);
    EXPECT_NE(gpu.ptr, 0u);
}

TEST_F(D3D12Views, TexturesAreSampledThroughTheirViews)
{
    // 2x2 quadrants; a two-level texture whose second level is green; a two-slice array whose second slice is blue.
    LxCountedPtr<LxGPUTexture2DArray> quadrants =
        Texture(2, 2, 1, 1, LxGPUResource::BIND_SHADER_RESOURCE, Texels({kRed, kGreen, kBlue, kWhite}));
    LxCountedPtr<LxGPUTexture2DArray> chain =
        Texture(2, 2, 2, 1, LxGPUResource::BIND_SHADER_RESOURCE, Texels({kRed, kRed, kRed, kRed, kGreen}));
    LxCountedPtr<LxGPUTexture2DArray> slices =
        Texture(1, 1, 1, 2, LxGPUResource::BIND_SHADER_RESOURCE, Texels({kRed, kBlue}));
    ASSERT_TRUE(quadrants && chain && slices);
    struct Case
    {
        const char* what;
        LxCountedPtr<LxGPUSamplingResourceView> view;
        ID3D12PipelineState* pipeline;
        Rgba topLeft, topRight, bottomLeft, bottomRight;
    };
    const Case cases[] = {
        {"whole texture", quadrants->GetDefaultSamplingView(), s_sample.Get(), kRed, kGreen, kBlue, kWhite},
        {"second mip only", chain->GetSamplingView(ViewOf(chain.Get(), LX_VIEW_SAMPLING, 1, 1, 0, 1)), s_sample.Get(),
         kGreen, kGreen, kGreen, kGreen},
        {"second slice only", slices->GetSamplingView(ViewOf(slices.Get(), LX_VIEW_SAMPLING, 0, 1, 1, 1)),
         s_sampleArray.Get(), kBlue, kBlue, kBlue, kBlue},
    };
    LxTest::LogCapture log;
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(c.view);
        ASSERT_TRUE(s_rm->BeginScene());
        s_rm->Clear(true, true, false);
        DrawSampled(c.view.Get(), c.pipeline);
        LxImageData2D image;
        ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
        ExpectPixel(image, kSize / 4, kSize / 4, c.topLeft, "top left");
        ExpectPixel(image, 3 * kSize / 4, kSize / 4, c.topRight, "top right");
        ExpectPixel(image, kSize / 4, 3 * kSize / 4, c.bottomLeft, "bottom left");
        ExpectPixel(image, 3 * kSize / 4, 3 * kSize / 4, c.bottomRight, "bottom right");
        ASSERT_TRUE(s_rm->EndScene());
    }
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12Views, TargetViewsBindClearAndAreSampledAfterwards)
{
    const unsigned bind = LxGPUResource::BIND_RENDER_TARGET | LxGPUResource::BIND_SHADER_RESOURCE;
    LxCountedPtr<LxGPUTexture2DArray> target = Texture(kSize, kSize, 1, 1, bind, nullptr);
    LxCountedPtr<LxGPUTexture2DArray> depth =
        Texture(kSize, kSize, 1, 1, LxGPUResource::BIND_DEPTH_STENCIL, nullptr, LX_FORMAT_D32_FLOAT);
    LxCountedPtr<LxGPUTexture2DArray> storage =
        Texture(8, 8, 1, 1, LxGPUResource::BIND_UNORDERED_ACCESS | LxGPUResource::BIND_SHADER_RESOURCE, nullptr);
    ASSERT_TRUE(target && depth && storage);
    LxCountedPtr<LxGPURenderableResourceView> rtv =
        target->GetRenderableView(target->GetDefaultViewDescription(LX_VIEW_RENDERABLE));
    LxCountedPtr<LxGPUDepthStencilResourceView> dsv =
        depth->GetDepthStencilView(depth->GetDefaultViewDescription(LX_VIEW_DEPTH_STENCIL));
    LxCountedPtr<LxGPUUnorderedAccessView> uav =
        storage->GetUnorderedAccessView(storage->GetDefaultViewDescription(LX_VIEW_UNORDERED_ACCESS));
    ASSERT_TRUE(rtv && dsv && uav);
    ID3D12Resource* targetResource = LxD3D12GPUResourceManager::GetD3D12Resource(target.Get());
    ID3D12Resource* depthResource = LxD3D12GPUResourceManager::GetD3D12Resource(depth.Get());
    ASSERT_NE(targetResource, nullptr);

    LxTest::LogCapture log;
    ASSERT_TRUE(s_rm->BeginScene());
    LxArray<LxCountedPtr<LxGPURenderableResourceView>> backBuffer;
    LxCountedPtr<LxGPUDepthStencilResourceView> defaultDepth;
    s_rm->GetRenderTargets(&backBuffer, &defaultDepth);

    // Sampled first, so binding it as a target must move it back.
    LxD3D12GPUResourceManager::Transition(s_rm->GetCurrentD3D12CommandList(), target.Get(),
                                          D3D12_RESOURCE_STATE_PIXEL_SHADER_RESOURCE);
    s_rm->SetRenderTargets(1, &rtv, dsv);
    EXPECT_EQ(LxD3D12GPUResourceManager::GetD3D12State(target.Get()), D3D12_RESOURCE_STATE_RENDER_TARGET);
    EXPECT_EQ(LxD3D12GPUResourceManager::GetD3D12State(depth.Get()), D3D12_RESOURCE_STATE_DEPTH_WRITE);
    s_rm->SetClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    s_rm->SetClearDepth(0.75f);
    s_rm->Clear(true, true, false);
    const float blue[4] = {0.0f, 0.0f, 1.0f, 1.0f};
    EXPECT_TRUE(uav->ClearFloat(blue));
    EXPECT_EQ(LxD3D12GPUResourceManager::GetD3D12State(storage.Get()), D3D12_RESOURCE_STATE_UNORDERED_ACCESS);

    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureRenderTarget(targetResource, D3D12_RESOURCE_STATE_RENDER_TARGET, &image));
    ExpectPixel(image, 3, 60, kGreen, "render-target view cleared");
    ASSERT_TRUE(s_rm->CaptureRenderTarget(depthResource, D3D12_RESOURCE_STATE_DEPTH_WRITE, &image));
    EXPECT_EQ(image.GetPixel(10, 10)[0], 0.75);
    ASSERT_TRUE(s_rm->CaptureRenderTarget(LxD3D12GPUResourceManager::GetD3D12Resource(storage.Get()),
                                          D3D12_RESOURCE_STATE_UNORDERED_ACCESS, &image));
    ExpectPixel(image, 7, 7, kBlue, "unordered-access view cleared");

    // Back to the back buffer, and the target texture sampled: green everywhere.
    s_rm->SetRenderTargets(backBuffer.GetCount(), backBuffer.GetData(), defaultDepth);
    s_rm->SetClearColor(kGrey[0] / 255.0f, kGrey[1] / 255.0f, kGrey[2] / 255.0f, 1.0f);
    s_rm->Clear(true, true, false);
    DrawSampled(target->GetDefaultSamplingView().Get(), s_sample.Get());
    ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
    ExpectPixel(image, kSize / 2, kSize / 2, kGreen, "render target sampled");
    ASSERT_TRUE(s_rm->EndScene());
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
}

TEST_F(D3D12Views, EveryViewKindTheResourcesAllowResolvesToItsOwnDescriptor)
{
    LxGPUResourceManager& grm = LxGPUResourceManager::GetRef();
    const unsigned sampled = LxGPUResource::BIND_SHADER_RESOURCE;
    const unsigned all = sampled | LxGPUResource::BIND_RENDER_TARGET | LxGPUResource::BIND_UNORDERED_ACCESS;
    LxCountedPtr<LxGPUTexture2DArray> array = Texture(8, 8, 3, 4, all, nullptr);
    LxCountedPtr<LxGPUTexture2DArray> multisampled =
        Texture(8, 8, 1, 1, sampled | LxGPUResource::BIND_RENDER_TARGET, nullptr, LX_FORMAT_R8G8B8A8_UNORM, 4);
    // Typeless, so that it can be written as depth and read as colour; its clear value names the depth format.
    LxGPUClearValue depthClear;
    depthClear.format = LX_FORMAT_D32_FLOAT;
    LxCountedPtr<LxGPUTexture2DArray> depth = Texture(8, 8, 1, 2, sampled | LxGPUResource::BIND_DEPTH_STENCIL, nullptr,
                                                      LX_FORMAT_R32_TYPELESS, 1, &depthClear);
    LxCountedPtr<LxGPUTextureCubeArray> cubes = grm.CreateCubemapArray(
        LxGPUResource::GPU_RESOURCE_STATIC, 4, 2, LX_FORMAT_R8G8B8A8_UNORM, LxGPUTexture::MIP_NONE, 1, all, 0, nullptr);
    LxCountedPtr<LxGPUTexture3D> volume =
        grm.CreateTexture3D(LxGPUResource::GPU_RESOURCE_STATIC, 4, 4, 4, LX_FORMAT_R8G8B8A8_UNORM,
                            LxGPUTexture::MIP_NONE, 1, all, 0, nullptr);
    LxCountedPtr<LxGPUStructuredBuffer> structured =
        grm.CreateStructuredBuffer(16, 32, sampled | LxGPUResource::BIND_UNORDERED_ACCESS, nullptr);
    LxCountedPtr<LxGPUVertexBuffer> vertices = grm.CreateRenderableVB(LX_FORMAT_R32G32B32A32_FLOAT, 16);
    ASSERT_TRUE(array && multisampled && depth && cubes && volume && structured && vertices);

    auto buffer = [](LxGPUResource* r, LxGPUResourceViewType type, LxGPUResourceFormat format, unsigned first,
                     unsigned count) {
        return LxGPUResourceViewDescription(type, format, r->GetType(), LxGPUResourceDescription::Buffer(first, count));
    };
    auto depthView = [&](LxGPUResourceViewType type, LxGPUResourceFormat format, unsigned short slice)
    {
        return LxGPUResourceViewDescription(type, format, depth->GetType(),
                                            LxGPUResourceDescription::Texture(0, 1, slice, 1));
    };
    LxGPUResourceViewDescription cubeFaces = ViewOf(cubes.Get(), LX_VIEW_SAMPLING, 0, 1, 3, 2);
    cubeFaces.resourceType = LxGPUResource::TEXTURE_2D_ARRAY; // a 2D-array view of two faces
    LxGPUResourceViewDescription faceTarget = ViewOf(cubes.Get(), LX_VIEW_RENDERABLE, 0, 1, 4, 1);
    faceTarget.resourceType = LxGPUResource::TEXTURE_2D_ARRAY;
    struct Case
    {
        const char* what;
        LxGPUResource* resource;
        LxGPUResourceViewDescription desc;
    };
    const Case cases[] = {
        {"2D array, all", array.Get(), array->GetDefaultViewDescription(LX_VIEW_SAMPLING)},
        {"2D array, mips 1-2 of slices 1-2", array.Get(), ViewOf(array.Get(), LX_VIEW_SAMPLING, 1, 2, 1, 2)},
        {"2D array target, mip 2 of slice 3", array.Get(), ViewOf(array.Get(), LX_VIEW_RENDERABLE, 2, 1, 3, 1)},
        {"2D array UAV, mip 1", array.Get(), ViewOf(array.Get(), LX_VIEW_UNORDERED_ACCESS, 1, 1, 0, 4)},
        {"multisampled", multisampled.Get(), multisampled->GetDefaultViewDescription(LX_VIEW_SAMPLING)},
        {"multisampled target", multisampled.Get(), multisampled->GetDefaultViewDescription(LX_VIEW_RENDERABLE)},
        {"depth slice 1 written", depth.Get(), depthView(LX_VIEW_DEPTH_STENCIL, LX_FORMAT_D32_FLOAT, 1)},
        {"depth read as colour", depth.Get(), depthView(LX_VIEW_SAMPLING, LX_FORMAT_R32_FLOAT, 0)},
        {"cube array", cubes.Get(), cubes->GetDefaultViewDescription(LX_VIEW_SAMPLING)},
        {"second cube", cubes.Get(), ViewOf(cubes.Get(), LX_VIEW_SAMPLING, 0, 1, 6, 6)},
        {"two faces as 2D array", cubes.Get(), cubeFaces},
        {"cube face target", cubes.Get(), faceTarget},
        {"cube UAV", cubes.Get(), cubes->GetDefaultViewDescription(LX_VIEW_UNORDERED_ACCESS)},
        {"3D", volume.Get(), volume->GetDefaultViewDescription(LX_VIEW_SAMPLING)},
        {"3D target, slices 1-2", volume.Get(), ViewOf(volume.Get(), LX_VIEW_RENDERABLE, 0, 1, 1, 2)},
        {"3D UAV", volume.Get(), volume->GetDefaultViewDescription(LX_VIEW_UNORDERED_ACCESS)},
        {"structured", structured.Get(), buffer(structured.Get(), LX_VIEW_SAMPLING, LX_FORMAT_UNKNOWN, 4, 8)},
        {"structured UAV", structured.Get(),
         buffer(structured.Get(), LX_VIEW_UNORDERED_ACCESS, LX_FORMAT_UNKNOWN, 0, 32)},
        {"raw words of structures 2-31", structured.Get(),
         buffer(structured.Get(), LX_VIEW_SAMPLING, LX_FORMAT_R32_TYPELESS, 2, 30)},
        {"typed vertices", vertices.Get(),
         buffer(vertices.Get(), LX_VIEW_SAMPLING, LX_FORMAT_R32G32B32A32_FLOAT, 2, 14)},
        {"typed vertex UAV", vertices.Get(),
         buffer(vertices.Get(), LX_VIEW_UNORDERED_ACCESS, LX_FORMAT_R32G32B32A32_FLOAT, 0, 16)},
    };
    // The resource keeps the view it made, so a raw pointer is enough here.
    auto Get = [](LxGPUResource* resource, const LxGPUResourceViewDescription& desc) -> LxGPUResourceView*
    {
        switch (desc.viewType)
        {
        case LX_VIEW_SAMPLING:
            return resource->GetSamplingView(desc).Get();
        case LX_VIEW_RENDERABLE:
            return resource->GetRenderableView(desc).Get();
        case LX_VIEW_UNORDERED_ACCESS:
            return resource->GetUnorderedAccessView(desc).Get();
        default:
            return static_cast<LxGPUTexture*>(resource)->GetDepthStencilView(desc).Get();
        }
    };
    LxTest::LogCapture log;
    std::vector<UINT64> handles;
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        LxGPUResourceView* view = Get(c.resource, c.desc);
        ASSERT_NE(view, nullptr) << log.All();
        D3D12_CPU_DESCRIPTOR_HANDLE handle = {};
        ASSERT_TRUE(LxD3D12GPUResourceManager::ResolveView(view, &handle));
        EXPECT_NE(handle.ptr, 0u);
        EXPECT_EQ(Get(c.resource, c.desc), view) << "asking again must give the same view, not a new descriptor";
        handles.push_back(handle.ptr);
    }
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
    // Within a heap no two views share a slot (the heaps differ by kind, so compare the kinds' handles apart).
    std::vector<UINT64> sorted(handles);
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
}

TEST_F(D3D12Views, ViewsGiveTheirSlotBackAndForeignViewsDoNotResolve)
{
    LxD3D12DescriptorHeap& heap = ViewManager()->GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV);
    // Allocation retires the frames the GPU has finished: after a few frames, slots freed before this test are back.
    auto settle = [&]()
    {
        for (unsigned frame = 0; frame < 3; ++frame)
        {
            ASSERT_TRUE(s_rm->BeginScene());
            ASSERT_TRUE(s_rm->EndScene());
        }
        const int probe = heap.Allocate(1);
        ASSERT_GE(probe, 0);
        heap.FreeNow(static_cast<unsigned>(probe));
    };
    settle();
    const unsigned before = heap.GetAllocatedCount();
    LxCountedPtr<LxGPUTexture2DArray> texture =
        Texture(4, 4, 1, 1, LxGPUResource::BIND_SHADER_RESOURCE, Texels(std::vector<Rgba>(16, kRed)));
    ASSERT_TRUE(texture);
    LxCountedPtr<LxGPUSamplingResourceView> view = texture->GetDefaultSamplingView();
    ASSERT_TRUE(view);
    EXPECT_EQ(heap.GetAllocatedCount(), before + 1);

    LxTest::LogCapture log;
    // Not made by the platform resources: the back buffer's view, a portable view, none at all.
    LxArray<LxCountedPtr<LxGPURenderableResourceView>> backBuffer;
    LxCountedPtr<LxGPUDepthStencilResourceView> noDepth;
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->GetRenderTargets(&backBuffer, &noDepth);
    ASSERT_TRUE(s_rm->EndScene());
    ASSERT_EQ(backBuffer.GetCount(), 1u);
    LxGPUSamplingResourceView portable(texture.Get(), view->GetDescription());
    D3D12_CPU_DESCRIPTOR_HANDLE handle = {};
    EXPECT_FALSE(LxD3D12GPUResourceManager::ResolveView(backBuffer[0].Get(), &handle));
    EXPECT_FALSE(LxD3D12GPUResourceManager::ResolveView(&portable, &handle));
    EXPECT_FALSE(LxD3D12GPUResourceManager::ResolveView(nullptr, &handle));
    EXPECT_EQ(LxD3D12GPUResourceManager::GetD3D12Resource(nullptr), nullptr);
    EXPECT_EQ(log.All(), "");

    // A view kept past its resource no longer resolves; its slot returns once the frames in flight are done.
    texture = nullptr;
    EXPECT_FALSE(LxD3D12GPUResourceManager::ResolveView(view.Get(), &handle));
    view = nullptr;
    EXPECT_EQ(heap.GetAllocatedCount(), before + 1) << "freed at once, while a frame may still read it";
    settle();
    EXPECT_EQ(heap.GetAllocatedCount(), before);
}

TEST_F(D3D12Views, FrameDescriptorRequestsThatCannotBeMetAreReported)
{
    D3D12_CPU_DESCRIPTOR_HANDLE cpu = {};
    D3D12_GPU_DESCRIPTOR_HANDLE gpu = {};
    LxTest::LogCapture log;
    EXPECT_FALSE(ViewManager()->AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV, 65, &cpu, &gpu));
    EXPECT_EQ(1, log.Count("LxD3D12GPUResourceManager::AllocateFrameDescriptors.  The shader-visible heap has no "
                           "room for 65 more descriptors in this frame.",
                           LX_LOG_ERROR))
        << log.All();
    EXPECT_FALSE(ViewManager()->AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE_RTV, 1, &cpu, &gpu));
    EXPECT_EQ(1, log.Count("LxD3D12GPUResourceManager::AllocateFrameDescriptors.  Only CBV/SRV/UAV and sampler "
                           "descriptors are shader-visible.",
                           LX_LOG_ERROR))
        << log.All();
}

TEST_F(D3D12Views, ManyRealFramesRecycleUploadsAndFrameDescriptorsBehindTheFence)
{
    // Every frame writes blocks through the upload ring and copies them on the frame list, and takes ranges of
    // frame descriptors. The ring (default size) and the 64-slot heap must wrap many times, and nothing a frame
    // in flight still reads may be handed out again.
    const unsigned frames = 48;
    const unsigned rangesPerFrame = 3;
    const unsigned rangeSize = 7;
    const unsigned long long destinationSize = 16 * 1024 * 1024;
    const unsigned largestBlock = 700000 + 39 * 9973;
    ComPtr<ID3D12Resource> destination =
        LxD3D12Test::CreateDefaultBuffer(s_rm->GetDevice(), destinationSize, D3D12_RESOURCE_STATE_COPY_DEST);
    ASSERT_NE(destination, nullptr);
    struct Block
    {
        unsigned long long destination;
        unsigned size;
        unsigned seed;
    };
    std::vector<Block> blocks;
    unsigned long long written = 0;
    std::vector<std::pair<UINT64, UINT64>> previous, current; // [first, end) CPU handle ranges
    const UINT increment = s_rm->GetDevice()->GetDescriptorHandleIncrementSize(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV);
    unsigned overlaps = 0;
    LxTest::LogCapture log;
    for (unsigned frame = 0; frame < frames; ++frame)
    {
        ASSERT_TRUE(s_rm->BeginScene());
        ID3D12GraphicsCommandList* list = s_rm->GetCurrentD3D12CommandList();
        ASSERT_NE(list, nullptr);
        for (unsigned b = 0; b < 3; ++b)
        {
            const unsigned size = 700000 + ((frame * 7 + b * 13) % 40) * 9973;
            const unsigned seed = frame * 16 + b;
            LxUploadAllocation upload;
            ASSERT_TRUE(ViewManager()->GetUploadHeap().Allocate(size, 16, &upload)) << "frame " << frame;
            unsigned char* cpu = upload.GetCPUAddress();
            for (unsigned i = 0; i < size; ++i)
                cpu[i] = static_cast<unsigned char>((seed * 31 + i * 7) >> 2);
            const unsigned long long at = (written % (destinationSize - largestBlock)) & ~15ull;
            list->CopyBufferRegion(destination.Get(), at, ViewManager()->GetUploadHeap().GetResource(), upload.offset,
                                   size);
            // Later frames overwrite earlier blocks' destinations: only the last block at each place counts.
            blocks.push_back({at, size, seed});
            written += size;
        }
        current.clear();
        for (unsigned r = 0; r < rangesPerFrame; ++r)
        {
            D3D12_CPU_DESCRIPTOR_HANDLE cpu = {};
            D3D12_GPU_DESCRIPTOR_HANDLE gpu = {};
            ASSERT_TRUE(
                ViewManager()->AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV, rangeSize, &cpu, &gpu))
                << "frame " << frame << ": " << log.All();
            const std::pair<UINT64, UINT64> range(cpu.ptr, cpu.ptr + UINT64(rangeSize) * increment);
            // With two frames in flight, the previous frame may still be running while this one records.
            for (const auto& other : previous)
                overlaps += range.first < other.second && other.first < range.second;
            for (const auto& other : current)
                overlaps += range.first < other.second && other.first < range.second;
            current.push_back(range);
        }
        previous = current;
        ASSERT_TRUE(s_rm->EndScene());
    }
    EXPECT_EQ(overlaps, 0u);
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
    EXPECT_GT(written, 3 * ViewManager()->GetUploadHeap().GetCapacity()) << "the ring must wrap several times";

    // Read the destination back after the frames and compare the blocks nothing overwrote later.
    LxD3D12ReadbackBuffer readback;
    ASSERT_TRUE(readback.Create(s_rm->GetDevice(), destinationSize));
    {
        LxMutex::ScopedLock lock(ViewManager()->GetImmediateLock());
        ID3D12GraphicsCommandList* list = ViewManager()->BeginImmediate();
        ASSERT_NE(list, nullptr);
        list->CopyBufferRegion(readback.GetResource(), 0, destination.Get(), 0, destinationSize);
        ASSERT_TRUE(ViewManager()->ExecuteImmediate());
    }
    const unsigned char* mapped = readback.Map();
    ASSERT_NE(mapped, nullptr);
    unsigned checked = 0, damaged = 0;
    for (size_t i = 0; i < blocks.size(); ++i)
    {
        const Block& block = blocks[i];
        bool overwritten = false;
        for (size_t j = i + 1; j < blocks.size() && !overwritten; ++j)
            overwritten = blocks[j].destination < block.destination + block.size &&
                          block.destination < blocks[j].destination + blocks[j].size;
        if (overwritten)
            continue;
        ++checked;
        for (unsigned k = 0; k < block.size; ++k)
        {
            if (mapped[block.destination + k] != static_cast<unsigned char>((block.seed * 31 + k * 7) >> 2))
            {
                ++damaged;
                break;
            }
        }
    }
    readback.Unmap();
    EXPECT_GT(checked, 10u);
    EXPECT_EQ(damaged, 0u) << "of " << checked << " blocks";
}

TEST_F(D3D12Views, PortableTransitionsBarriersAndCopiesRecordOnTheFrameList)
{
    const unsigned sampled = LxGPUResource::BIND_SHADER_RESOURCE;
    LxCountedPtr<LxGPUTexture2DArray> source = Texture(2, 2, 1, 1, sampled, Texels({kRed, kGreen, kBlue, kWhite}));
    LxCountedPtr<LxGPUTexture2DArray> copy = Texture(2, 2, 1, 1, sampled, Texels({kGrey, kGrey, kGrey, kGrey}));
    LxCountedPtr<LxGPUTexture2DArray> smaller = Texture(1, 1, 1, 1, sampled, Texels({kGrey}));
    LxCountedPtr<LxGPUTexture2DArray> storage =
        Texture(4, 4, 1, 1, sampled | LxGPUResource::BIND_UNORDERED_ACCESS, nullptr);
    ASSERT_TRUE(source && copy && smaller && storage);
    LxTest::LogCapture log;
    ASSERT_TRUE(s_rm->BeginScene());
    s_rm->Clear(true, true, false);

    const auto resting = static_cast<LxGPUResource::StateType>(LxD3D12GPUResourceManager::GetD3D12State(source.Get()));
    EXPECT_TRUE(source->Transition(resting, LxGPUResource::STATE_COPY_SOURCE));
    EXPECT_EQ(LxD3D12GPUResourceManager::GetD3D12State(source.Get()), D3D12_RESOURCE_STATE_COPY_SOURCE);
    EXPECT_TRUE(source->Transition(LxGPUResource::STATE_COPY_SOURCE, resting));
    EXPECT_TRUE(storage->UAVBarrier());

    // The copy leaves both where they were, and the copy is sampled like its source.
    EXPECT_TRUE(copy->CopyResource(source.Get()));
    EXPECT_EQ(LxD3D12GPUResourceManager::GetD3D12State(source.Get()), static_cast<D3D12_RESOURCE_STATES>(resting));
    EXPECT_EQ(log.ErrorCount(), 0) << log.All();
    for (LxGPUTexture2DArray* wrong : {smaller.Get(), copy.Get()})
    {
        LxTest::LogCapture refusal;
        EXPECT_FALSE(copy->CopyResource(wrong));
        EXPECT_EQ(refusal.Count("LxD3D12GPUResourceManager::RecordCopy.  The source is not another Direct3D 12 "
                                "resource of the same kind and size.",
                                LX_LOG_ERROR),
                  1)
            << refusal.All();
    }
    DrawSampled(copy->GetDefaultSamplingView().Get(), s_sample.Get());
    LxImageData2D image;
    ASSERT_TRUE(s_rm->CaptureBackBuffer(&image));
    ExpectPixel(image, kSize / 4, kSize / 4, kRed, "copied top left");
    ExpectPixel(image, 3 * kSize / 4, 3 * kSize / 4, kWhite, "copied bottom right");
    ASSERT_TRUE(s_rm->EndScene());
}

TEST_F(D3D12Views, EveryProvokableViewAndBindingMessageIsLoggedVerbatim)
{
    LxCountedPtr<LxGPUStructuredBuffer> buffer =
        LxGPUResourceManager::GetRef().CreateStructuredBuffer(16, 4, LxGPUResource::BIND_SHADER_RESOURCE, nullptr);
    LxCountedPtr<LxGPUTexture2DArray> texture =
        Texture(4, 4, 1, 1, LxGPUResource::BIND_UNORDERED_ACCESS | LxGPUResource::BIND_SHADER_RESOURCE, nullptr);
    ASSERT_TRUE(buffer && texture);
    LxCountedPtr<LxGPUUnorderedAccessView> orphan =
        texture->GetUnorderedAccessView(texture->GetDefaultViewDescription(LX_VIEW_UNORDERED_ACCESS));
    ASSERT_TRUE(orphan);
    texture = nullptr; // the view outlives its texture
    // Between frames there is no list to record on (asking for it must not touch the submitted one).
    ASSERT_TRUE(s_rm->BeginScene());
    ASSERT_TRUE(s_rm->EndScene());
    EXPECT_EQ(s_rm->GetCurrentD3D12CommandList(), nullptr);
    const std::vector<LxD3D12Test::ProvokedMessage> cases = {
        {"LxD3D12GPUResourceManager::AllocateFrameDescriptors.  There is no shader-visible heap: initialise the "
         "resource manager first.",
         []
         {
             LxD3D12GPUResourceManager uninitialised;
             D3D12_CPU_DESCRIPTOR_HANDLE cpu = {};
             D3D12_GPU_DESCRIPTOR_HANDLE gpu = {};
             return uninitialised.AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER, 1, &cpu, &gpu);
         }},
        {"LxD3D12GPUResourceManager::RecordTransition.  Needs a Direct3D 12 resource and an open command list of the "
         "render manager.",
         [] { return LxD3D12GPUResourceManager::RecordTransition(nullptr, 0, 4); }},
        {"LxD3D12GPUResourceManager::RecordUAVBarrier.  Needs a Direct3D 12 resource and an open command list of the "
         "render manager.",
         [] { return LxD3D12GPUResourceManager::RecordUAVBarrier(nullptr); }},
        {"LxD3D12ViewDescriptor::CreateDescriptor.  The view's format has no Direct3D 12 equivalent.",
         [&]
         {
             return bool(buffer->GetSamplingView(LxGPUResourceViewDescription(
                 LX_VIEW_SAMPLING, LX_FORMAT_ATC_RGBA, LxGPUResource::BUFFER, LxGPUResourceDescription::Buffer(0, 4))));
         }},
        {"LxD3D12UnorderedAccessView::Clear.  Needs a live view and an open command list of the render manager.",
         [&]
         {
             const unsigned zero[4] = {0, 0, 0, 0};
             return orphan->ClearUInt(zero);
         }},
    };
    LxD3D12Test::ExpectEachLoggedOnce(cases);
}

TEST_F(D3D12Views, AppendViewsOfStructuredBuffersCarryACounterThatCanBeSet)
{
    LxCountedPtr<LxGPUStructuredBuffer> buffer = LxGPUResourceManager::GetRef().CreateStructuredBuffer(
        16, 8, LxGPUResource::BIND_SHADER_RESOURCE | LxGPUResource::BIND_UNORDERED_ACCESS, nullptr);
    ASSERT_TRUE(buffer);
    LxGPUResourceViewDescription append = buffer->GetDefaultViewDescription(LX_VIEW_UNORDERED_ACCESS);
    append.flags = LxGPUResourceViewDescription::FLAG_APPEND;
    LxCountedPtr<LxGPUUnorderedAccessView> view = buffer->GetUnorderedAccessView(append);
    auto* d3d12 = dynamic_cast<LxD3D12ViewDescriptor*>(view.Get());
    ASSERT_NE(d3d12, nullptr);
    ASSERT_NE(d3d12->GetCounterResource(), nullptr);

    LxD3D12ReadbackBuffer readback;
    ASSERT_TRUE(readback.Create(s_rm->GetDevice(), 4));
    {
        LxMutex::ScopedLock lock(ViewManager()->GetImmediateLock());
        ID3D12GraphicsCommandList* list = ViewManager()->BeginImmediate();
        ASSERT_NE(list, nullptr);
        ASSERT_TRUE(d3d12->SetCounter(list, 7));
        ID3D12Resource* counter = d3d12->GetCounterResource();
        D3D12_RESOURCE_BARRIER barrier =
            LxD3D12TransitionBarrier(counter, D3D12_RESOURCE_STATE_UNORDERED_ACCESS, D3D12_RESOURCE_STATE_COPY_SOURCE);
        list->ResourceBarrier(1, &barrier);
        list->CopyBufferRegion(readback.GetResource(), 0, counter, 0, 4);
        barrier =
            LxD3D12TransitionBarrier(counter, D3D12_RESOURCE_STATE_COPY_SOURCE, D3D12_RESOURCE_STATE_UNORDERED_ACCESS);
        list->ResourceBarrier(1, &barrier);
        ASSERT_TRUE(ViewManager()->ExecuteImmediate());
    }
    const unsigned char* mapped = readback.Map();
    ASSERT_NE(mapped, nullptr);
    unsigned value = 0;
    std::memcpy(&value, mapped, 4);
    readback.Unmap();
    EXPECT_EQ(value, 7u);

    // A raw view cannot carry a counter: made without one, with a warning; a plain view has none either.
    LxTest::LogCapture log;
    LxGPUResourceViewDescription raw =
        LxGPUResourceViewDescription(LX_VIEW_UNORDERED_ACCESS, LX_FORMAT_R32_TYPELESS, LxGPUResource::BUFFER,
                                     LxGPUResourceDescription::Buffer(0, 8), LxGPUResourceViewDescription::FLAG_APPEND);
    LxCountedPtr<LxGPUUnorderedAccessView> rawView = buffer->GetUnorderedAccessView(raw);
    ASSERT_TRUE(rawView);
    EXPECT_EQ(dynamic_cast<LxD3D12ViewDescriptor*>(rawView.Get())->GetCounterResource(), nullptr);
    EXPECT_EQ(1, log.Count("LxD3D12ViewDescriptor::CreateDescriptor.  Only structured views carry an append counter; "
                           "this view is made without one.",
                           LX_LOG_WARNING))
        << log.All();
    LxCountedPtr<LxGPUUnorderedAccessView> plain =
        buffer->GetUnorderedAccessView(buffer->GetDefaultViewDescription(LX_VIEW_UNORDERED_ACCESS));
    ASSERT_TRUE(plain);
    EXPECT_EQ(dynamic_cast<LxD3D12ViewDescriptor*>(plain.Get())->GetCounterResource(), nullptr);
    EXPECT_FALSE(dynamic_cast<LxD3D12ViewDescriptor*>(plain.Get())->SetCounter(nullptr, 1));
}
