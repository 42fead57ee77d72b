#include "RenderManager/D3D12/LxD3D12RenderManager.h"
#include "RenderManager/D3D12/LxD3D12Barriers.h"

#include "Common/LxImageData2D.h"
#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxDescriptorHeap.h"
#include "GPUResourceManager/LxGPUBuffer.h"
#include "GPUResourceManager/LxGPUReadback.h"
#include "GPUResourceManager/LxMappedSurface.h"
#include "RenderManager/D3D12/LxD3D12BackBufferView.h"
#include "RenderManager/D3D12/LxD3D12CommandList.h"
#include "RenderManager/D3D12/LxD3D12CommandQueue.h"
#include "RenderManager/D3D12/LxD3D12FrameGPUTimers.h"

#include <d3d12sdklayers.h>

#include <cstdio>
#include <utility>
#include <vector>

using Microsoft::WRL::ComPtr;

LxD3D12RenderManager::BufferResolver LxD3D12RenderManager::ms_pfnBufferResolver = nullptr;
LxD3D12RenderManager::ViewResolver LxD3D12RenderManager::ms_pfnViewResolver = nullptr;
LxD3D12RenderManager::ViewTransition LxD3D12RenderManager::ms_pfnViewTransition = nullptr;

namespace
{
const unsigned kNoTopology = ~0u;
const unsigned kListKinds = 4; // direct, bundle, compute, copy: the platform's list type values

// The four heaps, in the order they are created (and their creation messages).
const D3D12_DESCRIPTOR_HEAP_TYPE kHeapTypes[4] = {D3D12_DESCRIPTOR_HEAP_TYPE_RTV, D3D12_DESCRIPTOR_HEAP_TYPE_DSV,
                                                  D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV,
                                                  D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER};
const char* const kHeapErrors[4] = {"Error creating render target view heap.",
                                    "Error creating depth stencil view heap.",
                                    "Error creating shader resource view heap.", "Error creating sampler heap."};

unsigned HeapIndex(D3D12_DESCRIPTOR_HEAP_TYPE type)
{
    switch (type)
    {
    case D3D12_DESCRIPTOR_HEAP_TYPE_RTV:
        return 0;
    case D3D12_DESCRIPTOR_HEAP_TYPE_DSV:
        return 1;
    case D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV:
        return 2;
    case D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER:
        return 3;
    default:
        return 4;
    }
}

const char* FeatureLevelName(D3D_FEATURE_LEVEL level)
{
    switch (level)
    {
    case D3D_FEATURE_LEVEL_12_1:
        return "D3D_FEATURE_LEVEL_12_1";
    case D3D_FEATURE_LEVEL_12_0:
        return "D3D_FEATURE_LEVEL_12_0";
    case D3D_FEATURE_LEVEL_11_1:
        return "D3D_FEATURE_LEVEL_11_1";
    case D3D_FEATURE_LEVEL_11_0:
        return "D3D_FEATURE_LEVEL_11_0";
    case D3D_FEATURE_LEVEL_10_1:
        return "D3D_FEATURE_LEVEL_10_1";
    case D3D_FEATURE_LEVEL_10_0:
        return "D3D_FEATURE_LEVEL_10_0";
    default:
        return "D3D_FEATURE_LEVEL_UNKNOWN";
    }
}

bool HasStencil(DXGI_FORMAT format)
{
    return format == DXGI_FORMAT_D24_UNORM_S8_UINT || format == DXGI_FORMAT_D32_FLOAT_S8X24_UINT;
}

// The Win32 thread-local slot of the worker index; every thread starts with 0 (worker 0) in it.
const DWORD g_workerSlot = TlsAlloc();
// Slots below 64 sit in the thread environment block itself (TlsSlots, at 0x1480 on x64): read with one load.
const DWORD kTebSlots = 64;
const unsigned kTebTlsSlotsOffset = 0x1480;

LxRenderManager* CreateD3D12RenderManager()
{
    return new LxD3D12RenderManager();
}
} // namespace

// Per worker: the raw current list (the draw path reads it without touching the counted pointer), the topology last
// set on it, its targets, viewport and scissor, the list it reuses every frame and its allocator pools.
struct LxD3D12RenderManager::Impl
{
    struct AllocatorPool
    {
        std::vector<ComPtr<ID3D12CommandAllocator>> allocators;
        unsigned used = 0;
    };
    struct WorkerState
    {
        ID3D12GraphicsCommandList* list = nullptr;
        LxCommandList::Type listType = LxCommandList::DIRECT;
        unsigned topology = kNoTopology;
        unsigned primitiveKey = kNoTopology; // primitive type and tessellation flag of the last draw
        // Targets, viewport, scissor and heaps not yet bound on the list: bound before its first draw or when the
        // list is handed out raw, so a list that only clears and transitions (the frame's own) never pays for them.
        bool stateDirty = false;
        unsigned targetCount = 0;
        D3D12_CPU_DESCRIPTOR_HANDLE targets[D3D12_SIMULTANEOUS_RENDER_TARGET_COUNT] = {};
        D3D12_CPU_DESCRIPTOR_HANDLE depthStencil = {};
        bool depthHasStencil = false;
        D3D12_VIEWPORT viewport = {};
        D3D12_RECT scissor = {};
        D3D12_CPU_DESCRIPTOR_HANDLE backBuffer = {};
        LxCountedPtr<LxCommandList> frameList;
        AllocatorPool pools[kMaxFramesInFlight][kListKinds];
    };
    struct Heap
    {
        ComPtr<ID3D12DescriptorHeap> heap;
        LxDescriptorHeap* slots = nullptr;
        UINT increment = 0;
    };

    WorkerState workers[kMaxWorkers];
    Heap heaps[4];
    std::vector<ComPtr<ID3D12Resource>> backBuffers;
    std::vector<LxCountedPtr<LxGPURenderableResourceView>> backBufferViews;
    D3D12_CPU_DESCRIPTOR_HANDLE depthView = {};
    ID3D12DescriptorHeap* shaderVisible[2] = {nullptr, nullptr}; // handed over by the resource manager; not owned
    ComPtr<ID3D12CommandSignature> drawSignature, drawIndexedSignature, dispatchSignature;
    LxD3D12FrameGPUTimers timers;
    bool timersAvailable = false;
    LxD3D12CommandQueue* frameQueue = nullptr;
    // The list open between Initialize and the first frame (load-time work); submitted and waited for when the
    // first frame begins.
    LxCountedPtr<LxCommandList> setupList;
};

// --- singleton and creation ------------------------------------------------------------------------------------------

bool LxD3D12RenderManager::Init(const CreationDesc& desc)
{
    LxRenderManager::SetCreateFunction(&CreateD3D12RenderManager);
    if (GetD3D12Ptr() == nullptr)
    {
        LxRenderManager::ShutDown(); // a device-less instance made before the window
    }
    LxD3D12RenderManager* manager = static_cast<LxD3D12RenderManager*>(LxRenderManager::GetPtr());
    return manager->Initialize(desc);
}

LxD3D12RenderManager* LxD3D12RenderManager::GetD3D12Ptr()
{
    return dynamic_cast<LxD3D12RenderManager*>(LxRenderManager::GetPtr());
}

void LxD3D12RenderManager::SetBufferResolver(BufferResolver resolver)
{
    ms_pfnBufferResolver = resolver;
}

void LxD3D12RenderManager::SetViewResolver(ViewResolver resolver)
{
    ms_pfnViewResolver = resolver;
}

void LxD3D12RenderManager::SetViewTransition(ViewTransition transition)
{
    ms_pfnViewTransition = transition;
}

LxD3D12RenderManager::LxD3D12RenderManager() : m_pImpl(new Impl()) {}

LxD3D12RenderManager::~LxD3D12RenderManager()
{
    ReleaseAll();
    delete m_pImpl;
    delete m_pFrameFence;
}

