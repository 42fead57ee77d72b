// LxConstantBuffer: a shader constant buffer. The constructor adds BIND_CONSTANT_BUFFER to the caller's flags.
//
// Beside the GPU copy it keeps CPU shadow memory of the same size, zero-filled, in which effect parameters store
// their values directly; writers mark the buffer dirty and the platform layer uploads the shadow copy before a draw
// that uses it (and clears the flag). The shadow block lives as long as the buffer and never moves.
#pragma once

#include "GPUResourceManager/LxGPUBuffer.h"

class LX_API LxConstantBuffer : public LxGPUBuffer
{
public:
    LxConstantBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                     unsigned sizeInBytes);
    ~LxConstantBuffer() override;

    unsigned char* GetShadowData() { return m_pShadow; }
    const unsigned char* GetShadowData() const { return m_pShadow; }
    void MarkDirty() { m_bDirty = true; }
    void ClearDirty() { m_bDirty = false; }
    bool IsDirty() const { return m_bDirty; }

    bool IsVertexBuffer() const override { return false; }
    bool IsIndexBuffer() const override { return false; }

private:
    unsigned char* m_pShadow;
    bool m_bDirty = true;
};
