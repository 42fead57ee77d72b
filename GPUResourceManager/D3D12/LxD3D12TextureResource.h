// LxD3D12TextureResource: the Direct3D 12 half every texture kind shares: the committed resource in the default heap,
// its current state, the upload of initial data through the resource manager's upload ring, and readback. The
// texture classes (LxD3D12Texture2DArray, LxD3D12Texture3D, LxD3D12TextureCubeArray) each own one.
//
// Initial data: with MIP_USER_SUPPLIED every level of slice 0, then every level of slice 1, ... (cube faces in
// CubeMapFace order); with MIP_NONE and MIP_AUTO_GENERATE level 0 of each slice (the other levels of an
// auto-generated chain are made from it, LxBuildMipChain, where the format allows, else left undefined with a
// warning). Rows are packed (LxGetMipLevelInfo
// layout; block-compressed formats as rows of texels, every level after the first at least 4x4). Needs the
// LxD3D12GPUResourceManager singleton, initialised. One thread at a time; failures are logged, answered with false,
// and leave no resource behind.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "GPUResourceManager/LxGPUTexture.h"

#include <d3d12.h>

class LxD3D12ReadbackBuffer;
class LxImageData2D;

class LX_API LxD3D12TextureResource
{
public:
    LxD3D12TextureResource() = default;
    ~LxD3D12TextureResource();
    LxD3D12TextureResource(const LxD3D12TextureResource&) = delete;
    LxD3D12TextureResource& operator=(const LxD3D12TextureResource&) = delete;

    // `who` names the caller in messages ("LxD3D12Texture3D::Create"); `failureMessage` is logged when the device
    // refuses the resource. `clearValue` may be null (render targets clear to 0, depth buffers to 1).
    bool Create(const LxGPUTexture& texture, LxCountedPtr<LxMemoryBuffer> initialData,
                const LxGPUClearValue* clearValue, const char* who, const char* failureMessage);
    void Destroy();
    // Level `mip` of `slice` (a depth slice of that level for 3D textures) into `out`.
    bool Readback(const LxGPUTexture& texture, unsigned mip, unsigned slice, LxImageData2D* out, const char* who);

    // Maps one subresource through staging memory: a read copies it to the CPU first (the call waits for the
    // GPU); a write hands out upload memory whose contents Unmap copies into the texture (Unmap waits). The
    // pointers stay valid until Unmap. Multisampled textures cannot be mapped.
    bool Map(const LxGPUTexture& texture, LxGPUResource::MapType type, unsigned subresource, LxMappedVolume* out,
             const char* who);
    bool Unmap(unsigned subresource, const char* who);
    // Remakes every level below the first of each slice from the first (LxBuildMipChain: formats with 8-bit UNORM
    // channels), through maps of the subresources; the call waits for the GPU. False (logged) for other formats.
    bool GenerateMips(const LxGPUTexture& texture, const char* who);

    ID3D12Resource* GetResource() const { return m_pResource; }
    // The state the texture is in once the work recorded so far has run: its resting state (render target, depth
    // write, shader resource or unordered access) until barriers recorded elsewhere move it.
    D3D12_RESOURCE_STATES GetState() const { return m_state; }
    // For barriers recorded outside this class (LxD3D12GPUResourceManager::Transition): the state they leave.
    void SetState(D3D12_RESOURCE_STATES state) { m_state = state; }

private:
    struct Staging
    {
        unsigned subresource;
        LxD3D12ReadbackBuffer* readback; // read maps
        ID3D12Resource* upload;          // write maps, mapped while the subresource is
        D3D12_PLACED_SUBRESOURCE_FOOTPRINT footprint;
    };

    bool Upload(const LxGPUTexture& texture, const LxCountedPtr<LxMemoryBuffer>& initialData, const char* who);
    static void ReleaseStaging(Staging& staging);

    LxArray<Staging> m_staging;

    ID3D12Resource* m_pResource = nullptr;
    D3D12_RESOURCE_DESC m_desc = {};
    D3D12_RESOURCE_STATES m_state = D3D12_RESOURCE_STATE_COMMON;
};
