#include "GPUResourceManager/LxGPUTextureCubeArray.h"

#include "Common/LxLogManager.h"

LxGPUTextureCubeArray::LxGPUTextureCubeArray(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags,
                                             unsigned miscHints, LxGPUResourceFormat format, unsigned edgeLength,
                                             unsigned cubeCount, unsigned mipCount, MipType mipType)
    : LxGPUTexture(behavior, TEXTURE_CUBE_ARRAY, bindFlags, cpuAccessFlags, miscHints, format, edgeLength, edgeLength,
                   cubeCount ? cubeCount : 1, mipCount, mipType)
{
}

bool LxGPUTextureCubeArray::Map(MapType type, CubeMapFace face, unsigned mip, unsigned cubeIndex, LxMappedSurface* out)
{
    if (out == nullptr || face > CUBEMAP_FACE_NEGATIVE_Z || mip >= m_nMipCount || cubeIndex >= m_nDepthOrArraySize)
    {
        LX_ERROR("LxGPUTextureCubeArray::Map.  Invalid subresource (face %u, mip %u, cube %u) or no surface to fill.",
                 static_cast<unsigned>(face), mip, cubeIndex);
        return false;
    }
    const unsigned subresource = GetSubresourceIndex(mip, GetFaceSlice(face, cubeIndex));
    if (!BeginMap(type, subresource))
    {
        return false;
    }
    return FinishMap(subresource, APIMap(type, subresource, out));
}

bool LxGPUTextureCubeArray::APIMap(MapType, unsigned, LxMappedSurface*)
{
    ReportNotImplemented("LxGPUTextureCubeArray::Map");
    return false;
}

bool LxGPUTextureCubeArray::IsViewValid(const LxGPUResourceViewDescription& desc) const
{
    if (!LxGPUResource::IsViewValid(desc))
    {
        return false;
    }
    const bool asCube = desc.resourceType == TEXTURE_CUBE_ARRAY;
    if (!asCube && desc.resourceType != TEXTURE_2D_ARRAY)
    {
        if (desc.viewType == LX_VIEW_SAMPLING)
        {
            LX_ERROR("Invalid resource type for cubemap sampling view.  Cubemaps may be viewed as texture2DArray or "
                     "textureCube, nothing else");
        }
        else
        {
            LX_ERROR("View's resource type does not match actual resource type.");
        }
        return false;
    }
    const unsigned firstSlice = desc.resourceDesc.texture.firstSlice;
    const unsigned sliceCount = desc.resourceDesc.texture.sliceCount;
    // A view in cube terms must cover whole cubes; a 2D-array view may take any faces.
    const bool wholeCubes = !asCube || (firstSlice % 6 == 0 && sliceCount % 6 == 0);
    if (!IsMipRangeInside(desc) || sliceCount == 0 || firstSlice + sliceCount > GetSliceCount() || !wholeCubes)
    {
        LX_ERROR("View outside of resource dimensions.");
        return false;
    }
    return true;
}
