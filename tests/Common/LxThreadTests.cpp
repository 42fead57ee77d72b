// Threads, signals, the thread pool, barriers, and the frame clock with its timers. Runs in the ThreadSanitizer
// lane as well: every cross-thread access here goes through the library's primitives or std::atomic.
#include "support/LxTestSupport.h"

#include "Common/LxClock.h"
#include "Common/LxMutex.h"
#include "Common/LxObserver.h"
#include "Common/LxRealTimeSource.h"
#include "Common/LxSignal.h"
#include "Common/LxSystemInfo.h"
#include "Common/LxThread.h"
#include "Common/LxThreadBarrier.h"
#include "Common/LxThreadBarrierListener.h"
#include "Common/LxThreadPool.h"
#include "Common/LxTimer.h"
#include "Common/LxWorkItem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <pthread.h>
#include <sched.h>
#endif

namespace
{
unsigned long long CurrentThreadTag()
{
#if defined(_WIN32)
    return GetCurrentThreadId();
#else
    return static_cast<unsigned long long>(pthread_self());
#endif
}

// The mask of the lowest processor this process may run on (processor 0 is not always among them).
unsigned int FirstAllowedProcessorMask()
{
#if defined(_WIN32)
    DWORD_PTR process = 0, system = 0;
    GetProcessAffinityMask(GetCurrentProcess(), &process, &system);
    for (unsigned int cpu = 0; cpu < 32; ++cpu)
        if (process & (DWORD_PTR(1) << cpu))
            return 1u << cpu;
#else
    cpu_set_t set;
    CPU_ZERO(&set);
    sched_getaffinity(0, sizeof(set), &set);
    for (unsigned int cpu = 0; cpu < 32; ++cpu)
        if (CPU_ISSET(cpu, &set))
            return 1u << cpu;
#endif
    return 1u;
}

double MillisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// A thread running a function, through the callable form.
class FunctionThread : public LxThread
{
public:
    explicit FunctionThread(std::function<void()> body)
        : LxThread(
              [body]
              {
                  body();
                  return 0u;
              })
    {
    }
};

// Runs `count` threads of `body` at once and joins them all.
void RunThreads(int count, const std::function<void()>& body)
{
    std::vector<std::unique_ptr<FunctionThread>> threads;
    for (int t = 0; t < count; ++t)
    {
        threads.emplace_back(new FunctionThread(body));
        ASSERT_TRUE(threads.back()->Start());
    }
    for (auto& t : threads)
        ASSERT_TRUE(t->Join());
}

// A time source the test moves by hand.
class ManualTimeSource : public LxTimeSource
{
public:
    double GetTime() const override { return now; }
    double now = 100.0;
};

// A clock over a manual source, stepping in raw (unfiltered) time.
struct RawClock
{
    RawClock() { clock.SetSmoothTime(false); }
    void Step(double seconds)
    {
        source.now += seconds;
        clock.FrameStep();
    }
    ManualTimeSource source;
    LxClock clock{&source};
};
} // namespace

// --- mutex and signal ---------------------------------------------------------------------------------------------

TEST(LxMutex, RecursiveAndExclusive)
{
    LxMutex mutex;
    mutex.Take();
    mutex.Take(); // the owner may take it again
    std::atomic<int> otherGotIt{-1};
    FunctionThread probe([&] { otherGotIt = mutex.TryTake() ? 1 : 0; });
    ASSERT_TRUE(probe.Start());
    ASSERT_TRUE(probe.Join());
    EXPECT_EQ(0, otherGotIt.load());
    mutex.Release();
    mutex.Release();

    // Four threads adding under the lock lose nothing.
    long counter = 0;
    RunThreads(4,
               [&]
               {
                   for (int i = 0; i < 20000; ++i)
                   {
                       LxMutex::ScopedLock lock(mutex);
                       ++counter;
                   }
               });
    EXPECT_EQ(80000, counter);
    EXPECT_TRUE(mutex.TryTake());
    mutex.Release();
}

