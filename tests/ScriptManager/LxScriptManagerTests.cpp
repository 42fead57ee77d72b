#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectParser.h"
#include "EffectManager/LxTextureSlot.h"
#include "ScriptManager/LxMessageLog.h"
#include "ScriptManager/LxScriptManager.h"
#include "support/LxTestSupport.h"

extern "C"
{
#include <lauxlib.h>
#include <lua.h>
}

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace
{
using Strings = std::vector<std::string>;

// Each test gets a fresh state; a value is left on the stack before every operation, so "the stack is as it was"
// means more than "the stack is empty".
class ScriptManagerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_sm = LxScriptManager::GetPtr();
        lua_pushinteger(L(), 1234);
        m_nTop = lua_gettop(L());
    }
    void TearDown() override { LxScriptManager::ShutDown(); }

    lua_State* L() const { return m_sm->GetLuaState(); }
    void ExpectStackKept() const
    {
        ASSERT_EQ(m_nTop, lua_gettop(L()));
        EXPECT_EQ(1234, lua_tointeger(L(), -1));
    }
    bool Run(const char* code) { return m_sm->ExecuteCode(code); }
    double Number(const char* name)
    {
        bool found = false;
        const double value = m_sm->GetFloatVariable(name, -1.0f, &found);
        EXPECT_TRUE(found) << name;
        return value;
    }

    LxScriptManager* m_sm = nullptr;
    int m_nTop = 0;
    LxTest::MessageLog m_log;
};

TEST_F(ScriptManagerTest, FailuresLogLuaTextAndKeepTheStack)
{
    struct Case
    {
        const char* code;
        const char* message;
    } cases[] = {
        {"x = = 1", "Syntax error while executing command:\n[string \"ExecuteCode\"]:1: unexpected symbol near '='"},
        {"local a = 1\nerror('boom')", "Runtime error while executing command:\n[string \"ExecuteCode\"]:2: boom"},
        {"error({})", "Runtime error while executing command:\n(error object is not a string)"},
        {"if x then", "Syntax error while executing command:\n[string \"ExecuteCode\"]:1: 'end' expected near "
                      "'<eof>'"},
    };
    for (const Case& c : cases)
    {
        m_log.Clear();
        EXPECT_FALSE(Run(c.code)) << c.code;
        EXPECT_EQ(Strings{c.message}, m_log.Errors()) << c.code;
        ExpectStackKept();
    }
    EXPECT_TRUE(Run("ok = 1"));
    EXPECT_EQ(1.0, Number("ok"));
}

TEST_F(ScriptManagerTest, OutOfMemoryFailsTheCallAndKeepsTheStack)
{
    ASSERT_TRUE(Run("function grow() local t = {} for i = 1, 1e5 do t[i] = i end end"));
    m_sm->SetMemoryLimit(m_sm->GetMemoryUsage() + 64 * 1024);
    const std::string bigLiteral = "s = '" + std::string(256 * 1024, 'a') + "'";
    struct Case
    {
        std::string code;
        bool call;
        const char* message;
    } cases[] = {
        {"grow()", false, "Out of memory while calling command!"},
        {bigLiteral, false, "Out of memory while executing command"},
        {"grow", true, "Out of memory while calling function!"},
    };
    for (const Case& c : cases)
    {
        m_log.Clear();
        if (c.call)
            EXPECT_FALSE(m_sm->CallFunction(c.code.c_str(), nullptr, ""));
        else
            EXPECT_FALSE(Run(c.code.c_str()));
        EXPECT_EQ(Strings{c.message}, m_log.Errors());
        ExpectStackKept();
    }
    m_sm->SetMemoryLimit(0);
    m_sm->CollectGarbage();
    EXPECT_TRUE(Run("grow() done = 1"));
    EXPECT_EQ(1.0, Number("done"));
}

TEST_F(ScriptManagerTest, EnvironmentMustBeATable)
{
    ASSERT_TRUE(Run("num = 5 Env = {}"));
    const LxString num("num"), env("Env"), missing("Nowhere.deeper");
    EXPECT_FALSE(m_sm->ExecuteCode("ran = true", &num));
    EXPECT_FALSE(m_sm->ExecuteCode("ran = true", &missing));
    EXPECT_EQ((Strings{"Trying to use num as a function environment, but it is not a table",
                       "Trying to use Nowhere.deeper as a function environment, but it is not a table"}),
              m_log.Errors());
    bool found = true;
    m_sm->GetBoolVariable("ran", false, &found);
    EXPECT_FALSE(found);

    // Inside a table environment, globals are out of sight and assignments stay in the table.
    EXPECT_TRUE(m_sm->ExecuteCode("y = 3 sawNum = num", &env));
    EXPECT_EQ(3.0, Number("Env.y"));
    m_sm->GetFloatVariable("y", 0.0f, &found);
    EXPECT_FALSE(found);
    m_sm->GetFloatVariable("Env.sawNum", 0.0f, &found);
    EXPECT_FALSE(found);
    ExpectStackKept();
}

