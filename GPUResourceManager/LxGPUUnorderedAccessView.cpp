#include "GPUResourceManager/LxGPUUnorderedAccessView.h"

#include "Common/LxLogManager.h"

LxGPUUnorderedAccessView::LxGPUUnorderedAccessView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc)
    : LxGPUResourceView(resource, desc)
{
}

LxGPUUnorderedAccessView::LxGPUUnorderedAccessView(LxGPUResource* resource, LxGPUResourceFormat format,
                                                   unsigned resourceType, const LxGPUResourceDescription& resourceDesc)
    : LxGPUResourceView(resource,
                        LxGPUResourceViewDescription(LX_VIEW_UNORDERED_ACCESS, format, resourceType, resourceDesc))
{
}

bool LxGPUUnorderedAccessView::ClearFloat(const float values[4])
{
    (void)values;
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxGPUUnorderedAccessView::ClearFloat");
    return false;
}

bool LxGPUUnorderedAccessView::ClearUInt(const unsigned values[4])
{
    (void)values;
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxGPUUnorderedAccessView::ClearUInt");
    return false;
}
