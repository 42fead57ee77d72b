#include "GPUResourceManager/D3D12/LxD3D12TextureResource.h"
#include "RenderManager/D3D12/LxD3D12Barriers.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/D3D12/LxD3D12Format.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "GPUResourceManager/D3D12/LxD3D12ReadbackBuffer.h"
#include "GPUResourceManager/LxGPUTextureSize.h"
#include "GPUResourceManager/LxMipChain.h"

#include <cstring>

namespace
{
D3D12_RESOURCE_STATES RestingState(const LxGPUTexture& texture)
{
    if (texture.QueryUsage(LxGPUResource::BIND_DEPTH_STENCIL))
        return D3D12_RESOURCE_STATE_DEPTH_WRITE;
    if (texture.QueryUsage(LxGPUResource::BIND_RENDER_TARGET))
        return D3D12_RESOURCE_STATE_RENDER_TARGET;
    if (texture.QueryUsage(LxGPUResource::BIND_UNORDERED_ACCESS))
        return D3D12_RESOURCE_STATE_UNORDERED_ACCESS;
    return D3D12_RESOURCE_STATE_PIXEL_SHADER_RESOURCE | D3D12_RESOURCE_STATE_NON_PIXEL_SHADER_RESOURCE;
}

LxD3D12GPUResourceManager* DeviceManager(const char* who)
{
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    if (!manager || !manager->GetDevice())
    {
        LX_ERROR("%s.  No Direct3D 12 device: initialise the resource manager first.", who);
        return nullptr;
    }
    return manager;
}
} // namespace

LxD3D12TextureResource::~LxD3D12TextureResource()
{
    Destroy();
}

void LxD3D12TextureResource::Destroy()
{
    for (Staging& staging : m_staging)
    {
        ReleaseStaging(staging);
    }
    m_staging.Clear();
    if (m_pResource)
    {
        m_pResource->Release();
        m_pResource = nullptr;
    }
}

