#include "GPUResourceManager/LxGPUSamplingResourceView.h"

LxGPUSamplingResourceView::LxGPUSamplingResourceView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc)
    : LxGPUResourceView(resource, desc)
{
}

LxGPUSamplingResourceView::LxGPUSamplingResourceView(LxGPUResource* resource, LxGPUResourceFormat format,
                                                     unsigned resourceType,
                                                     const LxGPUResourceDescription& resourceDesc)
    : LxGPUResourceView(resource, LxGPUResourceViewDescription(LX_VIEW_SAMPLING, format, resourceType, resourceDesc))
{
}