TEST_F(ScriptManagerTest, CommandsRunInTheDrawScriptEnvironmentAndSeeGlobals)
{
    ASSERT_TRUE(Run("Global = 7"));
    EXPECT_TRUE(m_sm->ExecuteCommand("mips = Global + 1"));
    EXPECT_EQ(8.0, Number("DrawScriptEnv.mips"));
    bool found = true;
    m_sm->GetFloatVariable("mips", 0.0f, &found);
    EXPECT_FALSE(found);
    EXPECT_FALSE(m_sm->ExecuteCommand("error('draw')"));
    EXPECT_EQ(Strings{"Runtime error while executing command:\n[string \"ExecuteDrawScript\"]:1: draw"},
              m_log.Errors());

    // The manager is the effect system's source of script variables while it lives.
    LxScriptVariableSource* source = LxScriptVariableSource::GetGlobal();
    ASSERT_EQ(static_cast<LxScriptVariableSource*>(m_sm), source);
    double value = 0.0;
    EXPECT_TRUE(source->GetNumber("DrawScriptEnv.mips", value));
    EXPECT_EQ(8.0, value);
    ASSERT_TRUE(m_sm->SetVariable("DrawScriptEnv.name", "text"));
    EXPECT_FALSE(source->GetNumber("DrawScriptEnv.name", value));
    EXPECT_FALSE(source->GetNumber("DrawScriptEnv.none", value));
    ExpectStackKept();
    LxScriptManager::ShutDown();
    EXPECT_EQ(nullptr, LxScriptVariableSource::GetGlobal());
}

TEST_F(ScriptManagerTest, EffectViewParametersReadDrawScriptVariables)
{
    const LxString text("Texture2D t < ViewParams = < MipLevels = < ScriptVariable = \"mips\" > > >\n");
    LxEffectBuilder builder;
    LxEffectParser parser;
    parser.Init("script.fx", text, &builder);
    std::unique_ptr<LxEffect> fx(parser.Parse());
    ASSERT_TRUE(fx);
    LxSlotViewParams params;
    ASSERT_TRUE(m_sm->ExecuteCommand("mips = 3"));
    EXPECT_TRUE(fx->GetTextureSlot("t")->ReadViewParams(&params));
    EXPECT_EQ(3u, params.values[LxSlotViewParams::MIP_LEVELS]);
    for (const char* command : {"mips = 'three'", "mips = nil"})
    {
        LxLogManager::ResetLumexErrorLog();
        m_log.Clear();
        ASSERT_TRUE(m_sm->ExecuteCommand(command));
        EXPECT_FALSE(fx->GetTextureSlot("t")->ReadViewParams(&params)) << command;
        EXPECT_EQ(Strings{"Script variable named: DrawScriptEnv.mips does not exist, or does not refer to a number"},
                  m_log.Errors());
    }
    ExpectStackKept();
}

