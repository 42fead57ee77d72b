#include "GPUResourceManager/D3D12/LxD3D12DescriptorHeap.h"

#include "Common/LxLogManager.h"

LxD3D12DescriptorHeap::~LxD3D12DescriptorHeap()
{
    Release();
}

void LxD3D12DescriptorHeap::Release()
{
    if (m_pHeap)
    {
        m_pHeap->Release();
        m_pHeap = nullptr;
    }
    m_pDevice = nullptr;
    Reset(0);
}

bool LxD3D12DescriptorHeap::Create(ID3D12Device* device, D3D12_DESCRIPTOR_HEAP_TYPE type, unsigned count,
                                   bool shaderVisible)
{
    Release();
    if (!device || count == 0)
    {
        LX_ERROR("LxD3D12DescriptorHeap::Create.  No device or no descriptors.");
        return false;
    }
    D3D12_DESCRIPTOR_HEAP_DESC desc = {};
    desc.Type = type;
    desc.NumDescriptors = count;
    desc.Flags = shaderVisible ? D3D12_DESCRIPTOR_HEAP_FLAG_SHADER_VISIBLE : D3D12_DESCRIPTOR_HEAP_FLAG_NONE;
    const HRESULT hr = device->CreateDescriptorHeap(&desc, IID_PPV_ARGS(&m_pHeap));
    if (FAILED(hr))
    {
        m_pHeap = nullptr;
        LX_ERROR("LxD3D12DescriptorHeap::Create.  Creation of a heap of %u descriptors failed (0x%08lX).", count,
                 static_cast<unsigned long>(hr));
        return false;
    }
    m_pDevice = device;
    m_type = type;
    m_nIncrement = device->GetDescriptorHandleIncrementSize(type);
    m_bShaderVisible = shaderVisible;
    Reset(count);
    return true;
}

D3D12_CPU_DESCRIPTOR_HANDLE LxD3D12DescriptorHeap::GetCPUHandle(unsigned index) const
{
    D3D12_CPU_DESCRIPTOR_HANDLE handle = {};
    if (m_pHeap)
    {
        handle = m_pHeap->GetCPUDescriptorHandleForHeapStart();
        handle.ptr += static_cast<SIZE_T>(index) * m_nIncrement;
    }
    return handle;
}

D3D12_GPU_DESCRIPTOR_HANDLE LxD3D12DescriptorHeap::GetGPUHandle(unsigned index) const
{
    D3D12_GPU_DESCRIPTOR_HANDLE handle = {};
    if (m_pHeap && m_bShaderVisible)
    {
        handle = m_pHeap->GetGPUDescriptorHandleForHeapStart();
        handle.ptr += static_cast<UINT64>(index) * m_nIncrement;
    }
    return handle;
}

D3D12_DESCRIPTOR_HEAP_TYPE LxD3D12DescriptorHeap::GetHeapTypeFor(DescriptorKind kind)
{
    switch (kind)
    {
    case DESCRIPTOR_SAMPLER:
        return D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER;
    case DESCRIPTOR_RTV:
        return D3D12_DESCRIPTOR_HEAP_TYPE_RTV;
    case DESCRIPTOR_DSV:
        return D3D12_DESCRIPTOR_HEAP_TYPE_DSV;
    default:
        return D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV;
    }
}

bool LxD3D12DescriptorHeap::CreatePlaced(unsigned index, DescriptorKind kind, ID3D12Resource* resource,
                                         const void* viewDesc, ID3D12Resource* counter)
{
    if (!m_pHeap)
    {
        LX_ERROR("LxD3D12DescriptorHeap::CreatePlaced.  The heap was not created.");
        return false;
    }
    if (GetHeapTypeFor(kind) != m_type)
    {
        LX_ERROR("Wrong type of descriptor passed to CreatePlaced");
        return false;
    }
    if (index >= GetMaxDescriptors())
    {
        LX_ERROR("LxD3D12DescriptorHeap::CreatePlaced.  Slot %u is outside the heap of %u descriptors.", index,
                 GetMaxDescriptors());
        return false;
    }
    if (!viewDesc && (kind == DESCRIPTOR_CBV || kind == DESCRIPTOR_SAMPLER))
    {
        LX_ERROR("LxD3D12DescriptorHeap::CreatePlaced.  Constant-buffer views and samplers need a description.");
        return false;
    }
    const D3D12_CPU_DESCRIPTOR_HANDLE handle = GetCPUHandle(index);
    switch (kind)
    {
    case DESCRIPTOR_CBV:
        m_pDevice->CreateConstantBufferView(static_cast<const D3D12_CONSTANT_BUFFER_VIEW_DESC*>(viewDesc), handle);
        break;
    case DESCRIPTOR_SRV:
        m_pDevice->CreateShaderResourceView(resource, static_cast<const D3D12_SHADER_RESOURCE_VIEW_DESC*>(viewDesc),
                                            handle);
        break;
    case DESCRIPTOR_UAV:
        m_pDevice->CreateUnorderedAccessView(resource, counter,
                                             static_cast<const D3D12_UNORDERED_ACCESS_VIEW_DESC*>(viewDesc), handle);
        break;
    case DESCRIPTOR_SAMPLER:
        m_pDevice->CreateSampler(static_cast<const D3D12_SAMPLER_DESC*>(viewDesc), handle);
        break;
    case DESCRIPTOR_RTV:
        m_pDevice->CreateRenderTargetView(resource, static_cast<const D3D12_RENDER_TARGET_VIEW_DESC*>(viewDesc),
                                          handle);
        break;
    case DESCRIPTOR_DSV:
        m_pDevice->CreateDepthStencilView(resource, static_cast<const D3D12_DEPTH_STENCIL_VIEW_DESC*>(viewDesc),
                                          handle);
        break;
    }
    return true;
}
