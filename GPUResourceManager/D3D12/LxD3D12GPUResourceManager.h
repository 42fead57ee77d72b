// LxD3D12GPUResourceManager: the resource manager's Direct3D 12 implementation. It makes the platform resources of
// every creation call, and owns what they share: the upload ring (LxD3D12UploadHeap), the heaps that hold the
// descriptors of views (LxD3D12DescriptorHeap: CBV/SRV/UAV and samplers, which shaders do not see, RTV, DSV), and an
// immediate command list on the device's direct queue for work that must be finished before a call returns
// (initial data, readback).
//
// Shader-visible descriptors: AllocateFrameDescriptors hands out ranges of the shader-visible heaps that the render
// manager binds on every list, valid until the frame they were taken in completes. On the render manager's device
// those are the render manager's own heaps (never a second pair: a shader-visible heap is slow to create on some
// drivers) and the manager listens to the render manager's frame ends; on another device (tests) it makes its own
// pair on first use, and the caller binds them (GetFrameHeap) and ends frames through OnFrameEnd.
//
// The device and queue are not owned: they come from InitializeWithDevice (the render manager's, or a test's) and
// must outlive the manager. Immediate work: lock GetImmediateLock(), BeginImmediate() for the open list, record,
// ExecuteImmediate() (execute, wait, recycle the upload memory it used). AllocateUpload flushes the immediate list
// once and tries again when the ring is full. The render manager tells the heaps about its frames through
// OnFrameEnd. Immediate work ends an upload-ring frame of its own, so it runs on the main thread while no worker
// records uploads (loading, readback), never in the middle of a recorded frame.
// Threading: creation from any thread (the base class's lock and the immediate lock serialise); failures are logged
// and answered with null or false.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12DescriptorHeap.h"
#include "GPUResourceManager/D3D12/LxD3D12UploadHeap.h"
#include "GPUResourceManager/LxGPUResourceManager.h"
#include "RenderManager/include/LxFrameEndListener.h"

#include <d3d12.h>

class LxD3D12Fence;
class LxRenderManager;
class LxD3D12RenderManager;
class LxD3D12ReadbackBuffer;
class LxImageData2D;

class LX_API LxD3D12GPUResourceManager : public LxGPUResourceManager, public LxFrameEndListener
{
public:
    static const unsigned long long kDefaultUploadHeapSize = 32ull * 1024 * 1024;
    static const unsigned kDefaultDescriptorsPerHeap = 4096;

    // Makes GetPtr() create this class, and tells the render manager how to find the Direct3D 12 resource of the
    // buffers made here.
    static void RegisterCreateFunction();
    // The singleton when it is this class (null otherwise, and when there is none).
    static LxD3D12GPUResourceManager* GetD3D12Ptr();

    LxD3D12GPUResourceManager();
    ~LxD3D12GPUResourceManager() override;

    // On the render manager's device and queue (LxD3D12RenderManager, initialised first). 0 for either size: the
    // upload-heap size of the render manager's creation description (from the display settings), and
    // kDefaultDescriptorsPerHeap.
    bool Initialize(unsigned uploadHeapSize, unsigned descriptorsPerHeap) override;
    // Heaps of the given sizes (0: the defaults) on `device`, immediate work on `queue` (a direct queue).
    bool InitializeWithDevice(ID3D12Device* device, ID3D12CommandQueue* queue, unsigned long long uploadHeapSize = 0,
                              unsigned descriptorsPerHeap = 0);
    void WarmGPUCaches() override;

    ID3D12Device* GetDevice() const { return m_pDevice; }
    ID3D12CommandQueue* GetQueue() const { return m_pQueue; }
    LxD3D12UploadHeap& GetUploadHeap() { return m_uploadHeap; }
    LxD3D12DescriptorHeap& GetDescriptorHeap(D3D12_DESCRIPTOR_HEAP_TYPE type) { return m_descriptorHeaps[type]; }

