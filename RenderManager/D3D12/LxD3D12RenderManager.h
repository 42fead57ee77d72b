// LxD3D12RenderManager: the render manager on Direct3D 12 and DXGI. The platform-free rules (statistics, primitive
// conversion, frame ring, per-worker submission arrays, upload retry) stay in LxRenderManager; this class creates
// the device objects and implements the API* hooks with command-list calls.
//
// Start-up: the window manager fills a CreationDesc (factory, adapter, swap-chain description of its window,
// feature level, heap sizes) and calls Init (or Initialize on the instance); the result is the result of window
// creation. Initialize creates, in this order, the device (feature level 12_1, 12_0 or 11_0, the highest that works
// and is not below the one asked for), the frame queue and its fence, the four descriptor heaps, the swap chain with
// its back-buffer views, the default depth buffer, the command signatures and the GPU timers. Every failure is
// logged with its fixed message and answered with false after releasing what was built.
//
// Frame: BeginScene waits for the frame slot, resets the slot's command allocators (per worker, per list kind),
// opens worker 0's frame list, moves the back buffer to the render-target state and binds it with the default depth
// buffer, a full viewport and scissor. EndScene submits, presents and signals the frame fence.
// Workers: each thread calls SetWorkerIndex(i) (0..31) first, creates its own lists (CreateCommandList, allocators
// from its own pools), makes one current (SetCurrentCommandList; the back buffer, viewport and scissor apply to it),
// records, CloseAndAppendCommandList and ExecuteCommandLists. The worker's targets, viewport, scissor and descriptor
// heaps are bound on a list lazily, before its first draw, dispatch or bundle, or when GetCurrentD3D12CommandList
// hands it out. Render targets, viewport and scissor set by a worker
// other than 0 apply to its own current list only; worker 0's values are the ones the getters report.
// Lists created with forCurrentFrame = true record into allocators of the current frame slot (recycled when the
// frame completes; Reset them each frame); false gives the list its own allocator (a bundle recorded once).
//
// Ownership: the device objects belong to the render manager; fences and queues it creates (CreateFence,
// CreateCommandQueue) belong to the caller. Release (and the destructor) leaves full screen first ("Unable to get
// swap chain's full screen state!", "Unable to set swap chain's full screen state prior to shutting down!"), waits
// for the GPU and releases everything.
#pragma once

#include "Common/LxApi.h"
#include "RenderManager/D3D12/LxD3D12Fence.h"
#include "RenderManager/include/LxRenderManager.h"

#include <d3d12.h>
#include <dxgi1_4.h>
#include <wrl/client.h>

class LxDescriptorHeap;
class LxImageData2D;
class LxD3D12FrameGPUTimers;

class LX_API LxD3D12RenderManager : public LxRenderManager
{
public:
    // What the window manager hands over at start-up.
    struct CreationDesc
    {
        // Not owned; null: a factory is created here. The swap chain is made from it.
        IDXGIFactory1* factory = nullptr;
        // Not owned; null: the default adapter (or the WARP adapter when driverType is D3D_DRIVER_TYPE_WARP).
        IDXGIAdapter* adapter = nullptr;
        // The window's swap chain: size, format, buffer count, OutputWindow, swap effect, flags.
        DXGI_SWAP_CHAIN_DESC swapChainDesc = {};
        // The back buffer's render-target view format (an sRGB view of a UNORM buffer); UNKNOWN: the buffer format.
        DXGI_FORMAT backBufferViewFormat = DXGI_FORMAT_UNKNOWN;
        // The default depth buffer's format; UNKNOWN: no default depth buffer.
        DXGI_FORMAT depthStencilFormat = DXGI_FORMAT_D32_FLOAT;
        bool fullScreen = false;
        // The lowest acceptable level: 12_1, 12_0 or 11_0.
        D3D_FEATURE_LEVEL minFeatureLevel = D3D_FEATURE_LEVEL_11_0;
        // D3D_DRIVER_TYPE_HARDWARE (the adapter) or D3D_DRIVER_TYPE_WARP.
        D3D_DRIVER_TYPE driverType = D3D_DRIVER_TYPE_HARDWARE;
        // Turn on the debug layer ("Using D3D12 debug layer."); where the platform has none, a warning and go on.
        bool debugLayer = false;
        // Upload heap capacity (the resource manager creates the heap with it).
        unsigned long long uploadHeapSize = 64ull << 20;
        // Frames in flight (1..kMaxFramesInFlight).
        unsigned framesInFlight = 3;
        // Descriptor heap capacities. The render-target heap keeps its first swapChainDesc.BufferCount slots for the
        // back buffers and the depth-stencil heap its first slot for the default depth buffer.
        unsigned renderTargetDescriptors = 256;
        unsigned depthStencilDescriptors = 64;
        unsigned shaderResourceDescriptors = 4096; // CBV/SRV/UAV, shader-visible
        unsigned samplerDescriptors = 256;         // shader-visible
    };

