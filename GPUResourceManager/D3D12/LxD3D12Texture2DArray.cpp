#include "GPUResourceManager/D3D12/LxD3D12Texture2DArray.h"

LxD3D12Texture2DArray::LxD3D12Texture2DArray(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags,
                                             unsigned miscHints, LxGPUResourceFormat format, unsigned width,
                                             unsigned height, unsigned arraySize, unsigned mipCount, MipType mipType,
                                             unsigned sampleCount, unsigned sampleQuality)
    : LxD3D12Resource(behavior, bindFlags, cpuAccessFlags, miscHints, format, width, height, arraySize, mipCount,
                      mipType, sampleCount, sampleQuality)
{
}

bool LxD3D12Texture2DArray::Create(LxCountedPtr<LxMemoryBuffer> initialData)
{
    return m_storage.Create(*this, initialData, nullptr, "LxD3D12Texture2DArray::Create",
                            "Failed to create 2D texture.");
}

bool LxD3D12Texture2DArray::Create(LxCountedPtr<LxMemoryBuffer> initialData, const LxGPUClearValue& clearValue)
{
    return m_storage.Create(*this, initialData, &clearValue, "LxD3D12Texture2DArray::Create",
                            "Failed to create 2D texture.");
}

void LxD3D12Texture2DArray::Destroy()
{
    m_storage.Destroy();
}

bool LxD3D12Texture2DArray::ReadbackMipLevel(unsigned mip, unsigned slice, LxImageData2D* out)
{
    return m_storage.Readback(*this, mip, slice, out, "LxD3D12Texture2DArray::ReadbackMipLevel");
}

bool LxD3D12Texture2DArray::GetReadbackImage(LxImageData2D* out)
{
    return ReadbackMipLevel(0, 0, out);
}

bool LxD3D12Texture2DArray::APIMap(MapType type, unsigned subresource, LxMappedSurface* out)
{
    LxMappedVolume volume;
    if (!m_storage.Map(*this, type, subresource, &volume, "LxD3D12Texture2DArray::Map"))
    {
        return false;
    }
    out->rowPitch = volume.rowPitch;
    out->data = volume.data;
    return true;
}

bool LxD3D12Texture2DArray::APIUnmap(unsigned subresource)
{
    return m_storage.Unmap(subresource, "LxD3D12Texture2DArray::Unmap");
}

bool LxD3D12Texture2DArray::GenerateMips()
{
    return m_storage.GenerateMips(*this, "LxD3D12Texture2DArray::GenerateMips");
}
