#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "RenderManager/D3D12/LxD3D12Barriers.h"

#include "Common/LxImageData2D.h"
#include "Common/LxLogManager.h"
#include "GPUResourceManager/D3D12/LxD3D12ConstantBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12Format.h"
#include "GPUResourceManager/D3D12/LxD3D12IndexBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12ReadbackBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12StructuredBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12Texture2DArray.h"
#include "GPUResourceManager/D3D12/LxD3D12Texture3D.h"
#include "GPUResourceManager/D3D12/LxD3D12TextureCubeArray.h"
#include "GPUResourceManager/D3D12/LxD3D12VertexBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12ViewDescriptor.h"
#include "GPUResourceManager/LxMappedSurface.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <new>

namespace
{
const char* const kOutOfMemory = "Out of memory!  I hope this isn't happening at crunch time or we're screwed!!!!";

// Makes a platform resource: the new instance, then its GPU part. Either failure is logged and answered with null.
template <class T, class... Args>
T* Make(const char* newFailure, LxCountedPtr<LxMemoryBuffer> data, Args... args)
{
    T* resource = new (std::nothrow) T(args...);
    if (!resource)
    {
        LX_ERROR("%s", newFailure);
        return nullptr;
    }
    if (!resource->Create(data))
    {
        delete resource;
        return nullptr;
    }
    return resource;
}

// How the render manager finds the ID3D12Resource of a buffer made here (indirect arguments and draws).
ID3D12Resource* ResolveBuffer(LxGPUBuffer* buffer)
{
    return LxD3D12GPUResourceManager::GetD3D12Resource(buffer);
}

// How the render manager moves the resource of a target view into the state it binds it in.
void TransitionView(ID3D12GraphicsCommandList* list, LxGPUResourceView* view, D3D12_RESOURCE_STATES state)
{
    LxD3D12GPUResourceManager::Transition(list, view->GetResource(), state);
}

// The texture storage behind a texture made here, or null.
LxD3D12TextureResource* GetTextureStorage(LxGPUResource* resource)
{
    if (auto* texture = dynamic_cast<LxD3D12Texture2DArray*>(resource))
        return &texture->GetStorage();
    if (auto* volume = dynamic_cast<LxD3D12Texture3D*>(resource))
        return &volume->GetStorage();
    if (auto* cubes = dynamic_cast<LxD3D12TextureCubeArray*>(resource))
        return &cubes->GetStorage();
    return nullptr;
}

LxGPUResourceManager* CreateD3D12Manager()
{
    return new LxD3D12GPUResourceManager();
}

// On Windows the Direct3D 12 manager is the singleton from the start, as the window manager is.
struct RegisterD3D12ResourceManager
{
    RegisterD3D12ResourceManager() { LxD3D12GPUResourceManager::RegisterCreateFunction(); }
} g_registerD3D12ResourceManager;

// Bumped whenever a manager's heaps are made or released; views compare it before freeing their slot.
unsigned g_nextHeapGeneration = 1;
} // namespace

void LxD3D12GPUResourceManager::RegisterCreateFunction()
{
    SetCreateFunction(CreateD3D12Manager);
    LxD3D12RenderManager::SetBufferResolver(ResolveBuffer);
    LxD3D12RenderManager::SetViewResolver(ResolveView);
    LxD3D12RenderManager::SetViewTransition(TransitionView);
}

ID3D12Resource* LxD3D12GPUResourceManager::GetD3D12Resource(LxGPUResource* resource)
{
    if (!resource)
        return nullptr;
    if (LxD3D12TextureResource* storage = GetTextureStorage(resource))
        return storage->GetResource();
    if (auto* vertices = dynamic_cast<LxD3D12VertexBuffer*>(resource))
        return vertices->GetD3D12Resource();
    if (auto* indices = dynamic_cast<LxD3D12IndexBuffer*>(resource))
        return indices->GetD3D12Resource();
    if (auto* constants = dynamic_cast<LxD3D12ConstantBuffer*>(resource))
        return constants->GetD3D12Resource();
    if (auto* structured = dynamic_cast<LxD3D12StructuredBuffer*>(resource))
        return structured->GetD3D12Resource();
    return nullptr;
}

