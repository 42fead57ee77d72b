// Windows-lane benchmark of the Direct3D 12 render manager against raw Direct3D 12 / DXGI code doing the same work
// in the same process (same Wine server, same lavapipe), self-timed (Google Benchmark is not built for mingw).
//
//   frame loop: BeginScene, Clear (colour and depth), EndScene with Present(0) against a raw loop with the same
//               frames in flight, barriers, clears, submission, present and fence; frames per second of each.
//   draw cost:  CPU time to record one DrawIndexed through the render manager (statistics included) against the
//               raw IASetPrimitiveTopology + DrawIndexedInstanced, and against DrawIndexedInstanced alone.
// The two sides alternate in rounds and the median round of each is reported, so a load change on the machine
// hits both. Prints one line per figure and the ratios; exits non-zero only when something could not be created.
#include "Common/LxLogManager.h"
#include "D3D12/LxD3D12TestHelpers.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

using LxD3D12Test::ComPtr;

namespace
{
constexpr UINT kWidth = 640;
constexpr UINT kHeight = 480;
constexpr UINT kBuffers = 2;
constexpr UINT kFramesInFlight = 2;
typedef std::chrono::steady_clock Clock;

double Seconds(Clock::time_point a, Clock::time_point b)
{
    return std::chrono::duration<double>(b - a).count();
}

double Median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

HWND MakeWindow(const wchar_t* title)
{
    static bool registered = false;
    if (!registered)
    {
        WNDCLASSEXW wc = {};
        wc.cbSize = sizeof(wc);
        wc.lpfnWndProc = DefWindowProcW;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.lpszClassName = L"LxD3D12Bench";
        registered = RegisterClassExW(&wc) != 0;
    }
    RECT rect = {0, 0, LONG(kWidth), LONG(kHeight)};
    AdjustWindowRect(&rect, WS_OVERLAPPEDWINDOW, FALSE);
    // Both windows at the same place; the one being measured is raised first (Raise), so each side presents to a
    // fully visible window (presenting to a partly covered one copies fewer pixels).
    HWND hwnd = CreateWindowExW(0, L"LxD3D12Bench", title, WS_OVERLAPPEDWINDOW, 0, 0, rect.right - rect.left,
                                rect.bottom - rect.top, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (hwnd)
        ShowWindow(hwnd, SW_SHOWNOACTIVATE);
    return hwnd;
}

void Raise(HWND hwnd)
{
    SetWindowPos(hwnd, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void Pump()
{
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
    {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

DXGI_SWAP_CHAIN_DESC SwapChainDesc(HWND hwnd)
{
    DXGI_SWAP_CHAIN_DESC sc = {};
    sc.BufferDesc.Width = kWidth;
    sc.BufferDesc.Height = kHeight;
    sc.BufferDesc.Format = DXGI_FORMAT_R8G8B8A8_UNORM;
    sc.SampleDesc.Count = 1;
    sc.BufferUsage = DXGI_USAGE_RENDER_TARGET_OUTPUT;
    sc.BufferCount = kBuffers;
    sc.OutputWindow = hwnd;
    sc.Windowed = TRUE;
    sc.SwapEffect = DXGI_SWAP_EFFECT_FLIP_DISCARD;
    return sc;
}

// The raw loop: what the render manager's frame does, written directly.
struct RawLoop
{
    ComPtr<IDXGIFactory4> factory;
    ComPtr<ID3D12Device> device;
    ComPtr<ID3D12CommandQueue> queue;
    ComPtr<IDXGISwapChain3> swapChain;
    ComPtr<ID3D12DescriptorHeap> rtvHeap, dsvHeap;
    ComPtr<ID3D12Resource> buffers[kBuffers], depth;
    ComPtr<ID3D12CommandAllocator> allocators[kFramesInFlight];
    ComPtr<ID3D12GraphicsCommandList> list;
    ComPtr<ID3D12Fence> fence;
    HANDLE event = nullptr;
    UINT64 slotValues[kFramesInFlight] = {};
    UINT64 nextValue = 1;
    UINT slot = 0;
    UINT rtvStride = 0;

    bool Create(HWND hwnd)
    {
        if (FAILED(CreateDXGIFactory2(0, IID_PPV_ARGS(&factory))) ||
            FAILED(D3D12CreateDevice(nullptr, D3D_FEATURE_LEVEL_11_0, IID_PPV_ARGS(&device))))
            return false;
        D3D12_COMMAND_QUEUE_DESC qd = {};
        if (FAILED(device->CreateCommandQueue(&qd, IID_PPV_ARGS(&queue))))
            return false;
        DXGI_SWAP_CHAIN_DESC sc = SwapChainDesc(hwnd);
        ComPtr<IDXGISwapChain> chain;
        if (FAILED(factory->CreateSwapChain(queue.Get(), &sc, &chain)) || FAILED(chain.As(&swapChain)))
            return false;
        if (FAILED(
                LxD3D12Test::CreateDescriptorHeap(device.Get(), D3D12_DESCRIPTOR_HEAP_TYPE_RTV, kBuffers, &rtvHeap)) ||
            FAILED(LxD3D12Test::CreateDescriptorHeap(device.Get(), D3D12_DESCRIPTOR_HEAP_TYPE_DSV, 1, &dsvHeap)))
            return false;
        rtvStride = device->GetDescriptorHandleIncrementSize(D3D12_DESCRIPTOR_HEAP_TYPE_RTV);
        for (UINT i = 0; i < kBuffers; ++i)
        {
            if (FAILED(swapChain->GetBuffer(i, IID_PPV_ARGS(&buffers[i]))))
                return false;
            device->CreateRenderTargetView(buffers[i].Get(), nullptr, Rtv(i));
        }
        D3D12_CLEAR_VALUE clear = {DXGI_FORMAT_D32_FLOAT, {}};
        clear.DepthStencil.Depth = 1.0f;
        if (FAILED(LxD3D12Test::CreateTexture2D(device.Get(), DXGI_FORMAT_D32_FLOAT, kWidth, kHeight,
                                                D3D12_RESOURCE_FLAG_ALLOW_DEPTH_STENCIL,
                                                D3D12_RESOURCE_STATE_DEPTH_WRITE, &clear, &depth)))
            return false;
        device->CreateDepthStencilView(depth.Get(), nullptr, dsvHeap->GetCPUDescriptorHandleForHeapStart());
        for (UINT i = 0; i < kFramesInFlight; ++i)
            if (FAILED(device->CreateCommandAllocator(D3D12_COMMAND_LIST_TYPE_DIRECT, IID_PPV_ARGS(&allocators[i]))))
                return false;
        if (FAILED(device->CreateCommandList(0, D3D12_COMMAND_LIST_TYPE_DIRECT, allocators[0].Get(), nullptr,
                                             IID_PPV_ARGS(&list))) ||
            FAILED(list->Close()) || FAILED(device->CreateFence(0, D3D12_FENCE_FLAG_NONE, IID_PPV_ARGS(&fence))))
            return false;
        event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        return event != nullptr;
    }
    D3D12_CPU_DESCRIPTOR_HANDLE Rtv(UINT i) const
    {
        D3D12_CPU_DESCRIPTOR_HANDLE h = rtvHeap->GetCPUDescriptorHandleForHeapStart();
        h.ptr += SIZE_T(i) * rtvStride;
        return h;
    }
    void Wait(UINT64 value)
    {
        if (fence->GetCompletedValue() < value && SUCCEEDED(fence->SetEventOnCompletion(value, event)))
            WaitForSingleObject(event, INFINITE);
    }
    void Frame()
    {
        slot = (slot + 1) % kFramesInFlight;
        Wait(slotValues[slot]);
        allocators[slot]->Reset();
        list->Reset(allocators[slot].Get(), nullptr);
        const UINT index = swapChain->GetCurrentBackBufferIndex();
        const D3D12_RESOURCE_BARRIER toTarget = LxD3D12TransitionBarrier(
            buffers[index].Get(), D3D12_RESOURCE_STATE_PRESENT, D3D12_RESOURCE_STATE_RENDER_TARGET);
        list->ResourceBarrier(1, &toTarget);
        const float color[4] = {0.2f, 0.4f, 0.6f, 1.0f};
        list->ClearRenderTargetView(Rtv(index), color, 0, nullptr);
        list->ClearDepthStencilView(dsvHeap->GetCPUDescriptorHandleForHeapStart(), D3D12_CLEAR_FLAG_DEPTH, 1.0f, 0, 0,
                                    nullptr);
        const D3D12_RESOURCE_BARRIER toPresent = LxD3D12TransitionBarrier(
            buffers[index].Get(), D3D12_RESOURCE_STATE_RENDER_TARGET, D3D12_RESOURCE_STATE_PRESENT);
        list->ResourceBarrier(1, &toPresent);
        list->Close();
        ID3D12CommandList* lists[] = {list.Get()};
        queue->ExecuteCommandLists(1, lists);
        swapChain->Present(0, 0);
        slotValues[slot] = nextValue;
        queue->Signal(fence.Get(), nextValue++);
    }
    void Finish()
    {
        queue->Signal(fence.Get(), nextValue);
        Wait(nextValue++);
    }
    ~RawLoop()
    {
        if (queue && fence)
            Finish();
        if (event)
            CloseHandle(event);
    }
};

// A pipeline, root signature and index buffer, so that every recorded draw is one the driver fully records.
struct DrawSetup
{
    ComPtr<ID3D12RootSignature> root;
    ComPtr<ID3D12PipelineState> pso;
    ComPtr<ID3D12Resource> indices;
    D3D12_INDEX_BUFFER_VIEW view = {};

    bool Create(ID3D12Device* device)
    {
        const char* source = "float4 VSMain(uint id : SV_VertexID) : SV_Position { return float4(id & 1, id >> 1, "
                             "0.5, 1); }\nfloat4 PSMain() : SV_Target { return float4(1, 0, 0, 1); }\n";
        std::string errors;
        ComPtr<ID3DBlob> vs = LxD3D12Test::CompileShader(source, "VSMain", "vs_5_0", &errors);
        ComPtr<ID3DBlob> ps = LxD3D12Test::CompileShader(source, "PSMain", "ps_5_0", &errors);
        const D3D12_ROOT_SIGNATURE_DESC rootDesc = {0, nullptr, 0, nullptr, D3D12_ROOT_SIGNATURE_FLAG_NONE};
        ComPtr<ID3DBlob> blob, rootErrors;
        if (!vs || !ps ||
            FAILED(D3D12SerializeRootSignature(&rootDesc, D3D_ROOT_SIGNATURE_VERSION_1_0, &blob, &rootErrors)) ||
            FAILED(
                device->CreateRootSignature(0, blob->GetBufferPointer(), blob->GetBufferSize(), IID_PPV_ARGS(&root))))
            return false;
        D3D12_GRAPHICS_PIPELINE_STATE_DESC desc = {};
        desc.pRootSignature = root.Get();
        desc.VS = {vs->GetBufferPointer(), vs->GetBufferSize()};
        desc.PS = {ps->GetBufferPointer(), ps->GetBufferSize()};
        desc.BlendState.RenderTarget[0].RenderTargetWriteMask = D3D12_COLOR_WRITE_ENABLE_ALL;
        desc.SampleMask = UINT_MAX;
        desc.RasterizerState.FillMode = D3D12_FILL_MODE_SOLID;
        desc.RasterizerState.CullMode = D3D12_CULL_MODE_NONE;
        desc.PrimitiveTopologyType = D3D12_PRIMITIVE_TOPOLOGY_TYPE_TRIANGLE;
        desc.NumRenderTargets = 1;
        desc.RTVFormats[0] = DXGI_FORMAT_R8G8B8A8_UNORM;
        desc.DSVFormat = DXGI_FORMAT_D32_FLOAT;
        desc.SampleDesc.Count = 1;
        if (FAILED(device->CreateGraphicsPipelineState(&desc, IID_PPV_ARGS(&pso))))
            return false;
        indices = LxD3D12Test::CreateBuffer(device, D3D12_HEAP_TYPE_UPLOAD, 64);
        if (!indices)
            return false;
        void* p = nullptr;
        if (FAILED(indices->Map(0, nullptr, &p)))
            return false;
        const unsigned short ids[3] = {0, 1, 2};
        std::memcpy(p, ids, sizeof(ids));
        indices->Unmap(0, nullptr);
        view = {indices->GetGPUVirtualAddress(), 64, DXGI_FORMAT_R16_UINT};
        return true;
    }
    // The same state on both sides, the shader-visible heaps included (the render manager binds them on every list
    // it makes current, as any program drawing with descriptor tables does).
    void Bind(ID3D12GraphicsCommandList* list, D3D12_CPU_DESCRIPTOR_HANDLE rtv, D3D12_CPU_DESCRIPTOR_HANDLE dsv,
              ID3D12DescriptorHeap* const* heaps)
    {
        list->SetDescriptorHeaps(2, heaps);
        list->SetPipelineState(pso.Get());
        list->SetGraphicsRootSignature(root.Get());
        list->IASetIndexBuffer(&view);
        list->OMSetRenderTargets(1, &rtv, FALSE, &dsv);
        const D3D12_VIEWPORT vp = {0, 0, float(kWidth), float(kHeight), 0, 1};
        const D3D12_RECT sc = {0, 0, LONG(kWidth), LONG(kHeight)};
        list->RSSetViewports(1, &vp);
        list->RSSetScissorRects(1, &sc);
    }
};

int Fail(const char* what)
{
    std::printf("FAILED: %s\n", what);
    return 1;
}
} // namespace

int main(int argc, char** argv)
{
    const int frames = argc > 1 ? std::atoi(argv[1]) : 30;
    const int draws = argc > 2 ? std::atoi(argv[2]) : 500;

    HWND rawWindow = MakeWindow(L"raw");
    HWND rmWindow = MakeWindow(L"render manager");
    if (!rawWindow || !rmWindow)
        return Fail("windows");
    RawLoop raw;
    if (!raw.Create(rawWindow))
        return Fail("raw device");
    LxD3D12RenderManager::CreationDesc desc;
    desc.swapChainDesc = SwapChainDesc(rmWindow);
    desc.framesInFlight = kFramesInFlight;
    desc.shaderResourceDescriptors = 16;
    desc.samplerDescriptors = 16;
    if (!LxD3D12RenderManager::Init(desc))
        return Fail("render manager");
    LxD3D12RenderManager& rm = *LxD3D12RenderManager::GetD3D12Ptr();
    rm.SetVerticalSync(false);
    rm.SetClearColor(0.2f, 0.4f, 0.6f, 1.0f);

    // --- frame loop ---------------------------------------------------------------------------------------------
    std::vector<double> rawFps, rmFps;
    for (int warm = 0; warm < 20; ++warm)
    {
        raw.Frame();
        rm.BeginScene();
        rm.Clear(true, true, false);
        rm.EndScene();
    }
    // Short rounds, alternating which side goes first: the machine's load drifts on the scale of seconds.
    const int frameRounds = 60;
    auto timeRaw = [&]
    {
        Raise(rawWindow);
        Pump();
        raw.Finish();
        const Clock::time_point t0 = Clock::now();
        for (int f = 0; f < frames; ++f)
            raw.Frame();
        raw.Finish();
        rawFps.push_back(frames / Seconds(t0, Clock::now()));
    };
    auto timeRm = [&]
    {
        Raise(rmWindow);
        Pump();
        rm.WaitOnExecution();
        const Clock::time_point t0 = Clock::now();
        for (int f = 0; f < frames; ++f)
        {
            rm.BeginScene();
            rm.Clear(true, true, false);
            rm.EndScene();
        }
        rm.WaitOnExecution();
        rmFps.push_back(frames / Seconds(t0, Clock::now()));
    };
    for (int r = 0; r < frameRounds; ++r)
    {
        if (r % 2 == 0)
        {
            timeRaw();
            timeRm();
        }
        else
        {
            timeRm();
            timeRaw();
        }
    }
    const double rawMedian = Median(rawFps), rmMedian = Median(rmFps);
    const double rawBest = *std::max_element(rawFps.begin(), rawFps.end());
    const double rmBest = *std::max_element(rmFps.begin(), rmFps.end());
    std::printf("frame loop (%ux%u, %u frames in flight, %d rounds of %d frames)\n", kWidth, kHeight, kFramesInFlight,
                frameRounds, frames);
    std::printf("  raw D3D12/DXGI      median %8.1f  best %8.1f frames/s\n", rawMedian, rawBest);
    std::printf("  render manager      median %8.1f  best %8.1f frames/s\n", rmMedian, rmBest);
    // Each round pair ran back to back: the median of the pair ratios cancels most of the load drift.
    std::vector<double> pairRatios;
    for (size_t i = 0; i < rawFps.size() && i < rmFps.size(); ++i)
        pairRatios.push_back(rmFps[i] / rawFps[i]);
    std::printf("  ratio rm/raw        median %8.3f  best %8.3f  median of pairs %6.3f\n", rmMedian / rawMedian,
                rmBest / rawBest, Median(pairRatios));

    // --- draw recording cost ------------------------------------------------------------------------------------
    // Both sides record into lists of the render manager's device that are never executed: only the CPU is timed.
    DrawSetup setup;
    if (!setup.Create(rm.GetDevice()))
        return Fail("draw pipeline");
    ComPtr<ID3D12CommandAllocator> rawAllocator;
    ComPtr<ID3D12GraphicsCommandList> rawList;
    if (FAILED(rm.GetDevice()->CreateCommandAllocator(D3D12_COMMAND_LIST_TYPE_DIRECT, IID_PPV_ARGS(&rawAllocator))) ||
        FAILED(rm.GetDevice()->CreateCommandList(0, D3D12_COMMAND_LIST_TYPE_DIRECT, rawAllocator.Get(), nullptr,
                                                 IID_PPV_ARGS(&rawList))))
        return Fail("raw list");
    rawList->Close();
    LxCountedPtr<LxCommandList> rmList = rm.CreateCommandList(LxCommandList::DIRECT, false);
    if (!rmList)
        return Fail("render manager list");
    rmList->Close();
    ID3D12DescriptorHeap* const heaps[2] = {rm.GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV),
                                            rm.GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER)};
    const D3D12_CPU_DESCRIPTOR_HANDLE rtv = rm.GetCurrentBackBufferView();
    const D3D12_CPU_DESCRIPTOR_HANDLE dsv = rm.GetDefaultDepthStencilView();

    // Short batches, the three kinds interleaved, each on a freshly reset list (the reset is not timed).
    std::vector<double> rawBoth, rawDrawOnly, rmDraw;
    const int batches = 120;
    for (int b = 0; b < batches + 3; ++b) // the first batches warm the driver's allocators up
    {
        rawAllocator->Reset();
        rawList->Reset(rawAllocator.Get(), nullptr);
        setup.Bind(rawList.Get(), rtv, dsv, heaps);
        Clock::time_point t0 = Clock::now();
        for (int d = 0; d < draws; ++d)
        {
            rawList->IASetPrimitiveTopology(D3D_PRIMITIVE_TOPOLOGY_TRIANGLELIST);
            rawList->DrawIndexedInstanced(3, 1, 0, 0, 0);
        }
        const double both = Seconds(t0, Clock::now()) / draws;
        rawList->Close();

        rawAllocator->Reset();
        rawList->Reset(rawAllocator.Get(), nullptr);
        setup.Bind(rawList.Get(), rtv, dsv, heaps);
        rawList->IASetPrimitiveTopology(D3D_PRIMITIVE_TOPOLOGY_TRIANGLELIST);
        t0 = Clock::now();
        for (int d = 0; d < draws; ++d)
            rawList->DrawIndexedInstanced(3, 1, 0, 0, 0);
        const double drawOnly = Seconds(t0, Clock::now()) / draws;
        rawList->Close();

        rmList->Reset();
        rm.SetCurrentCommandList(rmList);
        setup.Bind(rm.GetCurrentD3D12CommandList(), rtv, dsv, heaps);
        rm.GetFrameStats().Clear();
        t0 = Clock::now();
        for (int d = 0; d < draws; ++d)
            rm.DrawIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0, 0);
        const double viaRm = Seconds(t0, Clock::now()) / draws;
        rmList->Close();
        rm.SetCurrentCommandList(LxCountedPtr<LxCommandList>());
        if (rm.GetFrameStats().GetValue(LX_FRAME_STAT_TRIANGLES) != unsigned(draws))
            return Fail("statistics");
        if (b >= 3)
        {
            rawBoth.push_back(both);
            rawDrawOnly.push_back(drawOnly);
            rmDraw.push_back(viaRm);
        }
    }
    auto report = [](const char* what, const std::vector<double>& v)
    {
        std::printf("  %-20s median %7.1f  best %7.1f ns/draw\n", what, Median(v) * 1e9,
                    *std::min_element(v.begin(), v.end()) * 1e9);
    };
    std::printf("DrawIndexed recording (%d batches of %d draws)\n", batches, draws);
    report("raw topology + draw", rawBoth);
    report("raw draw only", rawDrawOnly);
    report("render manager", rmDraw);
    std::printf("  ratio rm/raw (topology + draw)  median %6.3f  best %6.3f\n", Median(rmDraw) / Median(rawBoth),
                *std::min_element(rmDraw.begin(), rmDraw.end()) / *std::min_element(rawBoth.begin(), rawBoth.end()));
    std::printf("  ratio rm/raw (draw only)        median %6.3f  best %6.3f\n", Median(rmDraw) / Median(rawDrawOnly),
                *std::min_element(rmDraw.begin(), rmDraw.end()) /
                    *std::min_element(rawDrawOnly.begin(), rawDrawOnly.end()));

    std::fflush(stdout);
    rawList.Reset();
    rawAllocator.Reset();
    setup = DrawSetup();
    rmList = LxCountedPtr<LxCommandList>();
    LxRenderManager::ShutDown();
    DestroyWindow(rawWindow);
    DestroyWindow(rmWindow);
    return 0;
}
