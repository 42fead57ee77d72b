#include "GPUResourceManager/LxGPUTexture.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxGPUTextureSize.h"

LxGPUTexture::LxGPUTexture(Behavior behavior, Type type, unsigned bindFlags, unsigned cpuAccessFlags,
                           unsigned miscHints, LxGPUResourceFormat format, unsigned width, unsigned height,
                           unsigned depthOrArraySize, unsigned mipCount, MipType mipType, unsigned sampleCount,
                           unsigned sampleQuality)
    : LxGPUResource(behavior, type, bindFlags, cpuAccessFlags, miscHints), m_format(format), m_nWidth(width),
      m_nHeight(height), m_nDepthOrArraySize(depthOrArraySize), m_nMipCount(mipCount), m_mipType(mipType),
      m_nSampleCount(sampleCount ? sampleCount : 1), m_nSampleQuality(sampleQuality)
{
    if (m_nMipCount == 0)
    {
        m_nMipCount = GetMaxMipCount(width, height, type == TEXTURE_3D ? depthOrArraySize : 1);
    }
}

unsigned LxGPUTexture::GetMaxMipCount(unsigned width, unsigned height, unsigned depth)
{
    unsigned largest = width > height ? width : height;
    largest = largest > depth ? largest : depth;
    unsigned levels = 1;
    while (largest > 1)
    {
        largest >>= 1;
        ++levels;
    }
    return levels;
}

bool LxGPUTexture::CheckFormatForType(Type, LxGPUResourceFormat)
{
    LX_WARNING("%s ::: IMPLEMENT ME!", "LxGPUTexture::CheckFormatForType");
    return true;
}

LxGPUResourceDescription LxGPUTexture::GetDefaultResourceDesc() const
{
    return LxGPUResourceDescription::Texture(0, static_cast<unsigned short>(m_nMipCount), 0,
                                             static_cast<unsigned short>(GetSliceCount()));
}

unsigned LxGPUTexture::GetSizeInBytes() const
{
    return LxComputeTextureSize(m_nWidth, m_nHeight, 1, m_nMipCount, m_format) * GetSliceCount() * m_nSampleCount;
}

bool LxGPUTexture::IsMipRangeInside(const LxGPUResourceViewDescription& desc) const
{
    const unsigned first = desc.resourceDesc.texture.firstMip;
    const unsigned count = desc.resourceDesc.texture.mipCount;
    return count >= 1 && first + count <= m_nMipCount;
}

bool LxGPUTexture::BeginMap(MapType type, unsigned subresource)
{
    if (!ValidateMapType(type))
    {
        return false;
    }
    if (IsSubresourceMapped(subresource))
    {
        LX_ERROR("Cannot map a resource twice without unmapping.");
        return false;
    }
    m_mappedSubresources.Add(subresource);
    return true;
}

bool LxGPUTexture::EndMap(unsigned subresource)
{
    if (!m_mappedSubresources.Remove(subresource))
    {
        LX_ERROR("Unmap was called on a resource which was not locked.");
        return false;
    }
    return true;
}

bool LxGPUTexture::FinishMap(unsigned subresource, bool mapped)
{
    if (!mapped)
    {
        m_mappedSubresources.Remove(subresource);
    }
    return mapped;
}

bool LxGPUTexture::Unmap(unsigned mip, unsigned slice)
{
    const unsigned subresource = GetSubresourceIndex(mip, slice);
    if (!EndMap(subresource))
    {
        return false;
    }
    return APIUnmap(subresource);
}

bool LxGPUTexture::APIUnmap(unsigned)
{
    ReportNotImplemented("LxGPUTexture::Unmap");
    return false;
}

bool LxGPUTexture::Create(LxCountedPtr<LxMemoryBuffer>)
{
    ReportNotImplemented("LxGPUTexture::Create");
    return false;
}

bool LxGPUTexture::Create(LxCountedPtr<LxMemoryBuffer>, const LxGPUClearValue&)
{
    ReportNotImplemented("LxGPUTexture::Create");
    return false;
}

void LxGPUTexture::Destroy()
{
    ReportNotImplemented("LxGPUTexture::Destroy");
}

bool LxGPUTexture::ReadbackMipLevel(unsigned, unsigned, LxImageData2D*)
{
    ReportNotImplemented("LxGPUTexture::ReadbackMipLevel");
    return false;
}

bool LxGPUTexture::GetReadbackImage(LxImageData2D*)
{
    ReportNotImplemented("LxGPUTexture::GetReadbackImage");
    return false;
}

bool LxGPUTexture::GenerateMips()
{
    ReportNotImplemented("LxGPUTexture::GenerateMips");
    return false;
}

bool LxGPUTexture::Blit(LxGPUTexture*)
{
    ReportNotImplemented("LxGPUTexture::Blit");
    return false;
}

bool LxGPUTexture::SaveToDDS(const LxString&)
{
    ReportNotImplemented("LxGPUTexture::SaveToDDS");
    return false;
}

bool LxGPUTexture::Update(LxCountedPtr<LxMemoryBuffer>, unsigned, unsigned)
{
    ReportNotImplemented("LxGPUTexture::Update");
    return false;
}

LxCountedPtr<LxMemoryBuffer> LxGPUTexture::GetMemoryBuffer(unsigned, unsigned)
{
    ReportNotImplemented("LxGPUTexture::GetMemoryBuffer");
    return LxCountedPtr<LxMemoryBuffer>();
}