D3D12_RESOURCE_STATES LxD3D12GPUResourceManager::GetD3D12State(LxGPUResource* resource)
{
    LxD3D12TextureResource* storage = GetTextureStorage(resource);
    return storage ? storage->GetState() : D3D12_RESOURCE_STATE_COMMON;
}

void LxD3D12GPUResourceManager::Transition(ID3D12GraphicsCommandList* list, LxGPUResource* resource,
                                           D3D12_RESOURCE_STATES state)
{
    LxD3D12TextureResource* storage = GetTextureStorage(resource);
    if (!list || !storage || !storage->GetResource() || storage->GetState() == state)
    {
        return;
    }
    const D3D12_RESOURCE_BARRIER barrier = LxD3D12TransitionBarrier(storage->GetResource(), storage->GetState(), state);
    list->ResourceBarrier(1, &barrier);
    storage->SetState(state);
}

// The calling worker's open list of the render manager, or null after logging why not (`who` names the operation).
static ID3D12GraphicsCommandList* CurrentList(LxGPUResource* resource, const char* who)
{
    LxD3D12RenderManager* renderManager = dynamic_cast<LxD3D12RenderManager*>(LxRenderManager::GetExistingPtr());
    ID3D12GraphicsCommandList* list = renderManager ? renderManager->GetCurrentD3D12CommandList() : nullptr;
    if (!list || !LxD3D12GPUResourceManager::GetD3D12Resource(resource))
    {
        LX_ERROR("%s.  Needs a Direct3D 12 resource and an open command list of the render manager.", who);
        return nullptr;
    }
    return list;
}

bool LxD3D12GPUResourceManager::RecordTransition(LxGPUResource* resource, unsigned before, unsigned after)
{
    ID3D12GraphicsCommandList* list = CurrentList(resource, "LxD3D12GPUResourceManager::RecordTransition");
    if (!list)
    {
        return false;
    }
    if (before != after)
    {
        const D3D12_RESOURCE_BARRIER barrier =
            LxD3D12TransitionBarrier(GetD3D12Resource(resource), static_cast<D3D12_RESOURCE_STATES>(before),
                                     static_cast<D3D12_RESOURCE_STATES>(after));
        list->ResourceBarrier(1, &barrier);
    }
    if (LxD3D12TextureResource* storage = GetTextureStorage(resource))
    {
        storage->SetState(static_cast<D3D12_RESOURCE_STATES>(after));
    }
    return true;
}

bool LxD3D12GPUResourceManager::RecordUAVBarrier(LxGPUResource* resource)
{
    ID3D12GraphicsCommandList* list = CurrentList(resource, "LxD3D12GPUResourceManager::RecordUAVBarrier");
    if (!list)
    {
        return false;
    }
    D3D12_RESOURCE_BARRIER barrier = {};
    barrier.Type = D3D12_RESOURCE_BARRIER_TYPE_UAV;
    barrier.UAV.pResource = GetD3D12Resource(resource);
    list->ResourceBarrier(1, &barrier);
    return true;
}

bool LxD3D12GPUResourceManager::RecordCopy(LxGPUResource* destination, LxGPUResource* source)
{
    const char* const who = "LxD3D12GPUResourceManager::RecordCopy";
    ID3D12GraphicsCommandList* list = CurrentList(destination, who);
    ID3D12Resource* from = GetD3D12Resource(source);
    if (!list)
    {
        return false;
    }
    ID3D12Resource* to = GetD3D12Resource(destination);
    const D3D12_RESOURCE_DESC a = to->GetDesc();
    const D3D12_RESOURCE_DESC b = from ? from->GetDesc() : D3D12_RESOURCE_DESC{};
    if (!from || from == to || a.Dimension != b.Dimension || a.Width != b.Width || a.Height != b.Height ||
        a.DepthOrArraySize != b.DepthOrArraySize || a.MipLevels != b.MipLevels ||
        a.SampleDesc.Count != b.SampleDesc.Count)
    {
        LX_ERROR("%s.  The source is not another Direct3D 12 resource of the same kind and size.", who);
        return false;
    }
    // Textures are moved into the copy states and back; buffers are promoted from their common state.
    const D3D12_RESOURCE_STATES fromState = GetD3D12State(source);
    const D3D12_RESOURCE_STATES toState = GetD3D12State(destination);
    Transition(list, source, D3D12_RESOURCE_STATE_COPY_SOURCE);
    Transition(list, destination, D3D12_RESOURCE_STATE_COPY_DEST);
    list->CopyResource(to, from);
    Transition(list, source, fromState);
    Transition(list, destination, toState);
    return true;
}