bool LxD3D12TextureResource::Create(const LxGPUTexture& texture, LxCountedPtr<LxMemoryBuffer> initialData,
                                    const LxGPUClearValue* clearValue, const char* who, const char* failureMessage)
{
    if (m_pResource)
    {
        LX_ERROR("%s.  The texture was already created.", who);
        return false;
    }
    LxD3D12GPUResourceManager* manager = DeviceManager(who);
    if (!manager)
    {
        return false;
    }
    const DXGI_FORMAT format = LxGetDXGIFormat(texture.GetFormat());
    if (format == DXGI_FORMAT_UNKNOWN)
    {
        LX_ERROR("%s.  %s has no Direct3D 12 format.", who, LxGetFormatName(texture.GetFormat()));
        return false;
    }
    if (LxIsFormatBlockCompressed(texture.GetFormat()) && (texture.GetWidth() % 4 || texture.GetHeight() % 4))
    {
        LX_ERROR("%s.  Block-compressed textures need a width and a height that are multiples of 4.", who);
        return false;
    }

    D3D12_RESOURCE_DESC desc = {};
    const bool volume = texture.GetType() == LxGPUResource::TEXTURE_3D;
    desc.Dimension = volume ? D3D12_RESOURCE_DIMENSION_TEXTURE3D : D3D12_RESOURCE_DIMENSION_TEXTURE2D;
    desc.Width = texture.GetWidth();
    desc.Height = texture.GetHeight();
    desc.DepthOrArraySize = static_cast<UINT16>(volume ? texture.GetDepthOrArraySize() : texture.GetSliceCount());
    desc.MipLevels = static_cast<UINT16>(texture.GetMipCount());
    desc.Format = format;
    desc.SampleDesc.Count = texture.GetSampleCount();
    desc.SampleDesc.Quality = texture.GetSampleQuality();
    desc.Layout = D3D12_TEXTURE_LAYOUT_UNKNOWN;
    if (texture.QueryUsage(LxGPUResource::BIND_RENDER_TARGET))
        desc.Flags |= D3D12_RESOURCE_FLAG_ALLOW_RENDER_TARGET;
    if (texture.QueryUsage(LxGPUResource::BIND_DEPTH_STENCIL))
        desc.Flags |= D3D12_RESOURCE_FLAG_ALLOW_DEPTH_STENCIL;
    if (texture.QueryUsage(LxGPUResource::BIND_UNORDERED_ACCESS))
        desc.Flags |= D3D12_RESOURCE_FLAG_ALLOW_UNORDERED_ACCESS;

    // Render targets and depth buffers get an optimised clear value (their fast clears must match it).
    D3D12_CLEAR_VALUE clear = {};
    const bool needsClear =
        (desc.Flags & (D3D12_RESOURCE_FLAG_ALLOW_RENDER_TARGET | D3D12_RESOURCE_FLAG_ALLOW_DEPTH_STENCIL)) != 0;
    if (needsClear)
    {
        clear.Format =
            clearValue && clearValue->format != LX_FORMAT_UNKNOWN ? LxGetDXGIFormat(clearValue->format) : format;
        if (desc.Flags & D3D12_RESOURCE_FLAG_ALLOW_DEPTH_STENCIL)
        {
            clear.DepthStencil.Depth = clearValue ? clearValue->depth : 1.0f;
            clear.DepthStencil.Stencil = clearValue ? clearValue->stencil : 0;
        }
        else if (clearValue)
        {
            std::memcpy(clear.Color, clearValue->color, sizeof(clear.Color));
        }
    }

    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = D3D12_HEAP_TYPE_DEFAULT;
    heap.CreationNodeMask = heap.VisibleNodeMask = 1;
    const D3D12_RESOURCE_STATES resting = RestingState(texture);
    const D3D12_RESOURCE_STATES initial = initialData ? D3D12_RESOURCE_STATE_COPY_DEST : resting;
    if (FAILED(manager->GetDevice()->CreateCommittedResource(
            &heap, D3D12_HEAP_FLAG_NONE, &desc, initial, needsClear ? &clear : nullptr, IID_PPV_ARGS(&m_pResource))))
    {
        m_pResource = nullptr;
        LX_ERROR("%s", failureMessage);
        return false;
    }
    m_desc = desc;
    m_state = initial;
    if (initialData)
    {
        LxMutex::ScopedLock lock(manager->GetImmediateLock());
        bool ok = Upload(texture, initialData, who);
        ID3D12GraphicsCommandList* list = ok ? manager->BeginImmediate() : nullptr;
        if (list)
        {
            const D3D12_RESOURCE_BARRIER barrier = LxD3D12TransitionBarrier(m_pResource, initial, resting);
            list->ResourceBarrier(1, &barrier);
        }
        // Executed on failure too: copies already recorded read the upload ring and must finish before it moves on.
        ok = manager->ExecuteImmediate() && ok && list;
        if (!ok)
        {
            Destroy();
            return false;
        }
        m_state = resting;
    }
    return true;
}

