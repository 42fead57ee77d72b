// LxGPUDataBuffer: a plain buffer of data for shaders (typed or raw views, unordered access, indirect arguments).
// It is never a vertex or index buffer, whatever its bind flags say.
#pragma once

#include "GPUResourceManager/LxGPUBuffer.h"

class LX_API LxGPUDataBuffer : public LxGPUBuffer
{
public:
    LxGPUDataBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                    unsigned sizeInBytes);

    bool IsVertexBuffer() const override { return false; }
    bool IsIndexBuffer() const override { return false; }
};
