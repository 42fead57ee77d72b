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
// A block of memory aligned to 128 bytes (a mapped upload buffer is aligned further still).
struct Block
{
    explicit Block(size_t size) : data(static_cast<unsigned char*>(LxAlignedMalloc(size, 128))) {}
    ~Block() { LxAlignedFree(data); }
    unsigned char* data;
};

bool Alloc(LxUploadHeap& heap, unsigned long long bytes, unsigned long long alignment, LxUploadAllocation& out)
{
    return heap.Allocate(bytes, alignment, out);
}
} // namespace

TEST(UploadHeap, PlacesAlignedBlocksBackToBack)
{
    Block block(1024);
    LxUploadHeap heap;
    int resource = 0;
    ASSERT_TRUE(heap.InitializeRing(block.data, 1024, &resource));
    EXPECT_EQ(1024u, heap.GetFreeBytes());

    LxUploadAllocation a, b, c;
    ASSERT_TRUE(Alloc(heap, 10, 1, a));
    EXPECT_EQ(0u, a.offset);
    EXPECT_EQ(10u, a.size);
    EXPECT_EQ(&resource, a.resource);
    EXPECT_EQ(block.data, a.base);
    EXPECT_EQ(block.data, a.GetCPUAddress());
    ASSERT_TRUE(Alloc(heap, 16, 128, b));
    EXPECT_EQ(128u, b.offset);
    ASSERT_TRUE(Alloc(heap, 4, 4, c));
    EXPECT_EQ(144u, c.offset);
    // The frame is charged the padding too: 10 + (118 + 16) + 4.
    EXPECT_EQ(148u, heap.GetAllocatedThisFrame());
}

TEST(UploadHeap, AlignmentIsOfTheAddressNotTheOffset)
{
    Block block(1024);
    LxUploadHeap heap;
    // A ring starting 8 bytes into an aligned block: 64-byte alignment lands on offset 56.
    ASSERT_TRUE(heap.InitializeRing(block.data + 8, 512, nullptr));
    LxUploadAllocation a;
    ASSERT_TRUE(Alloc(heap, 8, 64, a));
    EXPECT_EQ(56u, a.offset);
    EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(a.GetCPUAddress()) % 64);
}

TEST(UploadHeap, BadAlignmentIsReportedAndStillRoundsUp)
{
    Block block(256);
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, 256, nullptr));
    LxTest::LogCapture capture;
    LxUploadAllocation a, b, c;
    ASSERT_TRUE(Alloc(heap, 5, 1, a));
    ASSERT_TRUE(Alloc(heap, 4, 3, b)); // (5 + 2) AND NOT 2 = 5: not aligned, never below the free position
    EXPECT_TRUE(capture.Contains("non-pow2 alignment", LX_LOG_ERROR));
    EXPECT_GE(b.offset, 5u);
    LxTest::LogCapture again; // an identical error is logged once until the log is reset
    ASSERT_TRUE(Alloc(heap, 4, 0, c));
    EXPECT_TRUE(again.Contains("non-pow2 alignment"));
    EXPECT_GE(c.offset, b.offset + 4);
}

TEST(UploadHeap, StraddlingAllocationRestartsAtTheBeginningAndPaysForTheTail)
{
    Block block(1024);
    TestFence fence;
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, 1024, nullptr));
    LxUploadAllocation a;
    ASSERT_TRUE(Alloc(heap, 900, 1, a));
    heap.EndFrame(&fence, 1);
    fence.Complete(1);
    EXPECT_EQ(900u, heap.GetHeadOffset());
    EXPECT_EQ(124u, heap.GetFreeBytes());

    // 200 bytes do not fit in the 124 left before the end: they go to offset 0, and the frame is charged the
    // 124-byte tail as well (the slow path retires frame 1 to make room).
    LxUploadAllocation b;
    ASSERT_TRUE(Alloc(heap, 200, 16, b));
    EXPECT_EQ(0u, b.offset);
    EXPECT_EQ(324u, heap.GetAllocatedThisFrame());
    EXPECT_EQ(0u, heap.GetQueuedFrameCount());
    EXPECT_EQ(1024u, heap.GetFreeBytes());

    heap.EndFrame(&fence, 2);
    EXPECT_EQ(200u, heap.GetHeadOffset()); // (900 + 324) mod 1024
    EXPECT_EQ(1024u - 324u, heap.GetFreeBytes());
}

TEST(UploadHeap, OversizedRequestsFailAtOnceWithoutWaiting)
{
    Block block(1024);
    TestFence fence(true); // nothing ever completes
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, 1024, nullptr));
    LxTest::LogCapture capture;
    LxUploadAllocation a;
    EXPECT_FALSE(Alloc(heap, 1025, 1, a));
    EXPECT_TRUE(capture.Contains("Allocation is greater than upload heap size", LX_LOG_ERROR));
    EXPECT_EQ(nullptr, a.base);
    EXPECT_EQ(0u, a.size);
    EXPECT_EQ(0u, heap.GetAllocatedThisFrame()); // refused before anything was charged

    // Padding counts: 1024 bytes at 4096 alignment, from offset 8, cannot fit either.
    ASSERT_TRUE(Alloc(heap, 8, 1, a));
    LxTest::LogCapture again;
    EXPECT_FALSE(Alloc(heap, 1024, 4096, a));
    EXPECT_TRUE(again.Contains("Allocation is greater than upload heap size"));
}

