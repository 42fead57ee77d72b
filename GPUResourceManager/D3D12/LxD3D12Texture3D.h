// LxD3D12Texture3D: the Direct3D 12 GPUTexture3D: volume textures; ReadbackMipLevel's slice is a depth slice of the
// level. The GPU resource, its initial data and readback are LxD3D12TextureResource's; this class ties them to the
// texture model.
//
// Made by LxD3D12GPUResourceManager (the texture is created there, not by the caller). Create twice is refused.
// Device refusal logs "Failed to create 3D texture.". One thread at a time; failures are logged and answered with
// false.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12Resource.h"
#include "GPUResourceManager/D3D12/LxD3D12TextureResource.h"
#include "GPUResourceManager/LxGPUTexture3D.h"

class LX_API LxD3D12Texture3D : public LxD3D12Resource<LxGPUTexture3D>
{
public:
    LxD3D12Texture3D(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                     LxGPUResourceFormat format, unsigned width, unsigned height, unsigned depth, unsigned mipCount,
                     MipType mipType);

    bool Create(LxCountedPtr<LxMemoryBuffer> initialData) override;
    bool Create(LxCountedPtr<LxMemoryBuffer> initialData, const LxGPUClearValue& clearValue) override;
    void Destroy() override;
    bool ReadbackMipLevel(unsigned mip, unsigned slice, LxImageData2D* out) override;
    // Level 0 of slice 0.
    bool GetReadbackImage(LxImageData2D* out) override;
    bool GenerateMips() override;

    ID3D12Resource* GetD3D12Resource() const { return m_storage.GetResource(); }
    D3D12_RESOURCE_STATES GetD3D12State() const { return m_storage.GetState(); }
    LxD3D12TextureResource& GetStorage() { return m_storage; }

protected:
    bool APIMap(MapType type, unsigned subresource, LxMappedVolume* out) override;
    bool APIUnmap(unsigned subresource) override;

private:
    LxD3D12TextureResource m_storage;
};
