// LxMipChain: the lower mip levels of textures whose caller supplies only the first (MIP_AUTO_GENERATE), made on the
// CPU before upload: each level is the box-filtered half of the one above (2x2 texels, 2x2x2 for volumes; an odd
// edge repeats its last texel), rounded to nearest. sRGB formats average their colour channels in linear light;
// alpha is averaged as stored.
//
// Formats whose channels are all 8-bit UNORM (R8, A8, R8G8, R8G8B8A8 with its sRGB form, B8G8R8A8 and B8G8R8X8) are
// covered; others (block-compressed, wider or float channels) are not. Stateless and thread-safe; failures are
// answered with null, nothing logged (the caller says what it falls back to).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "GPUResourceManager/LxGPUResourceFormat.h"

// Whether LxBuildMipChain covers `format`.
LX_API bool LxCanBuildMipChain(LxGPUResourceFormat format);

// From `firstLevels` (level 0 of each of `sliceCount` slices, packed rows, slice after slice) to every one of the
// `mipCount` levels of each slice (levels of slice 0, then of slice 1, ...: the MIP_USER_SUPPLIED layout). Null for
// an uncovered format, a zero size, or input shorter than the slices' first levels.
LX_API LxCountedPtr<LxMemoryBuffer> LxBuildMipChain(unsigned width, unsigned height, unsigned depth, unsigned mipCount,
                                                    unsigned sliceCount, LxGPUResourceFormat format,
                                                    const LxMemoryBuffer& firstLevels);