bool LxD3D12GPUResourceManager::ResolveView(LxGPUResourceView* view, D3D12_CPU_DESCRIPTOR_HANDLE* handle)
{
    const LxD3D12ViewDescriptor* descriptor = dynamic_cast<const LxD3D12ViewDescriptor*>(view);
    LxD3D12GPUResourceManager* manager = GetD3D12Ptr();
    if (!descriptor || !descriptor->HasDescriptor() || !view->GetResource() || !manager ||
        descriptor->GetHeapGeneration() != manager->GetHeapGeneration())
    {
        return false;
    }
    if (handle)
        *handle = descriptor->GetCPUHandle();
    return true;
}

LxD3D12RenderManager* LxD3D12GPUResourceManager::GetSharedRenderManager() const
{
    LxRenderManager* current = LxRenderManager::GetExistingPtr();
    if (!m_pRenderManager || current != m_pRenderManager)
    {
        return nullptr;
    }
    LxD3D12RenderManager* renderManager = static_cast<LxD3D12RenderManager*>(current);
    return renderManager->GetDevice() == m_pDevice ? renderManager : nullptr;
}

LxD3D12DescriptorHeap* LxD3D12GPUResourceManager::GetOwnFrameHeap(unsigned index)
{
    LxMutex::ScopedLock lock(m_frameHeapLock);
    LxD3D12DescriptorHeap& heap = m_frameHeaps[index];
    if (!heap.GetHeap() && m_pDevice)
    {
        const D3D12_DESCRIPTOR_HEAP_TYPE type =
            index == 0 ? D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV : D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER;
        // Shader-visible sampler heaps hold at most 2048 descriptors.
        const unsigned count =
            index == 0 ? m_nFrameDescriptors : (m_nFrameDescriptors > 2048 ? 2048 : m_nFrameDescriptors);
        heap.Create(m_pDevice, type, count, true);
    }
    return heap.GetHeap() ? &heap : nullptr;
}

ID3D12DescriptorHeap* LxD3D12GPUResourceManager::GetFrameHeap(D3D12_DESCRIPTOR_HEAP_TYPE type)
{
    const bool samplers = type == D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER;
    if (!samplers && type != D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV)
    {
        return nullptr;
    }
    if (LxD3D12RenderManager* renderManager = GetSharedRenderManager())
    {
        return renderManager->GetDescriptorHeap(type);
    }
    LxD3D12DescriptorHeap* own = GetOwnFrameHeap(samplers ? 1 : 0);
    return own ? own->GetHeap() : nullptr;
}

bool LxD3D12GPUResourceManager::AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE type, unsigned count,
                                                         D3D12_CPU_DESCRIPTOR_HANDLE* cpu,
                                                         D3D12_GPU_DESCRIPTOR_HANDLE* gpu)
{
    const bool samplers = type == D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER;
    if ((!samplers && type != D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV) || !cpu || !gpu)
    {
        LX_ERROR("LxD3D12GPUResourceManager::AllocateFrameDescriptors.  Only CBV/SRV/UAV and sampler descriptors "
                 "are shader-visible.");
        return false;
    }
    LxD3D12RenderManager* renderManager = GetSharedRenderManager();
    LxD3D12DescriptorHeap* own = renderManager ? nullptr : GetOwnFrameHeap(samplers ? 1 : 0);
    LxDescriptorHeap* slots = renderManager ? renderManager->GetDescriptorAllocator(type) : own;
    if (!slots)
    {
        LX_ERROR("LxD3D12GPUResourceManager::AllocateFrameDescriptors.  There is no shader-visible heap: initialise "
                 "the resource manager first.");
        return false;
    }
    const int first = slots->Allocate(count);
    if (first < 0)
    {
        LX_ERROR("LxD3D12GPUResourceManager::AllocateFrameDescriptors.  The shader-visible heap has no room for %u "
                 "more descriptors in this frame.",
                 count ? count : 1);
        return false;
    }
    // Given back at once, so the range returns to use when this frame's fence has passed.
    slots->Free(static_cast<unsigned>(first), count ? count : 1);
    const unsigned slot = static_cast<unsigned>(first);
    *cpu = renderManager ? renderManager->GetCPUDescriptorHandle(type, slot) : own->GetCPUHandle(slot);
    *gpu = renderManager ? renderManager->GetGPUDescriptorHandle(type, slot) : own->GetGPUHandle(slot);
    return true;
}

