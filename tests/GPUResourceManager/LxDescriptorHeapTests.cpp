// Descriptor heap free lists without a device: contiguous ranges, recycling behind the frame fence, exhaustion
// messages, misuse, and many threads allocating and freeing at once.
#include "support/LxTestSupport.h"

#include "GPUResourceManager/LxDescriptorHeap.h"
#include "RenderManager/LxTestFence.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <thread>
#include <vector>

using LxTest::TestFence;

TEST(DescriptorHeap, RangesAreContiguousFirstFitAndCoalesceOnReturn)
{
    LxDescriptorHeap heap(16);
    EXPECT_EQ(0, heap.Allocate(4));
    EXPECT_EQ(4, heap.Allocate(1));
    EXPECT_EQ(5, heap.Allocate(3));
    EXPECT_EQ(8u, heap.GetAllocatedCount());
    EXPECT_TRUE(heap.FreeNow(0, 4));
    EXPECT_TRUE(heap.FreeNow(5, 3));
    // Free: [0,4) and [5,16). A table of 5 skips the 4-slot hole.
    EXPECT_EQ(5, heap.Allocate(5));
    EXPECT_EQ(0, heap.Allocate(2));
    EXPECT_TRUE(heap.FreeNow(4, 1));
    // [2,5) merged from [2,4) and [4,5): a table of 3 now fits there.
    EXPECT_EQ(2, heap.Allocate(3));
    EXPECT_EQ(10, heap.Allocate(0)); // a count of 0 is one slot
    EXPECT_TRUE(heap.IsAllocated(10));
    EXPECT_FALSE(heap.IsAllocated(11));
}

TEST(DescriptorHeap, FreedSlotsReturnOnlyWhenTheirFrameCompletes)
{
    TestFence fence(true);
    LxDescriptorHeap heap(4);
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(i, heap.Allocate());
    // Frame 1 frees slot 2; the GPU may still read it until frame 1's fence value completes.
    EXPECT_TRUE(heap.Free(2));
    EXPECT_EQ(1u, heap.GetPendingCount());
    LxTest::LogCapture capture;
    EXPECT_EQ(-1, heap.Allocate());
    EXPECT_TRUE(capture.Contains("Out of memory for descriptors!", LX_LOG_ERROR));
    heap.OnFrameEnd(&fence, 1);
    // Frame 2 frees slot 0.
    EXPECT_TRUE(heap.Free(0));
    heap.OnFrameEnd(&fence, 2);
    EXPECT_EQ(-1, heap.Allocate());
    EXPECT_EQ(4u, heap.GetAllocatedCount());

    fence.Complete(1);
    EXPECT_EQ(2, heap.Allocate()); // frame 1's slot, not yet frame 2's
    EXPECT_EQ(-1, heap.Allocate());
    fence.Complete(2);
    EXPECT_EQ(0, heap.Allocate());
    EXPECT_EQ(0u, heap.GetPendingCount());

    // A frame that freed nothing records nothing; frees made without a frame end stay pending.
    heap.OnFrameEnd(&fence, 3);
    EXPECT_TRUE(heap.Free(1));
    fence.Complete(10);
    EXPECT_EQ(-1, heap.Allocate());
    heap.OnFrameEnd(&fence, 11);
    fence.Complete(11);
    EXPECT_EQ(1, heap.Allocate());
}

TEST(DescriptorHeap, ExhaustionWithNothingToRecycleSaysHowFull)
{
    LxDescriptorHeap heap(3);
    ASSERT_EQ(0, heap.Allocate(3));
    LxTest::LogCapture capture;
    EXPECT_EQ(-1, heap.Allocate());
    EXPECT_TRUE(
        capture.Contains("No buffers to free, out of heap space. heap max descriptors: 3 allocated: 3", LX_LOG_ERROR));
    LxDescriptorHeap empty;
    EXPECT_EQ(-1, empty.Allocate());
    EXPECT_TRUE(capture.Contains("heap max descriptors: 0 allocated: 0"));
}

TEST(DescriptorHeap, BadFreesChangeNothing)
{
    LxDescriptorHeap heap(8);
    ASSERT_EQ(0, heap.Allocate(2));
    LxTest::LogCapture capture;
    EXPECT_FALSE(heap.Free(2));       // never allocated
    EXPECT_FALSE(heap.Free(6, 4));    // outside the heap
    EXPECT_FALSE(heap.FreeNow(0, 0)); // empty range
    EXPECT_TRUE(heap.Free(1));
    EXPECT_FALSE(heap.Free(1)); // already freed, waiting for the GPU
    EXPECT_FALSE(heap.FreeNow(0, 2));
    EXPECT_EQ(5, capture.ErrorCount());
    EXPECT_EQ(2u, heap.GetAllocatedCount());
    EXPECT_TRUE(heap.IsAllocated(0));

    heap.Reset(4);
    EXPECT_EQ(0u, heap.GetAllocatedCount());
    EXPECT_EQ(0u, heap.GetPendingCount());
    EXPECT_EQ(4u, heap.GetMaxDescriptors());
}

TEST(DescriptorHeap, ThreadsAllocateAndFreeWithoutSharingASlot)
{
    LxDescriptorHeap heap(256);
    std::atomic<int> owner[256];
    for (auto& o : owner)
        o.store(-1);
    std::atomic<int> conflicts{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(
            [&, t]
            {
                std::deque<std::pair<int, unsigned>> mine;
                auto giveBack = [&]
                {
                    for (unsigned i = 0; i < mine.front().second; ++i)
                        owner[mine.front().first + i].store(-1);
                    heap.FreeNow(static_cast<unsigned>(mine.front().first), mine.front().second);
                    mine.pop_front();
                };
                for (int round = 0; round < 500; ++round)
                {
                    const unsigned count = 1 + (round + t) % 4;
                    const int first = heap.Allocate(count);
                    for (unsigned i = 0; first >= 0 && i < count; ++i)
                    {
                        int expected = -1;
                        conflicts += !owner[first + i].compare_exchange_strong(expected, t);
                    }
                    if (first >= 0)
                        mine.emplace_back(first, count);
                    if (mine.size() > 8 || (first < 0 && !mine.empty()))
                        giveBack();
                }
                while (!mine.empty())
                    giveBack();
            });
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(0, conflicts.load());
    EXPECT_EQ(0u, heap.GetAllocatedCount());
    EXPECT_EQ(0, heap.Allocate(256)); // everything coalesced back into one range
}
