#include "GPUResourceManager/D3D12/LxD3D12SamplingView.h"

LxD3D12SamplingView::LxD3D12SamplingView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc)
    : LxGPUSamplingResourceView(resource, desc)
{
}

bool LxD3D12SamplingView::Create()
{
    return CreateDescriptor(*this);
}

void LxD3D12SamplingView::Destroy()
{
    ReleaseDescriptor();
}