LxD3D12GPUResourceManager* LxD3D12GPUResourceManager::GetD3D12Ptr()
{
    return dynamic_cast<LxD3D12GPUResourceManager*>(GetExistingPtr());
}

LxD3D12GPUResourceManager::LxD3D12GPUResourceManager() = default;

LxD3D12GPUResourceManager::~LxD3D12GPUResourceManager()
{
    // Resources go first (the leak report), while the heaps they were filled through still exist.
    ReleaseAllResources();
    ReleaseDeviceObjects();
}

void LxD3D12GPUResourceManager::ReleaseDeviceObjects()
{
    if (m_pQueue && m_pFence && m_bListOpen)
    {
        ExecuteImmediate();
    }
    if (m_pList)
        m_pList->Release();
    if (m_pAllocator)
        m_pAllocator->Release();
    delete m_pFence;
    m_pList = nullptr;
    m_pAllocator = nullptr;
    m_pFence = nullptr;
    m_uploadHeap.Release();
    for (LxD3D12DescriptorHeap& heap : m_descriptorHeaps)
    {
        heap.Release();
    }
    for (LxD3D12DescriptorHeap& heap : m_frameHeaps)
    {
        heap.Release();
    }
    if (m_pRenderManager && m_pRenderManager == LxRenderManager::GetExistingPtr())
    {
        m_pRenderManager->GetFrameRing().RemoveFrameEndListener(this);
    }
    m_pRenderManager = nullptr;
    m_nHeapGeneration = g_nextHeapGeneration++;
    m_pDevice = nullptr;
    m_pQueue = nullptr;
}

bool LxD3D12GPUResourceManager::Initialize(unsigned uploadHeapSize, unsigned descriptorsPerHeap)
{
    LxD3D12RenderManager* renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    if (!renderManager || !renderManager->GetDevice() || !renderManager->GetCommandQueue())
    {
        LX_ERROR("LxD3D12GPUResourceManager::Initialize.  The render manager has no Direct3D 12 device yet.");
        return false;
    }
    // 0: the upload ring the display settings asked the render manager for (else the built-in default).
    const unsigned long long uploadBytes =
        uploadHeapSize ? uploadHeapSize : renderManager->GetCreationDesc().uploadHeapSize;
    return InitializeWithDevice(renderManager->GetDevice(), renderManager->GetCommandQueue(), uploadBytes,
                                descriptorsPerHeap);
}

