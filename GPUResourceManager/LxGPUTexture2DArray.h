// LxGPUTexture2DArray: 2D textures (arrays of size 1), 2D arrays, render targets and depth buffers, optionally
// multisampled. Views index array slices with firstSlice/sliceCount. Map fills an LxMappedSurface per (mip,
// slice). The tiled operations (a texture too large to render in one go, drawn tile by tile) are the platform's.
#pragma once

#include "GPUResourceManager/LxGPUTexture.h"

class LX_API LxGPUTexture2DArray : public LxGPUTexture
{
public:
    LxGPUTexture2DArray(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                        LxGPUResourceFormat format, unsigned width, unsigned height, unsigned arraySize,
                        unsigned mipCount, MipType mipType, unsigned sampleCount = 1, unsigned sampleQuality = 0);

    unsigned GetArraySize() const { return m_nDepthOrArraySize; }

    // Checks the map (see LxGPUTexture), then lets the platform fill `out`; false after logging.
    bool Map(MapType type, unsigned mip, unsigned slice, LxMappedSurface* out);

    virtual unsigned GetNumTilesX() const;
    virtual unsigned GetNumTilesY() const;
    virtual bool MapTile(unsigned tileX, unsigned tileY, LxMappedSurface* out);
    virtual bool UnmapTile(unsigned tileX, unsigned tileY);

    bool IsViewValid(const LxGPUResourceViewDescription& desc) const override;

protected:
    // The platform's map of one subresource (base: IMPLEMENT ME).
    virtual bool APIMap(MapType type, unsigned subresource, LxMappedSurface* out);
};
