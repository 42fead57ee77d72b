// The render manager without a device: primitive types and topologies, draw statistics (with draw blocking),
// tessellation conversion, per-worker state and submission, the frame sequence over a fake queue, the frames in
// flight waiting on the fence, and the upload retry after a flush.
#include "support/LxTestSupport.h"

#include "GPUResourceManager/LxUploadHeap.h"
#include "LxTestFence.h"
#include "RenderManager/include/LxRenderManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

using LxTest::TestFence;
using Prim = LxRenderManager::PrimType;

namespace
{
class FakeList : public LxCommandList
{
public:
    using LxCommandList::LxCommandList;

protected:
    bool APIClose() override { return true; }
    bool APIReset() override { return true; }
};

class FakeQueue : public LxCommandQueue
{
public:
    FakeQueue() : LxCommandQueue(LxCommandList::DIRECT) {}
    bool ExecuteCommandLists(const LxArray<LxCountedPtr<LxCommandList>>& lists) override
    {
        ++submissions;
        for (const auto& l : lists)
        {
            executed.push_back(l); // kept alive, as the GPU would until the frame completes
            closedWhenSubmitted = closedWhenSubmitted && l->IsClosed();
        }
        return true;
    }
    int submissions = 0;
    std::vector<LxCountedPtr<LxCommandList>> executed;
    bool closedWhenSubmitted = true;
};

// Records the device calls the base class makes.
class FakeRenderManager : public LxRenderManager
{
public:
    bool Init(unsigned frames, LxFence* fence) { return InitializeFrames(frames, fence, &queue); }
    bool Frame() { return BeginScene() && EndScene(); }

    FakeQueue queue;
    std::vector<std::string> calls;
    std::vector<unsigned> topologies;
    std::vector<unsigned> drawArgs;
    std::atomic<int> draws{0};

protected:
    bool APIBeginFrameSlot(unsigned slot) override
    {
        SetCurrentCommandList(LxCountedPtr<LxCommandList>(new FakeList(LxCommandList::DIRECT)));
        return Record("begin slot " + std::to_string(slot));
    }
    bool Record(const std::string& call)
    {
        calls.push_back(call);
        return true;
    }
    bool APIEndFrameSlot(unsigned slot) override { return Record("end slot " + std::to_string(slot)); }
    bool APITransitionBackBuffer(LxGPUResource::StateType before, LxGPUResource::StateType after) override
    {
        return Record("barrier " + std::to_string(before) + "->" + std::to_string(after));
    }
    bool APIPresent(unsigned syncInterval) override { return Record("present " + std::to_string(syncInterval)); }
    bool APIUpdateBackBuffers() override { return Record("back buffers"); }
    void APISetPrimitiveTopology(unsigned topology) override
    {
        if (GetWorkerIndex() == 0)
            topologies.push_back(topology);
    }
    void APIDrawIndexedInstanced(unsigned indexCount, unsigned instanceCount, unsigned startIndex, int baseVertex,
                                 unsigned startInstance) override
    {
        ++draws;
        if (GetWorkerIndex() == 0)
            drawArgs = {indexCount, instanceCount, startIndex, static_cast<unsigned>(baseVertex), startInstance};
    }
    void APIDrawInstanced(unsigned vertexCount, unsigned instanceCount, unsigned startVertex,
                          unsigned startInstance) override
    {
        ++draws;
        if (GetWorkerIndex() == 0)
            drawArgs = {vertexCount, instanceCount, startVertex, startInstance};
    }
    LxCommandList* APICreateCommandList(LxCommandList::Type type, bool) override { return new FakeList(type); }
};

unsigned Stat(const LxRenderManager& rm, LxFrameStatField field)
{
    return rm.GetFrameStats().GetValue(field);
}
} // namespace