    static const unsigned kMaxFramesInFlight = 8;
    static const unsigned kMaxGPUTimers = 64;

    // Makes the D3D12 render manager the singleton (replacing a device-less one) and initialises it.
    static bool Init(const CreationDesc& desc);
    // The singleton (created like GetPtr does) when it is a D3D12 render manager, else null.
    static LxD3D12RenderManager* GetD3D12Ptr();

    LxD3D12RenderManager();
    ~LxD3D12RenderManager() override;

    // Creates every device object; false after logging (nothing is kept). A second call releases the first set.
    bool Initialize(const CreationDesc& desc);
    bool IsInitialized() const { return m_device != nullptr; }
    // Leaves full screen, waits for the GPU and releases every device object.
    void Release();

    // --- device objects -------------------------------------------------------------------------------------------
    ID3D12Device* GetDevice() const { return m_device.Get(); }
    ID3D12CommandQueue* GetCommandQueue() const { return m_queue.Get(); }
    IDXGISwapChain3* GetSwapChain() const { return m_swapChain.Get(); }
    IDXGIFactory1* GetFactory() const { return m_factory.Get(); }
    D3D_FEATURE_LEVEL GetFeatureLevel() const { return m_featureLevel; }
    LxD3D12Fence* GetFrameFence() const { return m_pFrameFence; }
    const CreationDesc& GetCreationDesc() const { return m_desc; }
    // One of the four heaps (RTV, DSV, CBV/SRV/UAV, sampler) and its slot allocator (slots already taken by the
    // render manager are marked allocated). The allocators are frame-end listeners of the frame ring.
    ID3D12DescriptorHeap* GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE type) const;
    LxDescriptorHeap* GetDescriptorAllocator(D3D12_DESCRIPTOR_HEAP_TYPE type) const;
    // The shader-visible heaps bound on every list before its first draw or dispatch: by default the render
    // manager's own CBV/SRV/UAV and sampler heaps; the resource manager hands over its own when shader descriptors
    // live there (null for either: back to the render manager's). Not owned; set between frames.
    void SetShaderVisibleHeaps(ID3D12DescriptorHeap* shaderResources, ID3D12DescriptorHeap* samplers);
    D3D12_CPU_DESCRIPTOR_HANDLE GetCPUDescriptorHandle(D3D12_DESCRIPTOR_HEAP_TYPE type, unsigned slot) const;
    D3D12_GPU_DESCRIPTOR_HANDLE GetGPUDescriptorHandle(D3D12_DESCRIPTOR_HEAP_TYPE type, unsigned slot) const;

    // The calling worker's current list as a graphics command list (null when it has none).
    ID3D12GraphicsCommandList* GetCurrentD3D12CommandList();
    unsigned GetBackBufferCount() const { return m_nBackBufferCount; }
    unsigned GetCurrentBackBufferIndex() const { return m_nBackBufferIndex; }
    ID3D12Resource* GetCurrentBackBuffer() const;
    D3D12_CPU_DESCRIPTOR_HANDLE GetCurrentBackBufferView() const;
    ID3D12Resource* GetDefaultDepthBuffer() const { return m_depthBuffer.Get(); }
    // Null handle (ptr 0) when there is no default depth buffer.
    D3D12_CPU_DESCRIPTOR_HANDLE GetDefaultDepthStencilView() const;
    unsigned GetBackBufferWidth() const { return m_desc.swapChainDesc.BufferDesc.Width; }
    unsigned GetBackBufferHeight() const { return m_desc.swapChainDesc.BufferDesc.Height; }

    // --- Direct3D 12 forms of the target and indirect calls -------------------------------------------------------
    // Binds up to 8 render-target views and an optional depth-stencil view (null) on the calling worker's list.
    void SetRenderTargetViews(unsigned count, const D3D12_CPU_DESCRIPTOR_HANDLE* targets,
                              const D3D12_CPU_DESCRIPTOR_HANDLE* depthStencil);
    // The frame's back buffer and the default depth buffer, on the calling worker's list.
    void SetBackBufferRenderTarget();
    // Indirect draws and dispatches through the render manager's command signatures; `args` in the
    // indirect-argument state. Statistics count the call (its element counts are on the GPU).
    void DrawInstancedIndirect(PrimType type, ID3D12Resource* args, unsigned long long offset);
    void DrawIndexedInstancedIndirect(PrimType type, ID3D12Resource* args, unsigned long long offset);
    void DispatchIndirect(ID3D12Resource* args, unsigned long long offset);
    using LxRenderManager::DispatchIndirect;

    // Copies `target` (a 2D texture in `state`, returned to it afterwards) to the CPU: the calling worker's list is
    // closed and flushed, the image converted, and a fresh list made current. False (logged) for formats without a
    // converter. Must run inside a frame (between BeginScene and EndScene) on the main thread.
    bool CaptureRenderTarget(ID3D12Resource* target, D3D12_RESOURCE_STATES state, LxImageData2D* image);
    bool CaptureBackBuffer(LxImageData2D* image);

    // --- the portable interface -----------------------------------------------------------------------------------
    // Back-buffer views bind the frame's back buffer; other views are resolved through the registered resolver and,
    // inside a frame, their resources moved to the render-target (depth-write, or depth-read for read-only depth)
    // state on the calling worker's list. A view nothing resolves is reported and left out.
    void SetRenderTargets(unsigned count, LxCountedPtr<LxGPURenderableResourceView>* views,
                          LxCountedPtr<LxGPUDepthStencilResourceView> depth) override;
    void Viewport(float x, float y, float width, float height) override;
    void Scissor(unsigned x, unsigned y, unsigned width, unsigned height) override;
    void SetCurrentCommandList(LxCountedPtr<LxCommandList> list) override;
    // The draw path in one worker lookup (the same rules as the base class: statistics always, GPU calls unless
    // draw blocking is on, patch conversion under tessellation, a topology set only when it changes on the list).
    void DrawIndexed(PrimType type, unsigned indexCount, unsigned startIndex, int baseVertex) override;
    void DrawIndexedInstanced(PrimType type, unsigned indexCount, unsigned instanceCount, unsigned startIndex,
                              int baseVertex, unsigned startInstance) override;
    void DrawNonIndexed(PrimType type, unsigned vertexCount, unsigned startVertex) override;
    void DrawNonIndexedInstanced(PrimType type, unsigned vertexCount, unsigned startVertex,
                                 unsigned instanceCount) override;
    void DrawAuto(PrimType type) override;
    // Also keeps the index in a Win32 thread-local slot, which the draw path reads without a call.
    void SetWorkerIndex(int index) override;
    LxFence* CreateFence(unsigned long long initialValue) override;
    bool CreateIndirectCommandSignature() override;
    void DrawInstancedIndirect(PrimType type, LxGPUBuffer* args, unsigned offset) override;
    void DrawIndexedInstancedIndirect(PrimType type, LxGPUBuffer* args, unsigned offset) override;
    int CreateGPUTimer(const LxString& name) override;
    void StartGPUTimer(int timer) override;
    void StopGPUTimer(int timer) override;
    const LxGPUTimerResults& GetGPUTimerResults() override;
    LxOcclusionQuery* CreateOcclusionQuery() override;
    LxSOStatisticsQuery* CreateSOStatisticsQuery() override;
    LxGPUPerformanceCounter* CreateGPUPerformanceCounter(LxGPUCounterType type) override;
    LxRenderingPredicate* CreateRenderingPredicate(LxRenderingPredicateType type, bool hint) override;
    void SetPredication(LxRenderingPredicate* predicate, bool value) override;

    // The ID3D12Resource behind a portable buffer (for DispatchIndirect and the indirect draws); the resource
    // manager registers how its Direct3D 12 buffers answer. Null without a resolver or for a foreign buffer.
    typedef ID3D12Resource* (*BufferResolver)(LxGPUBuffer* buffer);
    static void SetBufferResolver(BufferResolver resolver);
    // The CPU descriptor of a render-target or depth-stencil view made by the resource manager; false for a view it
    // does not know. Back-buffer views (RM_TARGET_BACK_BUFFER) are resolved here, without it.
    typedef bool (*ViewResolver)(LxGPUResourceView* view, D3D12_CPU_DESCRIPTOR_HANDLE* handle);
    static void SetViewResolver(ViewResolver resolver);
    // Records on `list` what moves the resource of a target view into `state` (render target or depth write) when
    // SetRenderTargets binds it; the resource manager registers it with its resolver.
    typedef void (*ViewTransition)(ID3D12GraphicsCommandList* list, LxGPUResourceView* view,
                                   D3D12_RESOURCE_STATES state);
    static void SetViewTransition(ViewTransition transition);

