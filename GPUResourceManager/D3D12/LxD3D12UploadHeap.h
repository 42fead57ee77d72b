// LxD3D12UploadHeap: the upload ring (LxUploadHeap) over one committed buffer in an upload heap, mapped once for its
// whole lifetime. The ring logic is LxUploadHeap's; this class only makes, maps and releases the buffer.
//
// Create again releases the old buffer and forgets every queued frame, so it must not run while the GPU still reads
// the old one; after a failed Create the heap must not be used. Threading as LxUploadHeap. Failures are logged and
// answered with false.
#pragma once

#include "GPUResourceManager/LxUploadHeap.h"

#include <d3d12.h>

class LX_API LxD3D12UploadHeap : public LxUploadHeap
{
public:
    LxD3D12UploadHeap() = default;
    ~LxD3D12UploadHeap() override;

    bool Create(ID3D12Device* device, unsigned long long capacity);
    void Release();

    ID3D12Resource* GetResource() const { return m_pResource; }
    // The GPU address of an allocation's first byte.
    D3D12_GPU_VIRTUAL_ADDRESS GetGPUAddress(const LxUploadAllocation& allocation) const
    {
        return m_pResource ? m_pResource->GetGPUVirtualAddress() + allocation.offset : 0;
    }

private:
    ID3D12Resource* m_pResource = nullptr;
};
