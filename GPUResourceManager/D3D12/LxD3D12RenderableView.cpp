#include "GPUResourceManager/D3D12/LxD3D12RenderableView.h"

LxD3D12RenderableView::LxD3D12RenderableView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc)
    : LxGPURenderableResourceView(resource, desc)
{
}

bool LxD3D12RenderableView::Create()
{
    return CreateDescriptor(*this);
}

void LxD3D12RenderableView::Destroy()
{
    ReleaseDescriptor();
}
