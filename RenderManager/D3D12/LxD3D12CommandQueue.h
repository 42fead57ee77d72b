// LxD3D12CommandQueue: an LxCommandQueue over an ID3D12CommandQueue of one list kind. Submits every list of the array
// in one ExecuteCommandLists call; the lists must be LxD3D12CommandLists, closed (the render manager closes them in
// CloseAndAppendCommandList). Holds one reference to the platform queue; submission from one thread at a time.
#pragma once

#include "Common/LxApi.h"
#include "RenderManager/include/LxCommandQueue.h"

#include <d3d12.h>
#include <wrl/client.h>

class LX_API LxD3D12CommandQueue : public LxCommandQueue
{
public:
    LxD3D12CommandQueue(LxCommandList::Type type, ID3D12CommandQueue* queue);

    bool ExecuteCommandLists(const LxArray<LxCountedPtr<LxCommandList>>& lists) override;
    ID3D12CommandQueue* GetD3D12CommandQueue() const { return m_queue.Get(); }

private:
    Microsoft::WRL::ComPtr<ID3D12CommandQueue> m_queue;
};