TEST_F(ScriptManagerTest, VariablesByTablePath)
{
    EXPECT_TRUE(m_sm->SetVariable("Settings.fog.mode", "linear"));
    EXPECT_TRUE(m_sm->SetFloatVariable("Settings.fog.density", 0.25f));
    EXPECT_TRUE(m_sm->SetBoolVariable("Settings.vsync", true));
    EXPECT_TRUE(Run("Settings.count = 12 Settings.fn = print"));

    struct Case
    {
        const char* name;
        bool isBool, isNumber, isString;
        const char* text;
    } cases[] = {
        {"Settings.fog.mode", false, false, true, "linear"},
        {"Settings.fog.density", false, true, true, "0.25"},
        {"Settings.vsync", true, false, false, ""},
        {"Settings.count", false, true, true, "12"},
        {"Settings.fn", false, false, false, ""},
        {"Settings.fog", false, false, false, ""},
        {"Settings.missing.deeper", false, false, false, ""},
        {"Settings.fog.mode.length", false, false, false, ""},
        {"", false, false, false, ""},
        {"Settings..vsync", false, false, false, ""},
        {".Settings", false, false, false, ""},
        {"Settings.", false, false, false, ""},
    };
    for (const Case& c : cases)
    {
        bool found = !c.isBool;
        EXPECT_EQ(c.isBool, m_sm->GetBoolVariable(c.name, false, &found)) << c.name;
        EXPECT_EQ(c.isBool, found) << c.name;
        found = !c.isNumber;
        m_sm->GetFloatVariable(c.name, -1.0f, &found);
        EXPECT_EQ(c.isNumber, found) << c.name;
        found = !c.isString;
        const LxString text = m_sm->GetStringVariable(c.name, "default", &found);
        EXPECT_EQ(c.isString, found) << c.name;
        EXPECT_STREQ(c.isString ? c.text : "default", text.c_str()) << c.name;
    }
    EXPECT_EQ(0.25f, m_sm->GetFloatVariable("Settings.fog.density", 0.0f));
    EXPECT_TRUE(m_log.Errors().empty());

    // A part of the path that exists but is no table blocks a setter; names that are no paths fail too.
    EXPECT_FALSE(m_sm->SetVariable("Settings.fog.mode.sub", "x"));
    EXPECT_FALSE(m_sm->SetBoolVariable("a..b", true));
    EXPECT_EQ((Strings{"LxScriptManager::SetVariable.  Cannot set 'Settings.fog.mode.sub': a part of its path is not "
                       "a table",
                       "LxScriptManager::SetVariable.  'a..b' is not a valid variable name"}),
              m_log.Errors());
    EXPECT_STREQ("linear", m_sm->GetStringVariable("Settings.fog.mode", "").c_str());
    ExpectStackKept();
}

TEST_F(ScriptManagerTest, MetamethodErrorsAreReportedNotRaised)
{
    ASSERT_TRUE(Run("Trap = setmetatable({}, {__index = function() error('no read') end,"
                    "                         __newindex = function() error('no write') end})"));
    bool found = true;
    EXPECT_EQ(2.0f, m_sm->GetFloatVariable("Trap.x", 2.0f, &found));
    EXPECT_FALSE(found);
    EXPECT_FALSE(m_sm->SetVariable("Trap.x", "v"));
    EXPECT_EQ((Strings{"LxScriptManager.  Error while reading 'Trap.x':\n[string \"ExecuteCode\"]:1: no read",
                       "LxScriptManager::SetVariable.  Error while setting 'Trap.x':\n[string \"ExecuteCode\"]:1: "
                       "no write"}),
              m_log.Errors());
    ExpectStackKept();
}

TEST_F(ScriptManagerTest, CallFunctionPassesTypedUserDataAndReturnsText)
{
    ASSERT_TRUE(Run("function keep(a, b) first = a second = b return 42 end\n"
                    "function same(a, b) return a == b end\n"
                    "function nothing() end\n"
                    "function fail(a) error('bad ' .. type(a)) end\n"
                    "Lib = { name = function() return 'lib' end }"));
    int widget = 0, gadget = 0;
    EXPECT_TRUE(m_sm->CallFunction("keep", &widget, &gadget, "Widget", ""));
    LxString type("unchanged");
    EXPECT_EQ(&widget, m_sm->GetUserDataVariable("first", type));
    EXPECT_STREQ("Widget", type.c_str());
    EXPECT_EQ(&gadget, m_sm->GetUserDataVariable("second", type));
    EXPECT_STREQ("", type.c_str());
    type = "unchanged";
    EXPECT_EQ(nullptr, m_sm->GetUserDataVariable("Lib", type));
    EXPECT_STREQ("unchanged", type.c_str());

    struct Case
    {
        const char* name;
        bool ok;
        const char* result; // null: the slot stays empty
    } cases[] = {
        {"keep", true, "42"},      {"same", true, "false"},  {"nothing", true, nullptr},
        {"Lib.name", true, "lib"}, {"fail", false, nullptr}, {"missing", false, nullptr},
    };
    for (const Case& c : cases)
    {
        EXPECT_EQ(c.ok, m_sm->CallFunction(c.name, &widget, "Widget")) << c.name;
        LxString result("none");
        EXPECT_EQ(c.result != nullptr, m_sm->GetReturn(result)) << c.name;
        EXPECT_STREQ(c.result ? c.result : "none", result.c_str()) << c.name;
        ExpectStackKept();
    }
    EXPECT_EQ((Strings{"Runtime error while calling function \"fail\"\n[string \"ExecuteCode\"]:4: bad userdata\n",
                       "LxScriptManager::CallFunction.  'missing' is not a function"}),
              m_log.Errors());

    // The same type name gives the same metatable: scripts can compare and extend types.
    ASSERT_TRUE(m_sm->SetVariable("w1", &widget, "Widget"));
    ASSERT_TRUE(m_sm->SetVariable("w2", &gadget, "Widget"));
    ASSERT_TRUE(Run("sameType = getmetatable(w1) == getmetatable(w2)"));
    EXPECT_TRUE(m_sm->GetBoolVariable("sameType", false));
}