TEST(LxSignal, ManualResetTimeoutsAndWaitingForever)
{
    LxSignal s;
    EXPECT_FALSE(s.IsSignaled());
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(s.Wait(40));
    EXPECT_GE(MillisecondsSince(start), 30.0) << "a timeout really waits";
    s.Signal();
    EXPECT_TRUE(s.Wait(0));
    EXPECT_TRUE(s.Wait(1) && s.IsSignaled()) << "manual reset: it stays signalled";
    s.Reset();
    EXPECT_FALSE(s.Wait(5));

    std::atomic<bool> signalled{false};
    FunctionThread late(
        [&]
        {
            LxThread::Sleep(80);
            signalled = true;
            s.Signal();
        });
    start = std::chrono::steady_clock::now();
    ASSERT_TRUE(late.Start());
    EXPECT_TRUE(s.Wait(0)) << "0 means forever, not a test";
    EXPECT_TRUE(signalled.load());
    EXPECT_GE(MillisecondsSince(start), 60.0);
}

TEST(LxSignal, WaitForSignalsNeedsAll)
{
    LxSignal a, b, c;
    LxArray<LxSignal*> list;
    for (LxSignal* s : {&a, static_cast<LxSignal*>(nullptr), &b, &c, &a}) // a null is skipped, a twice is fine
        list.Add(s);
    a.Signal();
    c.Signal();
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(LxSignal::WaitForSignals(40, list));
    EXPECT_GE(MillisecondsSince(start), 30.0);
    EXPECT_LT(MillisecondsSince(start), 5000.0) << "one deadline for the whole list";

    FunctionThread setter(
        [&]
        {
            LxThread::Sleep(50);
            b.Signal();
        });
    ASSERT_TRUE(setter.Start());
    EXPECT_TRUE(LxSignal::WaitForSignals(0, list));

    // More signals than one system wait takes (64 on Windows).
    std::vector<std::unique_ptr<LxSignal>> many;
    LxArray<LxSignal*> manyList;
    for (int i = 0; i < 150; ++i)
    {
        many.emplace_back(new LxSignal);
        many.back()->Signal();
        manyList.Add(many.back().get());
    }
    EXPECT_TRUE(LxSignal::WaitForSignals(100, manyList));
    many[140]->Reset();
    EXPECT_FALSE(LxSignal::WaitForSignals(20, manyList));
    LxArray<LxSignal*> none;
    EXPECT_TRUE(LxSignal::WaitForSignals(0, none));
}

// --- threads ------------------------------------------------------------------------------------------------------

TEST(LxThread, StartOnceJoinAndRestart)
{
    LxSignal release;
    std::atomic<int> runs{0};
    FunctionThread t(
        [&]
        {
            ++runs;
            release.Wait(0);
        });
    EXPECT_FALSE(t.IsActive());
    EXPECT_TRUE(t.Join(10)) << "nothing to join yet";
    ASSERT_TRUE(t.Start());
    EXPECT_TRUE(t.IsActive());
    EXPECT_FALSE(t.Start()) << "a second Start while it runs fails";
    EXPECT_FALSE(t.Join(30)) << "still running";
    release.Signal();
    EXPECT_TRUE(t.Join());
    EXPECT_FALSE(t.IsActive());
    // A finished thread may run again.
    ASSERT_TRUE(t.Start());
    EXPECT_TRUE(t.Join());
    EXPECT_EQ(2, runs.load());
}

