// Texture size and mip-layout computations used when uploading image data. Stateless and thread-safe.
//
// Both treat the block-compressed formats (LxIsFormatBlockCompressed) alike: every level after the first is raised
// to at least 4x4 (depth is never raised), while the first level keeps its own size even when smaller than a block.
// Sizes are derived from the format's bits per element: rows of (bits x width) / 8 bytes.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "GPUResourceManager/LxGPUResourceFormat.h"

// One mip level inside a block of image data.
struct LxMipLevelInfo
{
    unsigned rowPitch;   // bytes per row
    unsigned slicePitch; // bytes per depth slice (row pitch x height)
    unsigned levelSize;  // bytes of the level (slice pitch x depth)
    unsigned char* data; // the level's first byte inside the source buffer
};

// Total bytes of a mip chain: summed in bits over the levels with 32-bit arithmetic, then divided by 8 once. 0 when
// mipCount is 0.
LX_API unsigned LxComputeTextureSize(unsigned width, unsigned height, unsigned depth, unsigned mipCount,
                                     LxGPUResourceFormat format);

// Appends one entry per level, the first starting `offset` bytes into `data`. False when `data` is null or too
// short; the entries of the levels that fit stay in `out`. The reference to `data` is released on return either way
// (the entries point into it, so the caller keeps its own reference while it uses them).
LX_API bool LxGetMipLevelInfo(unsigned width, unsigned height, unsigned depth, unsigned mipCount,
                              LxGPUResourceFormat format, LxCountedPtr<LxMemoryBuffer> data, unsigned offset,
                              LxArray<LxMipLevelInfo>& out);
