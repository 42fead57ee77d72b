// The upload ring without a device: placement and alignment, the wrap with its charged tail, the messages, frame
// records and their retirement behind the fence, and a multi-threaded stress run (also under ThreadSanitizer):
// workers allocate and fill blocks while frames end and a thread playing the GPU reads each frame's blocks and
// completes its fence at its own pace.
#include "support/LxTestSupport.h"

#include "Common/LxMemory.h"
#include "Common/LxThreadBarrier.h"
#include "GPUResourceManager/LxUploadHeap.h"
#include "GPUResourceManager/LxUploadHeapCache.h"
#include "RenderManager/LxTestFence.h"
#include "RenderManager/include/LxFrameRing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

using LxTest::TestFence;

namespace
{
// A heap over `size` bytes of a 128-byte aligned block, starting `skew` bytes into it, or at the next multiple of
// `alignTo` (a mapped upload buffer is aligned further still).
struct Ring
{
    explicit Ring(unsigned long long size, size_t skew = 0, size_t alignTo = 1)
        : block(static_cast<unsigned char*>(LxAlignedMalloc(size + skew + alignTo, 128)))
    {
        begin = block + skew + (alignTo - reinterpret_cast<uintptr_t>(block + skew) % alignTo) % alignTo;
        initialised = heap.InitializeRing(begin, size, nullptr);
    }
    ~Ring() { LxAlignedFree(block); }
    // The offset of a new allocation (through `cache` when given), or -1 when it is refused.
    long long At(unsigned long long bytes, unsigned long long alignment = 1, LxUploadHeapCache* cache = nullptr)
    {
        LxUploadAllocation a;
        const bool ok = cache ? cache->Allocate(bytes, alignment, &a) : heap.Allocate(bytes, alignment, &a);
        return ok ? static_cast<long long>(a.offset) : -1;
    }
    unsigned char* block;
    unsigned char* begin;
    LxUploadHeap heap;
    bool initialised = false;
};
} // namespace

TEST(UploadHeap, PlacesAlignedBlocksBackToBack)
{
    Ring r(1024);
    int resource = 0;
    ASSERT_TRUE(r.heap.InitializeRing(r.begin, 1024, &resource));
    EXPECT_EQ(1024u, r.heap.GetFreeBytes());
    LxUploadAllocation a;
    ASSERT_TRUE(r.heap.Allocate(10, 1, &a));
    EXPECT_EQ(0u, a.offset);
    EXPECT_EQ(10u, a.size);
    EXPECT_EQ(&resource, a.resource);
    EXPECT_EQ(r.begin, a.GetCPUAddress());
    EXPECT_EQ(128, r.At(16, 128));
    EXPECT_EQ(144, r.At(4, 4));
    // The frame is charged the padding too: 10 + (118 + 16) + 4.
    EXPECT_EQ(148u, r.heap.GetAllocatedThisFrame());

    // Alignment is of the address, not the offset: in a ring starting 8 bytes into an aligned block, 64-byte
    // alignment lands on offset 56.
    Ring skewed(512, 8);
    ASSERT_TRUE(skewed.initialised);
    EXPECT_EQ(56, skewed.At(8, 64));
}

TEST(UploadHeap, BadAlignmentIsReportedAndStillRoundsUp)
{
    Ring r(256);
    LxTest::LogCapture capture;
    EXPECT_EQ(0, r.At(5, 1));
    const long long b = r.At(4, 3); // (5 + 2) AND NOT 2 = 5: not aligned, never below the free position
    EXPECT_TRUE(capture.Contains("non-pow2 alignment", LX_LOG_ERROR));
    EXPECT_GE(b, 5);
    LxTest::LogCapture again; // an identical error is logged once until the log is reset
    EXPECT_GE(r.At(4, 0), b + 4);
    EXPECT_TRUE(again.Contains("non-pow2 alignment"));
}