TEST(RenderManagerPrimitives, TopologyTableAndNames)
{
    const unsigned expected[9] = {1, 2, 3, 4, 5, 10, 11, 12, 13};
    for (unsigned p = 0; p <= 40; ++p) // then the 32 patch lists from 33 on
        EXPECT_EQ(p < 9 ? expected[p] : 33 + (p - 9), LxRenderManager::GetTopology(static_cast<Prim>(p))) << p;
    EXPECT_EQ(0u, LxRenderManager::GetTopology(static_cast<Prim>(41)));

    EXPECT_STREQ("TRIANGLE_STRIP_ADJ", LxRenderManager::PrimTypeToString(LxRenderManager::PRIM_TRIANGLE_STRIP_ADJ));
    EXPECT_STREQ("PATCH_32", LxRenderManager::PrimTypeToString(LxRenderManager::PRIM_PATCH_32));
    EXPECT_EQ(nullptr, LxRenderManager::PrimTypeToString(static_cast<Prim>(41)));
    for (unsigned p = 0; p < LxRenderManager::PRIM_NUM_TYPES; ++p)
    {
        Prim found = LxRenderManager::PRIM_POINT_LIST;
        ASSERT_TRUE(
            LxRenderManager::PrimTypeFromString(LxRenderManager::PrimTypeToString(static_cast<Prim>(p)), &found));
        EXPECT_EQ(p, static_cast<unsigned>(found));
    }
    Prim untouched = LxRenderManager::PRIM_LINE_LIST;
    EXPECT_FALSE(LxRenderManager::PrimTypeFromString("PATCH_33", &untouched));
    EXPECT_FALSE(LxRenderManager::PrimTypeFromString("triangle_list", &untouched));
    EXPECT_EQ(LxRenderManager::PRIM_LINE_LIST, untouched);
}

TEST(RenderManagerPrimitives, TessellationConvertsListsAndWarnsForTheRest)
{
    LxTest::LogCapture capture;
    EXPECT_EQ(33u, LxRenderManager::ConvertTopology(LxRenderManager::PRIM_POINT_LIST, true));
    EXPECT_EQ(34u, LxRenderManager::ConvertTopology(LxRenderManager::PRIM_LINE_LIST, true));
    EXPECT_EQ(35u, LxRenderManager::ConvertTopology(LxRenderManager::PRIM_TRIANGLE_LIST, true));
    EXPECT_EQ(40u, LxRenderManager::ConvertTopology(static_cast<Prim>(16), true)); // patch lists stay
    EXPECT_EQ(4u, LxRenderManager::ConvertTopology(LxRenderManager::PRIM_TRIANGLE_LIST, false));
    EXPECT_EQ(0, capture.Count("Has tesselation"));
    for (unsigned p : {2u, 4u, 5u, 6u, 7u, 8u})
    {
        capture.Clear();
        EXPECT_EQ(LxRenderManager::GetTopology(static_cast<Prim>(p)),
                  LxRenderManager::ConvertTopology(static_cast<Prim>(p), true));
        const std::string text = "Has tesselation, and cannot convert non-patch primitive " + std::to_string(p) +
                                 " to an equivalent patch primitive.";
        EXPECT_TRUE(capture.Contains(text, LX_LOG_WARNING)) << capture.All();
    }
}

