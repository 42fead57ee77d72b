#include "GPUResourceManager/LxUploadHeap.h"

#include "Common/LxLogManager.h"
#include "RenderManager/include/LxFence.h"

#include <cstdint>

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#include <immintrin.h>
#endif

namespace
{
// Pauses after a lost compare-and-swap, doubling while the losses go on. Starting well above one pause matters:
// the winner then makes a run of allocations with the counter's cache line to itself instead of surrendering it on
// every attempt of the loser (measured on 2 cores, bench/LxUploadHeapBench: starting at 1 pause gave 1.7 times the
// allocation rate of a mutex-held ring, 32 about 4 times). The price is a stall of that many pauses for a thread
// that loses a race, which is rare outside a benchmark that does nothing but allocate.
const unsigned kFirstBackoff = 32;
const unsigned kMaxBackoff = 1024;

// Tells the processor this is a spin-wait (PAUSE on x86, YIELD on ARM).
inline void CpuRelax()
{
#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
    _mm_pause();
#elif defined(__aarch64__) || defined(__arm__)
    __asm__ __volatile__("yield");
#endif
}
} // namespace

LxUploadHeap::LxUploadHeap() = default;

LxUploadHeap::~LxUploadHeap() = default;

bool LxUploadHeap::InitializeRing(unsigned char* begin, unsigned long long capacity, void* resource)
{
    if (begin == nullptr || capacity == 0)
    {
        LX_ERROR("LxUploadHeap::InitializeRing.  No memory for the upload heap.");
        return false;
    }
    LxMutex::ScopedLock lock(m_lock);
    m_pResource = resource;
    m_pBegin = begin;
    m_nCapacity = capacity;
    m_nHead.store(0, std::memory_order_release);
    m_nFree.store(capacity, std::memory_order_release);
    m_nAllocated.store(0, std::memory_order_release);
    m_records.Clear();
    m_nFirstRecord = 0;
    m_nRecordCount = 0;
    m_nQueuedBytes = 0;
    m_nFrameCounter.fetch_add(1, std::memory_order_acq_rel);
    return true;
}

bool LxUploadHeap::Allocate(unsigned long long bytes, unsigned long long alignment, LxUploadAllocation* out)
{
    *out = LxUploadAllocation();
    if (m_pBegin == nullptr)
    {
        LX_ERROR("LxUploadHeap::Allocate.  The upload heap has no memory.");
        return false;
    }
    if (alignment == 0 || (alignment & (alignment - 1)) != 0)
    {
        LX_ERROR("non-pow2 alignment");
        // A non-power of two still rounds up (never down); 0 would round everything to 0.
        alignment = alignment ? alignment : 1;
    }
    const uintptr_t base = reinterpret_cast<uintptr_t>(m_pBegin);
    const unsigned long long capacity = m_nCapacity;
    // Where an allocation lands when it restarts at the beginning of the ring.
    const unsigned long long alignedBegin = AlignUp(base, alignment) - base;

    unsigned long long t = m_nAllocated.load(std::memory_order_acquire);
    unsigned backoff = kFirstBackoff;
    unsigned long long position;
    unsigned long long charge;
    for (;;)
    {
        const unsigned long long head = m_nHead.load(std::memory_order_acquire);
        // head < capacity, and t stays within the capacity but for charges that failed under contention.
        unsigned long long p = head + t;
        if (p >= capacity)
        {
            p = p - capacity < capacity ? p - capacity : p % capacity;
        }
        position = AlignUp(base + p, alignment) - base;
        if (position + bytes <= capacity)
        {
            charge = (position - p) + bytes;
        }
        else
        {
            // Straddles the end: start again at the beginning, and the tail up to the end is this allocation's.
            position = alignedBegin;
            charge = (capacity - p) + alignedBegin + bytes;
        }
        if (charge > capacity)
        {
            LX_ERROR("Allocation is greater than upload heap size");
            return false;
        }
        if (m_nAllocated.compare_exchange_weak(t, t + charge, std::memory_order_acq_rel, std::memory_order_acquire))
        {
            break;
        }
        // t now holds the value another thread wrote; go again from there, after a pause that grows while the
        // contention lasts. Without it two threads hand the counter's cache line back and forth on every attempt;
        // with it the winner makes several allocations while it holds the line.
        for (unsigned i = 0; i < backoff; ++i)
        {
            CpuRelax();
        }
        backoff = backoff < kMaxBackoff ? backoff * 2 : kMaxBackoff;
        t = m_nAllocated.load(std::memory_order_acquire);
    }

    if (t + charge > m_nFree.load(std::memory_order_acquire))
    {
        // Slow path: make room by retiring completed frames, oldest first.
        m_nSlowPathCount.fetch_add(1, std::memory_order_relaxed);
        LxMutex::ScopedLock lock(m_lock);
        while (t + charge > m_nFree.load(std::memory_order_acquire))
        {
            if (!RetireOldestFrame())
            {
                // Give the charge back when no one has allocated behind it, so that a retry after the GPU has
                // caught up (the render manager's flush) finds the same room. When someone has, the charge stays
                // with the frame: their block lies past it.
                unsigned long long expected = t + charge;
                m_nAllocated.compare_exchange_strong(expected, t, std::memory_order_acq_rel);
                return false;
            }
        }
    }
    out->resource = m_pResource;
    out->base = m_pBegin;
    out->offset = position;
    out->size = bytes;
    return true;
}

