#include "GPUResourceManager/LxGPUStructuredBuffer.h"

#include "Common/LxLogManager.h"

LxGPUStructuredBuffer::LxGPUStructuredBuffer(unsigned structSize, unsigned structCount, unsigned bindFlags,
                                             unsigned miscHints)
    : LxGPUBuffer(GPU_RESOURCE_DYNAMIC, bindFlags, 0, miscHints, structSize * structCount), m_nStructSize(structSize),
      m_nStructCount(structCount)
{
}

unsigned long long LxGPUStructuredBuffer::Map(MapType, bool)
{
    LX_ERROR("Map() called on structured buffer.  Mapping of structured buffers is not supported");
    return 0;
}

unsigned long long LxGPUStructuredBuffer::MapRange(MapType, unsigned, unsigned)
{
    LX_ERROR("Map() called on structured buffer.  Mapping of structured buffers is not supported");
    return 0;
}

bool LxGPUStructuredBuffer::Unmap()
{
    LX_ERROR("Unmap() called on structured buffer.  Mapping of structured buffers is not supported");
    return false;
}

bool LxGPUStructuredBuffer::CheckViewRange(const LxGPUResourceViewDescription& desc) const
{
    const unsigned long long end =
        static_cast<unsigned long long>(desc.resourceDesc.buffer.firstElement) + desc.resourceDesc.buffer.numElements;
    if (end > m_nStructCount)
    {
        LX_ERROR("View outside of resource dimensions\n");
        return false;
    }
    return true;
}
