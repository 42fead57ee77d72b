// Script manager costs.
//  - Message queue: two producer threads queue short commands through AddMessage while the main thread runs
//    ProcessMessages frames (64 messages each) until every message has run; items are messages through the whole
//    path (trim, lock, queue, dequeue, compile and run).
//  - ExecuteCode against the baseline of the bare Lua calls it wraps (luaL_loadbuffer + lua_pcall + lua_settop) on
//    the same state and the same text: the difference is the manager's own per-call work.
#include "Common/LxLogManager.h"
#include "ScriptManager/LxScriptManager.h"

extern "C"
{
#include <lauxlib.h>
#include <lua.h>
}

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace
{
const char* const kCode = "counter = counter + 1";

LxScriptManager& Manager()
{
    static bool ready = false;
    if (!ready)
    {
        LxLogManager::Init(false, false, LxString());
        LxScriptManager::GetRef().ExecuteCode("counter = 0");
        ready = true;
    }
    return LxScriptManager::GetRef();
}

void BM_QueueTwoProducers(benchmark::State& state)
{
    LxScriptManager& sm = Manager();
    sm.SetNumMsgPerFrame(64);
    const int perProducer = 20000;
    for (auto _ : state)
    {
        std::atomic<int> running(2);
        auto produce = [&]
        {
            for (int i = 0; i < perProducer; ++i)
            {
                LxString message(" counter = counter + 1");
                sm.AddMessage(message);
            }
            --running;
        };
        std::thread a(produce), b(produce);
        while (running.load() > 0 || sm.GetQueuedMessageCount() > 0)
            sm.ProcessMessages();
        a.join();
        b.join();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * 2 * perProducer);
}
BENCHMARK(BM_QueueTwoProducers)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

void BM_ExecuteCode(benchmark::State& state)
{
    LxScriptManager& sm = Manager();
    const LxString code(kCode);
    for (auto _ : state)
        benchmark::DoNotOptimize(sm.ExecuteCode(code));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_ExecuteCode)->MinTime(2.0);

void BM_Baseline_LoadBufferPcall(benchmark::State& state)
{
    lua_State* L = Manager().GetLuaState();
    const size_t length = std::strlen(kCode);
    for (auto _ : state)
    {
        const int top = lua_gettop(L);
        bool ok = luaL_loadbuffer(L, kCode, length, "ExecuteCode") == 0 && lua_pcall(L, 0, 0, 0) == 0;
        lua_settop(L, top);
        benchmark::DoNotOptimize(ok);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
BENCHMARK(BM_Baseline_LoadBufferPcall)->MinTime(2.0);
} // namespace

BENCHMARK_MAIN();
