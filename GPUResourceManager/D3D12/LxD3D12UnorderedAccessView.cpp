#include "GPUResourceManager/D3D12/LxD3D12UnorderedAccessView.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

LxD3D12UnorderedAccessView::LxD3D12UnorderedAccessView(LxGPUResource* resource,
                                                       const LxGPUResourceViewDescription& desc)
    : LxD3D12View(resource, desc)
{
}

bool LxD3D12UnorderedAccessView::ClearFloat(const float values[4])
{
    return Clear(values, nullptr);
}

bool LxD3D12UnorderedAccessView::ClearUInt(const unsigned values[4])
{
    return Clear(nullptr, values);
}

bool LxD3D12UnorderedAccessView::Clear(const float* floats, const unsigned* uints)
{
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    LxD3D12RenderManager* renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    ID3D12GraphicsCommandList* list = renderManager ? renderManager->GetCurrentD3D12CommandList() : nullptr;
    ID3D12Resource* resource = LxD3D12GPUResourceManager::GetD3D12Resource(m_pResource);
    if (!manager || !list || !resource || !HasDescriptor())
    {
        LX_ERROR("LxD3D12UnorderedAccessView::Clear.  Needs a live view and an open command list of the render "
                 "manager.");
        return false;
    }
    // The clear reads the descriptor through the shader-visible heap bound on the list, and through this one.
    D3D12_CPU_DESCRIPTOR_HANDLE cpu = {};
    D3D12_GPU_DESCRIPTOR_HANDLE gpu = {};
    if (!manager->AllocateFrameDescriptors(D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV, 1, &cpu, &gpu))
    {
        return false;
    }
    manager->GetDevice()->CopyDescriptorsSimple(1, cpu, GetCPUHandle(), D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV);
    LxD3D12GPUResourceManager::Transition(list, m_pResource, D3D12_RESOURCE_STATE_UNORDERED_ACCESS);
    if (floats)
        list->ClearUnorderedAccessViewFloat(gpu, GetCPUHandle(), resource, floats, 0, nullptr);
    else
        list->ClearUnorderedAccessViewUint(gpu, GetCPUHandle(), resource, uints, 0, nullptr);
    return true;
}