TEST(UploadHeap, FramesRetireInOrderOnlyOnceTheirFenceCompletes)
{
    Block block(1000);
    TestFence slow(true), quick(true);
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, 1000, nullptr));
    LxUploadAllocation a;

    heap.EndFrame(&slow, 1); // nothing allocated: no record
    EXPECT_EQ(0u, heap.GetQueuedFrameCount());
    EXPECT_EQ(0u, heap.GetHeadOffset());

    ASSERT_TRUE(Alloc(heap, 400, 1, a)); // frame 2: [0, 400)
    heap.EndFrame(&slow, 2);
    ASSERT_TRUE(Alloc(heap, 400, 1, a)); // frame 3: [400, 800)
    heap.EndFrame(&quick, 3);
    EXPECT_EQ(2u, heap.GetQueuedFrameCount());
    EXPECT_EQ(200u, heap.GetFreeBytes());
    EXPECT_EQ(800u, heap.GetHeadOffset());

    // Frame 3 is done but frame 2, older, is not: retirement goes oldest first, so nothing is handed out.
    quick.Complete(3);
    LxUploadAllocation none;
    EXPECT_FALSE(Alloc(heap, 300, 1, none));
    EXPECT_EQ(nullptr, none.base);
    EXPECT_EQ(2u, heap.GetQueuedFrameCount());
    EXPECT_EQ(0u, heap.GetAllocatedThisFrame()); // the failed request gave its charge back

    // Frame 2 completes: 300 bytes straddle the end, so they go to 0 and the frame pays for [800, 1000) too.
    // Retiring frame 2 alone makes room.
    slow.Complete(2);
    ASSERT_TRUE(Alloc(heap, 300, 1, a));
    EXPECT_EQ(0u, a.offset);
    EXPECT_EQ(500u, heap.GetAllocatedThisFrame());
    EXPECT_EQ(1u, heap.GetQueuedFrameCount());
    heap.EndFrame(&slow, 4);
    EXPECT_EQ(300u, heap.GetHeadOffset());
    EXPECT_EQ(100u, heap.GetFreeBytes()); // up to frame 3's start at 400

    ASSERT_TRUE(Alloc(heap, 150, 1, a)); // retires frame 3, not frame 4
    EXPECT_EQ(300u, a.offset);
    EXPECT_EQ(1u, heap.GetQueuedFrameCount());
    EXPECT_EQ(500u, heap.GetFreeBytes());
}

TEST(UploadHeap, FailedRequestsGiveTheirChargeBack)
{
    Block block(100);
    TestFence fence(true);
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, 100, nullptr));
    LxUploadAllocation a, fail;
    ASSERT_TRUE(Alloc(heap, 80, 1, a)); // [0, 80)
    heap.EndFrame(&fence, 1);
    ASSERT_TRUE(Alloc(heap, 10, 1, a)); // [80, 90)
    EXPECT_FALSE(Alloc(heap, 50, 1, fail));
    EXPECT_FALSE(Alloc(heap, 50, 1, fail));
    EXPECT_EQ(10u, heap.GetAllocatedThisFrame());
    // What is still free is still there.
    ASSERT_TRUE(Alloc(heap, 10, 1, a));
    EXPECT_EQ(90u, a.offset);
    // Once the GPU has caught up, the same request succeeds (the render manager's flush and retry).
    fence.Complete(1);
    ASSERT_TRUE(Alloc(heap, 50, 1, a));
    EXPECT_EQ(0u, a.offset);
}

TEST(UploadHeap, RecordQueueGrowsPastItsFirstSlots)
{
    Block block(4096);
    TestFence fence(true);
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, 4096, nullptr));
    LxUploadAllocation a;
    for (unsigned long long frame = 1; frame <= 20; ++frame)
    {
        ASSERT_TRUE(Alloc(heap, 100, 1, a)) << frame;
        heap.EndFrame(&fence, frame);
    }
    EXPECT_EQ(20u, heap.GetQueuedFrameCount());
    EXPECT_EQ(4096u - 2000u, heap.GetFreeBytes());
    fence.Complete(13);
    ASSERT_TRUE(Alloc(heap, 2000, 1, a)); // fits the 2096 free bytes: nothing retired
    EXPECT_EQ(20u, heap.GetQueuedFrameCount());
    // [4000, 4096) is skipped: 96 + 1000 more bytes need 3096 free, ten frames' worth.
    ASSERT_TRUE(Alloc(heap, 1000, 1, a));
    EXPECT_EQ(0u, a.offset);
    EXPECT_EQ(10u, heap.GetQueuedFrameCount());

    // Re-initialising forgets the queue.
    ASSERT_TRUE(heap.InitializeRing(block.data, 4096, nullptr));
    EXPECT_EQ(0u, heap.GetQueuedFrameCount());
    EXPECT_EQ(4096u, heap.GetFreeBytes());
}

