#include "GPUResourceManager/LxConstantBuffer.h"

#include "Common/LxMemory.h"

#include <cstring>

LxConstantBuffer::LxConstantBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                                   unsigned sizeInBytes)
    : LxGPUBuffer(behavior, bindFlags | BIND_CONSTANT_BUFFER, cpuAccessFlags, miscHints, sizeInBytes),
      m_pShadow(static_cast<unsigned char*>(LxAlignedMalloc(sizeInBytes ? sizeInBytes : 16, 16)))
{
    std::memset(m_pShadow, 0, sizeInBytes ? sizeInBytes : 16);
}

LxConstantBuffer::~LxConstantBuffer()
{
    LxAlignedFree(m_pShadow);
}