TEST(RenderManagerDraws, StatisticsOfEveryDrawKind)
{
    FakeRenderManager rm;
    struct Case
    {
        Prim type;
        bool indexed;
        unsigned count, instances;
        LxFrameStatField field;
        unsigned expected;
    } const cases[] = {
        {LxRenderManager::PRIM_POINT_LIST, false, 7, 1, LX_FRAME_STAT_POINTS, 7},
        {LxRenderManager::PRIM_POINT_LIST, true, 7, 3, LX_FRAME_STAT_POINTS, 21},
        {LxRenderManager::PRIM_LINE_LIST, false, 9, 1, LX_FRAME_STAT_LINES, 4},
        {LxRenderManager::PRIM_LINE_LIST_ADJ, true, 8, 2, LX_FRAME_STAT_LINES, 8},
        {LxRenderManager::PRIM_LINE_STRIP, false, 5, 1, LX_FRAME_STAT_LINES, 4},
        {LxRenderManager::PRIM_LINE_STRIP, false, 1, 1, LX_FRAME_STAT_LINES, 0},
        {LxRenderManager::PRIM_LINE_STRIP_ADJ, true, 0, 1, LX_FRAME_STAT_LINES, 0},
        {LxRenderManager::PRIM_TRIANGLE_LIST, true, 300, 1, LX_FRAME_STAT_TRIANGLES, 100},
        {LxRenderManager::PRIM_TRIANGLE_LIST_ADJ, false, 7, 1, LX_FRAME_STAT_TRIANGLES, 2},
        {LxRenderManager::PRIM_TRIANGLE_STRIP, false, 6, 1, LX_FRAME_STAT_TRIANGLES, 4},
        {LxRenderManager::PRIM_TRIANGLE_STRIP, false, 2, 1, LX_FRAME_STAT_TRIANGLES, 0},
        {LxRenderManager::PRIM_TRIANGLE_STRIP_ADJ, true, 1, 1, LX_FRAME_STAT_TRIANGLES, 0},
        // The count is n = count x instances, strips included.
        {LxRenderManager::PRIM_TRIANGLE_STRIP, true, 4, 3, LX_FRAME_STAT_TRIANGLES, 10},
        {LxRenderManager::PRIM_PATCH_1, false, 12, 1, LX_FRAME_STAT_PATCH_CONTROL_POINTS, 12},
        {LxRenderManager::PRIM_PATCH_32, true, 64, 2, LX_FRAME_STAT_PATCH_CONTROL_POINTS, 128},
    };
    for (const Case& c : cases)
    {
        rm.GetFrameStats().Clear();
        const int drawsBefore = rm.draws.load();
        if (c.indexed)
            rm.DrawIndexedInstanced(c.type, c.count, c.instances, 0, 0, 0);
        else
            rm.DrawNonIndexedInstanced(c.type, c.count, 0, c.instances);
        EXPECT_EQ(c.expected, Stat(rm, c.field)) << c.type << " x" << c.count;
        EXPECT_EQ(c.indexed ? 1u : 0u, Stat(rm, LX_FRAME_STAT_INDEXED_DRAWS));
        EXPECT_EQ(c.indexed ? 0u : 1u, Stat(rm, LX_FRAME_STAT_NON_INDEXED_DRAWS));
        EXPECT_EQ(c.instances, Stat(rm, LX_FRAME_STAT_INSTANCES));
        EXPECT_EQ(drawsBefore + 1, rm.draws.load());
        unsigned others = 0;
        for (LxFrameStatField f :
             {LX_FRAME_STAT_POINTS, LX_FRAME_STAT_LINES, LX_FRAME_STAT_TRIANGLES, LX_FRAME_STAT_PATCH_CONTROL_POINTS})
            others += f == c.field ? 0 : Stat(rm, f);
        EXPECT_EQ(0u, others) << c.type;
    }

    // The platform calls carry the arguments through; the non-instanced forms draw one instance.
    rm.DrawIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 36, 6, -2);
    EXPECT_EQ((std::vector<unsigned>{36, 1, 6, static_cast<unsigned>(-2), 0}), rm.drawArgs);
    rm.DrawNonIndexed(LxRenderManager::PRIM_LINE_STRIP, 10, 5);
    EXPECT_EQ((std::vector<unsigned>{10, 1, 5, 0}), rm.drawArgs);
    EXPECT_EQ(3u, rm.topologies.back());
}

