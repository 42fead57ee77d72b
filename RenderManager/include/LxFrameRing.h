// LxFrameRing: the frames in flight. A fixed count F of frame slots, each remembering the fence value signalled at
// the end of the frame that last used it; beginning a frame moves to the next slot and waits until that value has
// completed, so at most F frames are ever queued on the GPU. Ending a frame tells the frame-end listeners (upload
// heap, descriptor heaps) the frame's fence value, stores it in the slot, signals it and advances the value.
//
// Fence values: a 64-bit counter starting at 0, signalled once by Initialize and then once per frame (and once per
// Flush), so frame k (from 1) ends with value k when nothing flushed in between.
// Threading: BeginFrame, EndFrame, Flush and the listener list belong to the main thread. Not owned: the fence and
// the listeners outlive the ring (or are removed first).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"

class LxFence;
class LxFrameEndListener;

class LX_API LxFrameRing
{
public:
    LxFrameRing() = default;
    LxFrameRing(const LxFrameRing&) = delete;
    LxFrameRing& operator=(const LxFrameRing&) = delete;

    // F frames in flight (at least 1) over `fence`; signals the initial value. False (logged) for a null fence or
    // a failed signal.
    bool Initialize(unsigned framesInFlight, LxFence* fence);
    bool IsInitialized() const { return m_pFence != nullptr; }

    // Moves to the next slot and waits for the GPU to finish the frame that used it last. Returns the slot index
    // (0..F-1), or -1 when not initialised or the wait failed.
    int BeginFrame();
    // Closes the current frame: listeners, slot value, signal. Returns the frame's fence value (0 on failure).
    unsigned long long EndFrame();
    // Signals a fresh value and waits for it: everything submitted so far has completed on return.
    bool Flush();

    void AddFrameEndListener(LxFrameEndListener* listener);
    void RemoveFrameEndListener(LxFrameEndListener* listener);

    unsigned GetFramesInFlight() const { return m_slotValues.GetCount(); }
    unsigned GetCurrentSlot() const { return m_nCurrentSlot; }
    // The value the next EndFrame or Flush will signal.
    unsigned long long GetNextFenceValue() const { return m_nNextValue; }
    unsigned long long GetSlotFenceValue(unsigned slot) const { return m_slotValues[slot]; }
    LxFence* GetFence() const { return m_pFence; }

private:
    LxFence* m_pFence = nullptr;
    LxArray<unsigned long long> m_slotValues;
    unsigned m_nCurrentSlot = 0;
    unsigned long long m_nNextValue = 0;
    unsigned long long m_nLastSignalled = 0;
    LxArray<LxFrameEndListener*> m_listeners;
};
