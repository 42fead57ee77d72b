#include "RenderManager/D3D12/LxD3D12Fence.h"

#include "Common/LxLogManager.h"

LxD3D12Fence* LxD3D12Fence::Create(ID3D12Device* device, ID3D12CommandQueue* queue, unsigned long long initialValue)
{
    if (device == nullptr || queue == nullptr)
    {
        LX_ERROR("LxD3D12Fence::Create.  No device or queue.");
        return nullptr;
    }
    ID3D12Fence* fence = nullptr;
    const HRESULT hr = device->CreateFence(initialValue, D3D12_FENCE_FLAG_NONE, IID_PPV_ARGS(&fence));
    if (FAILED(hr))
    {
        LX_ERROR("LxD3D12Fence::Create.  CreateFence failed (0x%08lX).", static_cast<unsigned long>(hr));
        return nullptr;
    }
    // Auto-reset: each armed value wakes exactly one wait.
    HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (event == nullptr)
    {
        LX_ERROR("LxD3D12Fence::Create.  CreateEvent failed (%lu).", static_cast<unsigned long>(GetLastError()));
        fence->Release();
        return nullptr;
    }
    queue->AddRef();
    return new LxD3D12Fence(fence, queue, event);
}

LxD3D12Fence::LxD3D12Fence(ID3D12Fence* fence, ID3D12CommandQueue* queue, HANDLE event)
    : m_pFence(fence), m_pQueue(queue), m_hEvent(event)
{
}

LxD3D12Fence::~LxD3D12Fence()
{
    CloseHandle(m_hEvent);
    m_pFence->Release();
    m_pQueue->Release();
}

bool LxD3D12Fence::Signal(unsigned long long value)
{
    if (FAILED(m_pQueue->Signal(m_pFence, value)))
    {
        LX_ERROR("ID3D12Fence Signal failed\n");
        return false;
    }
    return true;
}

unsigned long long LxD3D12Fence::GetCompletedValue() const
{
    return m_pFence->GetCompletedValue();
}

bool LxD3D12Fence::ArmWait(unsigned long long value)
{
    m_waitLock.lock();
    if (FAILED(m_pFence->SetEventOnCompletion(value, m_hEvent)))
    {
        m_waitLock.unlock();
        LX_ERROR("ID3D12Fence SetEventOnCompletion failed\n");
        return false;
    }
    return true;
}

void LxD3D12Fence::WaitForArmedValue()
{
    WaitForSingleObject(m_hEvent, INFINITE);
    m_waitLock.unlock();
}
