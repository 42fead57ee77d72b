#include "GPUResourceManager/D3D12/LxD3D12ViewDescriptor.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/D3D12/LxD3D12Format.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "GPUResourceManager/LxGPUResourceView.h"
#include "GPUResourceManager/LxGPUStructuredBuffer.h"
#include "GPUResourceManager/LxGPUTexture.h"
#include "RenderManager/D3D12/LxD3D12Barriers.h"

#include <cstring>

namespace
{
const char* const kWho = "LxD3D12ViewDescriptor::CreateDescriptor";

// Depth data is read through a colour format and written through a depth format; other formats stand as they are.
DXGI_FORMAT ReadFormat(DXGI_FORMAT format)
{
    switch (format)
    {
    case DXGI_FORMAT_D32_FLOAT:
    case DXGI_FORMAT_R32_TYPELESS:
        return DXGI_FORMAT_R32_FLOAT;
    case DXGI_FORMAT_D16_UNORM:
    case DXGI_FORMAT_R16_TYPELESS:
        return DXGI_FORMAT_R16_UNORM;
    case DXGI_FORMAT_D24_UNORM_S8_UINT:
    case DXGI_FORMAT_R24G8_TYPELESS:
        return DXGI_FORMAT_R24_UNORM_X8_TYPELESS;
    case DXGI_FORMAT_D32_FLOAT_S8X24_UINT:
    case DXGI_FORMAT_R32G8X24_TYPELESS:
        return DXGI_FORMAT_R32_FLOAT_X8X24_TYPELESS;
    default:
        return format;
    }
}

DXGI_FORMAT DepthFormat(DXGI_FORMAT format)
{
    switch (format)
    {
    case DXGI_FORMAT_R32_TYPELESS:
    case DXGI_FORMAT_R32_FLOAT:
        return DXGI_FORMAT_D32_FLOAT;
    case DXGI_FORMAT_R16_TYPELESS:
    case DXGI_FORMAT_R16_UNORM:
        return DXGI_FORMAT_D16_UNORM;
    case DXGI_FORMAT_R24G8_TYPELESS:
    case DXGI_FORMAT_R24_UNORM_X8_TYPELESS:
        return DXGI_FORMAT_D24_UNORM_S8_UINT;
    case DXGI_FORMAT_R32G8X24_TYPELESS:
    case DXGI_FORMAT_R32_FLOAT_X8X24_TYPELESS:
        return DXGI_FORMAT_D32_FLOAT_S8X24_UINT;
    default:
        return format;
    }
}

// How a view of a texture sees it, from the resource and the description's range.
enum class Shape
{
    Texture2D,
    Texture2DArray,
    Texture2DMS,
    Texture2DMSArray,
    Cube,
    CubeArray,
    Texture3D,
};

struct TextureRange
{
    Shape shape;
    unsigned firstMip, mipCount, firstSlice, sliceCount;
};

TextureRange GetTextureRange(const LxGPUTexture& texture, const LxGPUResourceViewDescription& desc)
{
    const LxGPUResourceDescription& r = desc.resourceDesc;
    TextureRange range = {Shape::Texture2D, r.texture.firstMip, r.texture.mipCount, r.texture.firstSlice,
                          r.texture.sliceCount};
    if (range.mipCount == 0)
        range.mipCount = texture.GetMipCount() - range.firstMip;
    if (range.sliceCount == 0)
        range.sliceCount = texture.GetSliceCount() - range.firstSlice;
    switch (texture.GetType())
    {
    case LxGPUResource::TEXTURE_3D:
        range.shape = Shape::Texture3D;
        break;
    case LxGPUResource::TEXTURE_CUBE_ARRAY:
        // Whole cubes are sampled as cubes; any other run of faces (and every kind of target) is a 2D array.
        if (desc.viewType == LX_VIEW_SAMPLING && desc.resourceType == LxGPUResource::TEXTURE_CUBE_ARRAY &&
            range.firstSlice % 6 == 0 && range.sliceCount % 6 == 0)
        {
            range.shape = texture.GetSliceCount() == 6 ? Shape::Cube : Shape::CubeArray;
        }
        else
        {
            range.shape = Shape::Texture2DArray;
        }
        break;
    default:
        // A texture made as an array is seen as one, even through a range of a single slice.
        range.shape = texture.GetSliceCount() > 1 ? Shape::Texture2DArray : Shape::Texture2D;
        break;
    }
    if (texture.GetSampleCount() > 1)
        range.shape = range.shape == Shape::Texture2D ? Shape::Texture2DMS : Shape::Texture2DMSArray;
    return range;
}

// A buffer's elements as a view sees them: the format (unknown for structured), the stride and whether raw.
struct BufferRange
{
    DXGI_FORMAT format;
    unsigned first, count, stride;
    bool raw;
};

bool GetBufferRange(const LxGPUResource& resource, const LxGPUResourceViewDescription& desc, BufferRange* out)
{
    const LxGPUBuffer& buffer = static_cast<const LxGPUBuffer&>(resource);
    const auto* structured = dynamic_cast<const LxGPUStructuredBuffer*>(&buffer);
    out->stride = 0;
    out->raw = false;
    out->format = LxGetDXGIFormat(desc.format);
    unsigned unitBytes = LxGetFormatBitsPerElement(desc.format) / 8;
    if (desc.format == LX_FORMAT_UNKNOWN && structured && desc.viewType != LX_VIEW_RENDERABLE)
    {
        out->stride = unitBytes = structured->GetStructSize();
    }
    else if (desc.format == LX_FORMAT_UNKNOWN || desc.format == LX_FORMAT_R32_TYPELESS)
    {
        out->format = DXGI_FORMAT_R32_TYPELESS;
        out->raw = desc.viewType != LX_VIEW_RENDERABLE;
        unitBytes = 4;
    }
    else if (out->format == DXGI_FORMAT_UNKNOWN || unitBytes == 0)
    {
        LX_ERROR("%s.  The view's format has no Direct3D 12 equivalent.", kWho);
        return false;
    }
    // The description counts the buffer's own elements (vertices, indices, structures, words); Direct3D counts
    // units of the view's format, structure or word.
    const unsigned elements = buffer.GetElementCount();
    const unsigned long long elementBytes = elements ? buffer.GetSize() / elements : 4;
    unsigned long long first = desc.resourceDesc.buffer.firstElement;
    unsigned long long count = desc.resourceDesc.buffer.numElements;
    if (count == 0)
        count = elements > first ? elements - first : 0;
    out->first = static_cast<unsigned>(first * elementBytes / unitBytes);
    out->count = static_cast<unsigned>(count * elementBytes / unitBytes);
    if (out->count == 0)
    {
        LX_ERROR("%s.  The view covers less than one element of its format.", kWho);
        return false;
    }
    return true;
}

void FillSRV(const LxGPUResource& resource, const LxGPUResourceViewDescription& desc, DXGI_FORMAT format,
             D3D12_SHADER_RESOURCE_VIEW_DESC* srv)
{
    srv->Shader4ComponentMapping = D3D12_DEFAULT_SHADER_4_COMPONENT_MAPPING;
    srv->Format = ReadFormat(format);
    const TextureRange t = GetTextureRange(static_cast<const LxGPUTexture&>(resource), desc);
    switch (t.shape)
    {
    case Shape::Texture2D:
        srv->ViewDimension = D3D12_SRV_DIMENSION_TEXTURE2D;
        srv->Texture2D.MostDetailedMip = t.firstMip;
        srv->Texture2D.MipLevels = t.mipCount;
        break;
    case Shape::Texture2DArray:
        srv->ViewDimension = D3D12_SRV_DIMENSION_TEXTURE2DARRAY;
        srv->Texture2DArray.MostDetailedMip = t.firstMip;
        srv->Texture2DArray.MipLevels = t.mipCount;
        srv->Texture2DArray.FirstArraySlice = t.firstSlice;
        srv->Texture2DArray.ArraySize = t.sliceCount;
        break;
    case Shape::Texture2DMS:
        srv->ViewDimension = D3D12_SRV_DIMENSION_TEXTURE2DMS;
        break;
    case Shape::Texture2DMSArray:
        srv->ViewDimension = D3D12_SRV_DIMENSION_TEXTURE2DMSARRAY;
        srv->Texture2DMSArray.FirstArraySlice = t.firstSlice;
        srv->Texture2DMSArray.ArraySize = t.sliceCount;
        break;
    case Shape::Cube:
        srv->ViewDimension = D3D12_SRV_DIMENSION_TEXTURECUBE;
        srv->TextureCube.MostDetailedMip = t.firstMip;
        srv->TextureCube.MipLevels = t.mipCount;
        break;
    case Shape::CubeArray:
        srv->ViewDimension = D3D12_SRV_DIMENSION_TEXTURECUBEARRAY;
        srv->TextureCubeArray.MostDetailedMip = t.firstMip;
        srv->TextureCubeArray.MipLevels = t.mipCount;
        srv->TextureCubeArray.First2DArrayFace = t.firstSlice;
        srv->TextureCubeArray.NumCubes = t.sliceCount / 6;
        break;
    case Shape::Texture3D:
        srv->ViewDimension = D3D12_SRV_DIMENSION_TEXTURE3D;
        srv->Texture3D.MostDetailedMip = t.firstMip;
        srv->Texture3D.MipLevels = t.mipCount;
        break;
    }
}

void FillUAV(const LxGPUResource& resource, const LxGPUResourceViewDescription& desc, DXGI_FORMAT format,
             D3D12_UNORDERED_ACCESS_VIEW_DESC* uav)
{
    uav->Format = ReadFormat(format);
    const TextureRange t = GetTextureRange(static_cast<const LxGPUTexture&>(resource), desc);
    if (t.shape == Shape::Texture3D)
    {
        uav->ViewDimension = D3D12_UAV_DIMENSION_TEXTURE3D;
        uav->Texture3D.MipSlice = t.firstMip;
        uav->Texture3D.FirstWSlice = t.firstSlice;
        uav->Texture3D.WSize = t.sliceCount;
    }
    else if (t.shape == Shape::Texture2D)
    {
        uav->ViewDimension = D3D12_UAV_DIMENSION_TEXTURE2D;
        uav->Texture2D.MipSlice = t.firstMip;
    }
    else
    {
        uav->ViewDimension = D3D12_UAV_DIMENSION_TEXTURE2DARRAY;
        uav->Texture2DArray.MipSlice = t.firstMip;
        uav->Texture2DArray.FirstArraySlice = t.firstSlice;
        uav->Texture2DArray.ArraySize = t.sliceCount;
    }
}

void FillRTV(const LxGPUResource& resource, const LxGPUResourceViewDescription& desc, DXGI_FORMAT format,
             D3D12_RENDER_TARGET_VIEW_DESC* rtv)
{
    rtv->Format = format;
    const TextureRange t = GetTextureRange(static_cast<const LxGPUTexture&>(resource), desc);
    switch (t.shape)
    {
    case Shape::Texture2D:
        rtv->ViewDimension = D3D12_RTV_DIMENSION_TEXTURE2D;
        rtv->Texture2D.MipSlice = t.firstMip;
        break;
    case Shape::Texture2DMS:
        rtv->ViewDimension = D3D12_RTV_DIMENSION_TEXTURE2DMS;
        break;
    case Shape::Texture2DMSArray:
        rtv->ViewDimension = D3D12_RTV_DIMENSION_TEXTURE2DMSARRAY;
        rtv->Texture2DMSArray.FirstArraySlice = t.firstSlice;
        rtv->Texture2DMSArray.ArraySize = t.sliceCount;
        break;
    case Shape::Texture3D:
        rtv->ViewDimension = D3D12_RTV_DIMENSION_TEXTURE3D;
        rtv->Texture3D.MipSlice = t.firstMip;
        rtv->Texture3D.FirstWSlice = t.firstSlice;
        rtv->Texture3D.WSize = t.sliceCount;
        break;
    default:
        rtv->ViewDimension = D3D12_RTV_DIMENSION_TEXTURE2DARRAY;
        rtv->Texture2DArray.MipSlice = t.firstMip;
        rtv->Texture2DArray.FirstArraySlice = t.firstSlice;
        rtv->Texture2DArray.ArraySize = t.sliceCount;
        break;
    }
}

bool FillDSV(const LxGPUResource& resource, const LxGPUResourceViewDescription& desc, DXGI_FORMAT format,
             D3D12_DEPTH_STENCIL_VIEW_DESC* dsv)
{
    dsv->Format = DepthFormat(format);
    if (desc.flags & LxGPUResourceViewDescription::FLAG_READ_ONLY_DEPTH)
        dsv->Flags |= D3D12_DSV_FLAG_READ_ONLY_DEPTH;
    if (desc.flags & LxGPUResourceViewDescription::FLAG_READ_ONLY_STENCIL)
        dsv->Flags |= D3D12_DSV_FLAG_READ_ONLY_STENCIL;
    const TextureRange t = GetTextureRange(static_cast<const LxGPUTexture&>(resource), desc);
    switch (t.shape)
    {
    case Shape::Texture2D:
        dsv->ViewDimension = D3D12_DSV_DIMENSION_TEXTURE2D;
        dsv->Texture2D.MipSlice = t.firstMip;
        return true;
    case Shape::Texture2DMS:
        dsv->ViewDimension = D3D12_DSV_DIMENSION_TEXTURE2DMS;
        return true;
    case Shape::Texture2DMSArray:
        dsv->ViewDimension = D3D12_DSV_DIMENSION_TEXTURE2DMSARRAY;
        dsv->Texture2DMSArray.FirstArraySlice = t.firstSlice;
        dsv->Texture2DMSArray.ArraySize = t.sliceCount;
        return true;
    case Shape::Texture3D:
        LX_ERROR("%s.  A 3D texture has no depth-stencil view.", kWho);
        return false;
    default:
        dsv->ViewDimension = D3D12_DSV_DIMENSION_TEXTURE2DARRAY;
        dsv->Texture2DArray.MipSlice = t.firstMip;
        dsv->Texture2DArray.FirstArraySlice = t.firstSlice;
        dsv->Texture2DArray.ArraySize = t.sliceCount;
        return true;
    }
}
// The 4-byte counter of an append view, resting in the unordered-access state; null on failure.
ID3D12Resource* CreateCounter(ID3D12Device* device)
{
    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = D3D12_HEAP_TYPE_DEFAULT;
    heap.CreationNodeMask = heap.VisibleNodeMask = 1;
    D3D12_RESOURCE_DESC desc = {};
    desc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
    desc.Width = 4;
    desc.Height = desc.DepthOrArraySize = desc.MipLevels = desc.SampleDesc.Count = 1;
    desc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
    desc.Flags = D3D12_RESOURCE_FLAG_ALLOW_UNORDERED_ACCESS;
    ID3D12Resource* counter = nullptr;
    if (FAILED(device->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &desc,
                                               D3D12_RESOURCE_STATE_UNORDERED_ACCESS, nullptr, IID_PPV_ARGS(&counter))))
    {
        return nullptr;
    }
    return counter;
}
} // namespace