TEST(UploadHeap, StraddlingAllocationRestartsAtTheBeginningAndPaysForTheTail)
{
    Ring r(1024);
    TestFence fence;
    EXPECT_EQ(0, r.At(900));
    r.heap.EndFrame(&fence, 1);
    fence.Complete(1);
    EXPECT_EQ(900u, r.heap.GetHeadOffset());
    EXPECT_EQ(124u, r.heap.GetFreeBytes());

    // 200 bytes do not fit in the 124 left before the end: they go to offset 0, and the frame is charged the
    // 124-byte tail as well (the slow path retires frame 1 to make room).
    EXPECT_EQ(0, r.At(200, 16));
    EXPECT_EQ(324u, r.heap.GetAllocatedThisFrame());
    EXPECT_EQ(0u, r.heap.GetQueuedFrameCount());
    EXPECT_EQ(1024u, r.heap.GetFreeBytes());

    r.heap.EndFrame(&fence, 2);
    EXPECT_EQ(200u, r.heap.GetHeadOffset()); // (900 + 324) mod 1024
    EXPECT_EQ(1024u - 324u, r.heap.GetFreeBytes());
}

TEST(UploadHeap, OversizedRequestsAndHeapsWithoutMemoryFailAtOnce)
{
    Ring r(1024);
    LxTest::LogCapture capture;
    LxUploadAllocation a;
    EXPECT_FALSE(r.heap.Allocate(1025, 1, &a)); // no frame to wait for: a wait would hang
    EXPECT_TRUE(capture.Contains("Allocation is greater than upload heap size", LX_LOG_ERROR));
    EXPECT_EQ(nullptr, a.base);
    EXPECT_EQ(0u, a.size);
    EXPECT_EQ(0u, r.heap.GetAllocatedThisFrame()); // refused before anything was charged

    // Padding counts: 1024 bytes at 4096 alignment, from offset 8, cannot fit either.
    EXPECT_EQ(0, r.At(8));
    LxTest::LogCapture again;
    EXPECT_EQ(-1, r.At(1024, 4096));
    EXPECT_TRUE(again.Contains("Allocation is greater than upload heap size"));
    // Without memory nothing is handed out.
    LxTest::LogCapture bare;
    LxUploadHeap heap;
    EXPECT_FALSE(heap.Allocate(16, 16, &a));
    EXPECT_FALSE(heap.InitializeRing(nullptr, 16, nullptr));
    EXPECT_EQ(2, bare.ErrorCount());
}

TEST(UploadHeap, FramesRetireInOrderOnlyOnceTheirFenceCompletes)
{
    Ring r(1000);
    TestFence slow(true), quick(true);
    r.heap.EndFrame(&slow, 1); // nothing allocated: no record
    EXPECT_EQ(0u, r.heap.GetQueuedFrameCount());
    EXPECT_EQ(0u, r.heap.GetHeadOffset());

    EXPECT_EQ(0, r.At(400)); // frame 2: [0, 400)
    r.heap.EndFrame(&slow, 2);
    EXPECT_EQ(400, r.At(400)); // frame 3: [400, 800)
    r.heap.EndFrame(&quick, 3);
    EXPECT_EQ(2u, r.heap.GetQueuedFrameCount());
    EXPECT_EQ(200u, r.heap.GetFreeBytes());
    EXPECT_EQ(800u, r.heap.GetHeadOffset());

    // Frame 3 is done but frame 2, older, is not: retirement goes oldest first, so nothing is handed out.
    quick.Complete(3);
    LxUploadAllocation none;
    EXPECT_FALSE(r.heap.Allocate(300, 1, &none));
    EXPECT_EQ(nullptr, none.base);
    EXPECT_EQ(2u, r.heap.GetQueuedFrameCount());
    EXPECT_EQ(0u, r.heap.GetAllocatedThisFrame()); // the failed request gave its charge back

    // Frame 2 completes: 300 bytes straddle the end, so they go to 0 and the frame pays for [800, 1000) too.
    // Retiring frame 2 alone makes room.
    slow.Complete(2);
    EXPECT_EQ(0, r.At(300));
    EXPECT_EQ(500u, r.heap.GetAllocatedThisFrame());
    EXPECT_EQ(1u, r.heap.GetQueuedFrameCount());
    r.heap.EndFrame(&slow, 4);
    EXPECT_EQ(300u, r.heap.GetHeadOffset());
    EXPECT_EQ(100u, r.heap.GetFreeBytes()); // up to frame 3's start at 400

    EXPECT_EQ(300, r.At(150)); // retires frame 3, not frame 4
    EXPECT_EQ(1u, r.heap.GetQueuedFrameCount());
    EXPECT_EQ(500u, r.heap.GetFreeBytes());
}

