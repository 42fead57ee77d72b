#include "WindowManager/LxDisplaySettings.h"

#include "Common/LxLogManager.h"

LxDisplaySettings::LxDisplaySettings()
    : title("Lumex 5"), fullScreen(false), borderless(false), adapterIndex(0), width(kNoSize), height(kNoSize),
      x(kDefaultPosition), y(kDefaultPosition), multisampleCount(1), bitsPerChannel(8), sRGB(false), depthBits(24),
      stencilBits(8), aspectRatio(4.0f / 3.0f), backBufferCount(2), refreshRateNumerator(0), softwareDriver(false),
      unorderedAccessBackBuffer(false), featureLevel10_0(false), featureLevel10_1(false), featureLevel11(false),
      featureLevel12_0(false), featureLevel12_1(false), resolutionScaleX(1.0f), resolutionScaleY(1.0f),
      uploadHeapSizeMB(512), shaderResourceDescriptors(1024), unorderedAccessDescriptors(1024),
      samplerDescriptors(1024), renderTargetDescriptors(1024), depthStencilDescriptors(1024)
{
}

bool LxDisplaySettings::GetBackBufferFormats(LxGPUResourceFormat* resourceFormat, LxGPUResourceFormat* viewFormat) const
{
    LxGPUResourceFormat resource;
    switch (bitsPerChannel)
    {
    case 8:
        resource = LX_FORMAT_R8G8B8A8_UNORM;
        break;
    case 10:
        resource = LX_FORMAT_R10G10B10A2_UNORM;
        break;
    case 16:
        resource = LX_FORMAT_R16G16B16A16_FLOAT;
        break;
    default:
        LX_ERROR("Cannot create a back buffer with the requested number of bits per channel.");
        return false;
    }
    LxGPUResourceFormat view = resource;
    if (sRGB)
    {
        // Only the 8-bit format has an sRGB twin.
        if (bitsPerChannel != 8)
        {
            LX_ERROR("Cannot create a back buffer view with the requested number of bits per channel.");
            return false;
        }
        view = LX_FORMAT_R8G8B8A8_UNORM_SRGB;
    }
    *resourceFormat = resource;
    *viewFormat = view;
    return true;
}

bool LxDisplaySettings::GetDepthStencilFormat(LxGPUResourceFormat* format) const
{
    LxGPUResourceFormat result = LX_FORMAT_UNKNOWN;
    bool found = true;
    if (depthBits == 0 && stencilBits == 0)
        result = LX_FORMAT_UNKNOWN;
    else if (depthBits == 16 && stencilBits == 0)
        result = LX_FORMAT_D16_UNORM;
    else if (depthBits == 24 && (stencilBits == 0 || stencilBits == 8))
        result = LX_FORMAT_D24_UNORM_S8_UINT; // there is no 24-bit depth format without the stencil byte
    else if (depthBits == 32 && stencilBits == 0)
        result = LX_FORMAT_D32_FLOAT;
    else if (depthBits == 32 && stencilBits == 8)
        result = LX_FORMAT_D32_FLOAT_S8X24_UINT;
    else
        found = false;
    if (!found)
    {
        LX_ERROR("Cannot create a depth buffer with the requested depth/stencil bit depth.");
        return false;
    }
    *format = result;
    return true;
}

LxDisplaySettings::FeatureLevel LxDisplaySettings::GetMinimumFeatureLevel() const
{
    if (featureLevel12_1)
        return FEATURE_LEVEL_12_1;
    if (featureLevel12_0)
        return FEATURE_LEVEL_12_0;
    if (featureLevel11)
        return FEATURE_LEVEL_11_0;
    if (featureLevel10_1)
        return FEATURE_LEVEL_10_1;
    if (featureLevel10_0)
        return FEATURE_LEVEL_10_0;
    return FEATURE_LEVEL_11_0;
}

bool LxDisplaySettings::HasFeatureLevelRequest() const
{
    return featureLevel12_1 || featureLevel12_0 || featureLevel11 || featureLevel10_1 || featureLevel10_0;
}