bool LxD3D12TextureResource::Upload(const LxGPUTexture& texture, const LxCountedPtr<LxMemoryBuffer>& initialData,
                                    const char* who)
{
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    ID3D12Device* device = manager->GetDevice();
    const LxGPUResourceFormat format = texture.GetFormat();
    const bool volume = texture.GetType() == LxGPUResource::TEXTURE_3D;
    const bool blocked = LxIsFormatBlockCompressed(format);
    const unsigned mipCount = texture.GetMipCount();
    unsigned levels = texture.GetMipType() == LxGPUTexture::MIP_USER_SUPPLIED ? mipCount : 1;
    const unsigned depth = volume ? texture.GetDepthOrArraySize() : 1;
    LxCountedPtr<LxMemoryBuffer> data = initialData;
    if (texture.GetMipType() == LxGPUTexture::MIP_AUTO_GENERATE && mipCount > 1)
    {
        // The levels below the first are made here from it, and go up with it.
        LxCountedPtr<LxMemoryBuffer> chain = LxBuildMipChain(texture.GetWidth(), texture.GetHeight(), depth, mipCount,
                                                             texture.GetSliceCount(), format, *initialData);
        if (chain)
        {
            data = chain;
            levels = mipCount;
        }
        else
        {
            LX_WARNING("%s.  Levels below the first cannot be generated for this format; they stay undefined.", who);
        }
    }
    unsigned offset = 0;
    for (unsigned slice = 0; slice < texture.GetSliceCount(); ++slice)
    {
        LxArray<LxMipLevelInfo> infos;
        if (!LxGetMipLevelInfo(texture.GetWidth(), texture.GetHeight(), depth, levels, format, data, offset, infos))
        {
            LX_ERROR("%s.  The initial data holds %u bytes, fewer than the %u levels of %u slices need.", who,
                     data->GetSize(), levels, texture.GetSliceCount());
            return false;
        }
        for (unsigned mip = 0; mip < levels; ++mip)
        {
            const LxMipLevelInfo& info = infos[mip];
            offset += info.levelSize;
            const unsigned subresource = texture.GetSubresourceIndex(mip, slice);
            D3D12_PLACED_SUBRESOURCE_FOOTPRINT footprint = {};
            UINT rows = 0;
            UINT64 rowSize = 0;
            UINT64 total = 0;
            device->GetCopyableFootprints(&m_desc, subresource, 1, 0, &footprint, &rows, &rowSize, &total);
            // The source holds rows of texels; a block-compressed row of blocks spans four of them.
            const unsigned sourceRowPitch = blocked ? info.rowPitch * 4 : info.rowPitch;
            const unsigned long long sourceSlicePitch = static_cast<unsigned long long>(sourceRowPitch) * rows;
            if (sourceRowPitch < rowSize || sourceSlicePitch * footprint.Footprint.Depth > info.levelSize)
            {
                LX_ERROR("%s.  Level %u of the initial data does not match the texture's layout.", who, mip);
                return false;
            }
            LxUploadAllocation upload;
            if (!manager->AllocateUpload(total, D3D12_TEXTURE_DATA_PLACEMENT_ALIGNMENT, &upload))
            {
                return false;
            }
            if (upload.offset % D3D12_TEXTURE_DATA_PLACEMENT_ALIGNMENT != 0)
            {
                LX_ERROR("%s.  The upload heap's memory is not aligned for texture data.", who);
                return false;
            }
            unsigned char* target = upload.GetCPUAddress();
            for (unsigned z = 0; z < footprint.Footprint.Depth; ++z)
            {
                for (unsigned row = 0; row < rows; ++row)
                {
                    std::memcpy(target + (static_cast<size_t>(z) * rows + row) * footprint.Footprint.RowPitch,
                                info.data + z * sourceSlicePitch + static_cast<size_t>(row) * sourceRowPitch,
                                static_cast<size_t>(rowSize));
                }
            }
            footprint.Offset = upload.offset;
            D3D12_TEXTURE_COPY_LOCATION dst = {};
            dst.pResource = m_pResource;
            dst.Type = D3D12_TEXTURE_COPY_TYPE_SUBRESOURCE_INDEX;
            dst.SubresourceIndex = subresource;
            D3D12_TEXTURE_COPY_LOCATION src = {};
            src.pResource = manager->GetUploadHeap().GetResource();
            src.Type = D3D12_TEXTURE_COPY_TYPE_PLACED_FOOTPRINT;
            src.PlacedFootprint = footprint;
            ID3D12GraphicsCommandList* list = manager->BeginImmediate();
            if (!list)
            {
                return false;
            }
            list->CopyTextureRegion(&dst, 0, 0, 0, &src, nullptr);
        }
    }
    return true;
}

bool LxD3D12TextureResource::Readback(const LxGPUTexture& texture, unsigned mip, unsigned slice, LxImageData2D* out,
                                      const char* who)
{
    LxD3D12GPUResourceManager* manager = DeviceManager(who);
    if (!manager)
    {
        return false;
    }
    if (!m_pResource || !out)
    {
        LX_ERROR("%s.  The texture was not created, or no image to fill.", who);
        return false;
    }
    const bool volume = texture.GetType() == LxGPUResource::TEXTURE_3D;
    const unsigned depthAtMip = texture.GetDepthOrArraySize() >> mip ? texture.GetDepthOrArraySize() >> mip : 1;
    if (mip >= texture.GetMipCount() || slice >= (volume ? depthAtMip : texture.GetSliceCount()))
    {
        LX_ERROR("%s.  Level %u, slice %u lies outside the texture.", who, mip, slice);
        return false;
    }
    return manager->ReadbackSubresource(m_pResource, m_state, texture.GetSubresourceIndex(mip, volume ? 0 : slice),
                                        volume ? slice : 0, texture.GetFormat(), out);
}

