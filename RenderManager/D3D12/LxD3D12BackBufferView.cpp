#include "RenderManager/D3D12/LxD3D12BackBufferView.h"

LxD3D12BackBufferView::LxD3D12BackBufferView(unsigned bufferIndex, ID3D12Resource* buffer,
                                             D3D12_CPU_DESCRIPTOR_HANDLE handle)
    : LxGPURenderableResourceView(nullptr, LxGPUResourceViewDescription()), m_nBufferIndex(bufferIndex),
      m_pBuffer(buffer), m_handle(handle)
{
}
