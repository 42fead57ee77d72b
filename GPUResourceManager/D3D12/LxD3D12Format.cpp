#include "GPUResourceManager/D3D12/LxD3D12Format.h"

#include "Common/LxImageData2D.h"
#include "GPUResourceManager/LxGPUReadback.h"
#include "GPUResourceManager/LxMappedSurface.h"

namespace
{
const DXGI_FORMAT kFormats[LX_FORMAT_COUNT] = {
    DXGI_FORMAT_UNKNOWN,                  // LX_FORMAT_UNKNOWN
    DXGI_FORMAT_R32G32B32A32_TYPELESS,    // LX_FORMAT_R32G32B32A32_TYPELESS
    DXGI_FORMAT_R32G32B32A32_FLOAT,       // LX_FORMAT_R32G32B32A32_FLOAT
    DXGI_FORMAT_R32G32B32A32_UINT,        // LX_FORMAT_R32G32B32A32_UINT
    DXGI_FORMAT_R32G32B32A32_SINT,        // LX_FORMAT_R32G32B32A32_SINT
    DXGI_FORMAT_R32G32B32_TYPELESS,       // LX_FORMAT_R32G32B32_TYPELESS
    DXGI_FORMAT_R32G32B32_FLOAT,          // LX_FORMAT_R32G32B32_FLOAT
    DXGI_FORMAT_R32G32B32_UINT,           // LX_FORMAT_R32G32B32_UINT
    DXGI_FORMAT_R32G32B32_SINT,           // LX_FORMAT_R32G32B32_SINT
    DXGI_FORMAT_R16G16B16A16_TYPELESS,    // LX_FORMAT_R16G16B16A16_TYPELESS
    DXGI_FORMAT_R16G16B16A16_FLOAT,       // LX_FORMAT_R16G16B16A16_FLOAT
    DXGI_FORMAT_R16G16B16A16_UNORM,       // LX_FORMAT_R16G16B16A16_UNORM
    DXGI_FORMAT_R16G16B16A16_UINT,        // LX_FORMAT_R16G16B16A16_UINT
    DXGI_FORMAT_R16G16B16A16_SNORM,       // LX_FORMAT_R16G16B16A16_SNORM
    DXGI_FORMAT_R16G16B16A16_SINT,        // LX_FORMAT_R16G16B16A16_SINT
    DXGI_FORMAT_R32G32_TYPELESS,          // LX_FORMAT_R32G32_TYPELESS
    DXGI_FORMAT_R32G32_FLOAT,             // LX_FORMAT_R32G32_FLOAT
    DXGI_FORMAT_R32G32_UINT,              // LX_FORMAT_R32G32_UINT
    DXGI_FORMAT_R32G32_SINT,              // LX_FORMAT_R32G32_SINT
    DXGI_FORMAT_R32G8X24_TYPELESS,        // LX_FORMAT_R32G8X24_TYPELESS
    DXGI_FORMAT_D32_FLOAT_S8X24_UINT,     // LX_FORMAT_D32_FLOAT_S8X24_UINT
    DXGI_FORMAT_R32_FLOAT_X8X24_TYPELESS, // LX_FORMAT_R32_FLOAT_X8X24_TYPELESS
    DXGI_FORMAT_X32_TYPELESS_G8X24_UINT,  // LX_FORMAT_X32_TYPELESS_G8X24_UINT
    DXGI_FORMAT_R10G10B10A2_TYPELESS,     // LX_FORMAT_R10G10B10A2_TYPELESS
    DXGI_FORMAT_R10G10B10A2_UNORM,        // LX_FORMAT_R10G10B10A2_UNORM
    DXGI_FORMAT_R10G10B10A2_UINT,         // LX_FORMAT_R10G10B10A2_UINT
    DXGI_FORMAT_R11G11B10_FLOAT,          // LX_FORMAT_R11G11B10_FLOAT
    DXGI_FORMAT_R8G8B8A8_TYPELESS,        // LX_FORMAT_R8G8B8A8_TYPELESS
    DXGI_FORMAT_R8G8B8A8_UNORM,           // LX_FORMAT_R8G8B8A8_UNORM
    DXGI_FORMAT_R8G8B8A8_UNORM_SRGB,      // LX_FORMAT_R8G8B8A8_UNORM_SRGB
    DXGI_FORMAT_R8G8B8A8_UINT,            // LX_FORMAT_R8G8B8A8_UINT
    DXGI_FORMAT_R8G8B8A8_SNORM,           // LX_FORMAT_R8G8B8A8_SNORM
    DXGI_FORMAT_R8G8B8A8_SINT,            // LX_FORMAT_R8G8B8A8_SINT
    DXGI_FORMAT_R16G16_TYPELESS,          // LX_FORMAT_R16G16_TYPELESS
    DXGI_FORMAT_R16G16_FLOAT,             // LX_FORMAT_R16G16_FLOAT
    DXGI_FORMAT_R16G16_UNORM,             // LX_FORMAT_R16G16_UNORM
    DXGI_FORMAT_R16G16_UINT,              // LX_FORMAT_R16G16_UINT
    DXGI_FORMAT_R16G16_SNORM,             // LX_FORMAT_R16G16_SNORM
    DXGI_FORMAT_R16G16_SINT,              // LX_FORMAT_R16G16_SINT
    DXGI_FORMAT_R32_TYPELESS,             // LX_FORMAT_R32_TYPELESS
    DXGI_FORMAT_D32_FLOAT,                // LX_FORMAT_D32_FLOAT
    DXGI_FORMAT_R32_FLOAT,                // LX_FORMAT_R32_FLOAT
    DXGI_FORMAT_R32_UINT,                 // LX_FORMAT_R32_UINT
    DXGI_FORMAT_R32_SINT,                 // LX_FORMAT_R32_SINT
    DXGI_FORMAT_R24G8_TYPELESS,           // LX_FORMAT_R24G8_TYPELESS
    DXGI_FORMAT_D24_UNORM_S8_UINT,        // LX_FORMAT_D24_UNORM_S8_UINT
    DXGI_FORMAT_R24_UNORM_X8_TYPELESS,    // LX_FORMAT_R24_UNORM_X8_TYPELESS
    DXGI_FORMAT_X24_TYPELESS_G8_UINT,     // LX_FORMAT_X24_TYPELESS_G8_UINT
    DXGI_FORMAT_R8G8_TYPELESS,            // LX_FORMAT_R8G8_TYPELESS
    DXGI_FORMAT_R8G8_UNORM,               // LX_FORMAT_R8G8_UNORM
    DXGI_FORMAT_R8G8_UINT,                // LX_FORMAT_R8G8_UINT
    DXGI_FORMAT_R8G8_SNORM,               // LX_FORMAT_R8G8_SNORM
    DXGI_FORMAT_R8G8_SINT,                // LX_FORMAT_R8G8_SINT
    DXGI_FORMAT_R16_TYPELESS,             // LX_FORMAT_R16_TYPELESS
    DXGI_FORMAT_R16_FLOAT,                // LX_FORMAT_R16_FLOAT
    DXGI_FORMAT_D16_UNORM,                // LX_FORMAT_D16_UNORM
    DXGI_FORMAT_R16_UNORM,                // LX_FORMAT_R16_UNORM
    DXGI_FORMAT_R16_UINT,                 // LX_FORMAT_R16_UINT
    DXGI_FORMAT_R16_SNORM,                // LX_FORMAT_R16_SNORM
    DXGI_FORMAT_R16_SINT,                 // LX_FORMAT_R16_SINT
    DXGI_FORMAT_R8_TYPELESS,              // LX_FORMAT_R8_TYPELESS
    DXGI_FORMAT_R8_UNORM,                 // LX_FORMAT_R8_UNORM
    DXGI_FORMAT_R8_UINT,                  // LX_FORMAT_R8_UINT
    DXGI_FORMAT_R8_SNORM,                 // LX_FORMAT_R8_SNORM
    DXGI_FORMAT_R8_SINT,                  // LX_FORMAT_R8_SINT
    DXGI_FORMAT_A8_UNORM,                 // LX_FORMAT_A8_UNORM
    DXGI_FORMAT_R1_UNORM,                 // LX_FORMAT_R1_UNORM
    DXGI_FORMAT_R9G9B9E5_SHAREDEXP,       // LX_FORMAT_R9G9B9E5_SHAREDEXP
    DXGI_FORMAT_R8G8_B8G8_UNORM,          // LX_FORMAT_R8G8_B8G8_UNORM
    DXGI_FORMAT_G8R8_G8B8_UNORM,          // LX_FORMAT_G8R8_G8B8_UNORM
    DXGI_FORMAT_BC1_TYPELESS,             // LX_FORMAT_BC1_TYPELESS
    DXGI_FORMAT_BC1_UNORM,                // LX_FORMAT_BC1_UNORM
    DXGI_FORMAT_BC1_UNORM_SRGB,           // LX_FORMAT_BC1_UNORM_SRGB
    DXGI_FORMAT_BC2_TYPELESS,             // LX_FORMAT_BC2_TYPELESS
    DXGI_FORMAT_BC2_UNORM,                // LX_FORMAT_BC2_UNORM
    DXGI_FORMAT_BC2_UNORM_SRGB,           // LX_FORMAT_BC2_UNORM_SRGB
    DXGI_FORMAT_BC3_TYPELESS,             // LX_FORMAT_BC3_TYPELESS
    DXGI_FORMAT_BC3_UNORM,                // LX_FORMAT_BC3_UNORM
    DXGI_FORMAT_BC3_UNORM_SRGB,           // LX_FORMAT_BC3_UNORM_SRGB
    DXGI_FORMAT_BC4_TYPELESS,             // LX_FORMAT_BC4_TYPELESS
    DXGI_FORMAT_BC4_UNORM,                // LX_FORMAT_BC4_UNORM
    DXGI_FORMAT_BC4_SNORM,                // LX_FORMAT_BC4_SNORM
    DXGI_FORMAT_BC5_TYPELESS,             // LX_FORMAT_BC5_TYPELESS
    DXGI_FORMAT_BC5_UNORM,                // LX_FORMAT_BC5_UNORM
    DXGI_FORMAT_BC5_SNORM,                // LX_FORMAT_BC5_SNORM
    DXGI_FORMAT_BC7_TYPELESS,             // LX_FORMAT_BC7_TYPELESS
    DXGI_FORMAT_BC7_UNORM,                // LX_FORMAT_BC7_UNORM
    DXGI_FORMAT_BC7_UNORM_SRGB,           // LX_FORMAT_BC7_UNORM_SRGB
    DXGI_FORMAT_B5G6R5_UNORM,             // LX_FORMAT_B5G6R5_UNORM
    DXGI_FORMAT_B5G5R5A1_UNORM,           // LX_FORMAT_B5G5R5A1_UNORM
    DXGI_FORMAT_B8G8R8A8_UNORM,           // LX_FORMAT_B8G8R8A8_UNORM
    DXGI_FORMAT_B8G8R8X8_UNORM,           // LX_FORMAT_B8G8R8X8_UNORM
    DXGI_FORMAT_UNKNOWN,                  // LX_FORMAT_ATC_RGB: no Direct3D format
    DXGI_FORMAT_UNKNOWN,                  // LX_FORMAT_ATC_RGBA: no Direct3D format
    DXGI_FORMAT_UNKNOWN,                  // LX_FORMAT_ETC1: no Direct3D format
    DXGI_FORMAT_UNKNOWN,                  // LX_FORMAT_ETC3: no Direct3D format
    DXGI_FORMAT_UNKNOWN,                  // LX_FORMAT_ETC5: no Direct3D format
    DXGI_FORMAT_D24_UNORM_S8_UINT,        // LX_FORMAT_D24_COMPARISON_S8_UINT
    DXGI_FORMAT_D16_UNORM,                // LX_FORMAT_D16_COMPARISON
};

enum ConverterKind
{
    CONVERT_NONE,
    CONVERT_RGBA8,
    CONVERT_BGRA8,
    CONVERT_BGRX8,
    CONVERT_RGB10A2,
    CONVERT_FLOAT16,
    CONVERT_FLOAT32,
    CONVERT_SINT32,
    CONVERT_UINT32,
};

struct Converter
{
    ConverterKind kind;
    unsigned channels;
};

Converter GetConverter(LxGPUResourceFormat format)
{
    switch (format)
    {
    case LX_FORMAT_R8G8B8A8_UNORM:
    case LX_FORMAT_R8G8B8A8_UNORM_SRGB:
        return {CONVERT_RGBA8, 4};
    case LX_FORMAT_B8G8R8A8_UNORM:
        return {CONVERT_BGRA8, 4};
    case LX_FORMAT_B8G8R8X8_UNORM:
        return {CONVERT_BGRX8, 4};
    case LX_FORMAT_R10G10B10A2_UNORM:
        return {CONVERT_RGB10A2, 4};
    case LX_FORMAT_R16G16B16A16_FLOAT:
        return {CONVERT_FLOAT16, 4};
    case LX_FORMAT_R16G16_FLOAT:
        return {CONVERT_FLOAT16, 2};
    case LX_FORMAT_R16_FLOAT:
        return {CONVERT_FLOAT16, 1};
    case LX_FORMAT_R32G32B32A32_FLOAT:
        return {CONVERT_FLOAT32, 4};
    case LX_FORMAT_R32G32B32_FLOAT:
        return {CONVERT_FLOAT32, 3};
    case LX_FORMAT_R32G32_FLOAT:
        return {CONVERT_FLOAT32, 2};
    case LX_FORMAT_R32_FLOAT:
    case LX_FORMAT_D32_FLOAT:
        return {CONVERT_FLOAT32, 1};
    case LX_FORMAT_R32G32B32A32_UINT:
        return {CONVERT_UINT32, 4};
    case LX_FORMAT_R32G32B32_UINT:
        return {CONVERT_UINT32, 3};
    case LX_FORMAT_R32G32_UINT:
        return {CONVERT_UINT32, 2};
    case LX_FORMAT_R32_UINT:
        return {CONVERT_UINT32, 1};
    case LX_FORMAT_R32G32B32A32_SINT:
        return {CONVERT_SINT32, 4};
    case LX_FORMAT_R32G32B32_SINT:
        return {CONVERT_SINT32, 3};
    case LX_FORMAT_R32G32_SINT:
        return {CONVERT_SINT32, 2};
    case LX_FORMAT_R32_SINT:
        return {CONVERT_SINT32, 1};
    default:
        return {CONVERT_NONE, 0};
    }
}
} // namespace