void LxD3D12TextureResource::ReleaseStaging(Staging& staging)
{
    delete staging.readback;
    staging.readback = nullptr;
    if (staging.upload)
    {
        staging.upload->Unmap(0, nullptr);
        staging.upload->Release();
        staging.upload = nullptr;
    }
}

bool LxD3D12TextureResource::Map(const LxGPUTexture& texture, LxGPUResource::MapType type, unsigned subresource,
                                 LxMappedVolume* out, const char* who)
{
    LxD3D12GPUResourceManager* manager = DeviceManager(who);
    if (!manager)
    {
        return false;
    }
    if (!m_pResource || texture.GetSampleCount() > 1)
    {
        LX_ERROR("%s.  Only a created, single-sampled texture can be mapped.", who);
        return false;
    }
    const bool read = type == LxGPUResource::MAP_READ || type == LxGPUResource::MAP_READ_WRITE;
    const bool write = type != LxGPUResource::MAP_READ;
    Staging staging = {subresource, nullptr, nullptr, {}};
    UINT rows = 0;
    UINT64 rowSize = 0;
    UINT64 total = 0;
    manager->GetDevice()->GetCopyableFootprints(&m_desc, subresource, 1, 0, &staging.footprint, &rows, &rowSize,
                                                &total);
    LxMutex::ScopedLock lock(manager->GetImmediateLock());
    const unsigned char* current = nullptr;
    if (read)
    {
        staging.readback = new LxD3D12ReadbackBuffer();
        unsigned copiedRows = 0;
        D3D12_PLACED_SUBRESOURCE_FOOTPRINT footprint = {};
        const bool recorded =
            manager->RecordCopyToReadback(m_pResource, m_state, subresource, staging.readback, &footprint, &copiedRows);
        current = manager->ExecuteImmediate() && recorded ? staging.readback->Map() : nullptr;
        if (!current)
        {
            ReleaseStaging(staging);
            return false;
        }
    }
    unsigned char* data = const_cast<unsigned char*>(current);
    if (write)
    {
        D3D12_HEAP_PROPERTIES heap = {};
        heap.Type = D3D12_HEAP_TYPE_UPLOAD;
        heap.CreationNodeMask = heap.VisibleNodeMask = 1;
        D3D12_RESOURCE_DESC desc = {};
        desc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
        desc.Width = total;
        desc.Height = desc.DepthOrArraySize = desc.MipLevels = 1;
        desc.SampleDesc.Count = 1;
        desc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
        void* mapped = nullptr;
        if (FAILED(manager->GetDevice()->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &desc,
                                                                 D3D12_RESOURCE_STATE_GENERIC_READ, nullptr,
                                                                 IID_PPV_ARGS(&staging.upload))) ||
            FAILED(staging.upload->Map(0, nullptr, &mapped)))
        {
            LX_ERROR("%s.  No upload memory for the map.", who);
            ReleaseStaging(staging);
            return false;
        }
        data = static_cast<unsigned char*>(mapped);
        if (current)
        {
            // Read-write: the caller edits what the texture holds.
            std::memcpy(data, current, static_cast<size_t>(total));
            staging.readback->Unmap();
        }
    }
    out->rowPitch = staging.footprint.Footprint.RowPitch;
    out->slicePitch = staging.footprint.Footprint.RowPitch * rows;
    out->data = data;
    m_staging.Add(staging);
    return true;
}