bool LxD3D12RenderManager::Initialize(const CreationDesc& desc)
{
    ReleaseAll();
    m_desc = desc;
    if (m_desc.framesInFlight == 0 || m_desc.framesInFlight > kMaxFramesInFlight)
    {
        LX_WARNING("LxD3D12RenderManager::Initialize.  %u frames in flight asked, %u used.", m_desc.framesInFlight,
                   m_desc.framesInFlight == 0 ? 1u : kMaxFramesInFlight);
        m_desc.framesInFlight = m_desc.framesInFlight == 0 ? 1 : kMaxFramesInFlight;
    }
    m_desc.factory = nullptr;
    m_desc.adapter = nullptr;

    if (desc.debugLayer)
    {
        ComPtr<ID3D12Debug> debug;
        if (SUCCEEDED(D3D12GetDebugInterface(IID_PPV_ARGS(&debug))))
        {
            debug->EnableDebugLayer();
            LX_MESSAGE("Using D3D12 debug layer.");
        }
        else
        {
            LX_WARNING("LxD3D12RenderManager::Initialize.  The D3D12 debug layer is not available.");
        }
    }

    if (desc.factory)
    {
        m_factory = desc.factory;
    }
    else if (FAILED(CreateDXGIFactory1(IID_PPV_ARGS(&m_factory))))
    {
        LX_ERROR("LxD3D12RenderManager::Initialize.  CreateDXGIFactory1 failed.");
        return false;
    }
    ComPtr<IDXGIAdapter> adapter = desc.adapter;
    if (desc.driverType == D3D_DRIVER_TYPE_WARP)
    {
        ComPtr<IDXGIFactory4> factory4;
        if (SUCCEEDED(m_factory.As(&factory4)))
        {
            factory4->EnumWarpAdapter(IID_PPV_ARGS(adapter.ReleaseAndGetAddressOf()));
        }
    }

    // Device: the highest of 12_1, 12_0 and 11_0 that the adapter gives, not below the level asked for.
    const D3D_FEATURE_LEVEL levels[] = {D3D_FEATURE_LEVEL_12_1, D3D_FEATURE_LEVEL_12_0, D3D_FEATURE_LEVEL_11_0};
    HRESULT hr = E_FAIL;
    for (D3D_FEATURE_LEVEL level : levels)
    {
        if (level < desc.minFeatureLevel)
        {
            break;
        }
        hr = D3D12CreateDevice(adapter.Get(), level, IID_PPV_ARGS(&m_device));
        if (SUCCEEDED(hr))
        {
            m_featureLevel = level;
            break;
        }
    }
    if (!m_device)
    {
        char arguments[256];
        std::snprintf(arguments, sizeof(arguments), "adapter %s, minimum feature level %s, driver %s",
                      adapter ? "given" : "default", FeatureLevelName(desc.minFeatureLevel),
                      desc.driverType == D3D_DRIVER_TYPE_WARP ? "WARP" : "hardware");
        LX_ERROR("Error while trying to create D3D12 device!\nArguments:%s\n", arguments);
        ReleaseAll();
        return false;
    }
    LX_MESSAGE("Using feature level %s", FeatureLevelName(m_featureLevel));

    D3D12_COMMAND_QUEUE_DESC queueDesc = {};
    queueDesc.Type = D3D12_COMMAND_LIST_TYPE_DIRECT;
    if (FAILED(m_device->CreateCommandQueue(&queueDesc, IID_PPV_ARGS(&m_queue))))
    {
        LX_ERROR("Error while trying to create D3D12 command queue!\n");
        ReleaseAll();
        return false;
    }
    LxD3D12Fence* fence = LxD3D12Fence::Create(m_device.Get(), m_queue.Get(), 0);
    m_pImpl->frameQueue = new LxD3D12CommandQueue(LxCommandList::DIRECT, m_queue.Get());
    if (fence == nullptr || !InitializeFrames(m_desc.framesInFlight, fence, m_pImpl->frameQueue))
    {
        delete fence;
        ReleaseAll();
        return false;
    }
    delete m_pFrameFence; // the ring now runs on the new fence
    m_pFrameFence = fence;

    // Swap chain on the frame queue.
    DXGI_SWAP_CHAIN_DESC scDesc = desc.swapChainDesc;
    ComPtr<IDXGISwapChain> swapChain;
    hr = m_factory->CreateSwapChain(m_queue.Get(), &scDesc, &swapChain);
    if (FAILED(hr) || FAILED(swapChain.As(&m_swapChain)))
    {
        char arguments[256];
        std::snprintf(arguments, sizeof(arguments),
                      "%ux%u, format %d, %u buffers, swap effect %d, flags 0x%X, windowed %d", scDesc.BufferDesc.Width,
                      scDesc.BufferDesc.Height, static_cast<int>(scDesc.BufferDesc.Format), scDesc.BufferCount,
                      static_cast<int>(scDesc.SwapEffect), scDesc.Flags, static_cast<int>(scDesc.Windowed));
        LX_ERROR("Error while trying to create D3D12 swap chain!\nArguments:%s\n", arguments);
        ReleaseAll();
        return false;
    }
    // The swap chain may have filled in a zero size from the window.
    m_swapChain->GetDesc(&m_desc.swapChainDesc);
    m_nBackBufferCount = m_desc.swapChainDesc.BufferCount;

    // The four heaps; the render-target heap starts with the back buffers, the depth heap with the default depth.
    const unsigned counts[4] = {desc.renderTargetDescriptors, desc.depthStencilDescriptors,
                                desc.shaderResourceDescriptors, desc.samplerDescriptors};
    const unsigned reserved[4] = {m_nBackBufferCount, desc.depthStencilFormat != DXGI_FORMAT_UNKNOWN ? 1u : 0u, 0, 0};
    // Sizes are checked before any heap is made: a shader-visible heap can take seconds to create on some drivers.
    for (unsigned i = 0; i < 4; ++i)
    {
        if (counts[i] == 0 || counts[i] < reserved[i])
        {
            LX_ERROR("%s", kHeapErrors[i]);
            ReleaseAll();
            return false;
        }
    }
    for (unsigned i = 0; i < 4; ++i)
    {
        D3D12_DESCRIPTOR_HEAP_DESC heapDesc = {};
        heapDesc.Type = kHeapTypes[i];
        heapDesc.NumDescriptors = counts[i];
        heapDesc.Flags = i >= 2 ? D3D12_DESCRIPTOR_HEAP_FLAG_SHADER_VISIBLE : D3D12_DESCRIPTOR_HEAP_FLAG_NONE;
        Impl::Heap& heap = m_pImpl->heaps[i];
        if (FAILED(m_device->CreateDescriptorHeap(&heapDesc, IID_PPV_ARGS(&heap.heap))))
        {
            LX_ERROR("%s", kHeapErrors[i]);
            ReleaseAll();
            return false;
        }
        heap.increment = m_device->GetDescriptorHandleIncrementSize(kHeapTypes[i]);
        heap.slots = new LxDescriptorHeap(counts[i]);
        if (reserved[i] > 0)
        {
            heap.slots->Allocate(reserved[i]); // slots 0 .. reserved - 1 of a fresh heap
        }
        m_frameRing.AddFrameEndListener(heap.slots);
    }

    // Back buffers and their views.
    const DXGI_FORMAT viewFormat = desc.backBufferViewFormat;
    for (unsigned i = 0; i < m_nBackBufferCount; ++i)
    {
        ComPtr<ID3D12Resource> buffer;
        if (FAILED(m_swapChain->GetBuffer(i, IID_PPV_ARGS(&buffer))))
        {
            LX_ERROR("LxD3D12RenderManager::Initialize.  Back buffer %u could not be obtained.", i);
            ReleaseAll();
            return false;
        }
        const D3D12_CPU_DESCRIPTOR_HANDLE handle = GetCPUDescriptorHandle(D3D12_DESCRIPTOR_HEAP_TYPE_RTV, i);
        D3D12_RENDER_TARGET_VIEW_DESC rtvDesc = {};
        rtvDesc.Format = viewFormat;
        rtvDesc.ViewDimension = D3D12_RTV_DIMENSION_TEXTURE2D;
        m_device->CreateRenderTargetView(buffer.Get(), viewFormat == DXGI_FORMAT_UNKNOWN ? nullptr : &rtvDesc, handle);
        m_pImpl->backBufferViews.push_back(
            LxCountedPtr<LxGPURenderableResourceView>(new LxD3D12BackBufferView(i, buffer.Get(), handle)));
        m_pImpl->backBuffers.push_back(buffer);
    }

    // The default depth buffer.
    if (desc.depthStencilFormat != DXGI_FORMAT_UNKNOWN)
    {
        D3D12_HEAP_PROPERTIES heap = {};
        heap.Type = D3D12_HEAP_TYPE_DEFAULT;
        D3D12_RESOURCE_DESC depthDesc = {};
        depthDesc.Dimension = D3D12_RESOURCE_DIMENSION_TEXTURE2D;
        depthDesc.Width = GetBackBufferWidth();
        depthDesc.Height = GetBackBufferHeight();
        depthDesc.DepthOrArraySize = depthDesc.MipLevels = depthDesc.SampleDesc.Count = 1;
        depthDesc.Format = desc.depthStencilFormat;
        depthDesc.Flags = D3D12_RESOURCE_FLAG_ALLOW_DEPTH_STENCIL;
        D3D12_CLEAR_VALUE clear = {};
        clear.Format = desc.depthStencilFormat;
        clear.DepthStencil.Depth = 1.0f;
        if (FAILED(m_device->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &depthDesc,
                                                     D3D12_RESOURCE_STATE_DEPTH_WRITE, &clear,
                                                     IID_PPV_ARGS(&m_depthBuffer))))
        {
            LX_ERROR("LxD3D12RenderManager::Initialize.  The default depth buffer could not be created.");
            ReleaseAll();
            return false;
        }
        m_pImpl->depthView = GetCPUDescriptorHandle(D3D12_DESCRIPTOR_HEAP_TYPE_DSV, 0);
        m_device->CreateDepthStencilView(m_depthBuffer.Get(), nullptr, m_pImpl->depthView);
    }

    if (!CreateIndirectCommandSignature())
    {
        ReleaseAll();
        return false;
    }
    m_pImpl->timersAvailable =
        m_pImpl->timers.Initialize(m_device.Get(), m_queue.Get(), m_desc.framesInFlight, kMaxGPUTimers);

    if (desc.fullScreen && FAILED(m_swapChain->SetFullscreenState(TRUE, nullptr)))
    {
        LX_WARNING("LxD3D12RenderManager::Initialize.  The swap chain could not go full screen.");
    }
    APIUpdateBackBuffers();

    // Load-time work records on the setup list until the first frame.
    ComPtr<ID3D12CommandAllocator> allocator;
    ComPtr<ID3D12GraphicsCommandList> list;
    if (FAILED(m_device->CreateCommandAllocator(D3D12_COMMAND_LIST_TYPE_DIRECT, IID_PPV_ARGS(&allocator))) ||
        FAILED(m_device->CreateCommandList(0, D3D12_COMMAND_LIST_TYPE_DIRECT, allocator.Get(), nullptr,
                                           IID_PPV_ARGS(&list))))
    {
        LX_ERROR("LxD3D12RenderManager::Initialize.  The setup command list could not be created.");
        ReleaseAll();
        return false;
    }
    m_pImpl->setupList =
        LxCountedPtr<LxCommandList>(new LxD3D12CommandList(LxCommandList::DIRECT, list.Get(), allocator.Get(), this));
    for (unsigned w = 0; w < kMaxWorkers; ++w)
    {
        Impl::WorkerState& ws = m_pImpl->workers[w];
        ws.targetCount = 1;
        ws.targets[0] = ws.backBuffer;
        ws.depthStencil = m_pImpl->depthView;
        ws.depthHasStencil = HasStencil(desc.depthStencilFormat);
        ws.viewport = {0.0f, 0.0f, float(GetBackBufferWidth()), float(GetBackBufferHeight()), 0.0f, 1.0f};
        ws.scissor = {0, 0, LONG(GetBackBufferWidth()), LONG(GetBackBufferHeight())};
    }
    SetCurrentCommandList(m_pImpl->setupList);
    return true;
}

