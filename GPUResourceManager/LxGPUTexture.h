// LxGPUTexture: the base of the texture kinds (2D arrays, 3D textures, cube arrays): format, dimensions, mip chain,
// multisampling and the platform operations every texture offers.
//
// Dimensions: width x height, plus the array size (2D arrays), the depth (3D) or the cube count (cube arrays). A mip
// count of 0 at construction means the full chain down to 1x1. Map/Unmap work per subresource (mip + slice x mips):
// a second Map of a mapped subresource fails with "Cannot map a resource twice without unmapping.", an Unmap of an
// unmapped one with "Unmap was called on a resource which was not locked.". Platform operations log IMPLEMENT ME in
// their base versions and fail. One thread at a time.
#pragma once

#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"
#include "GPUResourceManager/LxGPUResource.h"
#include "GPUResourceManager/LxMappedSurface.h"

class LxImageData2D;

// The value a render target or depth buffer is created for clearing to (fast clears).
struct LxGPUClearValue
{
    LxGPUResourceFormat format = LX_FORMAT_UNKNOWN;
    float color[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    float depth = 1.0f;
    unsigned char stencil = 0;
};

class LX_API LxGPUTexture : public LxGPUResource
{
public:
    enum MipType : unsigned
    {
        MIP_NONE = 0,          // only the levels the initial data holds; the rest stays undefined
        MIP_USER_SUPPLIED = 1, // the initial data holds every level, level 0 first
        MIP_AUTO_GENERATE = 2, // level 0 is supplied, the GPU generates the others
    };

    LxGPUTexture(Behavior behavior, Type type, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                 LxGPUResourceFormat format, unsigned width, unsigned height, unsigned depthOrArraySize,
                 unsigned mipCount, MipType mipType, unsigned sampleCount = 1, unsigned sampleQuality = 0);

    LxGPUResourceFormat GetFormat() const { return m_format; }
    unsigned GetWidth() const { return m_nWidth; }
    unsigned GetHeight() const { return m_nHeight; }
    // Array size of 2D arrays, depth of 3D textures, cube count of cube arrays.
    unsigned GetDepthOrArraySize() const { return m_nDepthOrArraySize; }
    unsigned GetMipCount() const { return m_nMipCount; }
    MipType GetMipType() const { return m_mipType; }
    unsigned GetSampleCount() const { return m_nSampleCount; }
    unsigned GetSampleQuality() const { return m_nSampleQuality; }
    // Number of 2D slices (array slices, or faces of all cubes; 1 for 3D textures).
    virtual unsigned GetSliceCount() const { return m_nDepthOrArraySize; }
    unsigned GetSubresourceIndex(unsigned mip, unsigned slice) const { return mip + slice * m_nMipCount; }

    // Levels of a full chain for these dimensions (1 + floor(log2(largest))).
    static unsigned GetMaxMipCount(unsigned width, unsigned height, unsigned depth);
    // Whether the format suits the kind of texture. Not decided yet: warns IMPLEMENT ME and accepts every pair.
    static bool CheckFormatForType(Type type, LxGPUResourceFormat format);

    LxGPUResourceFormat GetDefaultViewFormat() const override { return m_format; }
    LxGPUResourceDescription GetDefaultResourceDesc() const override;

    LxCountedPtr<LxGPUDepthStencilResourceView> GetDepthStencilView(const LxGPUResourceViewDescription& desc)
    {
        return GetDepthStencilViewImpl(desc);
    }

    // Bytes of the whole texture computed from the format (LxComputeTextureSize per slice, times slices and
    // samples); the platform may answer its real allocation size instead.
    virtual unsigned GetSizeInBytes() const;

    // --- platform operations (base: IMPLEMENT ME) ---------------------------------------------------------------
    // Makes the GPU texture, filled from `initialData` (may be null) laid out level by level, slice by slice.
    virtual bool Create(LxCountedPtr<LxMemoryBuffer> initialData);
    virtual bool Create(LxCountedPtr<LxMemoryBuffer> initialData, const LxGPUClearValue& clearValue);
    virtual void Destroy();
    virtual bool Unmap(unsigned mip, unsigned slice);
    virtual bool ReadbackMipLevel(unsigned mip, unsigned slice, LxImageData2D* out);
    virtual bool GetReadbackImage(LxImageData2D* out);
    virtual bool GenerateMips();
    virtual bool Blit(LxGPUTexture* destination);
    virtual bool SaveToDDS(const LxString& path);
    virtual bool Update(LxCountedPtr<LxMemoryBuffer> data, unsigned mip, unsigned slice);
    virtual LxCountedPtr<LxMemoryBuffer> GetMemoryBuffer(unsigned mip, unsigned slice);

protected:
    // Checks a map of one subresource (map kind, not already mapped) and marks it mapped; false after logging.
    bool BeginMap(MapType type, unsigned subresource);
    // Marks a subresource unmapped; false (logged) when it was not mapped.
    bool EndMap(unsigned subresource);
    // Passes on the platform map's result; a failed platform map leaves the subresource unmapped again.
    bool FinishMap(unsigned subresource, bool mapped);
    bool IsSubresourceMapped(unsigned subresource) const { return m_mappedSubresources.Contains(subresource); }
    // The platform's unmap of one subresource (base: IMPLEMENT ME).
    virtual bool APIUnmap(unsigned subresource);

    // Mip range check shared by the kinds: counts of at least 1, inside the chain.
    bool IsMipRangeInside(const LxGPUResourceViewDescription& desc) const;

    LxGPUResourceFormat m_format;
    unsigned m_nWidth;
    unsigned m_nHeight;
    unsigned m_nDepthOrArraySize;
    unsigned m_nMipCount;
    MipType m_mipType;
    unsigned m_nSampleCount;
    unsigned m_nSampleQuality;

private:
    LxArray<unsigned> m_mappedSubresources;
};
