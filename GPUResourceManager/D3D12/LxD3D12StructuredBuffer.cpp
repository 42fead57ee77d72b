#include "GPUResourceManager/D3D12/LxD3D12StructuredBuffer.h"

#include "Common/LxLogManager.h"

LxD3D12StructuredBuffer::LxD3D12StructuredBuffer(unsigned structSize, unsigned structCount, unsigned bindFlags,
                                                 unsigned miscHints)
    : LxD3D12Resource(structSize, structCount, bindFlags, miscHints)
{
}

bool LxD3D12StructuredBuffer::Create(LxCountedPtr<LxMemoryBuffer> initialData)
{
    return m_storage.Create(*this, m_nSize, initialData, "LxD3D12StructuredBuffer::Create",
                            "Failed to allocate GPU resources for D3D12 structured buffer during its creation");
}

bool LxD3D12StructuredBuffer::UpdateBuffer(LxMemoryBuffer* data)
{
    if (!data)
    {
        LX_ERROR("LxD3D12StructuredBuffer::UpdateBuffer.  No data.");
        return false;
    }
    return m_storage.Update(data->GetData(), 0, data->GetSize() < m_nSize ? data->GetSize() : m_nSize,
                            "LxD3D12StructuredBuffer::UpdateBuffer");
}

bool LxD3D12StructuredBuffer::UpdateBufferRange(LxMemoryBuffer* data, unsigned first, unsigned count)
{
    // `first` and `count` are bytes of the buffer; `data` holds them from its own start.
    if (!data || data->GetSize() < count)
    {
        LX_ERROR("LxD3D12StructuredBuffer::UpdateBufferRange.  The data holds fewer than %u bytes.", count);
        return false;
    }
    return m_storage.Update(data->GetData(), first, count, "LxD3D12StructuredBuffer::UpdateBufferRange");
}

unsigned long long LxD3D12StructuredBuffer::APIMap(MapType type, unsigned offset, unsigned size, bool)
{
    return m_storage.Map(offset, size, type == MAP_READ || type == MAP_READ_WRITE, "LxD3D12StructuredBuffer::Map");
}

bool LxD3D12StructuredBuffer::APIUnmap()
{
    return m_storage.Unmap();
}
