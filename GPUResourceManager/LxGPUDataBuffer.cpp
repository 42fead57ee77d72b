#include "GPUResourceManager/LxGPUDataBuffer.h"

LxGPUDataBuffer::LxGPUDataBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                                 unsigned sizeInBytes)
    : LxGPUBuffer(behavior, bindFlags, cpuAccessFlags, miscHints, sizeInBytes)
{
}
