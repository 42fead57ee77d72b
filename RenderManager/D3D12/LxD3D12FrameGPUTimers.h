// LxD3D12FrameGPUTimers: the GPU timers of the render manager on timestamp queries. A fixed table of named timers
// (handed out by atomic increment, -1 once full) and, per frame slot, one query pair per timer in a timestamp query
// heap and a readback buffer the pairs are resolved into at the end of the frame. When the slot comes round again
// (its frame has completed: the frame ring waited for it) the pairs written in it are read and folded into the
// results: last, minimum, maximum and average milliseconds per timer. Within one frame, a timer's last start/stop
// pair is the one measured.
// Threading: StartTimer and StopTimer may be called by several workers at once on different timers, each on its own
// list; CreateTimer, BeginFrame, EndFrame and the results on the main thread.
#pragma once

#include "Common/LxApi.h"
#include "RenderManager/include/LxGPUTimerResults.h"

#include <d3d12.h>
#include <wrl/client.h>

#include <atomic>

class LX_API LxD3D12FrameGPUTimers
{
public:
    LxD3D12FrameGPUTimers() = default;
    LxD3D12FrameGPUTimers(const LxD3D12FrameGPUTimers&) = delete;
    LxD3D12FrameGPUTimers& operator=(const LxD3D12FrameGPUTimers&) = delete;

    // Query heap and readback buffer for `frames` slots of `capacity` timers; false (logged) on failure.
    bool Initialize(ID3D12Device* device, ID3D12CommandQueue* queue, unsigned frames, unsigned capacity);
    void Release();

    // The next free handle, or -1 when the table is full.
    int CreateTimer(const LxString& name);
    void StartTimer(ID3D12GraphicsCommandList* list, unsigned slot, int timer);
    // Logs "LxD3D12FrameGPUTimers::StopTimer timer not yet started" without a start in this frame.
    void StopTimer(ID3D12GraphicsCommandList* list, unsigned slot, int timer);
    // Reads the slot's completed pairs into the results and clears the slot.
    void BeginFrame(unsigned slot);
    // Resolves the slot's pairs into its readback buffer, recorded on `list`.
    void EndFrame(ID3D12GraphicsCommandList* list, unsigned slot);

    const LxGPUTimerResults& GetResults() const { return m_results; }

private:
    enum PairState : unsigned char
    {
        PAIR_IDLE = 0,
        PAIR_STARTED = 1,
        PAIR_STOPPED = 2,
        PAIR_RESOLVED = 3,
    };
    bool IsValid(int timer) const;
    unsigned QueryIndex(unsigned slot, int timer) const { return (slot * m_nCapacity + timer) * 2; }

    Microsoft::WRL::ComPtr<ID3D12QueryHeap> m_queryHeap;
    Microsoft::WRL::ComPtr<ID3D12Resource> m_readback;
    const unsigned long long* m_pMapped = nullptr;
    double m_fTicksPerMs = 1.0;
    unsigned m_nFrames = 0;
    unsigned m_nCapacity = 0;
    std::atomic<int> m_nCount{0};
    LxArray<unsigned char> m_pairStates; // per slot, per timer
    LxGPUTimerResults m_results;
};