TEST(RenderManagerDraws, BlockingCountsButIssuesNothing)
{
    FakeRenderManager rm;
    rm.SetDrawBlocking(true);
    rm.DrawIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 300, 0, 0);
    rm.DrawNonIndexed(LxRenderManager::PRIM_POINT_LIST, 5, 0);
    rm.Dispatch(4, 4, 1);
    EXPECT_EQ(0, rm.draws.load());
    EXPECT_TRUE(rm.topologies.empty());
    EXPECT_EQ(100u, Stat(rm, LX_FRAME_STAT_TRIANGLES));
    EXPECT_EQ(1u, Stat(rm, LX_FRAME_STAT_INDEXED_DRAWS));
    EXPECT_EQ(1u, Stat(rm, LX_FRAME_STAT_NON_INDEXED_DRAWS));
    EXPECT_EQ(5u, Stat(rm, LX_FRAME_STAT_POINTS));
    EXPECT_EQ(2u, Stat(rm, LX_FRAME_STAT_BLOCKED_DRAWS));
    EXPECT_EQ(1u, Stat(rm, LX_FRAME_STAT_DISPATCHES));
    rm.SetDrawBlocking(false);
    rm.DrawIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0, 0);
    EXPECT_EQ(1, rm.draws.load());

    // An unknown type is counted as a call, reported, and never reaches the device.
    LxTest::LogCapture capture;
    rm.DrawNonIndexed(static_cast<Prim>(41), 3, 0);
    EXPECT_TRUE(capture.Contains("Unknown primitive type??", LX_LOG_ERROR));
    EXPECT_EQ(1, rm.draws.load());
    EXPECT_EQ(2u, Stat(rm, LX_FRAME_STAT_NON_INDEXED_DRAWS));
}

TEST(RenderManagerDraws, TessellationIsPerWorker)
{
    FakeRenderManager rm;
    LxTest::LogCapture capture;
    rm.SetTessellation(true);
    rm.DrawIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0, 0);
    EXPECT_EQ(35u, rm.topologies.back());
    EXPECT_EQ(1u, Stat(rm, LX_FRAME_STAT_TRIANGLES)); // counted by primitive, not by patch

    std::thread worker(
        [&]
        {
            rm.SetWorkerIndex(3);
            EXPECT_EQ(3, rm.GetWorkerIndex());
            EXPECT_FALSE(rm.GetTessellation());
            rm.SetTessellation(true);
            rm.SetTessellation(false);
        });
    worker.join();
    EXPECT_EQ(0, rm.GetWorkerIndex());
    EXPECT_TRUE(rm.GetTessellation()); // the other worker's switch did not touch this one

    capture.Clear();
    rm.SetWorkerIndex(32);
    rm.SetWorkerIndex(-1);
    EXPECT_EQ(2, capture.ErrorCount());
    EXPECT_EQ(0, rm.GetWorkerIndex());
}

TEST(RenderManagerFrames, SceneSequenceSubmitsPresentsAndClosesTheFrame)
{
    TestFence fence;
    FakeRenderManager rm;
    ASSERT_TRUE(rm.Init(2, &fence));
    EXPECT_EQ(1u, rm.GetFrameRing().GetNextFenceValue()); // 0 was signalled by the initialisation

    rm.SetVerticalSync(false);
    rm.DrawNonIndexed(LxRenderManager::PRIM_POINT_LIST, 4, 0); // before the frame: cleared by BeginScene
    ASSERT_TRUE(rm.BeginScene());
    EXPECT_EQ(0u, Stat(rm, LX_FRAME_STAT_POINTS));
    LxCountedPtr<LxCommandList> frameList = rm.GetCurrentCommandList();
    ASSERT_TRUE(frameList);
    rm.DrawNonIndexed(LxRenderManager::PRIM_POINT_LIST, 4, 0);
    ASSERT_TRUE(rm.EndScene());
    const std::vector<std::string> expected = {"begin slot 0", "barrier 0->4", "end slot 0",
                                               "barrier 4->0", "present 0",    "back buffers"};
    EXPECT_EQ(expected, rm.calls);
    ASSERT_EQ(1u, rm.queue.executed.size());
    EXPECT_EQ(frameList, rm.queue.executed[0]);
    EXPECT_TRUE(rm.queue.closedWhenSubmitted);
    EXPECT_EQ(1u, Stat(rm, LX_FRAME_STAT_COMMAND_LISTS));
    EXPECT_EQ(4u, Stat(rm, LX_FRAME_STAT_POINTS)); // readable after the frame
    EXPECT_EQ(1u, rm.GetFrameRing().GetSlotFenceValue(0));
    EXPECT_EQ(1ull, fence.GetLastSignalled());

    rm.calls.clear();
    rm.SetVerticalSync(true);
    ASSERT_TRUE(rm.Frame());
    EXPECT_EQ("begin slot 1", rm.calls.front());
    EXPECT_EQ("present 1", rm.calls[4]);
    EXPECT_EQ(2u, rm.GetFrameRing().GetSlotFenceValue(1));
}

