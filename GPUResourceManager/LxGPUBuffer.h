// LxGPUBuffer: the base of every buffer resource (type BUFFER): a size in bytes, the map state and the platform
// operations that fill and copy buffers.
//
// Map/Unmap: Map checks the map kind against the behaviour and CPU access (ValidateMapType) and refuses a second
// Map before Unmap ("Cannot map a resource twice without unmapping."); Unmap without Map is refused ("Unmap was
// called on a resource which was not locked."). Between those checks the platform class does the work in APIMap /
// APIUnmap. Map answers the CPU address as a 64-bit integer, 0 on failure. One thread at a time.
#pragma once

#include "GPUResourceManager/LxGPUResource.h"

class LxMemoryBuffer;

class LX_API LxGPUBuffer : public LxGPUResource
{
public:
    LxGPUBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                unsigned sizeInBytes);

    unsigned GetSize() const { return m_nSize; }
    // Elements of the default view: vertices, indices or structures; plain buffers count 32-bit words.
    virtual unsigned GetElementCount() const { return m_nSize / 4; }

    virtual unsigned long long Map(MapType type, bool doNotWait = false);
    // Maps bytes [offset, offset + size) only; the address answered is that of the first byte of the range.
    virtual unsigned long long MapRange(MapType type, unsigned offset, unsigned size);
    virtual bool Unmap();
    bool IsMapped() const { return m_bMapped; }

    // Platform operations (base: IMPLEMENT ME).
    virtual bool UpdateBuffer(LxMemoryBuffer* data);
    virtual bool UpdateBufferRange(LxMemoryBuffer* data, unsigned first, unsigned count);
    virtual bool CopyBufferRegion(unsigned dstOffset, LxGPUBuffer& source, unsigned srcOffset, unsigned bytes);
    bool UAVBarrier() override;

    virtual bool IsVertexBuffer() const { return QueryUsage(BIND_VERTEX_BUFFER); }
    virtual bool IsIndexBuffer() const { return QueryUsage(BIND_INDEX_BUFFER); }

    LxGPUResourceDescription GetDefaultResourceDesc() const override;
    bool IsViewValid(const LxGPUResourceViewDescription& desc) const override;

protected:
    // The platform's map of bytes [offset, offset + size); 0 on failure. Base: IMPLEMENT ME.
    virtual unsigned long long APIMap(MapType type, unsigned offset, unsigned size, bool doNotWait);
    virtual bool APIUnmap();
    // The last check of IsViewValid: the view's element range lies inside the buffer.
    virtual bool CheckViewRange(const LxGPUResourceViewDescription& desc) const;

    unsigned m_nSize;

private:
    bool m_bMapped = false;
};
