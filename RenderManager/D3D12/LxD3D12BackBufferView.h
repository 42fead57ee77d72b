// LxD3D12BackBufferView: the render-target view of one swap-chain buffer, as the render manager hands it to the
// workers (their back-buffer entry) and accepts it in SetRenderTargets. It has no LxGPUResource behind it (the swap
// chain owns the buffers); the render manager owns the descriptor. Made and released by LxD3D12RenderManager.
#pragma once

#include "Common/LxApi.h"
#include "GPUResourceManager/LxGPURenderableResourceView.h"

#include <d3d12.h>

class LX_API LxD3D12BackBufferView : public LxGPURenderableResourceView
{
public:
    LxD3D12BackBufferView(unsigned bufferIndex, ID3D12Resource* buffer, D3D12_CPU_DESCRIPTOR_HANDLE handle);

    RMTargetType GetRMTargetType() const override { return RM_TARGET_BACK_BUFFER; }
    bool Create() override { return true; }
    void Destroy() override {}

    unsigned GetBufferIndex() const { return m_nBufferIndex; }
    ID3D12Resource* GetBuffer() const { return m_pBuffer; }
    D3D12_CPU_DESCRIPTOR_HANDLE GetHandle() const { return m_handle; }

private:
    unsigned m_nBufferIndex;
    ID3D12Resource* m_pBuffer; // not counted: the render manager holds the buffers for as long as their views
    D3D12_CPU_DESCRIPTOR_HANDLE m_handle;
};