void LxD3D12RenderManager::Release()
{
    ReleaseAll();
}

void LxD3D12RenderManager::ReleaseAll()
{
    if (m_swapChain)
    {
        BOOL fullScreen = FALSE;
        if (FAILED(m_swapChain->GetFullscreenState(&fullScreen, nullptr)))
        {
            LX_ERROR("Unable to get swap chain's full screen state!");
        }
        else if (fullScreen && FAILED(m_swapChain->SetFullscreenState(FALSE, nullptr)))
        {
            LX_ERROR("Unable to set swap chain's full screen state prior to shutting down!");
        }
    }
    // Nothing the GPU may still read is released under it.
    if (m_device && m_pFrameFence && m_frameRing.IsInitialized())
    {
        m_frameRing.Flush();
    }
    for (unsigned w = 0; w < kMaxWorkers; ++w)
    {
        m_workers[w].currentList = LxCountedPtr<LxCommandList>();
        m_workers[w].backBuffer = LxCountedPtr<LxGPURenderableResourceView>();
        {
            LxMutex::ScopedLock lock(m_workers[w].listLock);
            m_workers[w].closedLists.Clear();
        }
        Impl::WorkerState& ws = m_pImpl->workers[w];
        ws = Impl::WorkerState();
    }
    m_renderTargets.Clear();
    m_depthStencil = LxCountedPtr<LxGPUDepthStencilResourceView>();
    m_pImpl->setupList = LxCountedPtr<LxCommandList>();
    m_pImpl->shaderVisible[0] = m_pImpl->shaderVisible[1] = nullptr;
    for (Impl::Heap& heap : m_pImpl->heaps)
    {
        if (heap.slots)
        {
            m_frameRing.RemoveFrameEndListener(heap.slots);
            delete heap.slots;
        }
        heap = Impl::Heap();
    }
    m_pImpl->backBufferViews.clear();
    m_pImpl->backBuffers.clear();
    m_pImpl->drawSignature.Reset();
    m_pImpl->drawIndexedSignature.Reset();
    m_pImpl->dispatchSignature.Reset();
    m_pImpl->timers.Release();
    m_pImpl->timersAvailable = false;
    m_depthBuffer.Reset();
    m_swapChain.Reset();
    // The frame ring keeps pointing at the fence (it has no way back to uninitialised), so the fence lives on until
    // the next Initialize or the destructor; the frame hooks check IsInitialized.
    m_pFrameQueue = nullptr;
    delete m_pImpl->frameQueue;
    m_pImpl->frameQueue = nullptr;
    m_queue.Reset();
    m_device.Reset();
    m_factory.Reset();
    m_nBackBufferCount = 0;
    m_nBackBufferIndex = 0;
}

// --- accessors -------------------------------------------------------------------------------------------------------

ID3D12DescriptorHeap* LxD3D12RenderManager::GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE type) const
{
    const unsigned i = HeapIndex(type);
    return i < 4 ? m_pImpl->heaps[i].heap.Get() : nullptr;
}

LxDescriptorHeap* LxD3D12RenderManager::GetDescriptorAllocator(D3D12_DESCRIPTOR_HEAP_TYPE type) const
{
    const unsigned i = HeapIndex(type);
    return i < 4 ? m_pImpl->heaps[i].slots : nullptr;
}

void LxD3D12RenderManager::SetShaderVisibleHeaps(ID3D12DescriptorHeap* shaderResources, ID3D12DescriptorHeap* samplers)
{
    m_pImpl->shaderVisible[0] = shaderResources;
    m_pImpl->shaderVisible[1] = samplers;
}

D3D12_CPU_DESCRIPTOR_HANDLE LxD3D12RenderManager::GetCPUDescriptorHandle(D3D12_DESCRIPTOR_HEAP_TYPE type,
                                                                         unsigned slot) const
{
    D3D12_CPU_DESCRIPTOR_HANDLE handle = {};
    const unsigned i = HeapIndex(type);
    if (i < 4 && m_pImpl->heaps[i].heap)
    {
        handle = m_pImpl->heaps[i].heap->GetCPUDescriptorHandleForHeapStart();
        handle.ptr += SIZE_T(slot) * m_pImpl->heaps[i].increment;
    }
    return handle;
}