    LxMutex& GetImmediateLock() { return m_immediateLock; }
    // The immediate list, open for recording; null (logged) without a device.
    ID3D12GraphicsCommandList* BeginImmediate();
    // Executes what the immediate list holds and waits for it; true when there was nothing to do.
    bool ExecuteImmediate();
    // Upload memory for immediate work: when the ring is full, executes the immediate list (its memory comes back
    // once it is done) and tries once more.
    bool AllocateUpload(unsigned long long bytes, unsigned long long alignment, LxUploadAllocation* out);

    // Copies one subresource of `texture` (in `state`, left in it) to the CPU and converts it into `out`: depth
    // slice `depthSlice` of a 3D subresource, else the whole 2D surface. Multisampled textures are resolved first.
    bool ReadbackSubresource(ID3D12Resource* texture, D3D12_RESOURCE_STATES state, unsigned subresource,
                             unsigned depthSlice, LxGPUResourceFormat format, LxImageData2D* out);

    // Records, on the open immediate list, the copy of one subresource (in `state`, left in it) into `out`, made
    // here to the size of the subresource's footprint, which is returned with its row count. Call ExecuteImmediate
    // before reading `out`.
    bool RecordCopyToReadback(ID3D12Resource* texture, D3D12_RESOURCE_STATES state, unsigned subresource,
                              LxD3D12ReadbackBuffer* out, D3D12_PLACED_SUBRESOURCE_FOOTPRINT* footprint,
                              unsigned* rows);

    void OnFrameEnd(LxFence* fence, unsigned long long fenceValue) override;

    // --- views, frame descriptors and states (the draw-time binding and the render manager use these) ----------
    // The CPU descriptor of any view made by the Direct3D 12 resources; false, nothing logged, for a view made
    // elsewhere, one whose resource is gone, or one that outlived the manager that made it.
    static bool ResolveView(LxGPUResourceView* view, D3D12_CPU_DESCRIPTOR_HANDLE* handle);
    // `count` contiguous descriptors of the shader-visible heap of `type` (CBV_SRV_UAV or SAMPLER), valid until the
    // frame they were taken in completes. Thread-safe. False (logged) for another type or when the heap is full.
    bool AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE type, unsigned count, D3D12_CPU_DESCRIPTOR_HANDLE* cpu,
                                  D3D12_GPU_DESCRIPTOR_HANDLE* gpu);
    // The shader-visible heap AllocateFrameDescriptors takes from (made on first use off the render manager's
    // device); null for other types or on failure.
    ID3D12DescriptorHeap* GetFrameHeap(D3D12_DESCRIPTOR_HEAP_TYPE type);
    // Whether the shader-visible heaps are the render manager's and its frame ends reach this manager.
    bool IsSharingRenderManagerHeaps() const { return m_pRenderManager != nullptr; }

    // The ID3D12Resource behind a resource made here (null for null and foreign resources).
    static ID3D12Resource* GetD3D12Resource(LxGPUResource* resource);
    // The state a texture is in as far as recorded work goes; buffers answer COMMON (they rely on implicit promotion
    // and decay and are never transitioned).
    static D3D12_RESOURCE_STATES GetD3D12State(LxGPUResource* resource);
    // Records on `list` the barrier that moves a texture to `state`, only when it is in another state, and keeps the
    // new state. Nothing for buffers and foreign resources. The caller executes the lists in recording order.
    static void Transition(ID3D12GraphicsCommandList* list, LxGPUResource* resource, D3D12_RESOURCE_STATES state);

    // The portable Transition, UAVBarrier and CopyResource of the resources made here, recorded on the render
    // manager's current list of the calling worker; false (logged) without one or for foreign resources.
    static bool RecordTransition(LxGPUResource* resource, unsigned before, unsigned after);
    static bool RecordUAVBarrier(LxGPUResource* resource);
    static bool RecordCopy(LxGPUResource* destination, LxGPUResource* source);

    // Changes whenever the heaps are made again or released, so views made before can tell their slots are gone.
    unsigned GetHeapGeneration() const { return m_nHeapGeneration; }

