// LxGPUIndexBuffer: indices (2 or 4 bytes each); size = index size x index count. The constructor adds
// BIND_INDEX_BUFFER to the caller's bind flags.
#pragma once

#include "GPUResourceManager/LxGPUBuffer.h"

class LX_API LxGPUIndexBuffer : public LxGPUBuffer
{
public:
    LxGPUIndexBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                     unsigned indexSize, unsigned indexCount);

    unsigned GetIndexSize() const { return m_nIndexSize; }
    unsigned GetIndexCount() const { return m_nIndexCount; }
    unsigned GetElementCount() const override { return m_nIndexCount; }

    bool IsIndexBuffer() const override { return true; }

private:
    unsigned m_nIndexSize;
    unsigned m_nIndexCount;
};