TEST(UploadHeap, FailedRequestsGiveTheirChargeBack)
{
    Ring r(100);
    TestFence fence(true);
    EXPECT_EQ(0, r.At(80));
    r.heap.EndFrame(&fence, 1);
    EXPECT_EQ(80, r.At(10));
    EXPECT_EQ(-1, r.At(50));
    EXPECT_EQ(-1, r.At(50));
    EXPECT_EQ(10u, r.heap.GetAllocatedThisFrame());
    EXPECT_EQ(90, r.At(10)) << "what is still free is still there";
    // Once the GPU has caught up, the same request succeeds (the render manager's flush and retry).
    fence.Complete(1);
    EXPECT_EQ(0, r.At(50));
}

TEST(UploadHeap, RecordQueueGrowsPastItsFirstSlots)
{
    Ring r(4096);
    TestFence fence(true);
    for (unsigned long long frame = 1; frame <= 20; ++frame)
    {
        ASSERT_NE(-1, r.At(100)) << frame;
        r.heap.EndFrame(&fence, frame);
    }
    EXPECT_EQ(20u, r.heap.GetQueuedFrameCount());
    EXPECT_EQ(4096u - 2000u, r.heap.GetFreeBytes());
    fence.Complete(13);
    ASSERT_NE(-1, r.At(2000)); // fits the 2096 free bytes: nothing retired
    EXPECT_EQ(20u, r.heap.GetQueuedFrameCount());
    // [4000, 4096) is skipped: 96 + 1000 more bytes need 3096 free, ten frames' worth.
    EXPECT_EQ(0, r.At(1000));
    EXPECT_EQ(10u, r.heap.GetQueuedFrameCount());

    // Re-initialising forgets the queue.
    ASSERT_TRUE(r.heap.InitializeRing(r.begin, 4096, nullptr));
    EXPECT_EQ(0u, r.heap.GetQueuedFrameCount());
    EXPECT_EQ(4096u, r.heap.GetFreeBytes());
}

TEST(UploadHeapCache, PiecesComeFromOneBlockPerFrame)
{
    Ring r(8192, 0, 256); // a ring starting on a 256-byte boundary, the cache's block alignment
    TestFence fence;
    LxUploadHeapCache cache(r.heap, 1024);
    EXPECT_EQ(0, r.At(10, 1, &cache));
    EXPECT_EQ(16, r.At(16, 16, &cache));
    EXPECT_EQ(32, r.At(4, 4, &cache));
    EXPECT_EQ(1024u, r.heap.GetAllocatedThisFrame()); // one block taken from the heap
    // Too large for the cache: straight from the heap, after the block.
    EXPECT_EQ(1024, r.At(300, 16, &cache));
    // A full block: the next piece opens a new one.
    EXPECT_EQ(36, r.At(256, 1, &cache));
    EXPECT_EQ(36 + 256, r.At(256, 1, &cache));
    EXPECT_EQ(36 + 512, r.At(256, 1, &cache));
    EXPECT_EQ(1536, r.At(256, 1, &cache)); // 1024 + 300 rounded up to the block alignment
    // After the frame ends the cache starts afresh in the new frame.
    r.heap.EndFrame(&fence, 1);
    EXPECT_EQ(2560, r.At(8, 8, &cache));
    EXPECT_EQ(1024u, r.heap.GetAllocatedThisFrame());
}