D3D12_GPU_DESCRIPTOR_HANDLE LxD3D12RenderManager::GetGPUDescriptorHandle(D3D12_DESCRIPTOR_HEAP_TYPE type,
                                                                         unsigned slot) const
{
    D3D12_GPU_DESCRIPTOR_HANDLE handle = {};
    const unsigned i = HeapIndex(type);
    // Only the shader-visible heaps have GPU handles.
    if (i >= 2 && i < 4 && m_pImpl->heaps[i].heap)
    {
        handle = m_pImpl->heaps[i].heap->GetGPUDescriptorHandleForHeapStart();
        handle.ptr += UINT64(slot) * m_pImpl->heaps[i].increment;
    }
    return handle;
}

ID3D12GraphicsCommandList* LxD3D12RenderManager::GetCurrentD3D12CommandList()
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    if (ws.stateDirty && ws.list) // between frames there is no list (and nothing to bind)
    {
        ApplyWorkerState(ws.list);
    }
    return ws.list;
}

ID3D12Resource* LxD3D12RenderManager::GetCurrentBackBuffer() const
{
    return m_nBackBufferIndex < m_pImpl->backBuffers.size() ? m_pImpl->backBuffers[m_nBackBufferIndex].Get() : nullptr;
}

D3D12_CPU_DESCRIPTOR_HANDLE LxD3D12RenderManager::GetCurrentBackBufferView() const
{
    return GetCPUDescriptorHandle(D3D12_DESCRIPTOR_HEAP_TYPE_RTV, m_nBackBufferIndex);
}

D3D12_CPU_DESCRIPTOR_HANDLE LxD3D12RenderManager::GetDefaultDepthStencilView() const
{
    return m_pImpl->depthView;
}

// --- command lists ---------------------------------------------------------------------------------------------------

ID3D12CommandAllocator* LxD3D12RenderManager::TakeFrameAllocator(D3D12_COMMAND_LIST_TYPE type)
{
    if (!m_device || unsigned(type) >= kListKinds)
    {
        LX_ERROR("LxD3D12RenderManager::TakeFrameAllocator.  No device, or no allocator kind %d.", int(type));
        return nullptr;
    }
    Impl::AllocatorPool& pool = m_pImpl->workers[GetWorkerIndex()].pools[m_frameRing.GetCurrentSlot()][type];
    if (pool.used < pool.allocators.size())
    {
        return pool.allocators[pool.used++].Get();
    }
    ComPtr<ID3D12CommandAllocator> allocator;
    if (FAILED(m_device->CreateCommandAllocator(type, IID_PPV_ARGS(&allocator))))
    {
        LX_ERROR("LxD3D12RenderManager::TakeFrameAllocator.  CreateCommandAllocator failed.");
        return nullptr;
    }
    pool.allocators.push_back(allocator);
    ++pool.used;
    return allocator.Get();
}

LxCommandList* LxD3D12RenderManager::APICreateCommandList(LxCommandList::Type type, bool forCurrentFrame)
{
    if (!m_device || unsigned(type) >= kListKinds)
    {
        LX_ERROR("LxD3D12RenderManager::CreateCommandList.  No device, or no list kind %u.", unsigned(type));
        return nullptr;
    }
    const D3D12_COMMAND_LIST_TYPE d3dType = LxD3D12CommandList::ToD3D12Type(type);
    ComPtr<ID3D12CommandAllocator> own;
    ID3D12CommandAllocator* allocator = nullptr;
    if (forCurrentFrame)
    {
        allocator = TakeFrameAllocator(d3dType);
    }
    else if (SUCCEEDED(m_device->CreateCommandAllocator(d3dType, IID_PPV_ARGS(&own))))
    {
        allocator = own.Get();
    }
    ComPtr<ID3D12GraphicsCommandList> list;
    if (allocator == nullptr ||
        FAILED(m_device->CreateCommandList(0, d3dType, allocator, nullptr, IID_PPV_ARGS(&list))))
    {
        LX_ERROR("LxD3D12RenderManager::CreateCommandList.  The command list could not be created.");
        return nullptr;
    }
    return new LxD3D12CommandList(type, list.Get(), own.Get(), this);
}

void LxD3D12RenderManager::SetCurrentCommandList(LxCountedPtr<LxCommandList> list)
{
    LxRenderManager::SetCurrentCommandList(list);
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    ws.list = list ? static_cast<LxD3D12CommandList*>(list.Get())->GetD3D12CommandList() : nullptr;
    ws.listType = list ? list->GetType() : LxCommandList::DIRECT;
    ws.topology = kNoTopology;
    ws.primitiveKey = kNoTopology;
    if (list && !list->IsClosed() && list->GetType() == LxCommandList::DIRECT)
    {
        ws.stateDirty = true;
    }
    else
    {
        ws.stateDirty = false;
    }
}

void LxD3D12RenderManager::ApplyWorkerState(ID3D12GraphicsCommandList* list)
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    ws.stateDirty = false;
    ID3D12DescriptorHeap* heaps[2] = {
        m_pImpl->shaderVisible[0] ? m_pImpl->shaderVisible[0] : m_pImpl->heaps[2].heap.Get(),
        m_pImpl->shaderVisible[1] ? m_pImpl->shaderVisible[1] : m_pImpl->heaps[3].heap.Get()};
    if (heaps[0] && heaps[1])
    {
        list->SetDescriptorHeaps(2, heaps);
    }
    list->OMSetRenderTargets(ws.targetCount, ws.targets, FALSE, ws.depthStencil.ptr ? &ws.depthStencil : nullptr);
    list->RSSetViewports(1, &ws.viewport);
    list->RSSetScissorRects(1, &ws.scissor);
}

bool LxD3D12RenderManager::OpenFrameList()
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    if (!ws.frameList)
    {
        ws.frameList = CreateCommandList(LxCommandList::DIRECT, true);
        if (!ws.frameList)
        {
            return false;
        }
    }
    else if (!ws.frameList->Reset())
    {
        return false;
    }
    SetCurrentCommandList(ws.frameList);
    return true;
}

ID3D12GraphicsCommandList* LxD3D12RenderManager::RecordingList(bool bindState)
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    if (ws.list == nullptr)
    {
        LX_ERROR("LxD3D12RenderManager.  Worker %d has no current command list to record on.", GetWorkerIndex());
    }
    else if (bindState && ws.stateDirty)
    {
        ApplyWorkerState(ws.list);
    }
    return ws.list;
}

bool LxD3D12RenderManager::APIExecuteBundle(LxCommandList* bundle)
{
    ID3D12GraphicsCommandList* list = RecordingList();
    if (list == nullptr)
    {
        return false;
    }
    if (!bundle->IsClosed() && !bundle->Close())
    {
        return false;
    }
    list->ExecuteBundle(static_cast<LxD3D12CommandList*>(bundle)->GetD3D12CommandList());
    // What the bundle set (pipeline, topology) stays set on the calling list.
    m_pImpl->workers[GetWorkerIndex()].topology = kNoTopology;
    m_pImpl->workers[GetWorkerIndex()].primitiveKey = kNoTopology;
    return true;
}

LxCommandQueue* LxD3D12RenderManager::APICreateCommandQueue(LxCommandList::Type type)
{
    if (!m_device)
    {
        LX_ERROR("LxD3D12RenderManager::CreateCommandQueue.  No device.");
        return nullptr;
    }
    D3D12_COMMAND_QUEUE_DESC desc = {};
    desc.Type = LxD3D12CommandList::ToD3D12Type(type);
    ComPtr<ID3D12CommandQueue> queue;
    if (FAILED(m_device->CreateCommandQueue(&desc, IID_PPV_ARGS(&queue))))
    {
        LX_ERROR("Error while trying to create D3D12 command queue!\n");
        return nullptr;
    }
    return new LxD3D12CommandQueue(type, queue.Get());
}

