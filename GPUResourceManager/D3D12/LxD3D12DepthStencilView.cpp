#include "GPUResourceManager/D3D12/LxD3D12DepthStencilView.h"

LxD3D12DepthStencilView::LxD3D12DepthStencilView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc)
    : LxGPUDepthStencilResourceView(resource, desc)
{
}

bool LxD3D12DepthStencilView::Create()
{
    return CreateDescriptor(*this);
}

void LxD3D12DepthStencilView::Destroy()
{
    ReleaseDescriptor();
}