LxD3D12ViewDescriptor::~LxD3D12ViewDescriptor()
{
    ReleaseDescriptor();
}

void LxD3D12ViewDescriptor::ReleaseDescriptor()
{
    if (m_nSlot >= 0)
    {
        // Behind the frame fence: a list recorded this frame may still read the descriptor. A heap of a manager
        // that is gone (or was re-initialised) is not touched.
        LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
        if (manager && manager->GetHeapGeneration() == m_nHeapGeneration)
        {
            m_pHeap->Free(static_cast<unsigned>(m_nSlot));
        }
    }
    if (m_pCounter)
    {
        m_pCounter->Release();
        m_pCounter = nullptr;
    }
    m_pHeap = nullptr;
    m_nSlot = -1;
    m_handle = {};
}

bool LxD3D12ViewDescriptor::SetCounter(ID3D12GraphicsCommandList* list, unsigned value)
{
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    LxUploadAllocation upload;
    if (!m_pCounter || !list || !manager)
    {
        LX_ERROR("LxD3D12ViewDescriptor::SetCounter.  The view has no append counter, or there is no list.");
        return false;
    }
    if (!manager->GetUploadHeap().Allocate(sizeof(value), sizeof(value), &upload))
    {
        return false; // the upload ring reported it
    }
    std::memcpy(upload.GetCPUAddress(), &value, sizeof(value));
    D3D12_RESOURCE_BARRIER barrier =
        LxD3D12TransitionBarrier(m_pCounter, D3D12_RESOURCE_STATE_UNORDERED_ACCESS, D3D12_RESOURCE_STATE_COPY_DEST);
    list->ResourceBarrier(1, &barrier);
    list->CopyBufferRegion(m_pCounter, 0, manager->GetUploadHeap().GetResource(), upload.offset, sizeof(value));
    barrier =
        LxD3D12TransitionBarrier(m_pCounter, D3D12_RESOURCE_STATE_COPY_DEST, D3D12_RESOURCE_STATE_UNORDERED_ACCESS);
    list->ResourceBarrier(1, &barrier);
    return true;
}

