// Upload ring allocation rate: the lock-free LxUploadHeap (alone, and behind a per-thread LxUploadHeapCache) against
// the same ring behind a mutex, on 1 and 2 threads.
//
// Each benchmark iteration is one frame: every thread makes kPerFrame allocations of 64 bytes at 16-byte alignment,
// the threads meet, the first ends the frame (its fence is already complete, as for a GPU that keeps up) and they
// meet again. Items per second count allocations. The ring is large enough that retiring frames (the locked slow
// path of the lock-free ring) happens about once per lap, as in a real frame loop.
#include "GPUResourceManager/LxUploadHeap.h"
#include "GPUResourceManager/LxUploadHeapCache.h"
#include "RenderManager/include/LxFence.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace
{
const unsigned kPerFrame = 4096;
const unsigned long long kCapacity = 8ull << 20;
const unsigned long long kBytes = 64;
const unsigned long long kAlignment = 16;

// A GPU that has always finished.
class DoneFence : public LxFence
{
public:
    bool Signal(unsigned long long) override { return true; }
    unsigned long long GetCompletedValue() const override { return ~0ull; }

protected:
    bool ArmWait(unsigned long long) override { return true; }
    void WaitForArmedValue() override {}
};

// The baseline: the same ring, every allocation under one mutex.
class MutexRing
{
public:
    MutexRing(unsigned char* begin, unsigned long long capacity) : m_pBegin(begin), m_nCapacity(capacity) {}
    bool Allocate(unsigned long long bytes, unsigned long long alignment, LxUploadAllocation* out)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const uintptr_t base = reinterpret_cast<uintptr_t>(m_pBegin);
        unsigned long long p = m_nHead + m_nAllocated;
        if (p >= m_nCapacity)
            p -= m_nCapacity;
        unsigned long long position = LxUploadHeap::AlignUp(base + p, alignment) - base;
        unsigned long long charge = position - p + bytes;
        if (position + bytes > m_nCapacity)
        {
            position = LxUploadHeap::AlignUp(base, alignment) - base;
            charge = (m_nCapacity - p) + position + bytes;
        }
        while (m_nAllocated + charge > m_nFree)
        {
            if (m_frames.empty() || m_frames.front().fence->GetCompletedValue() < m_frames.front().value)
                return false;
            m_nQueued -= m_frames.front().bytes;
            m_nFree = m_nCapacity - m_nQueued;
            m_frames.pop_front();
        }
        m_nAllocated += charge;
        out->base = m_pBegin;
        out->offset = position;
        out->size = bytes;
        return true;
    }
    void EndFrame(LxFence* fence, unsigned long long value)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_nAllocated == 0)
            return;
        m_frames.push_back(Frame{m_nAllocated, fence, value});
        m_nQueued += m_nAllocated;
        m_nHead = (m_nHead + m_nAllocated) % m_nCapacity;
        m_nAllocated = 0;
        m_nFree = m_nCapacity - m_nQueued;
    }

private:
    struct Frame
    {
        unsigned long long bytes;
        LxFence* fence;
        unsigned long long value;
    };
    std::mutex m_mutex;
    unsigned char* m_pBegin;
    unsigned long long m_nCapacity;
    unsigned long long m_nHead = 0;
    unsigned long long m_nAllocated = 0;
    unsigned long long m_nFree = m_nCapacity;
    unsigned long long m_nQueued = 0;
    std::deque<Frame> m_frames;
};

// A two-phase spin barrier for the benchmark threads (yields while it waits: the machine may be shared).
class SpinBarrier
{
public:
    void Wait(int parties)
    {
        const unsigned generation = m_generation.load(std::memory_order_acquire);
        if (m_arrived.fetch_add(1, std::memory_order_acq_rel) + 1 == parties)
        {
            m_arrived.store(0, std::memory_order_relaxed);
            m_generation.fetch_add(1, std::memory_order_acq_rel);
            return;
        }
        while (m_generation.load(std::memory_order_acquire) == generation)
            std::this_thread::yield();
    }

private:
    std::atomic<int> m_arrived{0};
    std::atomic<unsigned> m_generation{0};
};

struct Shared
{
    std::vector<unsigned char> memory = std::vector<unsigned char>(kCapacity);
    DoneFence fence;
    LxUploadHeap heap;
    MutexRing mutexRing{memory.data(), kCapacity};
    SpinBarrier barrier;
    unsigned long long frame = 0;
    std::atomic<unsigned long long> failures{0};
    Shared() { heap.InitializeRing(memory.data(), kCapacity, nullptr); }
};
Shared* g_shared = nullptr;

enum class Ring
{
    LockFree, // LxUploadHeap::Allocate: one compare-and-swap per allocation
    Cached,   // LxUploadHeapCache per thread in front of the lock-free ring
    Mutex,    // the baseline
};

template <Ring kind>
void BM_UploadRing(benchmark::State& state)
{
    if (state.thread_index() == 0)
    {
        delete g_shared; // the previous run's threads are all done
        g_shared = new Shared();
    }
    // Google Benchmark starts the timing only once every thread is here, so g_shared is set for all.
    unsigned long long failures = 0;
    LxUploadHeapCache* cache = nullptr;
    for (auto _ : state)
    {
        Shared& s = *g_shared;
        if (cache == nullptr)
            cache = new LxUploadHeapCache(s.heap);
        for (unsigned i = 0; i < kPerFrame; ++i)
        {
            LxUploadAllocation a;
            bool ok;
            if (kind == Ring::LockFree)
                ok = s.heap.Allocate(kBytes, kAlignment, &a);
            else if (kind == Ring::Cached)
                ok = cache->Allocate(kBytes, kAlignment, &a);
            else
                ok = s.mutexRing.Allocate(kBytes, kAlignment, &a);
            failures += ok ? 0 : 1;
            benchmark::DoNotOptimize(a.offset);
        }
        s.barrier.Wait(state.threads());
        if (state.thread_index() == 0)
        {
            ++s.frame;
            if (kind == Ring::Mutex)
                s.mutexRing.EndFrame(&s.fence, s.frame);
            else
                s.heap.EndFrame(&s.fence, s.frame);
        }
        s.barrier.Wait(state.threads());
    }
    delete cache;
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kPerFrame);
    g_shared->failures.fetch_add(failures);
    state.counters["failures"] = benchmark::Counter(static_cast<double>(failures));
}

void BM_UploadRing_LockFree(benchmark::State& state)
{
    BM_UploadRing<Ring::LockFree>(state);
}
void BM_UploadRing_LockFreeCached(benchmark::State& state)
{
    BM_UploadRing<Ring::Cached>(state);
}
void BM_UploadRing_Mutex(benchmark::State& state)
{
    BM_UploadRing<Ring::Mutex>(state);
}
} // namespace

BENCHMARK(BM_UploadRing_LockFree)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_UploadRing_LockFreeCached)->Threads(1)->Threads(2)->UseRealTime();
BENCHMARK(BM_UploadRing_Mutex)->Threads(1)->Threads(2)->UseRealTime();

BENCHMARK_MAIN();
