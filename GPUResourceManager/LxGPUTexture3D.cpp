#include "GPUResourceManager/LxGPUTexture3D.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxGPUTextureSize.h"

LxGPUTexture3D::LxGPUTexture3D(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                               LxGPUResourceFormat format, unsigned width, unsigned height, unsigned depth,
                               unsigned mipCount, MipType mipType)
    : LxGPUTexture(behavior, TEXTURE_3D, bindFlags, cpuAccessFlags, miscHints, format, width, height, depth ? depth : 1,
                   mipCount, mipType)
{
}

unsigned LxGPUTexture3D::GetDepthAtMip(unsigned mip) const
{
    const unsigned d = mip < 32 ? m_nDepthOrArraySize >> mip : 0;
    return d ? d : 1;
}

LxGPUResourceDescription LxGPUTexture3D::GetDefaultResourceDesc() const
{
    return LxGPUResourceDescription::Texture(0, static_cast<unsigned short>(m_nMipCount), 0,
                                             static_cast<unsigned short>(m_nDepthOrArraySize));
}

unsigned LxGPUTexture3D::GetSizeInBytes() const
{
    return LxComputeTextureSize(m_nWidth, m_nHeight, m_nDepthOrArraySize, m_nMipCount, m_format);
}

bool LxGPUTexture3D::Map(MapType type, unsigned mip, LxMappedVolume* out)
{
    if (out == nullptr || mip >= m_nMipCount)
    {
        LX_ERROR("LxGPUTexture3D::Map.  Invalid mip level %u or no volume to fill.", mip);
        return false;
    }
    const unsigned subresource = GetSubresourceIndex(mip, 0);
    if (!BeginMap(type, subresource))
    {
        return false;
    }
    return FinishMap(subresource, APIMap(type, subresource, out));
}

bool LxGPUTexture3D::APIMap(MapType, unsigned, LxMappedVolume*)
{
    ReportNotImplemented("LxGPUTexture3D::Map");
    return false;
}

bool LxGPUTexture3D::IsViewValid(const LxGPUResourceViewDescription& desc) const
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
    if (!IsMipRangeInside(desc))
    {
        LX_ERROR("Illegal mip level range for view of 3D texture.");
        return false;
    }
    const unsigned firstSlice = desc.resourceDesc.texture.firstSlice;
    const unsigned sliceCount = desc.resourceDesc.texture.sliceCount;
    const unsigned depth = GetDepthAtMip(desc.resourceDesc.texture.firstMip);
    if (sliceCount == 0 || firstSlice + sliceCount > depth)
    {
        LX_ERROR("Illegal slice range for view of 3D texture.");
        return false;
    }
    if (desc.viewType == LX_VIEW_DEPTH_STENCIL)
    {
        LX_ERROR("Depth-stencil views of 3D textures are unsupported.");
        return false;
    }
    if (desc.viewType != LX_VIEW_SAMPLING && desc.resourceDesc.texture.mipCount != 1)
    {
        LX_ERROR("Non-sampling views of 3D textures must reference only one mip level.");
        return false;
    }
    if (desc.viewType == LX_VIEW_SAMPLING && (firstSlice != 0 || sliceCount != depth))
    {
        LX_ERROR("Sampling views of 3D textures must reference the entire texture.");
        return false;
    }
    return true;
}