TEST(RenderManagerFrames, FrameWaitsForExactlyItsSlotValue)
{
    // Also: the first F frames never wait.
    TestFence fence(true);
    FakeRenderManager rm;
    ASSERT_TRUE(rm.Init(2, &fence));
    ASSERT_TRUE(rm.Frame()); // value 1, slot 0
    ASSERT_TRUE(rm.Frame()); // value 2, slot 1
    fence.Complete(1);
    ASSERT_TRUE(rm.BeginScene()); // slot 0 needs 1: no wait
    EXPECT_EQ(0, fence.blockingWaits.load());
    ASSERT_TRUE(rm.EndScene()); // value 3
    std::thread gpu(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            fence.Complete(2);
        });
    ASSERT_TRUE(rm.BeginScene()); // slot 1 needs 2
    gpu.join();
    EXPECT_EQ(1, fence.blockingWaits.load());
    EXPECT_GE(fence.GetCompletedValue(), 2u);

    // A wait that cannot be armed fails the frame instead of hanging.
    ASSERT_TRUE(rm.EndScene()); // value 4, slot 1
    fence.failArm = true;
    EXPECT_FALSE(rm.BeginScene()); // slot 0 needs 3
}

TEST(RenderManagerFrames, ListenersHearEveryFrameEndBeforeItsSignal)
{
    struct Listener : LxFrameEndListener
    {
        explicit Listener(TestFence& f) : fence(f) {}
        void OnFrameEnd(LxFence* f, unsigned long long value) override
        {
            EXPECT_EQ(&fence, f);
            EXPECT_LT(fence.GetLastSignalled(), value); // told before the value is signalled
            values.push_back(value);
        }
        TestFence& fence;
        std::vector<unsigned long long> values;
    };
    TestFence fence;
    FakeRenderManager rm;
    ASSERT_TRUE(rm.Init(2, &fence));
    Listener listener(fence);
    rm.GetFrameRing().AddFrameEndListener(&listener);
    rm.GetFrameRing().AddFrameEndListener(&listener); // once only
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(rm.Frame());
    ASSERT_TRUE(rm.WaitOnExecution()); // a flush signals a value of its own
    ASSERT_TRUE(rm.Frame());
    EXPECT_EQ((std::vector<unsigned long long>{1, 2, 3, 5}), listener.values);
    rm.GetFrameRing().RemoveFrameEndListener(&listener);
    ASSERT_TRUE(rm.Frame());
    EXPECT_EQ(4u, listener.values.size());
}

TEST(RenderManagerLists, WorkersSubmitTheirOwnListsAndQueuesRefuseBundles)
{
    TestFence fence;
    FakeRenderManager rm;
    ASSERT_TRUE(rm.Init(2, &fence));
    LxCountedPtr<LxCommandList> mainList = rm.CreateCommandList(LxCommandList::DIRECT);
    std::thread worker(
        [&]
        {
            rm.SetWorkerIndex(5);
            LxCountedPtr<LxCommandList> list = rm.CreateCommandList(LxCommandList::COMPUTE);
            EXPECT_TRUE(rm.CloseAndAppendCommandList(list));
            list = nullptr; // handed over
        });
    worker.join();
    ASSERT_TRUE(rm.CloseAndAppendCommandList(mainList));
    ASSERT_TRUE(rm.ExecuteCommandLists()); // worker 0's array only
    ASSERT_EQ(1u, rm.queue.executed.size());
    EXPECT_EQ(mainList, rm.queue.executed[0]);
    EXPECT_TRUE(rm.ExecuteCommandLists()); // nothing left: no submission
    EXPECT_EQ(1, rm.queue.submissions);

    std::thread submitter(
        [&]
        {
            rm.SetWorkerIndex(5);
            EXPECT_TRUE(rm.Flush());
        });
    submitter.join();
    EXPECT_EQ(2u, rm.queue.executed.size());
    EXPECT_EQ(LxCommandList::COMPUTE, rm.queue.executed[1]->GetType());

    LxTest::LogCapture capture;
    EXPECT_EQ(nullptr, rm.CreateCommandQueue(LxCommandList::BUNDLE));
    EXPECT_TRUE(capture.Contains("Queue type cannot be BUNDLE", LX_LOG_ERROR));
    EXPECT_FALSE(rm.CloseAndAppendCommandList(rm.CreateCommandList(LxCommandList::BUNDLE)));
    EXPECT_FALSE(rm.ExecuteBundle(mainList));
    EXPECT_FALSE(mainList->Close()); // closed once
}

