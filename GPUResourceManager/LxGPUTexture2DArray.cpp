#include "GPUResourceManager/LxGPUTexture2DArray.h"

#include "Common/LxLogManager.h"

LxGPUTexture2DArray::LxGPUTexture2DArray(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags,
                                         unsigned miscHints, LxGPUResourceFormat format, unsigned width,
                                         unsigned height, unsigned arraySize, unsigned mipCount, MipType mipType,
                                         unsigned sampleCount, unsigned sampleQuality)
    : LxGPUTexture(behavior, TEXTURE_2D_ARRAY, bindFlags, cpuAccessFlags, miscHints, format, width, height,
                   arraySize ? arraySize : 1, mipCount, mipType, sampleCount, sampleQuality)
{
}

bool LxGPUTexture2DArray::Map(MapType type, unsigned mip, unsigned slice, LxMappedSurface* out)
{
    if (out == nullptr || mip >= m_nMipCount || slice >= m_nDepthOrArraySize)
    {
        LX_ERROR("LxGPUTexture2DArray::Map.  Invalid subresource (mip %u, slice %u) or no surface to fill.", mip,
                 slice);
        return false;
    }
    const unsigned subresource = GetSubresourceIndex(mip, slice);
    if (!BeginMap(type, subresource))
    {
        return false;
    }
    return FinishMap(subresource, APIMap(type, subresource, out));
}

bool LxGPUTexture2DArray::APIMap(MapType, unsigned, LxMappedSurface*)
{
    ReportNotImplemented("LxGPUTexture2DArray::Map");
    return false;
}

unsigned LxGPUTexture2DArray::GetNumTilesX() const
{
    ReportNotImplemented("LxGPUTexture2DArray::GetNumTilesX");
    return 0;
}

unsigned LxGPUTexture2DArray::GetNumTilesY() const
{
    ReportNotImplemented("LxGPUTexture2DArray::GetNumTilesY");
    return 0;
}

bool LxGPUTexture2DArray::MapTile(unsigned, unsigned, LxMappedSurface*)
{
    ReportNotImplemented("LxGPUTexture2DArray::MapTile");
    return false;
}

bool LxGPUTexture2DArray::UnmapTile(unsigned, unsigned)
{
    ReportNotImplemented("LxGPUTexture2DArray::UnmapTile");
    return false;
}

bool LxGPUTexture2DArray::IsViewValid(const LxGPUResourceViewDescription& desc) const
{
    if (!LxGPUResource::IsViewValid(desc))
    {
        return false;
    }
    if (desc.resourceType != GetType())
    {
        LX_ERROR("View's resource type does not match actual resource type.");
        return false;
    }
    const unsigned firstSlice = desc.resourceDesc.texture.firstSlice;
    const unsigned sliceCount = desc.resourceDesc.texture.sliceCount;
    if (!IsMipRangeInside(desc) || sliceCount == 0 || firstSlice + sliceCount > m_nDepthOrArraySize)
    {
        LX_ERROR("View outside of resource dimensions.");
        return false;
    }
    return true;
}