unsigned long long LxUploadHeap::FreeFromQueued() const
{
    // The queued frames' blocks all lie in the last m_nQueuedBytes bytes before the head, so everything from the
    // head forward to there is free: the distance from the head to the oldest queued frame's start. Counted this
    // way rather than from that start, because a frame charged for failed requests holds the whole ring and its
    // successor then starts where it started.
    return m_nQueuedBytes < m_nCapacity ? m_nCapacity - m_nQueuedBytes : 0;
}

bool LxUploadHeap::RetireOldestFrame()
{
    if (m_nRecordCount == 0)
    {
        return false;
    }
    const FrameRecord& oldest = m_records[m_nFirstRecord];
    if (oldest.fence == nullptr || oldest.fence->GetCompletedValue() < oldest.fenceValue)
    {
        return false;
    }
    m_nQueuedBytes -= oldest.bytes;
    m_nFree.store(FreeFromQueued(), std::memory_order_release);
    m_nFirstRecord = (m_nFirstRecord + 1) % m_records.GetCount();
    --m_nRecordCount;
    return true;
}

void LxUploadHeap::PushRecord(const FrameRecord& record)
{
    if (m_nRecordCount == m_records.GetCount())
    {
        // Grow by doubling (at least 8 slots), laying the queue out from slot 0 again.
        LxArray<FrameRecord> grown;
        const unsigned newCount = m_records.GetCount() ? m_records.GetCount() * 2 : 8;
        grown.Resize(newCount);
        for (unsigned i = 0; i < m_nRecordCount; ++i)
        {
            grown[i] = m_records[(m_nFirstRecord + i) % m_records.GetCount()];
        }
        m_records = static_cast<LxArray<FrameRecord>&&>(grown);
        m_nFirstRecord = 0;
    }
    m_records[(m_nFirstRecord + m_nRecordCount) % m_records.GetCount()] = record;
    ++m_nRecordCount;
}

void LxUploadHeap::EndFrame(LxFence* fence, unsigned long long fenceValue)
{
    m_nFrameCounter.fetch_add(1, std::memory_order_acq_rel);
    const unsigned long long allocated = m_nAllocated.load(std::memory_order_acquire);
    if (allocated == 0 || m_pBegin == nullptr)
    {
        return;
    }
    if (fence == nullptr)
    {
        // Recorded all the same: without a fence the frame's bytes can never be proven free, so they stay taken.
        LX_ERROR("LxUploadHeap::EndFrame.  No fence to recycle the frame's memory behind.");
    }
    LxMutex::ScopedLock lock(m_lock);
    const unsigned long long capacity = m_nCapacity;
    // Failed requests stay charged to the frame, which can then pass the capacity: it still only holds the ring.
    const unsigned long long bytes = allocated < capacity ? allocated : capacity;
    const unsigned long long head = m_nHead.load(std::memory_order_relaxed);
    PushRecord(FrameRecord{head, bytes, fence, fenceValue});
    const unsigned long long newHead = (head + bytes) % capacity;
    m_nQueuedBytes += bytes;
    m_nHead.store(newHead, std::memory_order_release);
    m_nAllocated.store(0, std::memory_order_release);
    m_nFree.store(FreeFromQueued(), std::memory_order_release);
}

unsigned LxUploadHeap::GetQueuedFrameCount()
{
    LxMutex::ScopedLock lock(m_lock);
    return m_nRecordCount;
}