DXGI_FORMAT LxGetDXGIFormat(LxGPUResourceFormat format)
{
    return format < LX_FORMAT_COUNT ? kFormats[format] : DXGI_FORMAT_UNKNOWN;
}

LxGPUResourceFormat LxGetFormatFromDXGI(DXGI_FORMAT format)
{
    for (unsigned i = 1; i < LX_FORMAT_COUNT; ++i)
    {
        if (kFormats[i] == format)
        {
            return static_cast<LxGPUResourceFormat>(i);
        }
    }
    return LX_FORMAT_UNKNOWN;
}

bool LxHasReadbackConverter(LxGPUResourceFormat format)
{
    return GetConverter(format).kind != CONVERT_NONE;
}

bool LxConvertReadback(LxGPUResourceFormat format, LxMappedSurface* src, LxImageData2D* dst)
{
    const Converter converter = GetConverter(format);
    switch (converter.kind)
    {
    case CONVERT_RGBA8:
        LxReadbackRGBA8(src, dst);
        return true;
    case CONVERT_BGRA8:
        LxReadbackBGRA8(src, dst);
        return true;
    case CONVERT_BGRX8:
        LxReadbackBGRX8(src, dst);
        return true;
    case CONVERT_RGB10A2:
    {
        // Direct3D packs red in the low bits (r 0-9, g 10-19, b 20-29, a 30-31). The A2R10G10B10 converter reads
        // alpha from the same top bits and takes bits 20-29 as red, so its red and blue come out swapped.
        LxReadbackA2R10G10B10(src, dst);
        double* p = dst->GetData();
        const unsigned pixels = dst->GetWidth() * dst->GetHeight();
        for (unsigned i = 0; i < pixels; ++i, p += dst->GetPixelStride())
        {
            const double r = p[2];
            p[2] = p[0];
            p[0] = r;
        }
        return true;
    }
    case CONVERT_FLOAT16:
        LxReadbackFloat16(src, dst, converter.channels);
        return true;
    case CONVERT_FLOAT32:
        LxReadbackFloat32(src, dst, converter.channels);
        return true;
    case CONVERT_SINT32:
        LxReadbackInt32(src, dst, converter.channels);
        return true;
    case CONVERT_UINT32:
        LxReadbackUInt32(src, dst, converter.channels);
        return true;
    case CONVERT_NONE:
        break;
    }
    return false;
}