TEST(LxThread, AffinityBeforeAndAfterStart)
{
    LxTest::LogCapture log;
    const unsigned int mask = FirstAllowedProcessorMask();
    LxSignal go;
    std::atomic<int> pinned{-1};
    FunctionThread t(
        [&]
        {
            go.Wait(0);
#if defined(_WIN32)
            // Setting the same mask again returns the one in force.
            pinned = SetThreadAffinityMask(GetCurrentThread(), mask) == mask ? 1 : 0;
#else
            cpu_set_t set;
            CPU_ZERO(&set);
            sched_getaffinity(0, sizeof(set), &set);
            pinned = (CPU_COUNT(&set) == 1 && CPU_ISSET(__builtin_ctz(mask), &set)) ? 1 : 0;
#endif
        });
    t.SetAffinity(mask); // kept until the thread starts
    ASSERT_TRUE(t.Start());
    t.SetAffinity(mask);
    go.Signal();
    ASSERT_TRUE(t.Join());
    EXPECT_EQ(1, pinned.load());
    EXPECT_EQ(0, log.Count("refused"));

    LxSignal hold;
    FunctionThread u([&] { hold.Wait(0); });
    ASSERT_TRUE(u.Start());
    u.SetAffinity(0);
    hold.Signal();
    EXPECT_TRUE(u.Join());
    EXPECT_TRUE(log.Contains("LxThread::SetAffinity.  The processor mask 0x0 was refused.", LX_LOG_WARNING));
}

// --- thread pool --------------------------------------------------------------------------------------------------

namespace
{
class RecordingItem : public LxWorkItem
{
public:
    void Execute() override
    {
        thread = CurrentThreadTag();
        ++runs;
    }
    unsigned long long thread = 0;
    std::atomic<int> runs{0};
};

class BarrierItem : public LxWorkItem
{
public:
    explicit BarrierItem(LxThreadBarrier& barrier) : m_barrier(barrier) {}
    void Execute() override { m_barrier.Wait(nullptr); }

private:
    LxThreadBarrier& m_barrier;
};

template <class Item>
LxArray<LxWorkItem*> Batch(std::vector<Item>& items)
{
    LxArray<LxWorkItem*> list;
    for (Item& item : items)
        list.Add(&item);
    return list;
}
} // namespace

TEST(LxThreadPool, StrideDistributionWithTheCallerAsLastParticipant)
{
    std::unique_ptr<LxThreadPool> pool(LxThreadPool::Create(3));
    ASSERT_NE(nullptr, pool);
    const unsigned long long caller = CurrentThreadTag();

    for (int batch = 0; batch < 25; ++batch)
    {
        std::vector<RecordingItem> items(10);
        pool->ExecuteWorkItems(Batch(items));
        for (int i = 0; i < 10; ++i)
            ASSERT_EQ(1, items[i].runs.load()) << "item " << i << " ran once";
        // Participant p runs items p, p + 4, p + 8: three workers, then the caller as participant 3.
        std::vector<unsigned long long> by(10);
        for (int i = 0; i < 10; ++i)
            by[i] = items[i].thread;
        EXPECT_TRUE(by[0] == by[4] && by[4] == by[8] && by[1] == by[5] && by[5] == by[9] && by[2] == by[6]);
        EXPECT_EQ(std::vector<unsigned long long>({caller, caller}), std::vector<unsigned long long>({by[3], by[7]}));
        EXPECT_EQ(4u, std::set<unsigned long long>({by[0], by[1], by[2], by[3]}).size()) << "four participants";
    }

    // The four participants really run at the same time: four items meeting at one barrier finish.
    LxThreadBarrier meet(4);
    std::vector<BarrierItem> together(4, BarrierItem(meet));
    pool->ExecuteWorkItems(Batch(together));

    // Fewer items than workers, null items and an empty batch.
    RecordingItem one, two;
    LxArray<LxWorkItem*> sparse;
    for (LxWorkItem* item : {static_cast<LxWorkItem*>(nullptr), static_cast<LxWorkItem*>(&one),
                             static_cast<LxWorkItem*>(nullptr), static_cast<LxWorkItem*>(&two)})
        sparse.Add(item);
    pool->ExecuteWorkItems(sparse);
    EXPECT_EQ(1, one.runs.load());
    EXPECT_EQ(1, two.runs.load());
    EXPECT_EQ(caller, two.thread);
    pool->ExecuteWorkItems(LxArray<LxWorkItem*>());
}

