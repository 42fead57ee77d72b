#include "GPUResourceManager/LxGPUBuffer.h"

#include "Common/LxLogManager.h"

LxGPUBuffer::LxGPUBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                         unsigned sizeInBytes)
    : LxGPUResource(behavior, BUFFER, bindFlags, cpuAccessFlags, miscHints), m_nSize(sizeInBytes)
{
}

unsigned long long LxGPUBuffer::Map(MapType type, bool doNotWait)
{
    if (!ValidateMapType(type))
    {
        return 0;
    }
    if (m_bMapped)
    {
        LX_ERROR("Cannot map a resource twice without unmapping.");
        return 0;
    }
    const unsigned long long address = APIMap(type, 0, m_nSize, doNotWait);
    m_bMapped = address != 0;
    return address;
}

unsigned long long LxGPUBuffer::MapRange(MapType type, unsigned offset, unsigned size)
{
    if (!ValidateMapType(type))
    {
        return 0;
    }
    if (m_bMapped)
    {
        LX_ERROR("Cannot map a resource twice without unmapping.");
        return 0;
    }
    if (offset > m_nSize || size > m_nSize - offset)
    {
        LX_ERROR("LxGPUBuffer::MapRange.  Range [%u, %u) lies outside the buffer's %u bytes.", offset, offset + size,
                 m_nSize);
        return 0;
    }
    const unsigned long long address = APIMap(type, offset, size, false);
    m_bMapped = address != 0;
    return address;
}

bool LxGPUBuffer::Unmap()
{
    if (!m_bMapped)
    {
        LX_ERROR("Unmap was called on a resource which was not locked.");
        return false;
    }
    m_bMapped = false;
    return APIUnmap();
}

unsigned long long LxGPUBuffer::APIMap(MapType, unsigned, unsigned, bool)
{
    ReportNotImplemented("LxGPUBuffer::Map");
    return 0;
}

bool LxGPUBuffer::APIUnmap()
{
    ReportNotImplemented("LxGPUBuffer::Unmap");
    return false;
}

bool LxGPUBuffer::UpdateBuffer(LxMemoryBuffer*)
{
    ReportNotImplemented("LxGPUBuffer::UpdateBuffer");
    return false;
}

bool LxGPUBuffer::UpdateBufferRange(LxMemoryBuffer*, unsigned, unsigned)
{
    ReportNotImplemented("LxGPUBuffer::UpdateBufferRange");
    return false;
}

bool LxGPUBuffer::CopyBufferRegion(unsigned, LxGPUBuffer&, unsigned, unsigned)
{
    ReportNotImplemented("LxGPUBuffer::CopyBufferRegion");
    return false;
}

bool LxGPUBuffer::UAVBarrier()
{
    ReportNotImplemented("LxGPUBuffer::UAVBarrier");
    return false;
}

LxGPUResourceDescription LxGPUBuffer::GetDefaultResourceDesc() const
{
    return LxGPUResourceDescription::Buffer(0, GetElementCount());
}

bool LxGPUBuffer::IsViewValid(const LxGPUResourceViewDescription& desc) const
{
    if (!LxGPUResource::IsViewValid(desc))
    {
        return false;
    }
    if (desc.viewType != LX_VIEW_SAMPLING && desc.viewType != LX_VIEW_RENDERABLE &&
        desc.viewType != LX_VIEW_UNORDERED_ACCESS)
    {
        LX_ERROR("Buffers only support sampling , render target, or UAV views.");
        return false;
    }
    if (desc.resourceType != GetType())
    {
        LX_ERROR("View's resource type does not match actual resource type.");
        return false;
    }
    if (desc.viewType == LX_VIEW_RENDERABLE && GetBehavior() == GPU_RESOURCE_STATIC)
    {
        LX_ERROR("Trying to create a renderable view for a static resource, not allowed.");
        return false;
    }
    return CheckViewRange(desc);
}

bool LxGPUBuffer::CheckViewRange(const LxGPUResourceViewDescription& desc) const
{
    // A typed view must fit the bytes it reads; a view without a format (raw or structured) is checked elsewhere.
    const unsigned bits = LxGetFormatBitsPerElement(desc.format);
    if (bits >= 8)
    {
        const unsigned long long end = (static_cast<unsigned long long>(desc.resourceDesc.buffer.firstElement) +
                                        desc.resourceDesc.buffer.numElements) *
                                       (bits / 8);
        if (end > m_nSize)
        {
            LX_ERROR("View outside of resource dimensions.");
            return false;
        }
    }
    return true;
}
