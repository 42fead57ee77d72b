#include "GPUResourceManager/D3D12/LxD3D12VertexBuffer.h"

#include "Common/LxLogManager.h"

LxD3D12VertexBuffer::LxD3D12VertexBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags,
                                         unsigned miscHints, unsigned vertexSize, unsigned vertexCount)
    : LxD3D12Resource(behavior, bindFlags, cpuAccessFlags, miscHints, vertexSize, vertexCount)
{
}

bool LxD3D12VertexBuffer::Create(LxCountedPtr<LxMemoryBuffer> initialData)
{
    return m_storage.Create(*this, m_nSize, initialData, "LxD3D12VertexBuffer::Create",
                            "Failed to allocate GPU resources for D3D12 vertex buffer during its creation");
}

bool LxD3D12VertexBuffer::UpdateBuffer(LxMemoryBuffer* data)
{
    if (!data)
    {
        LX_ERROR("LxD3D12VertexBuffer::UpdateBuffer.  No data.");
        return false;
    }
    return m_storage.Update(data->GetData(), 0, data->GetSize() < m_nSize ? data->GetSize() : m_nSize,
                            "LxD3D12VertexBuffer::UpdateBuffer");
}

bool LxD3D12VertexBuffer::UpdateBufferRange(LxMemoryBuffer* data, unsigned first, unsigned count)
{
    // `first` and `count` are bytes of the buffer; `data` holds them from its own start.
    if (!data || data->GetSize() < count)
    {
        LX_ERROR("LxD3D12VertexBuffer::UpdateBufferRange.  The data holds fewer than %u bytes.", count);
        return false;
    }
    return m_storage.Update(data->GetData(), first, count, "LxD3D12VertexBuffer::UpdateBufferRange");
}

unsigned long long LxD3D12VertexBuffer::APIMap(MapType type, unsigned offset, unsigned size, bool)
{
    return m_storage.Map(offset, size, type == MAP_READ || type == MAP_READ_WRITE, "LxD3D12VertexBuffer::Map");
}

bool LxD3D12VertexBuffer::APIUnmap()
{
    return m_storage.Unmap();
}