bool LxD3D12TextureResource::Unmap(unsigned subresource, const char* who)
{
    for (unsigned i = 0; i < m_staging.GetCount(); ++i)
    {
        Staging staging = m_staging[i];
        if (staging.subresource != subresource)
        {
            continue;
        }
        m_staging.RemoveAt(i);
        bool ok = true;
        if (staging.upload)
        {
            LxD3D12GPUResourceManager* manager = DeviceManager(who);
            if (!manager)
            {
                ReleaseStaging(staging);
                return false;
            }
            LxMutex::ScopedLock lock(manager->GetImmediateLock());
            ID3D12GraphicsCommandList* list = manager->BeginImmediate();
            if (list)
            {
                D3D12_RESOURCE_BARRIER barrier =
                    LxD3D12TransitionBarrier(m_pResource, m_state, D3D12_RESOURCE_STATE_COPY_DEST);
                list->ResourceBarrier(1, &barrier);
                D3D12_TEXTURE_COPY_LOCATION dst = {};
                dst.pResource = m_pResource;
                dst.Type = D3D12_TEXTURE_COPY_TYPE_SUBRESOURCE_INDEX;
                dst.SubresourceIndex = subresource;
                D3D12_TEXTURE_COPY_LOCATION src = {};
                src.pResource = staging.upload;
                src.Type = D3D12_TEXTURE_COPY_TYPE_PLACED_FOOTPRINT;
                src.PlacedFootprint = staging.footprint;
                list->CopyTextureRegion(&dst, 0, 0, 0, &src, nullptr);
                barrier = LxD3D12TransitionBarrier(m_pResource, D3D12_RESOURCE_STATE_COPY_DEST, m_state);
                list->ResourceBarrier(1, &barrier);
            }
            ok = list && manager->ExecuteImmediate();
        }
        ReleaseStaging(staging);
        return ok;
    }
    LX_ERROR("%s.  Subresource %u has no staging memory.", who, subresource);
    return false;
}

bool LxD3D12TextureResource::GenerateMips(const LxGPUTexture& texture, const char* who)
{
    const LxGPUResourceFormat format = texture.GetFormat();
    if (!LxCanBuildMipChain(format))
    {
        LX_ERROR("%s.  Levels cannot be generated for this format.", who);
        return false;
    }
    const unsigned mips = texture.GetMipCount();
    const bool volume = texture.GetType() == LxGPUResource::TEXTURE_3D;
    const unsigned width = texture.GetWidth(), height = texture.GetHeight();
    const unsigned depth = volume ? texture.GetDepthOrArraySize() : 1;
    const unsigned texel = LxGetFormatBitsPerElement(format) / 8;
    for (unsigned slice = 0; mips > 1 && slice < texture.GetSliceCount(); ++slice)
    {
        // The first level, packed; then the chain made from it, written level by level.
        LxCountedPtr<LxMemoryBuffer> first(LxMemoryBuffer::Allocate(width * height * depth * texel));
        LxMappedVolume mapped;
        const unsigned top = texture.GetSubresourceIndex(0, slice);
        if (!first || !Map(texture, LxGPUResource::MAP_READ, top, &mapped, who))
        {
            return false;
        }
        for (unsigned z = 0; z < depth; ++z)
            for (unsigned y = 0; y < height; ++y)
                std::memcpy(first->GetData() + (size_t(z) * height + y) * width * texel,
                            mapped.data + size_t(z) * mapped.slicePitch + size_t(y) * mapped.rowPitch,
                            size_t(width) * texel);
        Unmap(top, who);
        LxCountedPtr<LxMemoryBuffer> chain = LxBuildMipChain(width, height, depth, mips, 1, format, *first);
        const unsigned char* level = chain ? chain->GetData() + size_t(width) * height * depth * texel : nullptr;
        for (unsigned mip = 1, w = width, h = height, d = depth; level && mip < mips; ++mip)
        {
            w = w > 1 ? w / 2 : 1, h = h > 1 ? h / 2 : 1, d = d > 1 ? d / 2 : 1;
            const unsigned subresource = texture.GetSubresourceIndex(mip, slice);
            if (!Map(texture, LxGPUResource::MAP_WRITE, subresource, &mapped, who))
            {
                return false;
            }
            for (unsigned z = 0; z < d; ++z)
                for (unsigned y = 0; y < h; ++y)
                    std::memcpy(mapped.data + size_t(z) * mapped.slicePitch + size_t(y) * mapped.rowPitch,
                                level + (size_t(z) * h + y) * w * texel, size_t(w) * texel);
            level += size_t(w) * h * d * texel;
            if (!Unmap(subresource, who))
            {
                return false;
            }
        }
        if (!level)
        {
            LX_ERROR("%s.  Out of memory for the generated levels.", who);
            return false;
        }
    }
    return true;
}
