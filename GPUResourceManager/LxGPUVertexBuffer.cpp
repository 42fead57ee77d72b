#include "GPUResourceManager/LxGPUVertexBuffer.h"

LxGPUVertexBuffer::LxGPUVertexBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                                     unsigned vertexSize, unsigned vertexCount)
    : LxGPUBuffer(behavior, bindFlags | BIND_VERTEX_BUFFER, cpuAccessFlags, miscHints, vertexSize * vertexCount),
      m_nVertexSize(vertexSize), m_nVertexCount(vertexCount)
{
}
