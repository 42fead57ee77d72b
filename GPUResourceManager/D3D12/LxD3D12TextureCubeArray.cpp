#include "GPUResourceManager/D3D12/LxD3D12TextureCubeArray.h"

LxD3D12TextureCubeArray::LxD3D12TextureCubeArray(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags,
                                                 unsigned miscHints, LxGPUResourceFormat format, unsigned edgeLength,
                                                 unsigned cubeCount, unsigned mipCount, MipType mipType)
    : LxD3D12Resource(behavior, bindFlags, cpuAccessFlags, miscHints, format, edgeLength, cubeCount, mipCount, mipType)
{
}

bool LxD3D12TextureCubeArray::Create(LxCountedPtr<LxMemoryBuffer> initialData)
{
    return m_storage.Create(*this, initialData, nullptr, "LxD3D12TextureCubeArray::Create",
                            "Failed to create cube texture.");
}

bool LxD3D12TextureCubeArray::Create(LxCountedPtr<LxMemoryBuffer> initialData, const LxGPUClearValue& clearValue)
{
    return m_storage.Create(*this, initialData, &clearValue, "LxD3D12TextureCubeArray::Create",
                            "Failed to create cube texture.");
}

void LxD3D12TextureCubeArray::Destroy()
{
    m_storage.Destroy();
}

bool LxD3D12TextureCubeArray::ReadbackMipLevel(unsigned mip, unsigned slice, LxImageData2D* out)
{
    return m_storage.Readback(*this, mip, slice, out, "LxD3D12TextureCubeArray::ReadbackMipLevel");
}

bool LxD3D12TextureCubeArray::GetReadbackImage(LxImageData2D* out)
{
    return ReadbackMipLevel(0, 0, out);
}

bool LxD3D12TextureCubeArray::APIMap(MapType type, unsigned subresource, LxMappedSurface* out)
{
    LxMappedVolume volume;
    if (!m_storage.Map(*this, type, subresource, &volume, "LxD3D12TextureCubeArray::Map"))
    {
        return false;
    }
    out->rowPitch = volume.rowPitch;
    out->data = volume.data;
    return true;
}

bool LxD3D12TextureCubeArray::APIUnmap(unsigned subresource)
{
    return m_storage.Unmap(subresource, "LxD3D12TextureCubeArray::Unmap");
}

bool LxD3D12TextureCubeArray::GenerateMips()
{
    return m_storage.GenerateMips(*this, "LxD3D12TextureCubeArray::GenerateMips");
}
