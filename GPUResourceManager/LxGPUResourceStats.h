// LxGPUResourceStats: counts and bytes of the GPU resources alive, per kind, kept by the resource manager.
//
// Eighteen unsigned 32-bit counters in nine (count, bytes) pairs. Increments and decrements wrap; they do not
// saturate (an unbalanced decrement shows up as a huge value rather than hiding). Render targets and depth-stencil
// buffers are also textures and are counted twice: as textures, and in their own pairs, which is why
// GetGPUMemoryUsage leaves those two byte fields out. Not thread-safe: the manager updates it under its own lock.
#pragma once

#include "Common/LxApi.h"

enum LxGPUResourceStatField : unsigned
{
    LX_STAT_VERTEX_BUFFER_COUNT = 0,
    LX_STAT_VERTEX_BUFFER_BYTES = 1,
    LX_STAT_INDEX_BUFFER_COUNT = 2,
    LX_STAT_INDEX_BUFFER_BYTES = 3,
    LX_STAT_CONSTANT_BUFFER_COUNT = 4,
    LX_STAT_CONSTANT_BUFFER_BYTES = 5,
    LX_STAT_TEXTURE_2D_COUNT = 6,
    LX_STAT_TEXTURE_2D_BYTES = 7,
    LX_STAT_TEXTURE_3D_COUNT = 8,
    LX_STAT_TEXTURE_3D_BYTES = 9,
    LX_STAT_TEXTURE_CUBE_COUNT = 10,
    LX_STAT_TEXTURE_CUBE_BYTES = 11,
    LX_STAT_RENDER_TARGET_COUNT = 12, // also counted as textures
    LX_STAT_RENDER_TARGET_BYTES = 13,
    LX_STAT_DEPTH_STENCIL_COUNT = 14, // also counted as textures
    LX_STAT_DEPTH_STENCIL_BYTES = 15,
    LX_STAT_DATA_BUFFER_COUNT = 16, // structured and plain data buffers
    LX_STAT_DATA_BUFFER_BYTES = 17,
    LX_STAT_NUM_FIELDS = 18
};

class LX_API LxGPUResourceStats
{
public:
    LxGPUResourceStats();

    // Fields outside the enumeration are ignored (reads answer 0).
    void IncrementValue(LxGPUResourceStatField field, unsigned n);
    void DecrementValue(LxGPUResourceStatField field, unsigned n);
    unsigned GetValue(LxGPUResourceStatField field) const;
    void Clear();

    // Bytes of every kind except render targets and depth-stencil buffers (fields 13 and 15), which the texture
    // fields already hold; 32-bit, wrapping like the fields.
    unsigned GetGPUMemoryUsage() const;

private:
    unsigned m_values[LX_STAT_NUM_FIELDS];
};
