#include "GPUResourceManager/D3D12/LxD3D12ReadbackBuffer.h"

#include "Common/LxLogManager.h"

LxD3D12ReadbackBuffer::~LxD3D12ReadbackBuffer()
{
    Release();
}

void LxD3D12ReadbackBuffer::Release()
{
    if (m_pResource)
    {
        Unmap();
        m_pResource->Release();
        m_pResource = nullptr;
    }
    m_nSize = 0;
}

bool LxD3D12ReadbackBuffer::Create(ID3D12Device* device, unsigned long long size)
{
    Release();
    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = D3D12_HEAP_TYPE_READBACK;
    heap.CreationNodeMask = heap.VisibleNodeMask = 1;
    D3D12_RESOURCE_DESC desc = {};
    desc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
    desc.Width = size;
    desc.Height = desc.DepthOrArraySize = desc.MipLevels = 1;
    desc.Format = DXGI_FORMAT_UNKNOWN;
    desc.SampleDesc.Count = 1;
    desc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
    if (!device || size == 0 ||
        FAILED(device->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &desc, D3D12_RESOURCE_STATE_COPY_DEST,
                                               nullptr, IID_PPV_ARGS(&m_pResource))))
    {
        m_pResource = nullptr;
        LX_ERROR("Creation of readback buffer failed\n");
        return false;
    }
    m_nSize = size;
    return true;
}

const unsigned char* LxD3D12ReadbackBuffer::Map()
{
    void* data = nullptr;
    const D3D12_RANGE all = {0, static_cast<SIZE_T>(m_nSize)};
    if (!m_pResource || m_bMapped || FAILED(m_pResource->Map(0, &all, &data)) || !data)
    {
        LX_ERROR("LxD3D12ReadbackBuffer::Map.  The readback buffer could not be mapped.");
        return nullptr;
    }
    m_bMapped = true;
    return static_cast<const unsigned char*>(data);
}

void LxD3D12ReadbackBuffer::Unmap()
{
    if (m_bMapped)
    {
        const D3D12_RANGE noWrite = {0, 0};
        m_pResource->Unmap(0, &noWrite);
        m_bMapped = false;
    }
}
