#include "GPUResourceManager/D3D12/LxD3D12BufferResource.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"

#include <cstring>

LxD3D12BufferResource::~LxD3D12BufferResource()
{
    Destroy();
}

void LxD3D12BufferResource::Destroy()
{
    if (m_pResource)
    {
        Unmap();
        if (m_pPersistent)
        {
            m_pResource->Unmap(0, nullptr);
            m_pPersistent = nullptr;
        }
        m_pResource->Release();
        m_pResource = nullptr;
    }
}

bool LxD3D12BufferResource::Create(const LxGPUBuffer& buffer, unsigned gpuSize,
                                   LxCountedPtr<LxMemoryBuffer> initialData, const char* who,
                                   const char* failureMessage)
{
    if (m_pResource)
    {
        LX_ERROR("%s.  The buffer was already created.", who);
        return false;
    }
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    if (!manager || !manager->GetDevice())
    {
        LX_ERROR("%s.  No Direct3D 12 device: initialise the resource manager first.", who);
        return false;
    }
    if (initialData && initialData->GetSize() < buffer.GetSize())
    {
        LX_ERROR("%s.  The initial data holds %u bytes, the buffer %u.", who, initialData->GetSize(), buffer.GetSize());
        return false;
    }
    D3D12_RESOURCE_STATES state = D3D12_RESOURCE_STATE_COMMON;
    m_heapType = D3D12_HEAP_TYPE_DEFAULT;
    if (buffer.QueryCPUAccess(LxGPUResource::CPU_ACCESS_READ | LxGPUResource::CPU_ACCESS_READBACK))
    {
        m_heapType = D3D12_HEAP_TYPE_READBACK;
        state = D3D12_RESOURCE_STATE_COPY_DEST;
    }
    else if (buffer.QueryCPUAccess(LxGPUResource::CPU_ACCESS_WRITE))
    {
        m_heapType = D3D12_HEAP_TYPE_UPLOAD;
        state = D3D12_RESOURCE_STATE_GENERIC_READ;
    }
    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = m_heapType;
    heap.CreationNodeMask = heap.VisibleNodeMask = 1;
    D3D12_RESOURCE_DESC desc = {};
    desc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
    desc.Width = gpuSize;
    desc.Height = desc.DepthOrArraySize = desc.MipLevels = 1;
    desc.Format = DXGI_FORMAT_UNKNOWN;
    desc.SampleDesc.Count = 1;
    desc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
    if (buffer.QueryUsage(LxGPUResource::BIND_UNORDERED_ACCESS) && m_heapType == D3D12_HEAP_TYPE_DEFAULT)
    {
        desc.Flags = D3D12_RESOURCE_FLAG_ALLOW_UNORDERED_ACCESS;
    }
    if (FAILED(manager->GetDevice()->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &desc, state, nullptr,
                                                             IID_PPV_ARGS(&m_pResource))))
    {
        m_pResource = nullptr;
        LX_ERROR("%s", failureMessage);
        return false;
    }
    m_nSize = gpuSize;
    if (m_heapType == D3D12_HEAP_TYPE_UPLOAD)
    {
        const D3D12_RANGE noRead = {0, 0};
        void* mapped = nullptr;
        if (FAILED(m_pResource->Map(0, &noRead, &mapped)) || !mapped)
        {
            LX_ERROR("%s.  The upload buffer could not be mapped.", who);
            Destroy();
            return false;
        }
        m_pPersistent = static_cast<unsigned char*>(mapped);
    }
    if (initialData && m_heapType != D3D12_HEAP_TYPE_READBACK &&
        !Update(initialData->GetData(), 0, buffer.GetSize(), who))
    {
        Destroy();
        return false;
    }
    return true;
}

unsigned long long LxD3D12BufferResource::Map(unsigned offset, unsigned size, bool read, const char* who)
{
    if (!m_pResource || static_cast<unsigned long long>(offset) + size > m_nSize)
    {
        LX_ERROR("%s.  Bytes %u to %u are not in the buffer.", who, offset, offset + size);
        return 0;
    }
    if (m_pPersistent)
    {
        return reinterpret_cast<unsigned long long>(m_pPersistent + offset);
    }
    if (m_heapType == D3D12_HEAP_TYPE_READBACK && read)
    {
        const D3D12_RANGE range = {offset, static_cast<SIZE_T>(offset) + size};
        void* mapped = nullptr;
        if (FAILED(m_pResource->Map(0, &range, &mapped)) || !mapped)
        {
            LX_ERROR("%s.  The readback buffer could not be mapped.", who);
            return 0;
        }
        m_bReadMapped = true;
        return reinterpret_cast<unsigned long long>(static_cast<unsigned char*>(mapped) + offset);
    }
    LX_ERROR("%s.  A buffer in GPU memory cannot be mapped.", who);
    return 0;
}

bool LxD3D12BufferResource::Unmap()
{
    if (m_bReadMapped)
    {
        const D3D12_RANGE noWrite = {0, 0};
        m_pResource->Unmap(0, &noWrite);
        m_bReadMapped = false;
    }
    return true;
}

bool LxD3D12BufferResource::Update(const unsigned char* data, unsigned offset, unsigned bytes, const char* who)
{
    if (!m_pResource || !data || static_cast<unsigned long long>(offset) + bytes > m_nSize)
    {
        LX_ERROR("%s.  Nothing to update, or bytes %u to %u are not in the buffer.", who, offset, offset + bytes);
        return false;
    }
    if (m_pPersistent)
    {
        std::memcpy(m_pPersistent + offset, data, bytes);
        return true;
    }
    if (m_heapType == D3D12_HEAP_TYPE_READBACK)
    {
        LX_ERROR("%s.  A readback buffer is written by the GPU only.", who);
        return false;
    }
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    LxMutex::ScopedLock lock(manager->GetImmediateLock());
    LxUploadAllocation upload;
    if (!manager->AllocateUpload(bytes, 16, &upload))
    {
        return false;
    }
    std::memcpy(upload.GetCPUAddress(), data, bytes);
    ID3D12GraphicsCommandList* list = manager->BeginImmediate();
    if (list)
    {
        list->CopyBufferRegion(m_pResource, offset, manager->GetUploadHeap().GetResource(), upload.offset, bytes);
    }
    return manager->ExecuteImmediate() && list;
}