protected:
    LxGPUVertexBuffer* APICreateResourceVertex(LxGPUResource::Behavior behavior, unsigned vertexSize,
                                               unsigned vertexCount, LxCountedPtr<LxMemoryBuffer> initialData,
                                               unsigned bindFlags, unsigned cpuAccessFlags) override;
    LxGPUIndexBuffer* APICreateResourceIndex(LxGPUResource::Behavior behavior, unsigned indexSize, unsigned indexCount,
                                             LxCountedPtr<LxMemoryBuffer> initialData, unsigned bindFlags,
                                             unsigned cpuAccessFlags) override;
    LxConstantBuffer* APICreateConstantBuffer(LxGPUResource::Behavior behavior, unsigned size,
                                              LxCountedPtr<LxMemoryBuffer> initialData, bool cpuWritable,
                                              unsigned miscHints) override;
    LxGPUStructuredBuffer* APICreateStructuredBuffer(unsigned structSize, unsigned structCount, unsigned bindFlags,
                                                     LxCountedPtr<LxMemoryBuffer> initialData,
                                                     unsigned miscHints) override;
    LxGPUVertexBuffer* APICreateRenderableVB(LxGPUResourceFormat format, unsigned vertexCount,
                                             unsigned bindFlags) override;
    LxGPUTexture2DArray* APICreateTexture2DArray(LxGPUResource::Behavior behavior, unsigned width, unsigned height,
                                                 LxGPUResourceFormat format, LxGPUTexture::MipType mipType,
                                                 unsigned mipCount, unsigned arraySize, unsigned bindFlags,
                                                 unsigned cpuAccessFlags, LxCountedPtr<LxMemoryBuffer> initialData,
                                                 unsigned sampleCount, const LxGPUClearValue* clearValue) override;
    LxGPUTexture3D* APICreateTexture3D(LxGPUResource::Behavior behavior, unsigned width, unsigned height,
                                       unsigned depth, LxGPUResourceFormat format, LxGPUTexture::MipType mipType,
                                       unsigned mipCount, unsigned bindFlags, unsigned cpuAccessFlags,
                                       LxCountedPtr<LxMemoryBuffer> initialData) override;
    LxGPUTextureCubeArray* APICreateCubemapArray(LxGPUResource::Behavior behavior, unsigned edgeLength,
                                                 unsigned cubeCount, LxGPUResourceFormat format,
                                                 LxGPUTexture::MipType mipType, unsigned mipCount, unsigned bindFlags,
                                                 unsigned cpuAccessFlags,
                                                 LxCountedPtr<LxMemoryBuffer> initialData) override;

private:
    void ReleaseDeviceObjects();
    // The render manager whose heaps are shared, while it is still the singleton; else null.
    LxD3D12RenderManager* GetSharedRenderManager() const;
    // The own shader-visible heap (index 0: CBV_SRV_UAV, 1: SAMPLER), made on first use; null on failure.
    LxD3D12DescriptorHeap* GetOwnFrameHeap(unsigned index);

    ID3D12Device* m_pDevice = nullptr;
    ID3D12CommandQueue* m_pQueue = nullptr;
    LxD3D12UploadHeap m_uploadHeap;
    LxD3D12DescriptorHeap m_descriptorHeaps[D3D12_DESCRIPTOR_HEAP_TYPE_NUM_TYPES];

    LxMutex m_immediateLock;
    ID3D12CommandAllocator* m_pAllocator = nullptr;
    ID3D12GraphicsCommandList* m_pList = nullptr;
    LxD3D12Fence* m_pFence = nullptr;
    unsigned long long m_nFenceValue = 0;
    bool m_bListOpen = false;

    // Shared: the render manager whose heaps and frame ring are used (checked against the singleton before use).
    LxRenderManager* m_pRenderManager = nullptr;
    // Not shared: made on first use.
    LxMutex m_frameHeapLock;
    LxD3D12DescriptorHeap m_frameHeaps[2];
    unsigned m_nFrameDescriptors = kDefaultDescriptorsPerHeap;
    unsigned m_nHeapGeneration = 0;
};