TEST(RenderManagerUpload, FullHeapIsFlushedAndRetriedOnce)
{
    TestFence fence(true);
    FakeRenderManager rm;
    ASSERT_TRUE(rm.Init(2, &fence));
    std::vector<unsigned char> memory(1024);
    LxUploadHeap heap;
    ASSERT_TRUE(heap.InitializeRing(memory.data(), 1024, nullptr));
    rm.GetFrameRing().AddFrameEndListener(&heap);

    LxUploadAllocation a;
    ASSERT_TRUE(rm.BeginScene());
    ASSERT_TRUE(rm.AllocateUpload(heap, 800, 16, &a));
    ASSERT_TRUE(rm.EndScene());
    ASSERT_TRUE(rm.BeginScene());
    // 800 bytes are in flight; the flush waits for the GPU, which a thread completes meanwhile.
    std::thread gpu(
        [&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            fence.Complete(2); // frame 1 ended with 1, the flush signals 2
        });
    ASSERT_TRUE(rm.AllocateUpload(heap, 600, 16, &a));
    gpu.join();
    EXPECT_EQ(0u, a.offset);

    // Larger than the heap: still failing after the flush.
    LxTest::LogCapture capture;
    fence.SetHold(false);
    EXPECT_FALSE(rm.AllocateUpload(heap, 2048, 16, &a));
    EXPECT_TRUE(capture.Contains("Flushed upload heap but allocation still failed\n", LX_LOG_ERROR));
    rm.GetFrameRing().RemoveFrameEndListener(&heap);
}

TEST(RenderManagerBase, DeviceLessManagerReportsWhatItCannotDo)
{
    LxTest::LogCapture capture;
    LxRenderManager& rm = LxRenderManager::GetRef();
    EXPECT_FALSE(rm.BeginScene());
    EXPECT_TRUE(capture.Contains("LxFrameRing::BeginFrame.  The frame ring is not initialised."));
    rm.DrawAuto(LxRenderManager::PRIM_POINT_LIST);
    EXPECT_TRUE(capture.Contains("LxRenderManager::DrawAuto ::: IMPLEMENT ME!", LX_LOG_ERROR));
    EXPECT_EQ(nullptr, rm.CreateFence(0));
    EXPECT_FALSE(rm.CreateCommandList(LxCommandList::DIRECT));
    EXPECT_EQ(-1, rm.CreateGPUTimer("shadows"));
    // Draws still count.
    rm.DrawIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 6, 0, 0);
    EXPECT_EQ(2u, rm.GetFrameStats().GetValue(LX_FRAME_STAT_TRIANGLES));
    // State is kept, and null outputs are skipped.
    rm.ViewportAndScissor(1, 2, 300, 200);
    float w = 0;
    unsigned sh = 0;
    rm.GetViewport(nullptr, nullptr, &w, nullptr);
    rm.GetScissor(nullptr, nullptr, nullptr, &sh);
    EXPECT_EQ(300.0f, w);
    EXPECT_EQ(200u, sh);
    LxRenderManager::ShutDown();

    // A registered create function makes the instance.
    LxRenderManager::SetCreateFunction([]() -> LxRenderManager* { return new FakeRenderManager(); });
    EXPECT_NE(nullptr, dynamic_cast<FakeRenderManager*>(LxRenderManager::GetPtr()));
    LxRenderManager::ShutDown();
    LxRenderManager::SetCreateFunction(nullptr);
}
