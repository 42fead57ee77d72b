// LxDescriptorHeap: hands out slots (indices) of a fixed-size descriptor heap, singly or as contiguous ranges (a
// descriptor table), and recycles freed slots behind the frame fence. The platform class (LxD3D12DescriptorHeap)
// adds the Direct3D 12 heap and turns indices into handles (start + index x increment).
//
// Policy: first fit over a sorted list of free ranges, coalesced. Slots freed during a frame are held until that
// frame's fence value (told at frame end through OnFrameEnd) has completed, because the GPU may still read them;
// FreeNow returns slots at once (for descriptors the GPU never saw). Exhaustion is reported ("Out of memory for
// descriptors!" while freed slots wait for the GPU; "No buffers to free, out of heap space. heap max descriptors: %ld
// allocated: %ld" when nothing is waiting either) and answered with -1. Freeing a slot that is not allocated is an
// error and changes nothing. Thread-safe: every operation takes the heap's lock.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxMutex.h"
#include "RenderManager/include/LxFrameEndListener.h"

class LxFence;

class LX_API LxDescriptorHeap : public LxFrameEndListener
{
public:
    explicit LxDescriptorHeap(unsigned maxDescriptors = 0);
    ~LxDescriptorHeap() override;
    LxDescriptorHeap(const LxDescriptorHeap&) = delete;
    LxDescriptorHeap& operator=(const LxDescriptorHeap&) = delete;

    // Makes the heap `maxDescriptors` slots, all free, forgetting every pending free.
    void Reset(unsigned maxDescriptors);

    // The first slot of `count` contiguous free slots (count 0 is taken as 1), or -1 after reporting exhaustion.
    int Allocate(unsigned count = 1);
    // Slots [first, first + count) return to use once the current frame's fence value has completed.
    bool Free(unsigned first, unsigned count = 1);
    // Slots [first, first + count) return to use at once.
    bool FreeNow(unsigned first, unsigned count = 1);

    void OnFrameEnd(LxFence* fence, unsigned long long fenceValue) override;

    unsigned GetMaxDescriptors() const { return m_nMax; }
    // Slots not free for allocation: in use, or freed and waiting for the GPU.
    unsigned GetAllocatedCount();
    unsigned GetPendingCount();
    bool IsAllocated(unsigned index);

private:
    struct Range
    {
        unsigned first;
        unsigned count;
    };
    struct PendingFrame
    {
        LxFence* fence;
        unsigned long long fenceValue;
        LxArray<Range> ranges;
    };

    // Under m_lock.
    bool CheckAllocated(const char* who, unsigned first, unsigned count);
    void MarkAllocated(unsigned first, unsigned count, bool allocated);
    void ReturnRange(Range range);
    int TakeRange(unsigned count);
    bool RetireCompletedFrames();

    LxMutex m_lock;
    unsigned m_nMax = 0;
    unsigned m_nFreeCount = 0;
    LxArray<unsigned char> m_allocated; // per slot: in use or pending
    LxArray<Range> m_free;              // sorted by first, no two adjacent
    LxArray<Range> m_freedThisFrame;
    LxArray<PendingFrame> m_pendingFrames; // oldest first
};