bool LxD3D12GPUResourceManager::InitializeWithDevice(ID3D12Device* device, ID3D12CommandQueue* queue,
                                                     unsigned long long uploadHeapSize, unsigned descriptorsPerHeap)
{
    LxMutex::ScopedLock lock(m_immediateLock);
    if (!device || !queue)
    {
        LX_ERROR("LxD3D12GPUResourceManager::InitializeWithDevice.  No device or no queue.");
        return false;
    }
    ReleaseDeviceObjects();
    const unsigned long long uploadBytes = uploadHeapSize ? uploadHeapSize : kDefaultUploadHeapSize;
    const unsigned descriptors = descriptorsPerHeap ? descriptorsPerHeap : kDefaultDescriptorsPerHeap;
    m_pFence = LxD3D12Fence::Create(device, queue, 0);
    bool ok = m_pFence && m_uploadHeap.Create(device, uploadBytes);
    // The heaps views keep their descriptors in; shaders never see them, so they are cheap to make.
    for (unsigned type = 0; ok && type < D3D12_DESCRIPTOR_HEAP_TYPE_NUM_TYPES; ++type)
    {
        ok = m_descriptorHeaps[type].Create(device, static_cast<D3D12_DESCRIPTOR_HEAP_TYPE>(type), descriptors, false);
    }
    ok = ok && SUCCEEDED(device->CreateCommandAllocator(D3D12_COMMAND_LIST_TYPE_DIRECT, IID_PPV_ARGS(&m_pAllocator)));
    ok = ok && SUCCEEDED(device->CreateCommandList(0, D3D12_COMMAND_LIST_TYPE_DIRECT, m_pAllocator, nullptr,
                                                   IID_PPV_ARGS(&m_pList)));
    if (ok)
    {
        m_pList->Close();
        m_bListOpen = false;
        m_nFenceValue = 0;
        m_pDevice = device;
        m_pQueue = queue;
        m_nFrameDescriptors = descriptors;
        m_nHeapGeneration = g_nextHeapGeneration++;
        // On the render manager's device its shader-visible heaps are the frame heaps, and its frame ends recycle
        // the upload ring and the view heaps here.
        LxRenderManager* renderManager = LxRenderManager::GetExistingPtr();
        LxD3D12RenderManager* d3d12 = dynamic_cast<LxD3D12RenderManager*>(renderManager);
        if (d3d12 && d3d12->GetDevice() == device)
        {
            m_pRenderManager = renderManager;
            renderManager->GetFrameRing().AddFrameEndListener(this);
        }
        return true;
    }
    LX_ERROR("LxD3D12GPUResourceManager::InitializeWithDevice.  The heaps or the immediate command list could not "
             "be created.");
    ReleaseDeviceObjects();
    return false;
}

void LxD3D12GPUResourceManager::WarmGPUCaches()
{
    // Touching every page of the upload ring once makes the first frames' writes hit resident memory.
    LxUploadHeap& heap = m_uploadHeap;
    if (heap.GetBase())
    {
        for (unsigned long long offset = 0; offset < heap.GetCapacity(); offset += 4096)
        {
            heap.GetBase()[offset] = 0;
        }
    }
}

ID3D12GraphicsCommandList* LxD3D12GPUResourceManager::BeginImmediate()
{
    LxMutex::ScopedLock lock(m_immediateLock);
    if (!m_pList)
    {
        LX_ERROR("LxD3D12GPUResourceManager::BeginImmediate.  No Direct3D 12 device: initialise the resource "
                 "manager first.");
        return nullptr;
    }
    if (!m_bListOpen)
    {
        // The previous immediate work was waited for, so the allocator's memory is free.
        if (FAILED(m_pAllocator->Reset()) || FAILED(m_pList->Reset(m_pAllocator, nullptr)))
        {
            LX_ERROR("LxD3D12GPUResourceManager::BeginImmediate.  The immediate command list could not be reset.");
            return nullptr;
        }
        m_bListOpen = true;
    }
    return m_pList;
}

bool LxD3D12GPUResourceManager::ExecuteImmediate()
{
    LxMutex::ScopedLock lock(m_immediateLock);
    if (!m_bListOpen)
    {
        return true;
    }
    m_bListOpen = false;
    if (FAILED(m_pList->Close()))
    {
        LX_ERROR("LxD3D12GPUResourceManager::ExecuteImmediate.  The immediate command list could not be closed.");
        return false;
    }
    ID3D12CommandList* lists[] = {m_pList};
    m_pQueue->ExecuteCommandLists(1, lists);
    const unsigned long long value = ++m_nFenceValue;
    if (!m_pFence->Signal(value) || !m_pFence->Wait(value))
    {
        return false;
    }
    // What the list read from the upload ring is free again (the fence has passed): end its ring frame.
    m_uploadHeap.EndFrame(m_pFence, value);
    if (!m_pRenderManager)
    {
        // Without real frames, the view slots freed so far return once the GPU has passed this point.
        for (LxD3D12DescriptorHeap& heap : m_descriptorHeaps)
        {
            heap.OnFrameEnd(m_pFence, value);
        }
    }
    return true;
}

bool LxD3D12GPUResourceManager::AllocateUpload(unsigned long long bytes, unsigned long long alignment,
                                               LxUploadAllocation* out)
{
    LxMutex::ScopedLock lock(m_immediateLock);
    if (m_uploadHeap.Allocate(bytes, alignment, out))
    {
        return true;
    }
    if (!ExecuteImmediate())
    {
        return false;
    }
    return m_uploadHeap.Allocate(bytes, alignment, out);
}