LxFence* LxD3D12RenderManager::CreateFence(unsigned long long initialValue)
{
    if (!m_device)
    {
        LX_ERROR("LxD3D12RenderManager::CreateFence.  No device.");
        return nullptr;
    }
    return LxD3D12Fence::Create(m_device.Get(), m_queue.Get(), initialValue);
}

// --- frame -----------------------------------------------------------------------------------------------------------

bool LxD3D12RenderManager::APIBeginFrameSlot(unsigned slot)
{
    if (!m_device)
    {
        LX_ERROR("LxD3D12RenderManager::BeginScene.  The render manager is not initialised.");
        return false;
    }
    // Load-time work recorded since Initialize goes first, and is waited for: its allocator is not a frame's.
    if (m_pImpl->setupList)
    {
        LxCountedPtr<LxCommandList> setup = m_pImpl->setupList;
        m_pImpl->setupList = LxCountedPtr<LxCommandList>();
        if (GetCurrentCommandList().Get() == setup.Get())
        {
            SetCurrentCommandList(LxCountedPtr<LxCommandList>());
        }
        CloseAndAppendCommandList(setup);
        Flush();
    }
    // The frame that used this slot has completed (the ring waited): its allocators are free again.
    for (Impl::WorkerState& ws : m_pImpl->workers)
    {
        for (Impl::AllocatorPool& pool : ws.pools[slot])
        {
            for (unsigned i = 0; i < pool.used; ++i)
            {
                pool.allocators[i]->Reset();
            }
            pool.used = 0;
        }
        // Every worker starts the frame on the back buffer and the default depth buffer, full screen.
        ws.targetCount = 1;
        ws.targets[0] = ws.backBuffer;
        ws.depthStencil = m_pImpl->depthView;
        ws.depthHasStencil = HasStencil(m_desc.depthStencilFormat);
        ws.viewport = {0.0f, 0.0f, float(GetBackBufferWidth()), float(GetBackBufferHeight()), 0.0f, 1.0f};
        ws.scissor = {0, 0, LONG(GetBackBufferWidth()), LONG(GetBackBufferHeight())};
    }
    m_renderTargets.Clear();
    m_renderTargets.Add(m_pImpl->backBufferViews[m_nBackBufferIndex]);
    m_depthStencil = LxCountedPtr<LxGPUDepthStencilResourceView>();
    m_viewport[0] = m_viewport[1] = 0.0f;
    m_viewport[2] = float(GetBackBufferWidth());
    m_viewport[3] = float(GetBackBufferHeight());
    m_scissor[0] = m_scissor[1] = 0;
    m_scissor[2] = GetBackBufferWidth();
    m_scissor[3] = GetBackBufferHeight();
    if (m_pImpl->timersAvailable)
    {
        m_pImpl->timers.BeginFrame(slot);
    }
    return OpenFrameList();
}

bool LxD3D12RenderManager::APIEndFrameSlot(unsigned slot)
{
    if (!m_device)
    {
        LX_ERROR("LxD3D12RenderManager::EndScene.  The render manager is not initialised.");
        return false;
    }
    if (m_pImpl->timersAvailable)
    {
        m_pImpl->timers.EndFrame(m_pImpl->workers[GetWorkerIndex()].list, slot);
    }
    return true;
}

bool LxD3D12RenderManager::APITransitionBackBuffer(LxGPUResource::StateType before, LxGPUResource::StateType after)
{
    ID3D12GraphicsCommandList* list = RecordingList(false);
    ID3D12Resource* buffer = GetCurrentBackBuffer();
    if (list == nullptr || buffer == nullptr)
    {
        return false;
    }
    const D3D12_RESOURCE_BARRIER barrier = LxD3D12TransitionBarrier(buffer, static_cast<D3D12_RESOURCE_STATES>(before),
                                                                    static_cast<D3D12_RESOURCE_STATES>(after));
    list->ResourceBarrier(1, &barrier);
    return true;
}

bool LxD3D12RenderManager::APIPresent(unsigned syncInterval)
{
    // The frame list is submitted: nothing may record on it until the next frame opens it again.
    m_pImpl->workers[GetWorkerIndex()].list = nullptr;
    LxRenderManager::SetCurrentCommandList(LxCountedPtr<LxCommandList>());
    if (!m_swapChain)
    {
        return false;
    }
    const HRESULT hr = m_swapChain->Present(syncInterval, 0);
    if (FAILED(hr))
    {
        LX_ERROR("LxD3D12RenderManager::EndScene.  Present failed (0x%08lX).", static_cast<unsigned long>(hr));
        return false;
    }
    return true;
}

bool LxD3D12RenderManager::APIUpdateBackBuffers()
{
    if (!m_swapChain)
    {
        return false;
    }
    m_nBackBufferIndex = m_swapChain->GetCurrentBackBufferIndex();
    const D3D12_CPU_DESCRIPTOR_HANDLE handle = GetCurrentBackBufferView();
    for (unsigned w = 0; w < kMaxWorkers; ++w)
    {
        m_pImpl->workers[w].backBuffer = handle;
        m_workers[w].backBuffer = m_pImpl->backBufferViews[m_nBackBufferIndex];
    }
    return true;
}

// --- targets, viewport, scissor, clear ------------------------------------------------------------------------------

void LxD3D12RenderManager::SetRenderTargetViews(unsigned count, const D3D12_CPU_DESCRIPTOR_HANDLE* targets,
                                                const D3D12_CPU_DESCRIPTOR_HANDLE* depthStencil)
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    if (count > D3D12_SIMULTANEOUS_RENDER_TARGET_COUNT)
    {
        LX_ERROR("LxD3D12RenderManager::SetRenderTargets.  %u targets asked, at most %u bound.", count,
                 unsigned(D3D12_SIMULTANEOUS_RENDER_TARGET_COUNT));
        count = D3D12_SIMULTANEOUS_RENDER_TARGET_COUNT;
    }
    ws.targetCount = targets ? count : 0;
    for (unsigned i = 0; i < ws.targetCount; ++i)
    {
        ws.targets[i] = targets[i];
    }
    ws.depthStencil = depthStencil ? *depthStencil : D3D12_CPU_DESCRIPTOR_HANDLE{};
    ws.depthHasStencil = depthStencil && depthStencil->ptr == m_pImpl->depthView.ptr
                             ? HasStencil(m_desc.depthStencilFormat)
                             : true; // a view of unknown format: the clear asks for what the caller asks for
    if (ws.list && ws.listType == LxCommandList::DIRECT && !ws.stateDirty)
    {
        ws.list->OMSetRenderTargets(ws.targetCount, ws.targets, FALSE, depthStencil ? &ws.depthStencil : nullptr);
    }
}

void LxD3D12RenderManager::SetBackBufferRenderTarget()
{
    const D3D12_CPU_DESCRIPTOR_HANDLE target = GetCurrentBackBufferView();
    SetRenderTargetViews(1, &target, m_pImpl->depthView.ptr ? &m_pImpl->depthView : nullptr);
}

void LxD3D12RenderManager::SetRenderTargets(unsigned count, LxCountedPtr<LxGPURenderableResourceView>* views,
                                            LxCountedPtr<LxGPUDepthStencilResourceView> depth)
{
    if (GetWorkerIndex() == 0)
    {
        LxRenderManager::SetRenderTargets(count, views, depth); // keeps them for the getters, then APISetRenderTargets
        return;
    }
    LxArray<LxCountedPtr<LxGPURenderableResourceView>> saved;
    LxCountedPtr<LxGPUDepthStencilResourceView> savedDepth;
    // Other workers bind on their own list only: resolve through the same path without touching the getters' state.
    GetRenderTargets(&saved, &savedDepth);
    m_renderTargets.Clear();
    for (unsigned i = 0; views && i < count; ++i)
    {
        m_renderTargets.Add(views[i]);
    }
    m_depthStencil = depth;
    APISetRenderTargets();
    m_renderTargets = saved;
    m_depthStencil = savedDepth;
}

void LxD3D12RenderManager::TransitionTarget(LxGPUResourceView* view, D3D12_RESOURCE_STATES state)
{
    // Outside a frame there is no list to record on; the caller moves the resource itself then.
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    if (ms_pfnViewTransition && ws.list && ws.listType == LxCommandList::DIRECT)
    {
        ms_pfnViewTransition(ws.list, view, state);
    }
}