TEST(LxThreadPool, NoWorkersAndCreationFailure)
{
    std::unique_ptr<LxThreadPool> pool(LxThreadPool::Create(0));
    ASSERT_NE(nullptr, pool);
    std::vector<int> order;
    struct Ordered : LxWorkItem
    {
        Ordered(std::vector<int>& o, int i) : order(o), index(i) {}
        void Execute() override { order.push_back(index); }
        std::vector<int>& order;
        int index;
    };
    std::vector<Ordered> items = {{order, 0}, {order, 1}, {order, 2}};
    pool->ExecuteWorkItems(Batch(items));
    EXPECT_EQ((std::vector<int>{0, 1, 2}), order) << "the caller runs every item in order";

    LxTest::LogCapture log;
    EXPECT_EQ(nullptr, LxThreadPool::Create(LxThreadPool::MAX_THREADS + 1));
    EXPECT_TRUE(log.Contains("Error occurred creating thread pool!", LX_LOG_ERROR));
}

// --- barrier ------------------------------------------------------------------------------------------------------

namespace
{
class RoundListener : public LxThreadBarrierListener
{
public:
    void OnAllThreadsArrived() override
    {
        // Every party of this round has arrived, none of the next.
        arrivedAtCall.push_back(arrived.load());
        ++round;
    }
    std::atomic<int> arrived{0};
    std::vector<int> arrivedAtCall;
    int round = 0; // written by the last arrival only, read by all after the barrier
};
} // namespace

TEST(LxThreadBarrier, RoundsReleaseTogetherAndCallTheListenerOnce)
{
    const int parties = 4, rounds = 200;
    LxThreadBarrier barrier(parties);
    RoundListener listener;
    std::atomic<int> mismatches{0};
    RunThreads(parties,
               [&]
               {
                   for (int r = 0; r < rounds; ++r)
                   {
                       ++listener.arrived;
                       barrier.Wait(&listener);
                       // Released only after the listener of this round ran.
                       mismatches += listener.round != r + 1;
                   }
               });
    EXPECT_EQ(0, mismatches.load());
    ASSERT_EQ(static_cast<size_t>(rounds), listener.arrivedAtCall.size());
    for (int r = 0; r < rounds; ++r)
        ASSERT_EQ(parties * (r + 1), listener.arrivedAtCall[r]) << "round " << r;

    LxThreadBarrier alone(0);
    EXPECT_EQ(1u, alone.GetCount());
    RoundListener solo;
    alone.Wait(&solo);
    alone.Wait(nullptr);
    alone.Wait(&solo);
    EXPECT_EQ(2, solo.round);
}

// --- system information and the real time source ------------------------------------------------------------------

TEST(LxSystemInfo, ProcessorsAndSIMD)
{
    const unsigned int count = LxSystemInfo::GetProcessorCount();
    EXPECT_GE(count, 1u);
    EXPECT_TRUE(std::thread::hardware_concurrency() == 0 || std::thread::hardware_concurrency() == count);
    EXPECT_EQ(LxSystemInfo::LX_SIMD_SSE, LxSystemInfo::DecodeSIMDISA(0, 1u << 25));
    EXPECT_EQ(LxSystemInfo::LX_SIMD_SSE2, LxSystemInfo::DecodeSIMDISA(0, 1u << 26));
    EXPECT_EQ(LxSystemInfo::LX_SIMD_SSE3, LxSystemInfo::DecodeSIMDISA(1, 0));
    EXPECT_EQ(0u, LxSystemInfo::DecodeSIMDISA(~1u, ~(3u << 25)));
#if defined(__x86_64__) || defined(_M_X64)
    // Every x86-64 processor has SSE and SSE2.
    const unsigned int isa = LxSystemInfo::GetSIMDISA();
    EXPECT_EQ(3u, isa & 3u);
    EXPECT_EQ(0u, isa & ~7u);
#endif
}

TEST(LxRealTimeSource, MonotonicSeconds)
{
    LxRealTimeSource source;
    const double t0 = source.GetTime();
    double last = t0;
    for (int i = 0; i < 1000; ++i)
    {
        const double t = source.GetTime();
        ASSERT_GE(t, last);
        last = t;
    }
    LxThread::Sleep(50);
    const double elapsed = source.GetTime() - t0;
    EXPECT_GE(elapsed, 0.045);
    EXPECT_LT(elapsed, 5.0);
}