protected:
    bool APIBeginFrameSlot(unsigned slot) override;
    bool APIEndFrameSlot(unsigned slot) override;
    bool APITransitionBackBuffer(LxGPUResource::StateType before, LxGPUResource::StateType after) override;
    bool APIPresent(unsigned syncInterval) override;
    bool APIUpdateBackBuffers() override;
    void APISetPrimitiveTopology(unsigned topology) override;
    void APIDrawIndexedInstanced(unsigned indexCount, unsigned instanceCount, unsigned startIndex, int baseVertex,
                                 unsigned startInstance) override;
    void APIDrawInstanced(unsigned vertexCount, unsigned instanceCount, unsigned startVertex,
                          unsigned startInstance) override;
    void APIDispatch(unsigned x, unsigned y, unsigned z) override;
    void APIDispatchIndirect(LxGPUBuffer* args, unsigned offset) override;
    void APIClear(bool color, bool depth, bool stencil, int targetIndex) override;
    void APISetRenderTargets() override;
    void APISetViewport() override;
    void APISetScissor() override;
    LxCommandList* APICreateCommandList(LxCommandList::Type type, bool forCurrentFrame) override;
    bool APIExecuteBundle(LxCommandList* bundle) override;
    LxCommandQueue* APICreateCommandQueue(LxCommandList::Type type) override;