void LxD3D12RenderManager::APISetRenderTargets()
{
    D3D12_CPU_DESCRIPTOR_HANDLE targets[D3D12_SIMULTANEOUS_RENDER_TARGET_COUNT] = {};
    unsigned count = 0;
    for (unsigned i = 0; i < m_renderTargets.GetCount() && count < D3D12_SIMULTANEOUS_RENDER_TARGET_COUNT; ++i)
    {
        LxGPURenderableResourceView* view = m_renderTargets[i].Get();
        if (view == nullptr)
        {
            continue;
        }
        if (view->GetRMTargetType() == LxGPURenderableResourceView::RM_TARGET_BACK_BUFFER)
        {
            targets[count++] = GetCurrentBackBufferView();
        }
        else if (ms_pfnViewResolver && ms_pfnViewResolver(view, &targets[count]))
        {
            TransitionTarget(view, D3D12_RESOURCE_STATE_RENDER_TARGET);
            ++count;
        }
        else
        {
            LX_ERROR("LxD3D12RenderManager::SetRenderTargets.  Render target %u is not a Direct3D 12 view.", i);
        }
    }
    D3D12_CPU_DESCRIPTOR_HANDLE depth = {};
    if (m_depthStencil && !(ms_pfnViewResolver && ms_pfnViewResolver(m_depthStencil.Get(), &depth)))
    {
        LX_ERROR("LxD3D12RenderManager::SetRenderTargets.  The depth-stencil view is not a Direct3D 12 view.");
    }
    else if (m_depthStencil)
    {
        TransitionTarget(m_depthStencil.Get(), m_depthStencil->IsDepthReadOnly() ? D3D12_RESOURCE_STATE_DEPTH_READ
                                                                                 : D3D12_RESOURCE_STATE_DEPTH_WRITE);
    }
    SetRenderTargetViews(count, targets, depth.ptr ? &depth : nullptr);
}

void LxD3D12RenderManager::Viewport(float x, float y, float width, float height)
{
    if (GetWorkerIndex() == 0)
    {
        LxRenderManager::Viewport(x, y, width, height);
        return;
    }
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    ws.viewport = {x, y, width, height, 0.0f, 1.0f};
    if (ws.list && ws.listType == LxCommandList::DIRECT && !ws.stateDirty)
    {
        ws.list->RSSetViewports(1, &ws.viewport);
    }
}

void LxD3D12RenderManager::APISetViewport()
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    ws.viewport = {m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3], 0.0f, 1.0f};
    if (ws.list && ws.listType == LxCommandList::DIRECT && !ws.stateDirty)
    {
        ws.list->RSSetViewports(1, &ws.viewport);
    }
}

void LxD3D12RenderManager::Scissor(unsigned x, unsigned y, unsigned width, unsigned height)
{
    if (GetWorkerIndex() == 0)
    {
        LxRenderManager::Scissor(x, y, width, height);
        return;
    }
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    ws.scissor = {LONG(x), LONG(y), LONG(x + width), LONG(y + height)};
    if (ws.list && ws.listType == LxCommandList::DIRECT && !ws.stateDirty)
    {
        ws.list->RSSetScissorRects(1, &ws.scissor);
    }
}

void LxD3D12RenderManager::APISetScissor()
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    ws.scissor = {LONG(m_scissor[0]), LONG(m_scissor[1]), LONG(m_scissor[0] + m_scissor[2]),
                  LONG(m_scissor[1] + m_scissor[3])};
    if (ws.list && ws.listType == LxCommandList::DIRECT && !ws.stateDirty)
    {
        ws.list->RSSetScissorRects(1, &ws.scissor);
    }
}

void LxD3D12RenderManager::APIClear(bool color, bool depth, bool stencil, int targetIndex)
{
    ID3D12GraphicsCommandList* list = RecordingList(false);
    if (list == nullptr)
    {
        return;
    }
    const Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    if (color)
    {
        const float rgba[4] = {m_clearColor.x, m_clearColor.y, m_clearColor.z, m_clearColor.w};
        for (unsigned i = 0; i < ws.targetCount; ++i)
        {
            if (targetIndex < 0 || unsigned(targetIndex) == i)
            {
                list->ClearRenderTargetView(ws.targets[i], rgba, 0, nullptr);
            }
        }
    }
    const unsigned flags =
        (depth ? D3D12_CLEAR_FLAG_DEPTH : 0) | (stencil && ws.depthHasStencil ? D3D12_CLEAR_FLAG_STENCIL : 0);
    if (flags != 0 && ws.depthStencil.ptr != 0)
    {
        list->ClearDepthStencilView(ws.depthStencil, static_cast<D3D12_CLEAR_FLAGS>(flags), m_fClearDepth,
                                    m_nClearStencil, 0, nullptr);
    }
}

// --- draws and dispatches --------------------------------------------------------------------------------------------

void LxD3D12RenderManager::APISetPrimitiveTopology(unsigned topology)
{
    Impl::WorkerState& ws = m_pImpl->workers[GetWorkerIndex()];
    // The same topology twice on one list is one call: the platform call is the dearer part of a draw.
    if (ws.list && ws.topology != topology)
    {
        ws.list->IASetPrimitiveTopology(static_cast<D3D12_PRIMITIVE_TOPOLOGY>(topology));
        ws.topology = topology;
        ws.primitiveKey = kNoTopology;
    }
}

void LxD3D12RenderManager::SetWorkerIndex(int index)
{
    LxRenderManager::SetWorkerIndex(index);
    if (index >= 0 && index < static_cast<int>(kMaxWorkers) && g_workerSlot != TLS_OUT_OF_INDEXES)
    {
        TlsSetValue(g_workerSlot, reinterpret_cast<void*>(static_cast<intptr_t>(index)));
    }
}

int LxD3D12RenderManager::FastWorkerIndex() const
{
    if (g_workerSlot < kTebSlots)
    {
        // gs points at the thread environment block (a plain asm load: the header's __readgsqword trips g++ 12's
        // array-bounds check).
        unsigned long long value;
        const unsigned long long offset = kTebTlsSlotsOffset + g_workerSlot * sizeof(void*);
        __asm__("movq %%gs:(%1), %0" : "=r"(value) : "r"(offset));
        return static_cast<int>(value);
    }
    return g_workerSlot == TLS_OUT_OF_INDEXES ? GetWorkerIndex()
                                              : static_cast<int>(reinterpret_cast<intptr_t>(TlsGetValue(g_workerSlot)));
}

void LxD3D12RenderManager::Draw(bool indexed, PrimType type, unsigned count, unsigned instanceCount, unsigned start,
                                int baseVertex, unsigned startInstance)
{
    // One thread-local lookup for the whole draw.
    const int worker = FastWorkerIndex();
    if (!GetDrawBlocking() && type < PRIM_NUM_TYPES)
    {
        Impl::WorkerState& ws = m_pImpl->workers[worker];
        if (ws.list != nullptr)
        {
            if (ws.stateDirty)
            {
                ApplyWorkerState(ws.list);
            }
            // The same primitive type as the last draw on this list needs neither the conversion nor the call.
            const bool tessellation = m_workers[worker].tessellation;
            const unsigned key = unsigned(type) | (tessellation ? 0x100u : 0u);
            if (ws.primitiveKey != key)
            {
                const unsigned topology = ConvertTopology(type, tessellation);
                if (ws.topology != topology)
                {
                    ws.list->IASetPrimitiveTopology(static_cast<D3D12_PRIMITIVE_TOPOLOGY>(topology));
                    ws.topology = topology;
                }
                ws.primitiveKey = key;
            }
            if (indexed)
            {
                ws.list->DrawIndexedInstanced(count, instanceCount, start, baseVertex, startInstance);
            }
            else
            {
                ws.list->DrawInstanced(count, instanceCount, start, startInstance);
            }
        }
        else
        {
            LX_ERROR("LxD3D12RenderManager.  Worker %d has no current command list to record on.", worker);
        }
    }
    CountDraw(type, indexed, count, instanceCount, worker);
}

