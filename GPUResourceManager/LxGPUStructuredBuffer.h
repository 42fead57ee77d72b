// LxGPUStructuredBuffer: an array of `struct count` structures of `struct size` bytes for shaders
// (StructuredBuffer / RWStructuredBuffer / AppendStructuredBuffer).
//
// It is always built dynamic (behaviour 1) with no CPU access, yet refuses Map and Unmap outright: its contents
// reach it through uploads and shaders only. Views count structures, and must lie inside the struct count.
#pragma once

#include "GPUResourceManager/LxGPUBuffer.h"

class LX_API LxGPUStructuredBuffer : public LxGPUBuffer
{
public:
    LxGPUStructuredBuffer(unsigned structSize, unsigned structCount, unsigned bindFlags, unsigned miscHints);

    unsigned GetStructSize() const { return m_nStructSize; }
    unsigned GetStructCount() const { return m_nStructCount; }
    unsigned GetElementCount() const override { return m_nStructCount; }

    unsigned long long Map(MapType type, bool doNotWait = false) override;
    unsigned long long MapRange(MapType type, unsigned offset, unsigned size) override;
    bool Unmap() override;

    bool IsVertexBuffer() const override { return false; }
    bool IsIndexBuffer() const override { return false; }

protected:
    // Views count structures and must lie inside the struct count.
    bool CheckViewRange(const LxGPUResourceViewDescription& desc) const override;

private:
    unsigned m_nStructSize;
    unsigned m_nStructCount;
};
