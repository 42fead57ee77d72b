#include "ScriptManager/LxMessageLog.h"
#include "ScriptManager/LxScriptManager.h"
#include "ScriptManager/LxScriptProfiler.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
using Strings = std::vector<std::string>;

class ScriptProfilerTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        LxScriptProfiler::ShutDown();
        LxScriptManager::ShutDown();
    }
    LxScriptManager& m_sm = LxScriptManager::GetRef();
    LxScriptProfiler& m_profiler = LxScriptProfiler::GetRef();
    LxTest::MessageLog m_log;
};

const LxCallGraphNode* Child(const LxCallGraphNode& node, const char* prefix)
{
    for (unsigned int i = 0; i < node.GetChildCount(); ++i)
        if (node.GetChild(i)->GetName().StartsWith(prefix))
            return node.GetChild(i);
    return nullptr;
}

unsigned long long Calls(const LxCallGraphNode* node, const char* prefix)
{
    const LxCallGraphNode* child = node ? Child(*node, prefix) : nullptr;
    return child ? child->GetCallCount() : 0;
}

TEST_F(ScriptProfilerTest, StartAndEndOutOfTurnAreReported)
{
    m_profiler.StartProfiling();
    m_profiler.StartProfiling();
    EXPECT_TRUE(m_profiler.IsProfiling());
    m_profiler.EndProfiling();
    m_profiler.EndProfiling();
    EXPECT_FALSE(m_profiler.IsProfiling());
    EXPECT_EQ((Strings{"Profiling started", "LxScriptProfiler::StartProfiling() called twice.", "Profiling stopped",
                       "LxScriptManager::EndProfiling() called when not profiling."}),
              m_log.Messages());
}

TEST_F(ScriptProfilerTest, CallGraphKeepsCallingContexts)
{
    ASSERT_TRUE(m_sm.ExecuteCode("function leaf() end\n"
                                 "function mid() leaf() leaf() end\n"
                                 "function top() mid() leaf() end"));
    m_profiler.StartProfiling();
    ASSERT_TRUE(m_sm.ExecuteCode("top() top()"));
    ASSERT_TRUE(m_sm.CallFunction("leaf", nullptr, ""));
    m_profiler.EndProfiling();
    ASSERT_TRUE(m_sm.ExecuteCode("top()")); // not recorded

    const LxCallGraphNode& root = m_profiler.GetRoot();
    const LxCallGraphNode* chunk = Child(root, "main chunk ([string \"ExecuteCode\"])");
    ASSERT_NE(nullptr, chunk);
    EXPECT_EQ(1u, chunk->GetCallCount());
    const LxCallGraphNode* top = Child(*chunk, "top ([string \"ExecuteCode\"]:3)");
    ASSERT_NE(nullptr, top);
    EXPECT_EQ(2u, top->GetCallCount());
    const LxCallGraphNode* mid = Child(*top, "mid (");
    ASSERT_NE(nullptr, mid);
    EXPECT_EQ(2u, mid->GetCallCount());
    EXPECT_EQ(4u, Calls(mid, "leaf ("));
    EXPECT_EQ(2u, Calls(top, "leaf ("));
    EXPECT_EQ(1u, Calls(&root, "leaf ([string \"ExecuteCode\"]:1)"));
    EXPECT_GE(top->GetTotalTime(), mid->GetTotalTime());
    EXPECT_GE(top->GetSelfTime(), 0.0);

    const std::string report = m_profiler.GetReport().c_str();
    EXPECT_EQ(0u, report.find("     calls     total ms      self ms  function\n"));
    EXPECT_NE(std::string::npos, report.find("  main chunk ([string \"ExecuteCode\"])\n"));
    EXPECT_NE(std::string::npos, report.find("    top ([string \"ExecuteCode\"]:3)\n"));
    EXPECT_NE(std::string::npos, report.find("      mid ([string \"ExecuteCode\"]:2)\n"));
}

TEST_F(ScriptProfilerTest, ErrorsAndReloadsDoNotUnbalanceTheGraph)
{
    ASSERT_TRUE(m_sm.ExecuteCode("function deep() error('x') end function outer() deep() end function ok() end"));
    m_profiler.StartProfiling();
    EXPECT_FALSE(m_sm.ExecuteCode("outer()"));
    // The error skipped the return events of outer, deep and the chunk: the next call starts at the root again.
    EXPECT_TRUE(m_sm.CallFunction("ok", nullptr, ""));
    EXPECT_NE(nullptr, Child(m_profiler.GetRoot(), "ok ("));

    // The hook follows the new state of a reload.
    EXPECT_TRUE(m_sm.ReloadAllScripts());
    EXPECT_TRUE(m_sm.ExecuteCode("function again() end again()"));
    const LxCallGraphNode* chunk = nullptr;
    for (unsigned int i = 0; i < m_profiler.GetRoot().GetChildCount(); ++i)
        if (Child(*m_profiler.GetRoot().GetChild(i), "again ("))
            chunk = m_profiler.GetRoot().GetChild(i);
    EXPECT_NE(nullptr, chunk);
    EXPECT_TRUE(m_profiler.IsProfiling());
    // Shutting the script manager down closes its state under the profiler.
    LxScriptManager::ShutDown();
    m_profiler.EndProfiling();
    EXPECT_FALSE(m_profiler.IsProfiling());
}
} // namespace