void LxD3D12RenderManager::DrawIndexed(PrimType type, unsigned indexCount, unsigned startIndex, int baseVertex)
{
    Draw(true, type, indexCount, 1, startIndex, baseVertex, 0);
}

void LxD3D12RenderManager::DrawIndexedInstanced(PrimType type, unsigned indexCount, unsigned instanceCount,
                                                unsigned startIndex, int baseVertex, unsigned startInstance)
{
    Draw(true, type, indexCount, instanceCount, startIndex, baseVertex, startInstance);
}

void LxD3D12RenderManager::DrawNonIndexed(PrimType type, unsigned vertexCount, unsigned startVertex)
{
    Draw(false, type, vertexCount, 1, startVertex, 0, 0);
}

void LxD3D12RenderManager::DrawNonIndexedInstanced(PrimType type, unsigned vertexCount, unsigned startVertex,
                                                   unsigned instanceCount)
{
    Draw(false, type, vertexCount, instanceCount, startVertex, 0, 0);
}

void LxD3D12RenderManager::APIDrawIndexedInstanced(unsigned indexCount, unsigned instanceCount, unsigned startIndex,
                                                   int baseVertex, unsigned startInstance)
{
    if (ID3D12GraphicsCommandList* list = RecordingList())
    {
        list->DrawIndexedInstanced(indexCount, instanceCount, startIndex, baseVertex, startInstance);
    }
}

void LxD3D12RenderManager::APIDrawInstanced(unsigned vertexCount, unsigned instanceCount, unsigned startVertex,
                                            unsigned startInstance)
{
    if (ID3D12GraphicsCommandList* list = RecordingList())
    {
        list->DrawInstanced(vertexCount, instanceCount, startVertex, startInstance);
    }
}

void LxD3D12RenderManager::APIDispatch(unsigned x, unsigned y, unsigned z)
{
    if (ID3D12GraphicsCommandList* list = RecordingList())
    {
        list->Dispatch(x, y, z);
    }
}

void LxD3D12RenderManager::APIDispatchIndirect(LxGPUBuffer* args, unsigned offset)
{
    ID3D12Resource* resource = ms_pfnBufferResolver ? ms_pfnBufferResolver(args) : nullptr;
    if (resource == nullptr)
    {
        LX_ERROR("LxD3D12RenderManager::DispatchIndirect.  The argument buffer is not a Direct3D 12 buffer.");
        return;
    }
    if (ID3D12GraphicsCommandList* list = RecordingList())
    {
        list->ExecuteIndirect(m_pImpl->dispatchSignature.Get(), 1, resource, offset, nullptr, 0);
    }
}

void LxD3D12RenderManager::DispatchIndirect(ID3D12Resource* args, unsigned long long offset)
{
    if (args == nullptr)
    {
        LX_ERROR("LxRenderManager::DispatchIndirect.  No argument buffer.");
        return;
    }
    ID3D12GraphicsCommandList* list = GetDrawBlocking() ? nullptr : RecordingList();
    if (list)
    {
        list->ExecuteIndirect(m_pImpl->dispatchSignature.Get(), 1, args, offset, nullptr, 0);
    }
    m_frameStats.IncrementValue(LX_FRAME_STAT_INDIRECT_DISPATCHES, 1);
}

void LxD3D12RenderManager::DrawInstancedIndirect(PrimType type, ID3D12Resource* args, unsigned long long offset)
{
    if (args == nullptr || type >= PRIM_NUM_TYPES)
    {
        LX_ERROR("LxD3D12RenderManager::DrawInstancedIndirect.  No argument buffer, or an unknown primitive type.");
        return;
    }
    if (!GetDrawBlocking())
    {
        APISetPrimitiveTopology(ConvertTopology(type, GetTessellation()));
        if (ID3D12GraphicsCommandList* list = RecordingList())
        {
            list->ExecuteIndirect(m_pImpl->drawSignature.Get(), 1, args, offset, nullptr, 0);
        }
    }
    m_frameStats.IncrementValue(LX_FRAME_STAT_NON_INDEXED_DRAWS, 1);
}

void LxD3D12RenderManager::DrawIndexedInstancedIndirect(PrimType type, ID3D12Resource* args, unsigned long long offset)
{
    if (args == nullptr || type >= PRIM_NUM_TYPES)
    {
        LX_ERROR("LxD3D12RenderManager::DrawIndexedInstancedIndirect.  No argument buffer, or an unknown primitive "
                 "type.");
        return;
    }
    if (!GetDrawBlocking())
    {
        APISetPrimitiveTopology(ConvertTopology(type, GetTessellation()));
        if (ID3D12GraphicsCommandList* list = RecordingList())
        {
            list->ExecuteIndirect(m_pImpl->drawIndexedSignature.Get(), 1, args, offset, nullptr, 0);
        }
    }
    m_frameStats.IncrementValue(LX_FRAME_STAT_INDEXED_DRAWS, 1);
}

void LxD3D12RenderManager::DrawInstancedIndirect(PrimType type, LxGPUBuffer* args, unsigned offset)
{
    ID3D12Resource* resource = ms_pfnBufferResolver && args ? ms_pfnBufferResolver(args) : nullptr;
    if (resource == nullptr)
    {
        LX_ERROR("LxD3D12RenderManager::DrawInstancedIndirect.  The argument buffer is not a Direct3D 12 buffer.");
        return;
    }
    DrawInstancedIndirect(type, resource, static_cast<unsigned long long>(offset));
}

void LxD3D12RenderManager::DrawIndexedInstancedIndirect(PrimType type, LxGPUBuffer* args, unsigned offset)
{
    ID3D12Resource* resource = ms_pfnBufferResolver && args ? ms_pfnBufferResolver(args) : nullptr;
    if (resource == nullptr)
    {
        LX_ERROR("LxD3D12RenderManager::DrawIndexedInstancedIndirect.  The argument buffer is not a Direct3D 12 "
                 "buffer.");
        return;
    }
    DrawIndexedInstancedIndirect(type, resource, static_cast<unsigned long long>(offset));
}

bool LxD3D12RenderManager::CreateIndirectCommandSignature()
{
    if (!m_device)
    {
        LX_ERROR("LxD3D12RenderManager::CreateIndirectCommandSignature.  No device.");
        return false;
    }
    struct Signature
    {
        D3D12_INDIRECT_ARGUMENT_TYPE type;
        UINT stride;
        ComPtr<ID3D12CommandSignature>* out;
    };
    const Signature signatures[3] = {
        {D3D12_INDIRECT_ARGUMENT_TYPE_DRAW, sizeof(D3D12_DRAW_ARGUMENTS), &m_pImpl->drawSignature},
        {D3D12_INDIRECT_ARGUMENT_TYPE_DRAW_INDEXED, sizeof(D3D12_DRAW_INDEXED_ARGUMENTS),
         &m_pImpl->drawIndexedSignature},
        {D3D12_INDIRECT_ARGUMENT_TYPE_DISPATCH, sizeof(D3D12_DISPATCH_ARGUMENTS), &m_pImpl->dispatchSignature}};
    for (const Signature& s : signatures)
    {
        D3D12_INDIRECT_ARGUMENT_DESC argument = {};
        argument.Type = s.type;
        D3D12_COMMAND_SIGNATURE_DESC desc = {};
        desc.ByteStride = s.stride;
        desc.NumArgumentDescs = 1;
        desc.pArgumentDescs = &argument;
        if (FAILED(m_device->CreateCommandSignature(&desc, nullptr, IID_PPV_ARGS(s.out->ReleaseAndGetAddressOf()))))
        {
            LX_ERROR("LxD3D12RenderManager::CreateIndirectCommandSignature.  CreateCommandSignature failed.");
            return false;
        }
    }
    return true;
}

// --- GPU timers ------------------------------------------------------------------------------------------------------

int LxD3D12RenderManager::CreateGPUTimer(const LxString& name)
{
    return m_pImpl->timersAvailable ? m_pImpl->timers.CreateTimer(name) : -1;
}

