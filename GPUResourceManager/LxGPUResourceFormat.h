// LxGPUResourceFormat: the API-neutral format enumeration of every GPU resource and view, with its per-format
// facts (bits per element, block compression) and the name <-> value lookup used by the effect language, whose
// format keywords are exactly the enumerator texts ("LX_FORMAT_R8G8B8A8_UNORM").
//
// Values 0 to 84 follow the Direct3D format list up to BC5; from 85 on the numbering is the library's own (BC7
// follows BC5 directly, there is no BC6H), so the platform layer maps formats through a table, never by identity.
// Everything here is stateless, platform-free and thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

// X-macro of the format list: LX_GPU_FORMAT(name, bits per element). Order is value order from 0; the enumerator is
// LX_FORMAT_<name>. For block-compressed formats the bits are per texel averaged over a 4x4 block.
#define LX_GPU_RESOURCE_FORMAT_LIST(LX_GPU_FORMAT)                                                                     \
    LX_GPU_FORMAT(UNKNOWN, 0)                                                                                          \
    LX_GPU_FORMAT(R32G32B32A32_TYPELESS, 128)                                                                          \
    LX_GPU_FORMAT(R32G32B32A32_FLOAT, 128)                                                                             \
    LX_GPU_FORMAT(R32G32B32A32_UINT, 128)                                                                              \
    LX_GPU_FORMAT(R32G32B32A32_SINT, 128)                                                                              \
    LX_GPU_FORMAT(R32G32B32_TYPELESS, 96)                                                                              \
    LX_GPU_FORMAT(R32G32B32_FLOAT, 96)                                                                                 \
    LX_GPU_FORMAT(R32G32B32_UINT, 96)                                                                                  \
    LX_GPU_FORMAT(R32G32B32_SINT, 96)                                                                                  \
    LX_GPU_FORMAT(R16G16B16A16_TYPELESS, 64)                                                                           \
    LX_GPU_FORMAT(R16G16B16A16_FLOAT, 64)                                                                              \
    LX_GPU_FORMAT(R16G16B16A16_UNORM, 64)                                                                              \
    LX_GPU_FORMAT(R16G16B16A16_UINT, 64)                                                                               \
    LX_GPU_FORMAT(R16G16B16A16_SNORM, 64)                                                                              \
    LX_GPU_FORMAT(R16G16B16A16_SINT, 64)                                                                               \
    LX_GPU_FORMAT(R32G32_TYPELESS, 64)                                                                                 \
    LX_GPU_FORMAT(R32G32_FLOAT, 64)                                                                                    \
    LX_GPU_FORMAT(R32G32_UINT, 64)                                                                                     \
    LX_GPU_FORMAT(R32G32_SINT, 64)                                                                                     \
    LX_GPU_FORMAT(R32G8X24_TYPELESS, 64)                                                                               \
    LX_GPU_FORMAT(D32_FLOAT_S8X24_UINT, 64)                                                                            \
    LX_GPU_FORMAT(R32_FLOAT_X8X24_TYPELESS, 64)                                                                        \
    LX_GPU_FORMAT(X32_TYPELESS_G8X24_UINT, 64)                                                                         \
    LX_GPU_FORMAT(R10G10B10A2_TYPELESS, 32)                                                                            \
    LX_GPU_FORMAT(R10G10B10A2_UNORM, 32)                                                                               \
    LX_GPU_FORMAT(R10G10B10A2_UINT, 32)                                                                                \
    LX_GPU_FORMAT(R11G11B10_FLOAT, 32)                                                                                 \
    LX_GPU_FORMAT(R8G8B8A8_TYPELESS, 32)                                                                               \
    LX_GPU_FORMAT(R8G8B8A8_UNORM, 32)                                                                                  \
    LX_GPU_FORMAT(R8G8B8A8_UNORM_SRGB, 32)                                                                             \
    LX_GPU_FORMAT(R8G8B8A8_UINT, 32)                                                                                   \
    LX_GPU_FORMAT(R8G8B8A8_SNORM, 32)                                                                                  \
    LX_GPU_FORMAT(R8G8B8A8_SINT, 32)                                                                                   \
    LX_GPU_FORMAT(R16G16_TYPELESS, 32)                                                                                 \
    LX_GPU_FORMAT(R16G16_FLOAT, 32)                                                                                    \
    LX_GPU_FORMAT(R16G16_UNORM, 32)                                                                                    \
    LX_GPU_FORMAT(R16G16_UINT, 32)                                                                                     \
    LX_GPU_FORMAT(R16G16_SNORM, 32)                                                                                    \
    LX_GPU_FORMAT(R16G16_SINT, 32)                                                                                     \
    LX_GPU_FORMAT(R32_TYPELESS, 32)                                                                                    \
    LX_GPU_FORMAT(D32_FLOAT, 32)                                                                                       \
    LX_GPU_FORMAT(R32_FLOAT, 32)                                                                                       \
    LX_GPU_FORMAT(R32_UINT, 32)                                                                                        \
    LX_GPU_FORMAT(R32_SINT, 32)                                                                                        \
    LX_GPU_FORMAT(R24G8_TYPELESS, 32)                                                                                  \
    LX_GPU_FORMAT(D24_UNORM_S8_UINT, 32)                                                                               \
    LX_GPU_FORMAT(R24_UNORM_X8_TYPELESS, 32)                                                                           \
    LX_GPU_FORMAT(X24_TYPELESS_G8_UINT, 32)                                                                            \
    LX_GPU_FORMAT(R8G8_TYPELESS, 16)                                                                                   \
    LX_GPU_FORMAT(R8G8_UNORM, 16)                                                                                      \
    LX_GPU_FORMAT(R8G8_UINT, 16)                                                                                       \
    LX_GPU_FORMAT(R8G8_SNORM, 16)                                                                                      \
    LX_GPU_FORMAT(R8G8_SINT, 16)                                                                                       \
    LX_GPU_FORMAT(R16_TYPELESS, 16)                                                                                    \
    LX_GPU_FORMAT(R16_FLOAT, 16)                                                                                       \
    LX_GPU_FORMAT(D16_UNORM, 16)                                                                                       \
    LX_GPU_FORMAT(R16_UNORM, 16)                                                                                       \
    LX_GPU_FORMAT(R16_UINT, 16)                                                                                        \
    LX_GPU_FORMAT(R16_SNORM, 16)                                                                                       \
    LX_GPU_FORMAT(R16_SINT, 16)                                                                                        \
    LX_GPU_FORMAT(R8_TYPELESS, 8)                                                                                      \
    LX_GPU_FORMAT(R8_UNORM, 8)                                                                                         \
    LX_GPU_FORMAT(R8_UINT, 8)                                                                                          \
    LX_GPU_FORMAT(R8_SNORM, 8)                                                                                         \
    LX_GPU_FORMAT(R8_SINT, 8)                                                                                          \
    LX_GPU_FORMAT(A8_UNORM, 8)                                                                                         \
    LX_GPU_FORMAT(R1_UNORM, 1)                                                                                         \
    LX_GPU_FORMAT(R9G9B9E5_SHAREDEXP, 32)                                                                              \
    LX_GPU_FORMAT(R8G8_B8G8_UNORM, 16)                                                                                 \
    LX_GPU_FORMAT(G8R8_G8B8_UNORM, 16)                                                                                 \
    LX_GPU_FORMAT(BC1_TYPELESS, 4)                                                                                     \
    LX_GPU_FORMAT(BC1_UNORM, 4)                                                                                        \
    LX_GPU_FORMAT(BC1_UNORM_SRGB, 4)                                                                                   \
    LX_GPU_FORMAT(BC2_TYPELESS, 8)                                                                                     \
    LX_GPU_FORMAT(BC2_UNORM, 8)                                                                                        \
    LX_GPU_FORMAT(BC2_UNORM_SRGB, 8)                                                                                   \
    LX_GPU_FORMAT(BC3_TYPELESS, 8)                                                                                     \
    LX_GPU_FORMAT(BC3_UNORM, 8)                                                                                        \
    LX_GPU_FORMAT(BC3_UNORM_SRGB, 8)                                                                                   \
    LX_GPU_FORMAT(BC4_TYPELESS, 4)                                                                                     \
    LX_GPU_FORMAT(BC4_UNORM, 4)                                                                                        \
    LX_GPU_FORMAT(BC4_SNORM, 4)                                                                                        \
    LX_GPU_FORMAT(BC5_TYPELESS, 8)                                                                                     \
    LX_GPU_FORMAT(BC5_UNORM, 8)                                                                                        \
    LX_GPU_FORMAT(BC5_SNORM, 8)                                                                                        \
    LX_GPU_FORMAT(BC7_TYPELESS, 8)                                                                                     \
    LX_GPU_FORMAT(BC7_UNORM, 8)                                                                                        \
    LX_GPU_FORMAT(BC7_UNORM_SRGB, 8)                                                                                   \
    LX_GPU_FORMAT(B5G6R5_UNORM, 16)                                                                                    \
    LX_GPU_FORMAT(B5G5R5A1_UNORM, 16)                                                                                  \
    LX_GPU_FORMAT(B8G8R8A8_UNORM, 32)                                                                                  \
    LX_GPU_FORMAT(B8G8R8X8_UNORM, 32)                                                                                  \
    LX_GPU_FORMAT(ATC_RGB, 4)                                                                                          \
    LX_GPU_FORMAT(ATC_RGBA, 8)                                                                                         \
    LX_GPU_FORMAT(ETC1, 4)                                                                                             \
    LX_GPU_FORMAT(ETC3, 8)                                                                                             \
    LX_GPU_FORMAT(ETC5, 8)                                                                                             \
    LX_GPU_FORMAT(D24_COMPARISON_S8_UINT, 32)                                                                          \
    LX_GPU_FORMAT(D16_COMPARISON, 16)

