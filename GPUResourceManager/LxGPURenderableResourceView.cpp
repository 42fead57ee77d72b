#include "GPUResourceManager/LxGPURenderableResourceView.h"

#include "GPUResourceManager/LxGPUResource.h"

LxGPURenderableResourceView::LxGPURenderableResourceView(LxGPUResource* resource,
                                                         const LxGPUResourceViewDescription& desc)
    : LxGPUResourceView(resource, desc)
{
}

LxGPURenderableResourceView::LxGPURenderableResourceView(LxGPUResource* resource, LxGPUResourceFormat format,
                                                         unsigned resourceType,
                                                         const LxGPUResourceDescription& resourceDesc)
    : LxGPUResourceView(resource, LxGPUResourceViewDescription(LX_VIEW_RENDERABLE, format, resourceType, resourceDesc))
{
}

LxGPURenderableResourceView::RMTargetType LxGPURenderableResourceView::GetRMTargetType() const
{
    return m_desc.resourceType == LxGPUResource::BUFFER ? RM_TARGET_BUFFER : RM_TARGET_TEXTURE;
}
