#include "GPUResourceManager/D3D12/LxD3D12UploadHeap.h"

#include "Common/LxLogManager.h"

LxD3D12UploadHeap::~LxD3D12UploadHeap()
{
    Release();
}

void LxD3D12UploadHeap::Release()
{
    if (m_pResource)
    {
        m_pResource->Unmap(0, nullptr);
        m_pResource->Release();
        m_pResource = nullptr;
    }
}

bool LxD3D12UploadHeap::Create(ID3D12Device* device, unsigned long long capacity)
{
    Release();
    if (!device || capacity == 0)
    {
        LX_ERROR("LxD3D12UploadHeap::Create.  No device or no capacity.");
        return false;
    }
    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = D3D12_HEAP_TYPE_UPLOAD;
    heap.CreationNodeMask = heap.VisibleNodeMask = 1;
    D3D12_RESOURCE_DESC desc = {};
    desc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
    desc.Width = capacity;
    desc.Height = desc.DepthOrArraySize = desc.MipLevels = 1;
    desc.Format = DXGI_FORMAT_UNKNOWN;
    desc.SampleDesc.Count = 1;
    desc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
    HRESULT hr = device->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &desc, D3D12_RESOURCE_STATE_GENERIC_READ,
                                                 nullptr, IID_PPV_ARGS(&m_pResource));
    if (FAILED(hr))
    {
        m_pResource = nullptr;
        LX_ERROR("LxD3D12UploadHeap::Create.  Creation of the upload buffer of %llu bytes failed (0x%08lX).", capacity,
                 static_cast<unsigned long>(hr));
        return false;
    }
    // Mapped for the heap's whole life: the CPU never reads upload memory, so no read range.
    const D3D12_RANGE noRead = {0, 0};
    void* begin = nullptr;
    hr = m_pResource->Map(0, &noRead, &begin);
    if (FAILED(hr) || !begin)
    {
        LX_ERROR("LxD3D12UploadHeap::Create.  Mapping the upload buffer failed (0x%08lX).",
                 static_cast<unsigned long>(hr));
        m_pResource->Release();
        m_pResource = nullptr;
        return false;
    }
    return InitializeRing(static_cast<unsigned char*>(begin), capacity, m_pResource);
}