TEST(UploadHeapCache, SmallHeapsAndBadAlignmentsGoToTheHeap)
{
    Ring r(1024);
    LxUploadHeapCache cache(r.heap); // 64 KiB blocks would not fit a 1 KiB heap
    LxTest::LogCapture capture;
    ASSERT_NE(-1, r.At(8, 8, &cache));
    EXPECT_EQ(8u, r.heap.GetAllocatedThisFrame());
    EXPECT_EQ(0, capture.ErrorCount());
    ASSERT_NE(-1, r.At(8, 3, &cache));
    EXPECT_TRUE(capture.Contains("non-pow2 alignment"));
}

// --- stress ----------------------------------------------------------------------------------------------------------

namespace
{
struct Handed
{
    unsigned long long offset;
    unsigned long long size;
    unsigned char fill;
};

// Every block handed out and not yet given back by the GPU, to catch an overlap the moment it is handed out.
class LiveBlocks
{
public:
    // False when [offset, offset + size) overlaps a live block.
    bool Add(unsigned long long frame, unsigned long long offset, unsigned long long size)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        auto next = m_blocks.lower_bound(offset);
        if ((next != m_blocks.end() && next->first < offset + size) ||
            (next != m_blocks.begin() && std::prev(next)->first + std::prev(next)->second.first > offset))
            return false;
        m_blocks.emplace(offset, std::make_pair(size, frame));
        return true;
    }
    void RemoveFrame(unsigned long long frame)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto it = m_blocks.begin(); it != m_blocks.end();)
            it = it->second.second == frame ? m_blocks.erase(it) : std::next(it);
    }

private:
    std::mutex m_mutex;
    std::map<unsigned long long, std::pair<unsigned long long, unsigned long long>> m_blocks;
};