bool LxD3D12ViewDescriptor::CreateDescriptor(const LxGPUResourceView& view)
{
    ReleaseDescriptor();
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    LxGPUResource* resource = view.GetResource();
    ID3D12Resource* d3dResource = LxD3D12GPUResourceManager::GetD3D12Resource(resource);
    if (!manager || !manager->GetDevice() || !d3dResource)
    {
        LX_ERROR("%s.  The view's resource is not a Direct3D 12 resource of an initialised resource manager.", kWho);
        return false;
    }
    const LxGPUResourceViewDescription& desc = view.GetDescription();
    const bool isBuffer = resource->GetType() == LxGPUResource::BUFFER;
    const DXGI_FORMAT format = LxGetDXGIFormat(desc.format);
    if (!isBuffer && format == DXGI_FORMAT_UNKNOWN)
    {
        LX_ERROR("%s.  The view's format has no Direct3D 12 equivalent.", kWho);
        return false;
    }
    BufferRange buffer = {};
    if (isBuffer && !GetBufferRange(*resource, desc, &buffer))
    {
        return false;
    }

    LxD3D12DescriptorHeap::DescriptorKind kind = LxD3D12DescriptorHeap::DESCRIPTOR_SRV;
    D3D12_SHADER_RESOURCE_VIEW_DESC srv = {};
    D3D12_UNORDERED_ACCESS_VIEW_DESC uav = {};
    D3D12_RENDER_TARGET_VIEW_DESC rtv = {};
    D3D12_DEPTH_STENCIL_VIEW_DESC dsv = {};
    const void* viewDesc = nullptr;
    switch (desc.viewType)
    {
    case LX_VIEW_SAMPLING:
        kind = LxD3D12DescriptorHeap::DESCRIPTOR_SRV;
        viewDesc = &srv;
        if (!isBuffer)
        {
            FillSRV(*resource, desc, format, &srv);
            break;
        }
        srv.Shader4ComponentMapping = D3D12_DEFAULT_SHADER_4_COMPONENT_MAPPING;
        srv.Format = buffer.format;
        srv.ViewDimension = D3D12_SRV_DIMENSION_BUFFER;
        srv.Buffer.FirstElement = buffer.first;
        srv.Buffer.NumElements = buffer.count;
        srv.Buffer.StructureByteStride = buffer.stride;
        srv.Buffer.Flags = buffer.raw ? D3D12_BUFFER_SRV_FLAG_RAW : D3D12_BUFFER_SRV_FLAG_NONE;
        break;
    case LX_VIEW_UNORDERED_ACCESS:
        kind = LxD3D12DescriptorHeap::DESCRIPTOR_UAV;
        viewDesc = &uav;
        if (!isBuffer)
        {
            FillUAV(*resource, desc, format, &uav);
            break;
        }
        uav.Format = buffer.format;
        uav.ViewDimension = D3D12_UAV_DIMENSION_BUFFER;
        uav.Buffer.FirstElement = buffer.first;
        uav.Buffer.NumElements = buffer.count;
        uav.Buffer.StructureByteStride = buffer.stride;
        uav.Buffer.Flags = buffer.raw ? D3D12_BUFFER_UAV_FLAG_RAW : D3D12_BUFFER_UAV_FLAG_NONE;
        break;
    case LX_VIEW_RENDERABLE:
        kind = LxD3D12DescriptorHeap::DESCRIPTOR_RTV;
        viewDesc = &rtv;
        if (!isBuffer)
        {
            FillRTV(*resource, desc, format, &rtv);
            break;
        }
        rtv.Format = buffer.format;
        rtv.ViewDimension = D3D12_RTV_DIMENSION_BUFFER;
        rtv.Buffer.FirstElement = buffer.first;
        rtv.Buffer.NumElements = buffer.count;
        break;
    case LX_VIEW_DEPTH_STENCIL:
        kind = LxD3D12DescriptorHeap::DESCRIPTOR_DSV;
        viewDesc = &dsv;
        if (isBuffer)
        {
            LX_ERROR("%s.  A buffer has no depth-stencil view.", kWho);
            return false;
        }
        if (!FillDSV(*resource, desc, format, &dsv))
            return false;
        break;
    default:
        LX_ERROR("%s.  Unknown view type %u.", kWho, static_cast<unsigned>(desc.viewType));
        return false;
    }

    ID3D12Resource* counter = nullptr;
    if (kind == LxD3D12DescriptorHeap::DESCRIPTOR_UAV && (desc.flags & LxGPUResourceViewDescription::FLAG_APPEND))
    {
        if (!isBuffer || buffer.stride == 0)
        {
            LX_WARNING("%s.  Only structured views carry an append counter; this view is made without one.", kWho);
        }
        else if (!(counter = CreateCounter(manager->GetDevice())))
        {
            LX_ERROR("%s.  The append counter could not be created.", kWho);
            return false;
        }
    }
    LxD3D12DescriptorHeap& heap = manager->GetDescriptorHeap(LxD3D12DescriptorHeap::GetHeapTypeFor(kind));
    const int slot = heap.Allocate(1);
    if (slot < 0 || !heap.CreatePlaced(static_cast<unsigned>(slot), kind, d3dResource, viewDesc, counter))
    {
        // The heap reported why.
        if (slot >= 0)
            heap.FreeNow(static_cast<unsigned>(slot));
        if (counter)
            counter->Release();
        return false;
    }
    m_pCounter = counter;
    m_pHeap = &heap;
    m_nSlot = slot;
    m_nHeapGeneration = manager->GetHeapGeneration();
    m_handle = heap.GetCPUHandle(static_cast<unsigned>(slot));
    return true;
}
