// LxD3D12ConstantBuffer: the Direct3D 12 ConstantBuffer: shader constants; the GPU buffer is rounded up to 256 bytes,
// as constant-buffer views need. The GPU buffer, its heap, initial data, maps and updates are LxD3D12BufferResource's;
// this class ties them to the buffer model.
//
// Made by LxD3D12GPUResourceManager, which calls Create. Device refusal logs "Failed to allocate GPU resources for
// D3D12 constant buffer". One thread at a time; failures are logged and answered with false or 0.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12BufferResource.h"
#include "GPUResourceManager/D3D12/LxD3D12Resource.h"
#include "GPUResourceManager/LxConstantBuffer.h"

class LX_API LxD3D12ConstantBuffer : public LxD3D12Resource<LxConstantBuffer>
{
public:
    LxD3D12ConstantBuffer(Behavior behavior, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints,
                          unsigned sizeInBytes);

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