// Workers allocate through the heap itself, or each through its own cache.
void RunStress(bool useCaches)
{
    const unsigned kWorkers = 4;
    const unsigned kFrames = 300;
    const unsigned kPerFrame = 16;
    const unsigned long long kCapacity = 48 * 1024;
    Ring r(kCapacity);
    ASSERT_TRUE(r.initialised);
    LxUploadHeap& heap = r.heap;

    // The GPU: takes ended frames in order, checks every block of the frame still holds what its worker wrote,
    // gives the frame's blocks up and completes the frame's fence value, lagging by a random little while.
    TestFence fence(true);
    std::mutex gpuMutex;
    std::condition_variable gpuWake;
    std::deque<std::pair<unsigned long long, std::vector<Handed>>> submitted;
    bool done = false;
    std::atomic<unsigned> corrupted{0}, overlaps{0}, handedOut{0}, retried{0}, refused{0};
    LiveBlocks live;
    std::thread gpu(
        [&]
        {
            std::mt19937 rng(7);
            for (;;)
            {
                std::pair<unsigned long long, std::vector<Handed>> frame;
                {
                    std::unique_lock<std::mutex> lock(gpuMutex);
                    gpuWake.wait(lock, [&] { return done || !submitted.empty(); });
                    if (submitted.empty())
                        return;
                    frame = std::move(submitted.front());
                    submitted.pop_front();
                }
                std::this_thread::sleep_for(std::chrono::microseconds(rng() % 400));
                for (const Handed& h : frame.second)
                    corrupted += std::count(r.begin + h.offset, r.begin + h.offset + h.size, h.fill) != long(h.size);
                live.RemoveFrame(frame.first);
                fence.Complete(frame.first);
            }
        });

    LxFrameRing ring;
    EXPECT_TRUE(ring.Initialize(3, &fence)); // (no ASSERT: the GPU thread is running)
    ring.AddFrameEndListener(&heap);

    LxThreadBarrier barrier(kWorkers + 1);
    std::atomic<unsigned long long> currentFrame{0};
    std::vector<std::vector<Handed>> perWorker(kWorkers);
    std::vector<std::thread> workers;
    for (unsigned w = 0; w < kWorkers; ++w)
    {
        workers.emplace_back(
            [&, w]
            {
                std::mt19937 rng(100 + w);
                LxUploadHeapCache cache(heap, 4096);
                auto allocate = [&](unsigned long long size, unsigned long long alignment, LxUploadAllocation& a)
                { return useCaches ? cache.Allocate(size, alignment, &a) : heap.Allocate(size, alignment, &a); };
                for (unsigned f = 0; f < kFrames; ++f)
                {
                    barrier.Wait(); // frame begins
                    const unsigned long long frame = currentFrame.load();
                    perWorker[w].clear();
                    for (unsigned i = 0; i < kPerFrame; ++i)
                    {
                        const unsigned long long size = 1 + rng() % 512;
                        const unsigned long long alignment = 1ull << (rng() % 9);
                        LxUploadAllocation a;
                        bool ok = allocate(size, alignment, a);
                        if (!ok)
                        {
                            // Full: wait for the GPU to finish every earlier frame, then try once more (what the render
                            // manager does with a flush).
                            retried.fetch_add(1);
                            fence.WaitCompleted(frame - 1);
                            ok = allocate(size, alignment, a);
                        }
                        if (!ok)
                        {
                            refused.fetch_add(1);
                            continue;
                        }
                        // Out of the ring, misaligned or overlapping a live block.
                        if (a.offset + a.size > kCapacity ||
                            (a.offset + reinterpret_cast<uintptr_t>(a.base)) % alignment ||
                            !live.Add(frame, a.offset, a.size))
                        {
                            overlaps.fetch_add(1);
                            continue;
                        }
                        const unsigned char fill = static_cast<unsigned char>(rng());
                        std::memset(a.GetCPUAddress(), fill, a.size);
                        perWorker[w].push_back(Handed{a.offset, a.size, fill});
                        handedOut.fetch_add(1);
                    }
                    barrier.Wait(); // frame recorded
                }
            });
    }

    unsigned long long wrappedBytes = 0;
    for (unsigned f = 0; f < kFrames; ++f)
    {
        EXPECT_GE(ring.BeginFrame(), 0);
        currentFrame.store(ring.GetNextFenceValue());
        barrier.Wait();
        barrier.Wait();
        std::vector<Handed> all;
        for (auto& list : perWorker)
            all.insert(all.end(), list.begin(), list.end());
        wrappedBytes += heap.GetAllocatedThisFrame();
        {
            std::lock_guard<std::mutex> lock(gpuMutex);
            submitted.emplace_back(ring.GetNextFenceValue(), std::move(all));
        }
        // Frame end: the heap records the frame, the fence value goes to the GPU.
        ring.EndFrame();
        gpuWake.notify_one();
    }
    for (auto& t : workers)
        t.join();
    {
        std::lock_guard<std::mutex> lock(gpuMutex);
        done = true;
    }
    gpuWake.notify_one();
    gpu.join();

    EXPECT_EQ(0u, overlaps.load());
    EXPECT_EQ(0u, corrupted.load());
    EXPECT_GT(handedOut.load(), kWorkers * kFrames * kPerFrame * 9 / 10);
    EXPECT_GT(wrappedBytes, 10 * kCapacity); // the ring went round many times
    EXPECT_GT(heap.GetSlowPathCount(), 0u);  // and frames were retired while others allocated
    // Refusals can only follow a retry; a few are allowed when a frame itself is unusually large.
    EXPECT_LE(refused.load(), retried.load());
    ::testing::Test::RecordProperty("retried", static_cast<int>(retried.load()));
    ::testing::Test::RecordProperty("refused", static_cast<int>(refused.load()));
    ::testing::Test::RecordProperty("slow", static_cast<int>(heap.GetSlowPathCount()));
}
} // namespace

TEST(UploadHeapStress, ThreadsAllocateWhileFramesEndAndTheGPUCatchesUp)
{
    RunStress(false);
}

TEST(UploadHeapStress, ThreadsAllocateThroughTheirCaches)
{
    RunStress(true);
}