TEST_F(ScriptManagerTest, ScriptsAndLibrariesReloadIntoAFreshState)
{
    const std::string dir = LxTest::MakeTempDir("scripts");
    const std::string other = LxTest::MakeTempDir("other");
    LxTest::WriteBytes(dir + "/init.lua", "loads = (loads or 0) + 1\nfunction hello() return 'hi' end\n");
    LxTest::WriteBytes(other + "/init.lua", "shadowed = true\n");
    LxTest::WriteBytes(dir + "/broken.lua", "x = = 2\n");
    m_sm->AddIncludeDirectory(dir.c_str());
    m_sm->AddIncludeDirectory(other.c_str());

    struct Lib
    {
        static int Open(lua_State* L)
        {
            lua_pushnumber(L, 99);
            lua_setglobal(L, "fromLibrary");
            return 0;
        }
        static int Fail(lua_State* L) { return luaL_error(L, "cannot open"); }
    };
    EXPECT_TRUE(m_sm->RegisterLibrary(&Lib::Open));
    EXPECT_TRUE(m_sm->LoadScript("init.lua"));
    EXPECT_FALSE(m_sm->LoadScript("broken.lua"));
    EXPECT_FALSE(m_sm->LoadScript("absent.lua"));
    // Lua names the file (shortened to its tail when long) in its message.
    const Strings errors = m_log.Errors();
    ASSERT_EQ(2u, errors.size());
    EXPECT_EQ(0u, errors[0].find("Syntax error while executing command:\n"));
    EXPECT_NE(std::string::npos, errors[0].find("broken.lua:1: unexpected symbol near '='"));
    EXPECT_EQ("LxScriptManager::LoadScript.  Couldn't find script file: 'absent.lua'", errors[1]);
    bool found = true;
    m_sm->GetBoolVariable("shadowed", false, &found);
    EXPECT_FALSE(found);
    EXPECT_TRUE(Run("loads = 10 stale = 1"));

    // The reload runs the library and init.lua again; broken.lua stays remembered and fails again.
    m_log.Clear();
    LxLogManager::ResetLumexErrorLog();
    EXPECT_FALSE(m_sm->ReloadAllScripts());
    EXPECT_EQ(1u, m_log.Errors().size());
    EXPECT_EQ(1.0, Number("loads"));
    EXPECT_EQ(99.0, Number("fromLibrary"));
    m_sm->GetFloatVariable("stale", 0.0f, &found);
    EXPECT_FALSE(found);
    EXPECT_TRUE(m_sm->CallFunction("hello", nullptr, ""));
    LxString result;
    EXPECT_TRUE(m_sm->GetReturn(result));
    EXPECT_STREQ("hi", result.c_str());

    LxTest::WriteBytes(dir + "/broken.lua", "fixed = true\n");
    EXPECT_TRUE(m_sm->UnregisterLibrary(&Lib::Open));
    EXPECT_FALSE(m_sm->UnregisterLibrary(&Lib::Open));
    EXPECT_TRUE(m_sm->ReloadAllScripts());
    EXPECT_TRUE(m_sm->GetBoolVariable("fixed", false));
    m_sm->GetFloatVariable("fromLibrary", 0.0f, &found);
    EXPECT_FALSE(found);

    // An opener that fails, or none at all, is reported, on the fresh state with a fresh sentinel.
    lua_pushinteger(L(), 1234);
    m_log.Clear();
    EXPECT_FALSE(m_sm->RegisterLibrary(&Lib::Fail));
    EXPECT_FALSE(m_sm->RegisterLibrary(nullptr));
    EXPECT_EQ((Strings{"LxScriptManager::RegisterLibrary.  cannot open",
                       "LxScriptManager::RegisterLibrary.  No opener given"}),
              m_log.Errors());
    ExpectStackKept();
}