// --- clock --------------------------------------------------------------------------------------------------------

TEST(LxClock, SmoothTimeConvergesAfterTheSeedsLeave)
{
    ManualTimeSource source;
    LxClock clock(&source);
    EXPECT_TRUE(clock.IsSmoothTimeEnabled());
    EXPECT_EQ(10, clock.GetFilterWindowSize());
    EXPECT_EQ(2u, clock.GetFrameHistoryCount()) << "seeded with 0.03 and 0";
    double lo = -1, hi = -1;
    clock.GetMinMaxFrameDuration(&lo, &hi);
    EXPECT_EQ(0.0, lo);
    EXPECT_EQ(0.03, hi);

    source.now = 250.0; // whatever passed before the first step is not a frame
    clock.FrameStep();
    EXPECT_EQ(1u, clock.GetFrameCount());
    EXPECT_DOUBLE_EQ(0.01, clock.GetFrameDuration()) << "mean of 0.03, 0, 0";
    EXPECT_DOUBLE_EQ(100.0, clock.GetFrameRate());

    for (int frame = 1; frame <= 10; ++frame)
    {
        source.now += 0.016;
        clock.FrameStep();
        EXPECT_TRUE(frame != 9 || std::fabs(clock.GetFrameDuration() - 0.016) > 1e-4) << "the first raw 0 is still in";
    }
    EXPECT_NEAR(0.016, clock.GetFrameDuration(), 1e-12);
    EXPECT_NEAR(62.5, clock.GetFrameRate(), 1e-8);
    EXPECT_EQ(10u, clock.GetFrameHistoryCount());
    EXPECT_EQ(11u, clock.GetFrameCount());
    EXPECT_DOUBLE_EQ(clock.GetTime() - clock.GetFrameDuration(), clock.GetPreviousTime());
    clock.GetMinMaxFrameDuration(&lo, &hi);
    EXPECT_NEAR(0.016, lo, 1e-9);
    EXPECT_NEAR(0.016, hi, 1e-9);
}

TEST(LxClock, RawTimeFilteringAndSources)
{
    RawClock c;
    LxClock& clock = c.clock;
    clock.FrameStep();
    EXPECT_EQ(0.0, clock.GetFrameDuration());
    c.Step(0.25);
    EXPECT_EQ((100.0 + 0.25) - 100.0, clock.GetFrameDuration()) << "the raw difference exactly";
    EXPECT_DOUBLE_EQ(1.0 / ((0.03 + 0 + 0 + 0.25) / 4), clock.GetFrameRate()) << "the rate stays filtered";
    c.Step(0.5);
    EXPECT_EQ(0.75, clock.GetTime());
    EXPECT_EQ(0.25, clock.GetPreviousTime());

    // A window of 0 is a window of 1: the filtered value is the last raw duration.
    clock.SetSmoothTime(true);
    clock.SetFiltering(0, 0.1);
    EXPECT_EQ(1, clock.GetFilterWindowSize());
    double lo, hi;
    clock.GetMinMaxFrameDuration(&lo, &hi);
    EXPECT_EQ(0.1, lo);
    EXPECT_EQ(0.1, hi);
    c.Step(0.04);
    EXPECT_NEAR(0.04, clock.GetFrameDuration(), 1e-12);
    EXPECT_EQ(1u, clock.GetFrameHistoryCount());

    clock.SetFiltering(3, 0.02);
    clock.ClearFrameHistory();
    clock.GetMinMaxFrameDuration(&lo, &hi);
    EXPECT_EQ(0.0, hi);
    EXPECT_EQ(1u, clock.GetFrameHistoryCount());

    // A new source: the next raw duration is 0, the history restarts with 0.
    ManualTimeSource other;
    other.now = 5000.0;
    clock.SetTimeSource(&other);
    EXPECT_EQ(&other, clock.GetTimeSource());
    const double before = clock.GetTime();
    clock.FrameStep();
    EXPECT_EQ(before, clock.GetTime());
    other.now += 0.3;
    EXPECT_NEAR(0.3, clock.GetSourceTimeSinceStart(), 1e-12);
    clock.FrameStep();
    EXPECT_NEAR(0.1, clock.GetFrameDuration(), 1e-12) << "mean of 0, 0, 0.3";

    // Without a source every raw duration is 0: only the seeds move the clock, and a window of 1 drops them.
    LxClock stopped(nullptr);
    stopped.SetFiltering(1, 0.0);
    stopped.FrameStep();
    stopped.FrameStep();
    EXPECT_EQ(0.0, stopped.GetTime());
    EXPECT_EQ(0.0, stopped.GetFrameRate()) << "no rate while the filtered duration is 0";
}

