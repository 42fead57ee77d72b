#include "GPUResourceManager/LxGPUResourceFormat.h"

#include <cstring>

namespace
{
struct FormatInfo
{
    const char* name;
    unsigned bits;
};

const FormatInfo kFormats[] = {
#define LX_GPU_FORMAT_INFO(name, bits) {"LX_FORMAT_" #name, bits},
    LX_GPU_RESOURCE_FORMAT_LIST(LX_GPU_FORMAT_INFO)
#undef LX_GPU_FORMAT_INFO
};

static_assert(sizeof(kFormats) / sizeof(kFormats[0]) == 99, "the format enumeration has 99 values");
static_assert(LX_FORMAT_COUNT == 99, "the format enumeration has 99 values");
static_assert(LX_FORMAT_BC5_SNORM == 84 && LX_FORMAT_BC7_TYPELESS == 85 && LX_FORMAT_D16_COMPARISON == 98,
              "format values are part of the file formats and the platform table");

bool InRange(LxGPUResourceFormat format)
{
    return static_cast<unsigned>(format) < LX_FORMAT_COUNT;
}
} // namespace

unsigned LxGetFormatBitsPerElement(LxGPUResourceFormat format)
{
    return InRange(format) ? kFormats[format].bits : 0;
}

bool LxIsFormatBlockCompressed(LxGPUResourceFormat format)
{
    return (format >= LX_FORMAT_BC1_TYPELESS && format <= LX_FORMAT_BC7_UNORM_SRGB) ||
           (format >= LX_FORMAT_ATC_RGB && format <= LX_FORMAT_ETC5);
}

bool LxIsFormatTypeless(LxGPUResourceFormat format)
{
    switch (format)
    {
    case LX_FORMAT_R32G32B32A32_TYPELESS:
    case LX_FORMAT_R32G32B32_TYPELESS:
    case LX_FORMAT_R16G16B16A16_TYPELESS:
    case LX_FORMAT_R32G32_TYPELESS:
    case LX_FORMAT_R32G8X24_TYPELESS:
    case LX_FORMAT_R10G10B10A2_TYPELESS:
    case LX_FORMAT_R8G8B8A8_TYPELESS:
    case LX_FORMAT_R16G16_TYPELESS:
    case LX_FORMAT_R32_TYPELESS:
    case LX_FORMAT_R24G8_TYPELESS:
    case LX_FORMAT_R8G8_TYPELESS:
    case LX_FORMAT_R16_TYPELESS:
    case LX_FORMAT_R8_TYPELESS:
    case LX_FORMAT_BC1_TYPELESS:
    case LX_FORMAT_BC2_TYPELESS:
    case LX_FORMAT_BC3_TYPELESS:
    case LX_FORMAT_BC4_TYPELESS:
    case LX_FORMAT_BC5_TYPELESS:
    case LX_FORMAT_BC7_TYPELESS:
        return true;
    default:
        return false;
    }
}

const char* LxGetFormatName(LxGPUResourceFormat format)
{
    return InRange(format) ? kFormats[format].name : nullptr;
}

bool LxGetFormatFromName(const LxString& name, LxGPUResourceFormat* format)
{
    for (unsigned i = 0; i < LX_FORMAT_COUNT; ++i)
    {
        if (name == kFormats[i].name)
        {
            *format = static_cast<LxGPUResourceFormat>(i);
            return true;
        }
    }
    return false;
}