TEST_F(ScriptManagerTest, GarbageCollectionControl)
{
    const char* churn = "function churn() for i = 1, 20000 do local t = {i} end end churn()";
    m_sm->CollectGarbage();
    const size_t base = m_sm->GetMemoryUsage();
    m_sm->DisableGarbageCollection();
    ASSERT_TRUE(Run(churn));
    const size_t grown = m_sm->GetMemoryUsage();
    EXPECT_GT(grown, base + 20000 * 32);
    m_sm->CollectGarbage();
    EXPECT_LT(m_sm->GetMemoryUsage(), base + 4096);
    // Stopped collection stays stopped across a reload until it is enabled again.
    EXPECT_TRUE(m_sm->ReloadAllScripts());
    ASSERT_TRUE(Run(churn));
    EXPECT_GT(m_sm->GetMemoryUsage(), base + 20000 * 32);
    m_sm->EnableGarbageCollection();
    m_sm->CollectGarbage();
    ASSERT_TRUE(Run(churn));
    EXPECT_LT(m_sm->GetMemoryUsage(), base + 20000 * 32);
}

// --- message queue --------------------------------------------------------------------------------------------

TEST_F(ScriptManagerTest, MessagesAreTrimmedAndPacedPerFrame)
{
    struct Case
    {
        unsigned int perFrame;
        std::vector<unsigned int> leftAfterEachFrame;
    } cases[] = {
        {2, {3, 1, 0, 0}},
        {0, {5, 5, 5}},
        {LxScriptManager::DEFAULT_MSG_PER_FRAME, {0}},
    };
    for (const Case& c : cases)
    {
        m_sm->ClearQueue();
        m_sm->SetNumMsgPerFrame(c.perFrame);
        ASSERT_TRUE(Run("n = 0"));
        for (int i = 0; i < 5; ++i)
        {
            LxString message("n = n + 1");
            m_sm->AddMessage(message);
        }
        for (unsigned int left : c.leftAfterEachFrame)
        {
            m_sm->ProcessMessages();
            EXPECT_EQ(left, m_sm->GetQueuedMessageCount()) << c.perFrame;
            EXPECT_EQ(5.0 - left, Number("n")) << c.perFrame;
        }
    }
    EXPECT_TRUE(m_sm->ClearQueue());
    EXPECT_EQ(0u, m_sm->GetQueuedMessageCount());

    // A message is trimmed in the caller's string; a blank one is refused.
    LxString message("   \tn = (n or 0) + 1");
    EXPECT_TRUE(m_sm->AddMessage(message));
    EXPECT_STREQ("n = (n or 0) + 1", message.c_str());
    LxString blank(" \t\r\n ");
    EXPECT_FALSE(m_sm->AddMessage(blank));
    EXPECT_EQ(1u, m_sm->GetQueuedMessageCount());
    m_sm->ProcessMessages();
    EXPECT_EQ(6.0, Number("n"));
}

TEST_F(ScriptManagerTest, QueriesAnswerThroughTheReturnSlot)
{
    ASSERT_TRUE(m_sm->ExecuteCommand("name = 'demo' flag = true num = 2.5 big = 1e20"));
    ASSERT_TRUE(Run("globalOnly = 3"));
    struct Case
    {
        const char* query;
        const char* answer;
    } cases[] = {
        {"#sgetstring name", "demo"},
        {"#sgetstring num", "2.5"},
        {"#sgetstring flag", "#UNKNOWN"},
        {"#sgetbool flag", "true"},
        {"#sgetbool name", "#UNKNOWN"},
        {"#sgetnum num", "2.5"},
        {"#sgetnum big", "1e+20"},
        {"#sgetnum globalOnly", "3"},
        {"#sgetnum missing", "#UNKNOWN"},
        {"#sgetnum", "#ERROR"},
        {"#", "#ERROR"},
        {"#sgetfloat num", "#ERROR"},
        {"#sgetnum   num  extra", "2.5"},
    };
    for (const Case& c : cases)
    {
        LxString message(c.query);
        ASSERT_TRUE(m_sm->AddMessage(message));
        m_sm->ProcessMessages();
        LxString answer;
        EXPECT_TRUE(m_sm->GetReturn(answer)) << c.query;
        EXPECT_STREQ(c.answer, answer.c_str()) << c.query;
        EXPECT_FALSE(m_sm->GetReturn(answer)) << c.query;
        EXPECT_STREQ(c.answer, answer.c_str()) << "an empty slot leaves the output alone";
    }
    EXPECT_TRUE(m_log.Errors().empty());
    ExpectStackKept();
}

