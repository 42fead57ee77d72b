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
    if (auto* vertices = dynamic_cast<LxD3D12VertexBuffer*>(buffer))
        return vertices->GetD3D12Resource();
    if (auto* indices = dynamic_cast<LxD3D12IndexBuffer*>(buffer))
        return indices->GetD3D12Resource();
    if (auto* constants = dynamic_cast<LxD3D12ConstantBuffer*>(buffer))
        return constants->GetD3D12Resource();
    if (auto* structured = dynamic_cast<LxD3D12StructuredBuffer*>(buffer))
        return structured->GetD3D12Resource();
    return nullptr;
}

LxGPUResourceManager* CreateD3D12Manager()
{
    return new LxD3D12GPUResourceManager();
}
} // namespace

void LxD3D12GPUResourceManager::RegisterCreateFunction()
{
    SetCreateFunction(CreateD3D12Manager);
    LxD3D12RenderManager::SetBufferResolver(ResolveBuffer);
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
    return InitializeWithDevice(renderManager->GetDevice(), renderManager->GetCommandQueue(), uploadHeapSize,
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
    for (unsigned type = 0; ok && type < D3D12_DESCRIPTOR_HEAP_TYPE_NUM_TYPES; ++type)
    {
        const D3D12_DESCRIPTOR_HEAP_TYPE heapType = static_cast<D3D12_DESCRIPTOR_HEAP_TYPE>(type);
        const bool shaderVisible =
            heapType == D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV || heapType == D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER;
        // Shader-visible sampler heaps hold at most 2048 descriptors.
        const unsigned count =
            heapType == D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER && descriptors > 2048 ? 2048 : descriptors;
        ok = m_descriptorHeaps[type].Create(device, heapType, count, shaderVisible);
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