TEST(UploadHeap, WithoutMemoryNothingIsHandedOut)
{
    LxTest::LogCapture capture;
    LxUploadHeap heap;
    LxUploadAllocation a;
    EXPECT_FALSE(heap.Allocate(16, 16, a));
    EXPECT_FALSE(heap.InitializeRing(nullptr, 16, nullptr));
    EXPECT_EQ(2, capture.ErrorCount());
}

TEST(UploadHeapCache, PiecesComeFromOneBlockPerFrame)
{
    // A ring starting on a 256-byte boundary, the cache's block alignment.
    Block block(8192 + 256);
    unsigned char* begin = block.data + (256 - reinterpret_cast<uintptr_t>(block.data) % 256) % 256;
    TestFence fence;
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(begin, 8192, nullptr));
    LxUploadHeapCache cache(heap, 1024);
    LxUploadAllocation a, b, c, big;
    ASSERT_TRUE(cache.Allocate(10, 1, a));
    ASSERT_TRUE(cache.Allocate(16, 16, b));
    ASSERT_TRUE(cache.Allocate(4, 4, c));
    EXPECT_EQ(0u, a.offset);
    EXPECT_EQ(16u, b.offset);
    EXPECT_EQ(32u, c.offset);
    EXPECT_EQ(4u, c.size);
    EXPECT_EQ(1024u, heap.GetAllocatedThisFrame()); // one block taken from the heap
    // Too large for the cache: straight from the heap, after the block.
    ASSERT_TRUE(cache.Allocate(300, 16, big));
    EXPECT_EQ(1024u, big.offset);
    // A full block: the next piece opens a new one.
    ASSERT_TRUE(cache.Allocate(256, 1, a));
    ASSERT_TRUE(cache.Allocate(256, 1, a));
    ASSERT_TRUE(cache.Allocate(256, 1, a));
    EXPECT_EQ(36u + 512, a.offset);
    ASSERT_TRUE(cache.Allocate(256, 1, a));
    EXPECT_EQ(1536u, a.offset); // 1024 + 300 rounded up to the block alignment
    // After the frame ends the cache starts afresh in the new frame.
    heap.EndFrame(&fence, 1);
    ASSERT_TRUE(cache.Allocate(8, 8, a));
    EXPECT_EQ(2560u, a.offset);
    EXPECT_EQ(1024u, heap.GetAllocatedThisFrame());
}

TEST(UploadHeapCache, SmallHeapsAndBadAlignmentsGoToTheHeap)
{
    Block block(1024);
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, 1024, nullptr));
    LxUploadHeapCache cache(heap); // 64 KiB blocks would not fit a 1 KiB heap
    LxUploadAllocation a;
    LxTest::LogCapture capture;
    ASSERT_TRUE(cache.Allocate(8, 8, a));
    EXPECT_EQ(8u, heap.GetAllocatedThisFrame());
    EXPECT_EQ(0, capture.ErrorCount());
    ASSERT_TRUE(cache.Allocate(8, 3, a));
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
        if (next != m_blocks.end() && next->first < offset + size)
        {
            return false;
        }
        if (next != m_blocks.begin())
        {
            auto prev = std::prev(next);
            if (prev->first + prev->second.first > offset)
            {
                return false;
            }
        }
        m_blocks.emplace(offset, std::make_pair(size, frame));
        return true;
    }
    void RemoveFrame(unsigned long long frame)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto it = m_blocks.begin(); it != m_blocks.end();)
        {
            it = it->second.second == frame ? m_blocks.erase(it) : std::next(it);
        }
    }

private:
    std::mutex m_mutex;
    std::map<unsigned long long, std::pair<unsigned long long, unsigned long long>> m_blocks;
};
} // namespace

namespace
{
// Workers allocate through the heap itself, or each through its own cache.
void RunStress(bool useCaches)
{
    const unsigned kWorkers = 4;
    const unsigned kFrames = 300;
    const unsigned kPerFrame = 16;
    const unsigned long long kCapacity = 48 * 1024;
    Block block(kCapacity);
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(block.data, kCapacity, nullptr));

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
                    {
                        return;
                    }
                    frame = std::move(submitted.front());
                    submitted.pop_front();
                }
                std::this_thread::sleep_for(std::chrono::microseconds(rng() % 400));
                for (const Handed& h : frame.second)
                {
                    for (unsigned long long i = 0; i < h.size; ++i)
                    {
                        if (block.data[h.offset + i] != h.fill)
                        {
                            corrupted.fetch_add(1);
                            break;
                        }
                    }
                }
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
                { return useCaches ? cache.Allocate(size, alignment, a) : heap.Allocate(size, alignment, a); };
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
                        if (a.offset + a.size > kCapacity ||
                            (a.offset + reinterpret_cast<uintptr_t>(a.base)) % alignment)
                        {
                            overlaps.fetch_add(1);
                            continue;
                        }
                        if (!live.Add(frame, a.offset, a.size))
                        {
                            overlaps.fetch_add(1);
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
        {
            all.insert(all.end(), list.begin(), list.end());
        }
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
    {
        t.join();
    }
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