TEST_F(ScriptManagerTest, QueryWaitsWhileTheReturnSlotIsFull)
{
    ASSERT_TRUE(m_sm->ExecuteCommand("num = 2.5 flag = false"));
    for (const char* text : {"#sgetnum num", "#sgetbool flag", "after = 1", "#sgetnum after"})
    {
        LxString message(text);
        m_sm->AddMessage(message);
    }
    // The first query fills the slot; the second waits at the head and holds back what follows it.
    m_sm->ProcessMessages();
    EXPECT_EQ(3u, m_sm->GetQueuedMessageCount());
    m_sm->ProcessMessages();
    EXPECT_EQ(3u, m_sm->GetQueuedMessageCount());
    LxString answer;
    ASSERT_TRUE(m_sm->GetReturn(answer));
    EXPECT_STREQ("2.5", answer.c_str());
    m_sm->ProcessMessages();
    EXPECT_EQ(1u, m_sm->GetQueuedMessageCount());
    EXPECT_EQ(1.0, Number("after"));
    ASSERT_TRUE(m_sm->GetReturn(answer));
    EXPECT_STREQ("false", answer.c_str());
    m_sm->ProcessMessages();
    ASSERT_TRUE(m_sm->GetReturn(answer));
    EXPECT_STREQ("1", answer.c_str());

    // A function result occupies the same slot.
    ASSERT_TRUE(Run("function answer() return 'from call' end"));
    ASSERT_TRUE(m_sm->CallFunction("answer", nullptr, ""));
    LxString message("#sgetnum num");
    m_sm->AddMessage(message);
    m_sm->ProcessMessages();
    ASSERT_TRUE(m_sm->GetReturn(answer));
    EXPECT_STREQ("from call", answer.c_str());
    m_sm->ProcessMessages();
    ASSERT_TRUE(m_sm->GetReturn(answer));
    EXPECT_STREQ("2.5", answer.c_str());
}

TEST_F(ScriptManagerTest, TwoProducersWhileTheMainThreadProcesses)
{
    const int perProducer = 400;
    ASSERT_TRUE(Run("seen = { A = 0, B = 0 } disorder = 0 total = 0\n"
                    "function got(p, k) if seen[p] + 1 ~= k then disorder = disorder + 1 end\n"
                    "  seen[p] = k total = total + 1 end"));
    m_sm->SetNumMsgPerFrame(7);
    auto produce = [&](const char* producer)
    {
        for (int k = 1; k <= perProducer; ++k)
        {
            LxString message;
            message.Format("  got('%s', %d)", producer, k);
            m_sm->AddMessage(message);
        }
    };
    std::thread a(produce, "A"), b(produce, "B");
    int frames = 0;
    while (Number("total") < 2 * perProducer && frames < 1000000)
    {
        m_sm->ProcessMessages();
        ++frames;
        if (frames % 16 == 0)
            std::this_thread::yield();
    }
    a.join();
    b.join();
    m_sm->ProcessMessages();
    EXPECT_EQ(2.0 * perProducer, Number("total"));
    EXPECT_EQ(0.0, Number("disorder"));
    EXPECT_EQ(0u, m_sm->GetQueuedMessageCount());
    EXPECT_TRUE(m_log.Errors().empty());
}

TEST_F(ScriptManagerTest, ClearQueueAndGetReturnFromOtherThreads)
{
    ASSERT_TRUE(m_sm->ExecuteCommand("num = 4"));
    LxString answer;
    bool answered = false;
    std::thread client(
        [&]
        {
            LxString query("#sgetnum num");
            m_sm->AddMessage(query);
            // Polls the slot like a console would, while the main thread runs frames.
            for (int i = 0; i < 2000000 && !answered; ++i)
            {
                answered = m_sm->GetReturn(answer);
                if (!answered)
                    std::this_thread::yield();
            }
        });
    for (int i = 0; i < 200000 && m_sm->GetQueuedMessageCount() == 0; ++i)
        std::this_thread::yield();
    m_sm->ProcessMessages();
    client.join();
    EXPECT_TRUE(answered);
    EXPECT_STREQ("4", answer.c_str());

    std::thread filler(
        [&]
        {
            for (int i = 0; i < 100; ++i)
            {
                LxString message("x = 1");
                m_sm->AddMessage(message);
            }
            m_sm->ClearQueue();
        });
    filler.join();
    EXPECT_EQ(0u, m_sm->GetQueuedMessageCount());
}
} // namespace
