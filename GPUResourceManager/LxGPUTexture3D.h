// LxGPUTexture3D: a volume texture. Views index depth slices (W) with firstSlice/sliceCount, counted at the view's
// first mip. Sampling views must cover every slice; render-target and UAV views one mip level; no depth-stencil
// views. Map fills an LxMappedVolume per mip.
#pragma once

#include "GPUResourceManager/LxGPUTexture.h"

class LX_API LxGPUTexture3D : public LxGPUTexture
{
public:
    LxGPUTexture3D(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                   LxGPUResourceFormat format, unsigned width, unsigned height, unsigned depth, unsigned mipCount,
                   MipType mipType);

    unsigned GetDepth() const { return m_nDepthOrArraySize; }
    // Depth of one mip level (halved per level, at least 1).
    unsigned GetDepthAtMip(unsigned mip) const;
    unsigned GetSliceCount() const override { return 1; }
    LxGPUResourceDescription GetDefaultResourceDesc() const override;
    unsigned GetSizeInBytes() const override;

    bool Map(MapType type, unsigned mip, LxMappedVolume* out);
    bool Unmap(unsigned mip) { return LxGPUTexture::Unmap(mip, 0); }
    using LxGPUTexture::Unmap;

    bool IsViewValid(const LxGPUResourceViewDescription& desc) const override;

protected:
    virtual bool APIMap(MapType type, unsigned subresource, LxMappedVolume* out);
};