enum LxGPUResourceFormat : unsigned
{
#define LX_GPU_FORMAT_ENUMERATOR(name, bits) LX_FORMAT_##name,
    LX_GPU_RESOURCE_FORMAT_LIST(LX_GPU_FORMAT_ENUMERATOR)
#undef LX_GPU_FORMAT_ENUMERATOR
        LX_FORMAT_COUNT // number of formats (99); not a format
};

// Bits per element of a format (per texel averaged over a 4x4 block for the block-compressed ones); 0 for
// LX_FORMAT_UNKNOWN and for values outside the enumeration.
LX_API unsigned LxGetFormatBitsPerElement(LxGPUResourceFormat format);

// Block-compressed formats: values 70-87 (BC1 to BC5, BC7) and 92-96 (ATC, ETC). The mip computations raise every
// level after the first to at least 4x4 for exactly these.
LX_API bool LxIsFormatBlockCompressed(LxGPUResourceFormat format);

// Whether a format is fully typeless (R8G8B8A8_TYPELESS, BC1_TYPELESS, R24G8_TYPELESS...). The depth/stencil read
// aliases that carry one typed component (R24_UNORM_X8_TYPELESS, X24_TYPELESS_G8_UINT) are not typeless.
LX_API bool LxIsFormatTypeless(LxGPUResourceFormat format);

// The full enumerator text ("LX_FORMAT_R8G8B8A8_UNORM"); null for values outside the enumeration.
LX_API const char* LxGetFormatName(LxGPUResourceFormat format);

// Looks up an enumerator text, exactly and case-sensitively as the effect language's keywords are written. Returns
// false and leaves `format` untouched when the text names no format ; logs nothing, so the
// caller can report the bad keyword in its own context.
LX_API bool LxGetFormatFromName(const LxString& name, LxGPUResourceFormat* format);
