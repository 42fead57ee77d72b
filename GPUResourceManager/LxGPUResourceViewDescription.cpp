#include "GPUResourceManager/LxGPUResourceViewDescription.h"

#include "GPUResourceManager/LxGPUResource.h"

LxGPUResourceViewDescription::LxGPUResourceViewDescription()
    : viewType(LX_VIEW_SAMPLING), format(LX_FORMAT_UNKNOWN), resourceType(0), resourceDesc(), flags(0)
{
    resourceDesc.buffer.firstElement = 0;
    resourceDesc.buffer.numElements = 0;
}

LxGPUResourceViewDescription::LxGPUResourceViewDescription(LxGPUResourceViewType viewType_, LxGPUResourceFormat format_,
                                                           unsigned resourceType_,
                                                           const LxGPUResourceDescription& resourceDesc_,
                                                           unsigned short flags_)
    : viewType(viewType_), format(format_), resourceType(resourceType_), resourceDesc(resourceDesc_), flags(flags_)
{
}

bool LxGPUResourceViewDescription::operator==(const LxGPUResourceViewDescription& o) const
{
    if (viewType != o.viewType || format != o.format || resourceType != o.resourceType || flags != o.flags)
    {
        return false;
    }
    switch (resourceType)
    {
    case LxGPUResource::BUFFER:
        return resourceDesc.buffer.firstElement == o.resourceDesc.buffer.firstElement &&
               resourceDesc.buffer.numElements == o.resourceDesc.buffer.numElements;
    case LxGPUResource::TEXTURE_2D_ARRAY:
    case LxGPUResource::TEXTURE_3D:
    case LxGPUResource::TEXTURE_CUBE_ARRAY:
        return resourceDesc.texture.firstMip == o.resourceDesc.texture.firstMip &&
               resourceDesc.texture.mipCount == o.resourceDesc.texture.mipCount &&
               resourceDesc.texture.firstSlice == o.resourceDesc.texture.firstSlice &&
               resourceDesc.texture.sliceCount == o.resourceDesc.texture.sliceCount;
    default:
        return false;
    }
}
