// LxD3D12BufferResource: the Direct3D 12 half every buffer kind shares: one committed buffer, in the heap its usage
// asks for (CPU-readable: readback heap; CPU-writable: upload heap, mapped for its whole life; otherwise the default
// heap, filled through the resource manager's upload ring), with initial data, maps and updates. The buffer classes
// (LxD3D12VertexBuffer, LxD3D12IndexBuffer, LxD3D12ConstantBuffer, LxD3D12StructuredBuffer) each own one.
//
// Default-heap buffers live in the common state and rely on the implicit state promotion and decay of buffers, so
// no barriers are recorded for them. An upload-heap buffer is one block of memory: a Map while the GPU still reads
// the previous contents overwrites them (per-frame data belongs in the upload ring). Needs the
// LxD3D12GPUResourceManager singleton, initialised. One thread at a time; failures are logged and answered with
// false or 0.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "GPUResourceManager/LxGPUBuffer.h"

#include <d3d12.h>

class LX_API LxD3D12BufferResource
{
public:
    LxD3D12BufferResource() = default;
    ~LxD3D12BufferResource();
    LxD3D12BufferResource(const LxD3D12BufferResource&) = delete;
    LxD3D12BufferResource& operator=(const LxD3D12BufferResource&) = delete;

    // A buffer of `gpuSize` bytes (at least the buffer's size; constant buffers round up) for `buffer`'s usage.
    // `initialData`, when given, must hold the buffer's size. `failureMessage` is logged when the device refuses.
    bool Create(const LxGPUBuffer& buffer, unsigned gpuSize, LxCountedPtr<LxMemoryBuffer> initialData, const char* who,
                const char* failureMessage);
    void Destroy();

    // The CPU address of byte `offset` (0 on failure). Readback buffers are mapped here and unmapped by Unmap.
    unsigned long long Map(unsigned offset, unsigned size, bool read, const char* who);
    bool Unmap();
    // Writes `bytes` bytes at `offset`: straight into upload memory, or through the upload ring and a copy that
    // has completed when the call returns.
    bool Update(const unsigned char* data, unsigned offset, unsigned bytes, const char* who);

    ID3D12Resource* GetResource() const { return m_pResource; }
    D3D12_HEAP_TYPE GetHeapType() const { return m_heapType; }
    D3D12_GPU_VIRTUAL_ADDRESS GetGPUAddress() const { return m_pResource ? m_pResource->GetGPUVirtualAddress() : 0; }

private:
    ID3D12Resource* m_pResource = nullptr;
    D3D12_HEAP_TYPE m_heapType = D3D12_HEAP_TYPE_DEFAULT;
    unsigned m_nSize = 0;
    unsigned char* m_pPersistent = nullptr; // upload heap: mapped at creation
    bool m_bReadMapped = false;
};
