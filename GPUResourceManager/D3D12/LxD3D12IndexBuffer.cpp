#include "GPUResourceManager/D3D12/LxD3D12IndexBuffer.h"

#include "Common/LxLogManager.h"

LxD3D12IndexBuffer::LxD3D12IndexBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags,
                                       unsigned miscHints, unsigned indexSize, unsigned indexCount)
    : LxD3D12Resource(behavior, bindFlags, cpuAccessFlags, miscHints, indexSize, indexCount)
{
}

bool LxD3D12IndexBuffer::Create(LxCountedPtr<LxMemoryBuffer> initialData)
{
    return m_storage.Create(*this, m_nSize, initialData, "LxD3D12IndexBuffer::Create",
                            "Failed to allocate GPU resources for D3D12 index buffer");
}

bool LxD3D12IndexBuffer::UpdateBuffer(LxMemoryBuffer* data)
{
    if (!data)
    {
        LX_ERROR("LxD3D12IndexBuffer::UpdateBuffer.  No data.");
        return false;
    }
    return m_storage.Update(data->GetData(), 0, data->GetSize() < m_nSize ? data->GetSize() : m_nSize,
                            "LxD3D12IndexBuffer::UpdateBuffer");
}

bool LxD3D12IndexBuffer::UpdateBufferRange(LxMemoryBuffer* data, unsigned first, unsigned count)
{
    // `first` and `count` are bytes of the buffer; `data` holds them from its own start.
    if (!data || data->GetSize() < count)
    {
        LX_ERROR("LxD3D12IndexBuffer::UpdateBufferRange.  The data holds fewer than %u bytes.", count);
        return false;
    }
    return m_storage.Update(data->GetData(), first, count, "LxD3D12IndexBuffer::UpdateBufferRange");
}

unsigned long long LxD3D12IndexBuffer::APIMap(MapType type, unsigned offset, unsigned size, bool)
{
    return m_storage.Map(offset, size, type == MAP_READ || type == MAP_READ_WRITE, "LxD3D12IndexBuffer::Map");
}

bool LxD3D12IndexBuffer::APIUnmap()
{
    return m_storage.Unmap();
}
