// LxDisplaySettings: the description of the window and device that LxWindowManager::CreateMainWindow makes, with
// the defaults a demo starts from (a 4:3 windowed "Lumex 5" window chosen by the system, 8-bit colour, 24-bit
// depth with 8-bit stencil, double buffering, feature level 11.0 on the first adapter).
//
// Besides the fields it answers the questions that creation asks of them, so that they can be checked on any
// platform: the back-buffer and depth formats the bit depths give (logging why a request cannot be met) and the
// minimum feature level the level flags ask for. Plain value type; no threading concerns.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"
#include "GPUResourceManager/LxGPUResourceFormat.h"

class LX_API LxDisplaySettings
{
public:
    // Minimum Direct3D feature levels, lowest first.
    enum FeatureLevel : unsigned
    {
        FEATURE_LEVEL_10_0,
        FEATURE_LEVEL_10_1,
        FEATURE_LEVEL_11_0,
        FEATURE_LEVEL_12_0,
        FEATURE_LEVEL_12_1,
    };
    static const unsigned kNoSize = 0xFFFFFFFFu;    // width or height: none requested
    static const int kDefaultPosition = 0x7FFFFFFF; // window x or y: the system chooses

    LxDisplaySettings();

    // The back-buffer resource format and the format its render-target view uses: 8 bits per channel give
    // R8G8B8A8_UNORM (viewed as R8G8B8A8_UNORM_SRGB when sRGB is asked for), 10 give R10G10B10A2_UNORM, 16 give
    // R16G16B16A16_FLOAT. Other depths fail with "Cannot create a back buffer with the requested number of bits per
    // channel."; sRGB with 10 or 16 bits fails with "Cannot create a back buffer view with the requested number of
    // bits per channel.". Outputs are untouched on failure.
    bool GetBackBufferFormats(LxGPUResourceFormat* resourceFormat, LxGPUResourceFormat* viewFormat) const;
    // The depth-stencil format of the depth and stencil bits: 16/0 D16_UNORM, 24/0 and 24/8 D24_UNORM_S8_UINT,
    // 32/0 D32_FLOAT, 32/8 D32_FLOAT_S8X24_UINT, 0/0 LX_FORMAT_UNKNOWN (no depth buffer). Any other combination
    // fails with "Cannot create a depth buffer with the requested depth/stencil bit depth.".
    bool GetDepthStencilFormat(LxGPUResourceFormat* format) const;
    // The first level flag set in the order 12.1, 12.0, 11, 10.1, 10.0; 11.0 when none is.
    FeatureLevel GetMinimumFeatureLevel() const;
    // Whether any of the level flags is set.
    bool HasFeatureLevelRequest() const;

    LxString title;                 // window caption and message-box caption: "Lumex 5"
    bool fullScreen;                // false
    bool borderless;                // false: a popup window without caption or frame when windowed
    unsigned adapterIndex;          // 0: the adapter index in DXGI's enumeration; beyond the last, the default one
    unsigned width;                 // kNoSize: client width
    unsigned height;                // kNoSize: client height
    int x;                          // kDefaultPosition: window position
    int y;                          // kDefaultPosition
    unsigned multisampleCount;      // 1: a swap chain is always single-sampled; more only warns
    unsigned bitsPerChannel;        // 8 (8, 10 or 16)
    bool sRGB;                      // false: the back buffer is viewed as sRGB (8 bits per channel only)
    unsigned depthBits;             // 24
    unsigned stencilBits;           // 8
    float aspectRatio;              // 4:3
    unsigned backBufferCount;       // 2
    unsigned refreshRateNumerator;  // 0 (over 1): any
    bool softwareDriver;            // false: ask for the software (WARP) driver
    bool unorderedAccessBackBuffer; // false: the back buffer may be bound as an unordered-access view
    bool featureLevel10_0;          // the requested level flags, all false (see GetMinimumFeatureLevel)
    bool featureLevel10_1;
    bool featureLevel11;
    bool featureLevel12_0;
    bool featureLevel12_1;
    float resolutionScaleX;    // 1.0: for the application (render-target scale); the window manager ignores it
    float resolutionScaleY;    // 1.0
    unsigned uploadHeapSizeMB; // 512: handed to the device layer in bytes (<< 20)
    // Descriptor capacities handed to the device layer, 1024 each. Shader-resource and unordered-access views share
    // the device's shader-visible heap, which gets room for both.
    unsigned shaderResourceDescriptors;
    unsigned unorderedAccessDescriptors;
    unsigned samplerDescriptors;
    unsigned renderTargetDescriptors;
    unsigned depthStencilDescriptors;
};
