#include "GPUResourceManager/D3D12/LxD3D12ConstantBuffer.h"

#include "Common/LxLogManager.h"

LxD3D12ConstantBuffer::LxD3D12ConstantBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags,
                                             unsigned miscHints, unsigned sizeInBytes)
    : LxD3D12Resource(behavior, bindFlags, cpuAccessFlags, miscHints, sizeInBytes)
{
}

bool LxD3D12ConstantBuffer::Create(LxCountedPtr<LxMemoryBuffer> initialData)
{
    return m_storage.Create(*this, (m_nSize + 255u) & ~255u, initialData, "LxD3D12ConstantBuffer::Create",
                            "Failed to allocate GPU resources for D3D12 constant buffer");
}

bool LxD3D12ConstantBuffer::UpdateBuffer(LxMemoryBuffer* data)
{
    if (!data)
    {
        LX_ERROR("LxD3D12ConstantBuffer::UpdateBuffer.  No data.");
        return false;
    }
    return m_storage.Update(data->GetData(), 0, data->GetSize() < m_nSize ? data->GetSize() : m_nSize,
                            "LxD3D12ConstantBuffer::UpdateBuffer");
}

bool LxD3D12ConstantBuffer::UpdateBufferRange(LxMemoryBuffer* data, unsigned first, unsigned count)
{
    // `first` and `count` are bytes of the buffer; `data` holds them from its own start.
    if (!data || data->GetSize() < count)
    {
        LX_ERROR("LxD3D12ConstantBuffer::UpdateBufferRange.  The data holds fewer than %u bytes.", count);
        return false;
    }
    return m_storage.Update(data->GetData(), first, count, "LxD3D12ConstantBuffer::UpdateBufferRange");
}

unsigned long long LxD3D12ConstantBuffer::APIMap(MapType type, unsigned offset, unsigned size, bool)
{
    return m_storage.Map(offset, size, type == MAP_READ || type == MAP_READ_WRITE, "LxD3D12ConstantBuffer::Map");
}

bool LxD3D12ConstantBuffer::APIUnmap()
{
    return m_storage.Unmap();
}
