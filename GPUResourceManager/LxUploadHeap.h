// LxUploadHeap: the ring of upload memory through which CPU data reaches the GPU, recycled frame by frame behind
// the frame fence. This class is the whole ring logic over a block of memory it is given (InitializeRing); the
// platform class (LxD3D12UploadHeap) only creates the persistently mapped upload buffer and hands it over.
//
// Allocation is callable from any number of threads at once and lock-free on its fast path: one compare-and-swap
// of the bytes allocated in the current frame. Only when the frame's bytes would pass the free space does a caller
// take the heap's mutex to retire completed frames, oldest first. An allocation's memory is the caller's until the
// GPU has finished the frame it was made in: EndFrame (the render manager's frame end, on the main thread) records
// the frame with its fence value, and the frame's bytes return to use once the fence reaches that value.
//
// Contract: EndFrame runs between frames, never while another thread allocates (the render manager's frame
// structure guarantees this). A failed allocation answers false and an all-zero allocation; it gives its charge back
// unless another thread has allocated behind it meanwhile, in which case the bytes stay with the frame (they return
// with it). A frame never holds more than the whole ring.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxMutex.h"
#include "RenderManager/include/LxFrameEndListener.h"

#include <atomic>

class LxFence;

// A block of upload memory: CPU address = base + offset; the GPU address is the platform resource's address plus
// the same offset.
struct LxUploadAllocation
{
    void* resource = nullptr;      // the platform buffer (ID3D12Resource* on Direct3D 12); null without a device
    unsigned char* base = nullptr; // the heap's mapped base address
    unsigned long long offset = 0;
    unsigned long long size = 0;

    unsigned char* GetCPUAddress() const { return base ? base + offset : nullptr; }
};

class LX_API LxUploadHeap : public LxFrameEndListener
{
public:
    LxUploadHeap();
    ~LxUploadHeap() override;
    LxUploadHeap(const LxUploadHeap&) = delete;
    LxUploadHeap& operator=(const LxUploadHeap&) = delete;

    // Makes [begin, begin + capacity) the ring (not owned), with `resource` handed out in every allocation.
    // Forgets every queued frame. False (logged) for a null block or a zero capacity.
    bool InitializeRing(unsigned char* begin, unsigned long long capacity, void* resource);

    // `bytes` at `alignment` (a power of two; anything else is reported as "non-pow2 alignment" and used as well as
    // it rounds, 0 as 1). A request whose charge (padding, any skipped tail of the ring, the bytes) exceeds the
    // capacity fails at once with "Allocation is greater than upload heap size".
    bool Allocate(unsigned long long bytes, unsigned long long alignment, LxUploadAllocation* out);

    // Records the frame that ends (nothing when it allocated nothing): its bytes come back once `fence` reaches
    // `fenceValue`.
    void EndFrame(LxFence* fence, unsigned long long fenceValue);
    void OnFrameEnd(LxFence* fence, unsigned long long fenceValue) override { EndFrame(fence, fenceValue); }

    unsigned long long GetCapacity() const { return m_nCapacity; }
    unsigned char* GetBase() const { return m_pBegin; }
    unsigned long long GetHeadOffset() const { return m_nHead.load(std::memory_order_acquire); }
    // Bytes free beyond the current frame's head, counting frames retired so far.
    unsigned long long GetFreeBytes() const { return m_nFree.load(std::memory_order_acquire); }
    unsigned long long GetAllocatedThisFrame() const { return m_nAllocated.load(std::memory_order_acquire); }
    unsigned GetQueuedFrameCount();
    // Counts frame ends (and re-initialisations): an allocation made under one value belongs to that frame.
    unsigned long long GetFrameCounter() const { return m_nFrameCounter.load(std::memory_order_acquire); }
    // How many allocations have taken the locked slow path (a figure for tuning the capacity).
    unsigned long long GetSlowPathCount() const { return m_nSlowPathCount.load(std::memory_order_relaxed); }

    // Rounds x up to a multiple of a power-of-two alignment: (x + a - 1) AND NOT (a - 1).
    static unsigned long long AlignUp(unsigned long long x, unsigned long long alignment)
    {
        return (x + alignment - 1) & ~(alignment - 1);
    }

private:
    struct FrameRecord
    {
        unsigned long long start;
        unsigned long long bytes;
        LxFence* fence;
        unsigned long long fenceValue;
    };

    // Under m_lock: frees the oldest frame if its fence has reached its value; false when nothing could be retired.
    bool RetireOldestFrame();
    void PushRecord(const FrameRecord& record);
    // Under m_lock: the free count the queued frames leave.
    unsigned long long FreeFromQueued() const;

    void* m_pResource = nullptr;
    unsigned char* m_pBegin = nullptr;
    unsigned long long m_nCapacity = 0;
    // Offset of the current frame's first byte. Written only by EndFrame, between frames.
    std::atomic<unsigned long long> m_nHead{0};
    alignas(64) std::atomic<unsigned long long> m_nFree{0};
    // The hot word: every allocation's compare-and-swap. On its own cache line.
    alignas(64) std::atomic<unsigned long long> m_nAllocated{0};
    alignas(64) LxMutex m_lock;
    std::atomic<unsigned long long> m_nSlowPathCount{0};
    std::atomic<unsigned long long> m_nFrameCounter{0};
    // Retired-frame records, a circular queue: m_nFirstRecord is the oldest.
    LxArray<FrameRecord> m_records;
    unsigned m_nFirstRecord = 0;
    unsigned m_nRecordCount = 0;
    unsigned long long m_nQueuedBytes = 0; // sum of the queued records' bytes
};
