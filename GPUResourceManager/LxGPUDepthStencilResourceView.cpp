#include "GPUResourceManager/LxGPUDepthStencilResourceView.h"

LxGPUDepthStencilResourceView::LxGPUDepthStencilResourceView(LxGPUResource* resource,
                                                             const LxGPUResourceViewDescription& desc)
    : LxGPUResourceView(resource, desc)
{
}

LxGPUDepthStencilResourceView::LxGPUDepthStencilResourceView(LxGPUResource* resource, LxGPUResourceFormat format,
                                                             unsigned resourceType,
                                                             const LxGPUResourceDescription& resourceDesc)
    : LxGPUResourceView(resource,
                        LxGPUResourceViewDescription(LX_VIEW_DEPTH_STENCIL, format, resourceType, resourceDesc))
{
}
