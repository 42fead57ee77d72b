#include "GPUResourceManager/D3D12/LxD3D12Texture3D.h"

LxD3D12Texture3D::LxD3D12Texture3D(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                                   LxGPUResourceFormat format, unsigned width, unsigned height, unsigned depth,
                                   unsigned mipCount, MipType mipType)
    : LxD3D12Resource(behavior, bindFlags, cpuAccessFlags, miscHints, format, width, height, depth, mipCount, mipType)
{
}

bool LxD3D12Texture3D::Create(LxCountedPtr<LxMemoryBuffer> initialData)
{
    return m_storage.Create(*this, initialData, nullptr, "LxD3D12Texture3D::Create", "Failed to create 3D texture.");
}

bool LxD3D12Texture3D::Create(LxCountedPtr<LxMemoryBuffer> initialData, const LxGPUClearValue& clearValue)
{
    return m_storage.Create(*this, initialData, &clearValue, "LxD3D12Texture3D::Create",
                            "Failed to create 3D texture.");
}

void LxD3D12Texture3D::Destroy()
{
    m_storage.Destroy();
}

bool LxD3D12Texture3D::ReadbackMipLevel(unsigned mip, unsigned slice, LxImageData2D* out)
{
    return m_storage.Readback(*this, mip, slice, out, "LxD3D12Texture3D::ReadbackMipLevel");
}

bool LxD3D12Texture3D::GetReadbackImage(LxImageData2D* out)
{
    return ReadbackMipLevel(0, 0, out);
}

bool LxD3D12Texture3D::APIMap(MapType type, unsigned subresource, LxMappedVolume* out)
{
    return m_storage.Map(*this, type, subresource, out, "LxD3D12Texture3D::Map");
}

bool LxD3D12Texture3D::APIUnmap(unsigned subresource)
{
    return m_storage.Unmap(subresource, "LxD3D12Texture3D::Unmap");
}

bool LxD3D12Texture3D::GenerateMips()
{
    return m_storage.GenerateMips(*this, "LxD3D12Texture3D::GenerateMips");
}