TEST(LxClock, ObserversInOrderAndRemovalDuringNotification)
{
    ManualTimeSource source;
    LxClock clock(&source);
    std::vector<int> calls;
    struct Recorder : LxObserver
    {
        Recorder(std::vector<int>& c, int i) : calls(c), id(i) {}
        void Update(LxTimeSubject& subject) override
        {
            calls.push_back(id);
            if (victim)
                subject.RemoveObserver(victim);
        }
        std::vector<int>& calls;
        int id;
        LxObserver* victim = nullptr;
    };
    auto step = [&]
    {
        calls.clear();
        clock.FrameStep();
        return calls;
    };
    Recorder a(calls, 1), b(calls, 2), c(calls, 3);
    for (LxObserver* o : {static_cast<LxObserver*>(&a), static_cast<LxObserver*>(&b), static_cast<LxObserver*>(&b),
                          static_cast<LxObserver*>(&c), static_cast<LxObserver*>(nullptr)})
        clock.AddObserver(o); // b once only, null ignored
    EXPECT_EQ(3u, clock.GetObserverCount());
    EXPECT_EQ((std::vector<int>{1, 2, 3}), step());

    a.victim = &b; // 1 removes 2 in the middle of the round
    EXPECT_EQ((std::vector<int>{1, 3}), step());
    EXPECT_EQ(2u, clock.GetObserverCount());
    c.victim = &c; // and an observer may remove itself
    a.victim = nullptr;
    EXPECT_EQ((std::vector<int>{1, 3}), step());
    EXPECT_EQ((std::vector<int>{1}), step());
    {
        Recorder temporary(calls, 4);
        clock.AddObserver(&temporary);
        EXPECT_EQ(2u, clock.GetObserverCount());
    }
    EXPECT_EQ(1u, clock.GetObserverCount()) << "a destroyed observer unregisters itself";
    EXPECT_EQ((std::vector<int>{1}), step());
    // a is destroyed before the clock (declared after it): it leaves the clock on its way out.
}

// The derived form's trap is reported: a derived body still running when the base destructor runs.
TEST(LxThread, DerivedThreadDestroyedWhileRunningIsReported)
{
    static LxSignal started; // not a member: the body must touch nothing of the derived part
    struct Sleeper : LxThread
    {
        unsigned int Run() override
        {
            started.Signal();
            LxThread::Sleep(50);
            return 0;
        }
    };
    LxTest::LogCapture log;
    {
        Sleeper s;
        ASSERT_TRUE(s.Start());
        ASSERT_TRUE(started.Wait(0)); // the body is under way before the destructor rewrites the object
    }
    EXPECT_TRUE(log.Contains("LxThread::~LxThread.  A derived thread was destroyed while its Run() was still "
                             "executing: the derived destructor must make it return and call Join() first.",
                             LX_LOG_ERROR));
    LxTest::LogCapture quiet;
    {
        LxThread callable(
            []
            {
                LxThread::Sleep(20);
                return 7u;
            });
        ASSERT_TRUE(callable.Start());
    }
    EXPECT_EQ(quiet.ErrorCount(), 0) << "the callable form joins safely in the destructor";
}

// --- timers -------------------------------------------------------------------------------------------------------

