// LxD3D12Fence: an LxFence over an ID3D12Fence, the queue that signals it and one Win32 event to block on.
//
// Signal queues the raise on the queue ("ID3D12Fence Signal failed\n" when the queue refuses); the completed value
// is read from the fence; a wait arms the event with SetEventOnCompletion ("ID3D12Fence SetEventOnCompletion
// failed\n" when that fails, and the wait returns false without blocking) and blocks on it without a time-out.
// Ownership: the fence holds references to the platform fence and to the queue; the event is its own.
// Threading: GetCompletedValue from any thread; waits from any thread (waits are serialised on the one event, so a
// second waiter blocks until the first one's value is reached, then checks its own); Signal from the submitting
// thread. Create answers null (logged) when the platform fence or the event cannot be made.
#pragma once

#include "Common/LxApi.h"
#include "RenderManager/include/LxFence.h"

#include <d3d12.h>
#include <windows.h>

#include <mutex>

class LX_API LxD3D12Fence : public LxFence
{
public:
    // A fence starting at `initialValue` whose Signal goes through `queue`. Null after logging on failure.
    static LxD3D12Fence* Create(ID3D12Device* device, ID3D12CommandQueue* queue, unsigned long long initialValue);
    ~LxD3D12Fence() override;
    LxD3D12Fence(const LxD3D12Fence&) = delete;
    LxD3D12Fence& operator=(const LxD3D12Fence&) = delete;

    bool Signal(unsigned long long value) override;
    unsigned long long GetCompletedValue() const override;

    ID3D12Fence* GetD3D12Fence() const { return m_pFence; }
    ID3D12CommandQueue* GetQueue() const { return m_pQueue; }

protected:
    bool ArmWait(unsigned long long value) override;
    void WaitForArmedValue() override;

private:
    LxD3D12Fence(ID3D12Fence* fence, ID3D12CommandQueue* queue, HANDLE event);

    ID3D12Fence* m_pFence;        // one reference held
    ID3D12CommandQueue* m_pQueue; // one reference held
    HANDLE m_hEvent;
    // Held from a successful ArmWait to the end of WaitForArmedValue: one armed value per event at a time.
    std::mutex m_waitLock;
};
