// LxGPUVertexBuffer: vertices of one stream; size = vertex size x vertex count. The constructor adds
// BIND_VERTEX_BUFFER to the caller's bind flags. OverrideVertexSize changes the stride the buffer reports after
// creation (for data reinterpreted by another stream declaration); the byte size stays.
#pragma once

#include "GPUResourceManager/LxGPUBuffer.h"

class LX_API LxGPUVertexBuffer : public LxGPUBuffer
{
public:
    LxGPUVertexBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                      unsigned vertexSize, unsigned vertexCount);

    unsigned GetVertexSize() const { return m_nVertexSize; }
    unsigned GetVertexCount() const { return m_nVertexCount; }
    void OverrideVertexSize(unsigned vertexSize) { m_nVertexSize = vertexSize; }
    unsigned GetElementCount() const override { return m_nVertexCount; }

    bool IsVertexBuffer() const override { return true; }

private:
    unsigned m_nVertexSize;
    unsigned m_nVertexCount;
};
