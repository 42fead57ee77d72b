#include "GPUResourceManager/LxGPUIndexBuffer.h"

LxGPUIndexBuffer::LxGPUIndexBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                                   unsigned indexSize, unsigned indexCount)
    : LxGPUBuffer(behavior, bindFlags | BIND_INDEX_BUFFER, cpuAccessFlags, miscHints, indexSize * indexCount),
      m_nIndexSize(indexSize), m_nIndexCount(indexCount)
{
}