void LxD3D12GPUResourceManager::OnFrameEnd(LxFence* fence, unsigned long long fenceValue)
{
    m_uploadHeap.EndFrame(fence, fenceValue);
    for (LxD3D12DescriptorHeap& heap : m_descriptorHeaps)
    {
        heap.OnFrameEnd(fence, fenceValue);
    }
    LxMutex::ScopedLock lock(m_frameHeapLock);
    for (LxD3D12DescriptorHeap& heap : m_frameHeaps)
    {
        if (heap.GetHeap())
            heap.OnFrameEnd(fence, fenceValue);
    }
}

bool LxD3D12GPUResourceManager::RecordCopyToReadback(ID3D12Resource* texture, D3D12_RESOURCE_STATES state,
                                                     unsigned subresource, LxD3D12ReadbackBuffer* out,
                                                     D3D12_PLACED_SUBRESOURCE_FOOTPRINT* footprint, unsigned* rows)
{
    LxMutex::ScopedLock lock(m_immediateLock);
    const D3D12_RESOURCE_DESC desc = texture->GetDesc();
    UINT rowCount = 0;
    UINT64 rowSize = 0;
    UINT64 total = 0;
    m_pDevice->GetCopyableFootprints(&desc, subresource, 1, 0, footprint, &rowCount, &rowSize, &total);
    *rows = rowCount;
    ID3D12GraphicsCommandList* list = BeginImmediate();
    if (!list || !out->Create(m_pDevice, total))
    {
        return false;
    }
    const bool transition = state != D3D12_RESOURCE_STATE_COPY_SOURCE;
    D3D12_RESOURCE_BARRIER barrier = LxD3D12TransitionBarrier(texture, state, D3D12_RESOURCE_STATE_COPY_SOURCE);
    if (transition)
        list->ResourceBarrier(1, &barrier);
    D3D12_TEXTURE_COPY_LOCATION dst = {};
    dst.pResource = out->GetResource();
    dst.Type = D3D12_TEXTURE_COPY_TYPE_PLACED_FOOTPRINT;
    dst.PlacedFootprint = *footprint;
    D3D12_TEXTURE_COPY_LOCATION src = {};
    src.pResource = texture;
    src.Type = D3D12_TEXTURE_COPY_TYPE_SUBRESOURCE_INDEX;
    src.SubresourceIndex = subresource;
    list->CopyTextureRegion(&dst, 0, 0, 0, &src, nullptr);
    barrier = LxD3D12TransitionBarrier(texture, D3D12_RESOURCE_STATE_COPY_SOURCE, state);
    if (transition)
        list->ResourceBarrier(1, &barrier);
    return true;
}