void LxD3D12RenderManager::StartGPUTimer(int timer)
{
    if (m_pImpl->timersAvailable)
    {
        m_pImpl->timers.StartTimer(m_pImpl->workers[GetWorkerIndex()].list, m_frameRing.GetCurrentSlot(), timer);
    }
}

void LxD3D12RenderManager::StopGPUTimer(int timer)
{
    if (m_pImpl->timersAvailable)
    {
        m_pImpl->timers.StopTimer(m_pImpl->workers[GetWorkerIndex()].list, m_frameRing.GetCurrentSlot(), timer);
    }
}

const LxGPUTimerResults& LxD3D12RenderManager::GetGPUTimerResults()
{
    return m_pImpl->timers.GetResults();
}

// --- capture ---------------------------------------------------------------------------------------------------------

bool LxD3D12RenderManager::CaptureBackBuffer(LxImageData2D* image)
{
    return CaptureRenderTarget(GetCurrentBackBuffer(), D3D12_RESOURCE_STATE_RENDER_TARGET, image);
}

bool LxD3D12RenderManager::CaptureRenderTarget(ID3D12Resource* target, D3D12_RESOURCE_STATES state,
                                               LxImageData2D* image)
{
    ID3D12GraphicsCommandList* list = RecordingList(false);
    if (target == nullptr || image == nullptr || list == nullptr)
    {
        LX_ERROR("LxD3D12RenderManager::CaptureRenderTarget.  No target, image or open list.");
        return false;
    }
    const D3D12_RESOURCE_DESC desc = target->GetDesc();
    void (*convert)(LxMappedSurface*, LxImageData2D*) = nullptr;
    unsigned floatChannels = 0;
    switch (desc.Format)
    {
    case DXGI_FORMAT_R8G8B8A8_UNORM:
    case DXGI_FORMAT_R8G8B8A8_UNORM_SRGB:
        convert = &LxReadbackRGBA8;
        break;
    case DXGI_FORMAT_B8G8R8A8_UNORM:
    case DXGI_FORMAT_B8G8R8A8_UNORM_SRGB:
        convert = &LxReadbackBGRA8;
        break;
    case DXGI_FORMAT_R10G10B10A2_UNORM:
        convert = &LxReadbackR10G10B10A2;
        break;
    case DXGI_FORMAT_R32G32B32A32_FLOAT:
        floatChannels = 4;
        break;
    case DXGI_FORMAT_R32_FLOAT:
    case DXGI_FORMAT_D32_FLOAT:
        floatChannels = 1;
        break;
    case DXGI_FORMAT_R8G8B8A8_TYPELESS:
    case DXGI_FORMAT_B8G8R8A8_TYPELESS:
    case DXGI_FORMAT_R32_TYPELESS:
    case DXGI_FORMAT_R16G16B16A16_TYPELESS:
    case DXGI_FORMAT_R32G32B32A32_TYPELESS:
        LX_ERROR("Readback of typeless resource is not supported.");
        return false;
    default:
        break;
    }
    const bool half = desc.Format == DXGI_FORMAT_R16G16B16A16_FLOAT;
    if (convert == nullptr && floatChannels == 0 && !half)
    {
        LX_ERROR("Readback not supported for this resource format.");
        return false;
    }

    D3D12_PLACED_SUBRESOURCE_FOOTPRINT footprint = {};
    UINT64 bytes = 0;
    m_device->GetCopyableFootprints(&desc, 0, 1, 0, &footprint, nullptr, nullptr, &bytes);
    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = D3D12_HEAP_TYPE_READBACK;
    D3D12_RESOURCE_DESC bufferDesc = {};
    bufferDesc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
    bufferDesc.Width = bytes;
    bufferDesc.Height = bufferDesc.DepthOrArraySize = bufferDesc.MipLevels = bufferDesc.SampleDesc.Count = 1;
    bufferDesc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
    ComPtr<ID3D12Resource> readback;
    if (FAILED(m_device->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &bufferDesc,
                                                 D3D12_RESOURCE_STATE_COPY_DEST, nullptr, IID_PPV_ARGS(&readback))))
    {
        LX_ERROR("Creation of readback buffer failed\n");
        return false;
    }
    D3D12_RESOURCE_BARRIER barrier = LxD3D12TransitionBarrier(target, state, D3D12_RESOURCE_STATE_COPY_SOURCE);
    if (state != D3D12_RESOURCE_STATE_COPY_SOURCE)
    {
        list->ResourceBarrier(1, &barrier);
    }
    D3D12_TEXTURE_COPY_LOCATION dst = {};
    dst.pResource = readback.Get();
    dst.Type = D3D12_TEXTURE_COPY_TYPE_PLACED_FOOTPRINT;
    dst.PlacedFootprint = footprint;
    D3D12_TEXTURE_COPY_LOCATION src = {};
    src.pResource = target;
    src.Type = D3D12_TEXTURE_COPY_TYPE_SUBRESOURCE_INDEX;
    list->CopyTextureRegion(&dst, 0, 0, 0, &src, nullptr);
    if (state != D3D12_RESOURCE_STATE_COPY_SOURCE)
    {
        std::swap(barrier.Transition.StateBefore, barrier.Transition.StateAfter);
        list->ResourceBarrier(1, &barrier);
    }

    // Submit what the worker recorded so far, wait, and go on recording on a fresh list of the same frame.
    const bool wasSetup = m_pImpl->setupList && GetCurrentCommandList().Get() == m_pImpl->setupList.Get();
    bool ok = CloseAndAppendCommandList(GetCurrentCommandList()) && Flush();
    if (wasSetup)
    {
        ok = m_pImpl->setupList->Reset() && ok;
        SetCurrentCommandList(m_pImpl->setupList);
    }
    else
    {
        ok = OpenFrameList() && ok;
    }
    if (!ok)
    {
        return false;
    }

    void* mapped = nullptr;
    const D3D12_RANGE readRange = {0, static_cast<SIZE_T>(bytes)};
    if (FAILED(readback->Map(0, &readRange, &mapped)))
    {
        LX_ERROR("LxD3D12RenderManager::CaptureRenderTarget.  The readback buffer could not be mapped.");
        return false;
    }
    LxMappedSurface surface;
    surface.rowPitch = footprint.Footprint.RowPitch;
    surface.data = static_cast<unsigned char*>(mapped) + footprint.Offset;
    image->Allocate(unsigned(desc.Width), desc.Height, 4);
    if (convert)
    {
        convert(&surface, image);
    }
    else if (half)
    {
        LxReadbackFloat16(&surface, image, 4);
    }
    else
    {
        LxReadbackFloat32(&surface, image, floatChannels);
    }
    const D3D12_RANGE noWrite = {0, 0};
    readback->Unmap(0, &noWrite);
    return true;
}

// --- not provided on Direct3D 12 -------------------------------------------------------------------------------------

void LxD3D12RenderManager::DrawAuto(PrimType)
{
    ReportNotImplemented("LxD3D12RenderManager::DrawAuto");
}

LxOcclusionQuery* LxD3D12RenderManager::CreateOcclusionQuery()
{
    ReportNotImplemented("LxD3D12RenderManager::CreateOcclusionQuery");
    return nullptr;
}

LxSOStatisticsQuery* LxD3D12RenderManager::CreateSOStatisticsQuery()
{
    ReportNotImplemented("LxD3D12RenderManager::CreateSOStatisticsQuery");
    return nullptr;
}

LxGPUPerformanceCounter* LxD3D12RenderManager::CreateGPUPerformanceCounter(LxGPUCounterType)
{
    ReportNotImplemented("LxD3D12RenderManager::CreateGPUPerformanceCounter");
    return nullptr;
}

LxRenderingPredicate* LxD3D12RenderManager::CreateRenderingPredicate(LxRenderingPredicateType, bool)
{
    ReportNotImplemented("LxD3D12RenderManager::CreateRenderingPredicate");
    return nullptr;
}

void LxD3D12RenderManager::SetPredication(LxRenderingPredicate*, bool)
{
    ReportNotImplemented("LxD3D12RenderManager::SetPredication");
}
