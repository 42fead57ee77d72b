// LxGPUTextureCubeArray: cube maps and arrays of them. Each cube is six consecutive 2D slices (faces, in
// CubeMapFace order), so views index faces with firstSlice/sliceCount: a sampling view is either a cube view (its
// resource type TEXTURE_CUBE_ARRAY, whole cubes) or a 2D-array view of any faces (resource type TEXTURE_2D_ARRAY);
// render-target, depth and UAV views are face ranges. Map fills an LxMappedSurface per (face, mip, cube).
#pragma once

#include "GPUResourceManager/LxGPUTexture.h"

class LX_API LxGPUTextureCubeArray : public LxGPUTexture
{
public:
    enum CubeMapFace : unsigned
    {
        CUBEMAP_FACE_POSITIVE_X = 0,
        CUBEMAP_FACE_NEGATIVE_X = 1,
        CUBEMAP_FACE_POSITIVE_Y = 2,
        CUBEMAP_FACE_NEGATIVE_Y = 3,
        CUBEMAP_FACE_POSITIVE_Z = 4,
        CUBEMAP_FACE_NEGATIVE_Z = 5,
    };

    LxGPUTextureCubeArray(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                          LxGPUResourceFormat format, unsigned edgeLength, unsigned cubeCount, unsigned mipCount,
                          MipType mipType);

    unsigned GetEdgeLength() const { return m_nWidth; }
    unsigned GetCubeCount() const { return m_nDepthOrArraySize; }
    unsigned GetSliceCount() const override { return 6 * m_nDepthOrArraySize; }
    static unsigned GetFaceSlice(CubeMapFace face, unsigned cubeIndex) { return cubeIndex * 6 + face; }

    bool Map(MapType type, CubeMapFace face, unsigned mip, unsigned cubeIndex, LxMappedSurface* out);
    bool Unmap(CubeMapFace face, unsigned mip, unsigned cubeIndex)
    {
        return LxGPUTexture::Unmap(mip, GetFaceSlice(face, cubeIndex));
    }
    using LxGPUTexture::Unmap;

    bool IsViewValid(const LxGPUResourceViewDescription& desc) const override;

protected:
    virtual bool APIMap(MapType type, unsigned subresource, LxMappedSurface* out);
};