bool LxD3D12GPUResourceManager::ReadbackSubresource(ID3D12Resource* texture, D3D12_RESOURCE_STATES state,
                                                    unsigned subresource, unsigned depthSlice,
                                                    LxGPUResourceFormat format, LxImageData2D* out)
{
    if (LxIsFormatTypeless(format))
    {
        LX_ERROR("Readback of typeless resource is not supported.");
        return false;
    }
    if (!LxHasReadbackConverter(format))
    {
        LX_ERROR("Readback not supported for this resource format.");
        return false;
    }
    if (!m_pDevice || !texture || !out)
    {
        LX_ERROR("LxD3D12GPUResourceManager::ReadbackSubresource.  No device, texture or image.");
        return false;
    }
    LxMutex::ScopedLock lock(m_immediateLock);
    D3D12_RESOURCE_DESC desc = texture->GetDesc();
    ID3D12GraphicsCommandList* list = BeginImmediate();
    if (!list)
    {
        return false;
    }

    // A multisampled surface cannot be copied: resolve it into a plain texture of one level first.
    ID3D12Resource* resolved = nullptr;
    ID3D12Resource* source = texture;
    unsigned sourceSubresource = subresource;
    if (desc.SampleDesc.Count > 1)
    {
        D3D12_RESOURCE_DESC plain = desc;
        plain.MipLevels = 1;
        plain.DepthOrArraySize = 1;
        plain.SampleDesc.Count = 1;
        plain.SampleDesc.Quality = 0;
        plain.Flags = D3D12_RESOURCE_FLAG_NONE;
        D3D12_HEAP_PROPERTIES heap = {};
        heap.Type = D3D12_HEAP_TYPE_DEFAULT;
        heap.CreationNodeMask = heap.VisibleNodeMask = 1;
        if (FAILED(m_pDevice->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &plain,
                                                      D3D12_RESOURCE_STATE_RESOLVE_DEST, nullptr,
                                                      IID_PPV_ARGS(&resolved))))
        {
            LX_ERROR("Creation of texture for resolve failed\n");
            return false;
        }
        D3D12_RESOURCE_BARRIER barriers[2] = {
            LxD3D12TransitionBarrier(texture, state, D3D12_RESOURCE_STATE_RESOLVE_SOURCE),
            LxD3D12TransitionBarrier(resolved, D3D12_RESOURCE_STATE_RESOLVE_DEST, D3D12_RESOURCE_STATE_COPY_SOURCE)};
        list->ResourceBarrier(1, &barriers[0]);
        list->ResolveSubresource(resolved, 0, texture, subresource, desc.Format);
        barriers[0] = LxD3D12TransitionBarrier(texture, D3D12_RESOURCE_STATE_RESOLVE_SOURCE, state);
        list->ResourceBarrier(2, barriers);
        source = resolved;
        sourceSubresource = 0;
        desc = plain;
    }

    D3D12_PLACED_SUBRESOURCE_FOOTPRINT footprint = {};
    unsigned rows = 0;
    LxD3D12ReadbackBuffer readback;
    const D3D12_RESOURCE_STATES sourceState = source == texture ? state : D3D12_RESOURCE_STATE_COPY_SOURCE;
    bool ok = RecordCopyToReadback(source, sourceState, sourceSubresource, &readback, &footprint, &rows);
    if (ok && depthSlice >= footprint.Footprint.Depth)
    {
        LX_ERROR("LxD3D12GPUResourceManager::ReadbackSubresource.  Depth slice %u lies outside the level.", depthSlice);
        ok = false;
    }
    ok = ExecuteImmediate() && ok;
    if (resolved)
        resolved->Release();
    const unsigned char* data = ok ? readback.Map() : nullptr;
    if (!data)
    {
        return false;
    }
    const unsigned mip = sourceSubresource % desc.MipLevels;
    const unsigned width = static_cast<unsigned>(desc.Width >> mip) ? static_cast<unsigned>(desc.Width >> mip) : 1;
    const unsigned height = desc.Height >> mip ? desc.Height >> mip : 1;
    LxMappedSurface surface;
    surface.rowPitch = footprint.Footprint.RowPitch;
    surface.data =
        const_cast<unsigned char*>(data) + static_cast<size_t>(depthSlice) * footprint.Footprint.RowPitch * rows;
    out->Allocate(width, height, 4);
    LxConvertReadback(format, &surface, out);
    readback.Unmap();
    return true;
}

// --- platform creation -----------------------------------------------------------------------------------------------

LxGPUVertexBuffer* LxD3D12GPUResourceManager::APICreateResourceVertex(LxGPUResource::Behavior behavior,
                                                                      unsigned vertexSize, unsigned vertexCount,
                                                                      LxCountedPtr<LxMemoryBuffer> initialData,
                                                                      unsigned bindFlags, unsigned cpuAccessFlags)
{
    return Make<LxD3D12VertexBuffer>("Failed to create a new instance of a D3D12 vertex buffer", initialData, behavior,
                                     bindFlags, cpuAccessFlags, 0u, vertexSize, vertexCount);
}

LxGPUIndexBuffer* LxD3D12GPUResourceManager::APICreateResourceIndex(LxGPUResource::Behavior behavior,
                                                                    unsigned indexSize, unsigned indexCount,
                                                                    LxCountedPtr<LxMemoryBuffer> initialData,
                                                                    unsigned bindFlags, unsigned cpuAccessFlags)
{
    return Make<LxD3D12IndexBuffer>("Failed to create a new instance of a D3D12 index buffer", initialData, behavior,
                                    bindFlags, cpuAccessFlags, 0u, indexSize, indexCount);
}

