// LxD3D12ReadbackBuffer: a committed buffer in a readback heap, the CPU end of every GPU-to-CPU copy. The resource
// manager's ReadbackSubresource copies a texture into one and converts it; callers may also copy into one themselves
// and map it.
//
// Owns its resource. One thread at a time. Creation failure logs "Creation of readback buffer failed\n".
#pragma once

#include "Common/LxApi.h"

#include <d3d12.h>

class LX_API LxD3D12ReadbackBuffer
{
public:
    LxD3D12ReadbackBuffer() = default;
    ~LxD3D12ReadbackBuffer();
    LxD3D12ReadbackBuffer(const LxD3D12ReadbackBuffer&) = delete;
    LxD3D12ReadbackBuffer& operator=(const LxD3D12ReadbackBuffer&) = delete;

    // A buffer of `size` bytes in the copy-destination state; releases the previous one.
    bool Create(ID3D12Device* device, unsigned long long size);
    void Release();

    // The whole buffer for reading, once the GPU's copy has completed; null (logged) when mapping fails.
    const unsigned char* Map();
    void Unmap();

    ID3D12Resource* GetResource() const { return m_pResource; }
    unsigned long long GetSize() const { return m_nSize; }

private:
    ID3D12Resource* m_pResource = nullptr;
    unsigned long long m_nSize = 0;
    bool m_bMapped = false;
};
