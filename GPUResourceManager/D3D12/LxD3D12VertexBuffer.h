// LxD3D12VertexBuffer: the Direct3D 12 GPUVertexBuffer: vertices of one stream. The GPU buffer, its heap, initial data,
// maps and updates are LxD3D12BufferResource's; this class ties them to the buffer model.
//
// Made by LxD3D12GPUResourceManager, which calls Create. Device refusal logs "Failed to allocate GPU resources for
// D3D12 vertex buffer during its creation". One thread at a time; failures are logged and answered with false or 0.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12BufferResource.h"
#include "GPUResourceManager/D3D12/LxD3D12Resource.h"
#include "GPUResourceManager/LxGPUVertexBuffer.h"

class LX_API LxD3D12VertexBuffer : public LxD3D12Resource<LxGPUVertexBuffer>
{
public:
    LxD3D12VertexBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                        unsigned vertexSize, unsigned vertexCount);

    // Makes the GPU buffer, filled from `initialData` (may be null).
    bool Create(LxCountedPtr<LxMemoryBuffer> initialData);
    bool UpdateBuffer(LxMemoryBuffer* data) override;
    bool UpdateBufferRange(LxMemoryBuffer* data, unsigned first, unsigned count) override;

    ID3D12Resource* GetD3D12Resource() const { return m_storage.GetResource(); }
    D3D12_GPU_VIRTUAL_ADDRESS GetGPUAddress() const { return m_storage.GetGPUAddress(); }

protected:
    unsigned long long APIMap(MapType type, unsigned offset, unsigned size, bool doNotWait) override;
    bool APIUnmap() override;

private:
    LxD3D12BufferResource m_storage;
};