LxConstantBuffer* LxD3D12GPUResourceManager::APICreateConstantBuffer(LxGPUResource::Behavior behavior, unsigned size,
                                                                     LxCountedPtr<LxMemoryBuffer> initialData,
                                                                     bool cpuWritable, unsigned miscHints)
{
    return Make<LxD3D12ConstantBuffer>("Failed to allocate CPU memory for D3D12 constant buffer", initialData, behavior,
                                       0u, cpuWritable ? unsigned(LxGPUResource::CPU_ACCESS_WRITE) : 0u, miscHints,
                                       size);
}

LxGPUStructuredBuffer* LxD3D12GPUResourceManager::APICreateStructuredBuffer(unsigned structSize, unsigned structCount,
                                                                            unsigned bindFlags,
                                                                            LxCountedPtr<LxMemoryBuffer> initialData,
                                                                            unsigned miscHints)
{
    return Make<LxD3D12StructuredBuffer>(kOutOfMemory, initialData, structSize, structCount, bindFlags, miscHints);
}

LxGPUVertexBuffer* LxD3D12GPUResourceManager::APICreateRenderableVB(LxGPUResourceFormat format, unsigned vertexCount,
                                                                    unsigned bindFlags)
{
    const unsigned bind = bindFlags | LxGPUResource::BIND_UNORDERED_ACCESS | LxGPUResource::BIND_SHADER_RESOURCE;
    return Make<LxD3D12VertexBuffer>("Failed to create a new instance of a D3D12 vertex buffer", nullptr,
                                     LxGPUResource::GPU_RESOURCE_STATIC, bind, 0u, 0u,
                                     LxGetFormatBitsPerElement(format) / 8, vertexCount);
}

LxGPUTexture2DArray* LxD3D12GPUResourceManager::APICreateTexture2DArray(
    LxGPUResource::Behavior behavior, unsigned width, unsigned height, LxGPUResourceFormat format,
    LxGPUTexture::MipType mipType, unsigned mipCount, unsigned arraySize, unsigned bindFlags, unsigned cpuAccessFlags,
    LxCountedPtr<LxMemoryBuffer> initialData, unsigned sampleCount, const LxGPUClearValue* clearValue)
{
    LxD3D12Texture2DArray* texture = new (std::nothrow) LxD3D12Texture2DArray(
        behavior, bindFlags, cpuAccessFlags, 0, format, width, height, arraySize, mipCount, mipType, sampleCount);
    if (!texture)
    {
        LX_ERROR("Out of memory");
        return nullptr;
    }
    const bool created = clearValue ? texture->Create(initialData, *clearValue) : texture->Create(initialData);
    if (!created)
    {
        delete texture;
        return nullptr;
    }
    return texture;
}

LxGPUTexture3D* LxD3D12GPUResourceManager::APICreateTexture3D(LxGPUResource::Behavior behavior, unsigned width,
                                                              unsigned height, unsigned depth,
                                                              LxGPUResourceFormat format, LxGPUTexture::MipType mipType,
                                                              unsigned mipCount, unsigned bindFlags,
                                                              unsigned cpuAccessFlags,
                                                              LxCountedPtr<LxMemoryBuffer> initialData)
{
    return Make<LxD3D12Texture3D>("Out of memory", initialData, behavior, bindFlags, cpuAccessFlags, 0u, format, width,
                                  height, depth, mipCount, mipType);
}

LxGPUTextureCubeArray*
LxD3D12GPUResourceManager::APICreateCubemapArray(LxGPUResource::Behavior behavior, unsigned edgeLength,
                                                 unsigned cubeCount, LxGPUResourceFormat format,
                                                 LxGPUTexture::MipType mipType, unsigned mipCount, unsigned bindFlags,
                                                 unsigned cpuAccessFlags, LxCountedPtr<LxMemoryBuffer> initialData)
{
    return Make<LxD3D12TextureCubeArray>(
        "Out of memory!!! But how!?!? I mean, isn't it supposed to be all virtualized and stuff????", initialData,
        behavior, bindFlags, cpuAccessFlags, 0u, format, edgeLength, cubeCount, mipCount, mipType);
}