TEST(LxTimer, ScalePauseAndChaining)
{
    RawClock c;
    LxTimer half(c.clock);
    LxTimer full(half);
    EXPECT_EQ(&c.clock, half.GetParent());
    half.SetScale(0.5f);
    full.SetScale(2.0f);
    c.clock.FrameStep();
    for (int i = 0; i < 4; ++i)
        c.Step(0.25);
    EXPECT_EQ(1.0, c.clock.GetTime());
    EXPECT_EQ(0.5, half.GetTime()) << "half as fast";
    EXPECT_EQ(1.0, full.GetTime()) << "scale 2 on scale 0.5 follows the clock";
    EXPECT_EQ(0.125, half.GetFrameDuration());

    // A paused timer stands still, and so does every timer below it; unpausing resumes without a jump.
    // Pausing sets the flag and nothing else: the last frame duration and the previous time stay as they were.
    half.Pause(true);
    EXPECT_TRUE(half.IsPaused());
    EXPECT_EQ(0.125, half.GetFrameDuration());
    EXPECT_EQ(0.375, half.GetPreviousTime());
    c.Step(0.25);
    c.Step(0.25);
    EXPECT_EQ(1.5, c.clock.GetTime());
    EXPECT_EQ(0.5, half.GetTime());
    EXPECT_EQ(1.0, full.GetTime());
    half.Pause(false);
    c.Step(0.25);
    EXPECT_EQ(0.625, half.GetTime());
    EXPECT_EQ(0.5, half.GetPreviousTime());
    EXPECT_EQ(1.25, full.GetTime());

    full.Pause(true);
    c.Step(0.25);
    EXPECT_EQ(0.75, half.GetTime());
    EXPECT_EQ(1.25, full.GetTime());
}

TEST(LxTimer, SetTimeClampsJumpsToOneSecond)
{
    ManualTimeSource source;
    LxClock clock(&source);
    LxTimer timer(clock);
    // (set, absolute?) -> (time, frame duration, previous time)
    const struct
    {
        double value;
        bool relative;
        double time, duration, previous;
    } steps[] = {
        {2.0, false, 2.0, 1.0, 1.0},  // a jump never reports more than a second
        {7.0, false, 7.0, 1.0, 6.0},  // five seconds ahead
        {2.0, false, 2.0, -1.0, 3.0}, // and back
        {0.5, true, 2.5, 0.5, 2.0},
    };
    for (const auto& s : steps)
    {
        if (s.relative)
            timer.SetTimeRelative(s.value);
        else
            timer.SetTime(s.value);
        EXPECT_EQ(s.time, timer.GetTime()) << s.value;
        EXPECT_EQ(s.duration, timer.GetFrameDuration()) << s.value;
        EXPECT_EQ(s.previous, timer.GetPreviousTime()) << s.value;
    }

    // The comparison is in single precision: a step that rounds to exactly 1.0f is kept as it is.
    const double almostOne = 1.0 + 1e-9;
    ASSERT_EQ(1.0f, static_cast<float>(almostOne));
    timer.SetTimeRelative(almostOne);
    EXPECT_NEAR(almostOne, timer.GetFrameDuration(), 1e-12);
    EXPECT_GT(timer.GetFrameDuration(), 1.0) << "not clamped";
    timer.SetTimeRelative(1.0 + 1e-6);
    EXPECT_EQ(1.0, timer.GetFrameDuration());
}

TEST(LxTimer, OutlivesItsParentAndUnregisters)
{
    ManualTimeSource source;
    std::unique_ptr<LxTimer> orphan;
    {
        LxClock clock(&source);
        {
            LxTimer shortLived(clock);
            EXPECT_EQ(1u, clock.GetObserverCount());
        }
        EXPECT_EQ(0u, clock.GetObserverCount()) << "a timer unregisters when destroyed";
        orphan.reset(new LxTimer(clock));
    }
    EXPECT_EQ(nullptr, orphan->GetParent());
    orphan->SetTime(0.5); // must not touch the destroyed clock
}