private:
    friend class LxD3D12CommandList;
    struct Impl;

    // A fresh allocator of `type` from the calling worker's pool of the current frame slot (null, logged, on
    // failure). The pool grows on demand and is reset when the slot is reused.
    ID3D12CommandAllocator* TakeFrameAllocator(D3D12_COMMAND_LIST_TYPE type);
    // Makes the calling worker's frame list (reset onto a fresh frame allocator) its current one and binds its
    // targets, viewport and scissor.
    bool OpenFrameList();
    // The calling worker's list, or null (logged) when it has none; with `bindState`, its pending targets,
    // viewport, scissor and descriptor heaps are bound first.
    ID3D12GraphicsCommandList* RecordingList(bool bindState = true);
    // Binds the calling worker's targets, viewport, scissor and descriptor heaps on `list`.
    void ApplyWorkerState(ID3D12GraphicsCommandList* list);
    // Moves the resource of a portable target view into `state` on the calling worker's list (when it has one).
    void TransitionTarget(LxGPUResourceView* view, D3D12_RESOURCE_STATES state);
    void ReleaseAll();
    // The calling thread's worker index from the Win32 slot (the toolchain's thread_local costs a call).
    int FastWorkerIndex() const;
    void Draw(bool indexed, PrimType type, unsigned count, unsigned instanceCount, unsigned start, int baseVertex,
              unsigned startInstance);

    Impl* m_pImpl = nullptr;
    CreationDesc m_desc;
    Microsoft::WRL::ComPtr<IDXGIFactory1> m_factory;
    Microsoft::WRL::ComPtr<ID3D12Device> m_device;
    Microsoft::WRL::ComPtr<ID3D12CommandQueue> m_queue;
    Microsoft::WRL::ComPtr<IDXGISwapChain3> m_swapChain;
    Microsoft::WRL::ComPtr<ID3D12Resource> m_depthBuffer;
    D3D_FEATURE_LEVEL m_featureLevel = D3D_FEATURE_LEVEL_11_0;
    LxD3D12Fence* m_pFrameFence = nullptr;
    unsigned m_nBackBufferCount = 0;
    unsigned m_nBackBufferIndex = 0;

    static BufferResolver ms_pfnBufferResolver;
    static ViewResolver ms_pfnViewResolver;
    static ViewTransition ms_pfnViewTransition;
};
