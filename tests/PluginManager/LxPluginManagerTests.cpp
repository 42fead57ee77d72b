#include "PluginManager/LxPluginManager.h"
#include "ScriptManager/LxMessageLog.h"
#include "ScriptManager/LxScriptManager.h"
#include "support/LxTestSupport.h"

#include "Common/LxFile.h"

extern "C"
{
#include <lua.h>
}

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace
{
using Strings = std::vector<std::string>;

#if defined(_WIN32)
const char* const kSuffix = ".dll";
#else
const char* const kSuffix = ".so";
#endif

const std::string kPluginDir = LX_TEST_PLUGIN_DIR;

// Whether the module file is mapped into the process now.
bool IsMapped(const std::string& name)
{
#if defined(_WIN32)
    return GetModuleHandleA((name + kSuffix).c_str()) != nullptr;
#else
    std::ifstream maps("/proc/self/maps");
    const std::string file = "/" + name + kSuffix;
    for (std::string line; std::getline(maps, line);)
        if (line.size() >= file.size() && line.compare(line.size() - file.size(), file.size(), file) == 0)
            return true;
    return false;
#endif
}

class PluginManagerTest : public ::testing::Test
{
protected:
    void SetUp() override { m_pm.AddSearchPath(kPluginDir.c_str()); }
    void TearDown() override
    {
        LxPluginManager::ShutDown();
        LxScriptManager::ShutDown();
    }
    double Number(const char* name) { return m_sm.GetFloatVariable(name, 0.0f); }

    LxTest::MessageLog m_log;
    LxScriptManager& m_sm = LxScriptManager::GetRef();
    LxPluginManager& m_pm = LxPluginManager::GetRef();
};

TEST_F(PluginManagerTest, LoadsOnceAndSharesTheScriptState)
{
    const std::string accessLog = LxTest::MakeTempDir("access") + "/access.txt";
    LxFile::EnableFileAccessLogging(accessLog.c_str());
    LxPlugin* plugin = m_pm.LoadPlugin("LxTestPlugin_good");
    LxFile::CloseFileAccessLog();
    ASSERT_NE(nullptr, plugin);
    EXPECT_TRUE(IsMapped("LxTestPlugin_good"));
    const std::string path = kPluginDir + "/LxTestPlugin_good" + kSuffix;
    std::string logged = LxTest::ReadBytes(accessLog);
    logged.erase(std::remove(logged.begin(), logged.end(), '\r'), logged.end()); // a text file on Windows
    EXPECT_EQ("DLL " + path + "\n", logged);

    EXPECT_EQ(plugin, m_pm.LoadPlugin("LxTestPlugin_good"));
    EXPECT_EQ(plugin, m_pm.LoadPlugin("LxTestPlugin_good"));
    EXPECT_EQ(plugin, m_pm.FindPlugin("LxTestPlugin_good"));
    EXPECT_EQ(1u, m_pm.GetPluginCount());
    const std::string again = "Plugin: 'LxTestPlugin_good' already loaded.  Returning existing plugin interface...";
    EXPECT_EQ((Strings{again, again}), m_log.Messages());

    // A function the plug-in registered, called by a script, on the one Lua of the process.
    EXPECT_TRUE(m_sm.ExecuteCode("sum = PluginAdd(2, 3.5)"));
    EXPECT_EQ(5.5, Number("sum"));
    EXPECT_FALSE(m_sm.ExecuteCode("PluginAdd('x')"));
#if !defined(_WIN32)
    // Natively both sides resolve the Lua API to the shared library; on Windows each module calls through its own
    // import thunk, and the build checks the plug-in's imports instead (PluginManager.LuaFromTheLibrary).
    ASSERT_TRUE(m_sm.ExecuteCode("api = PluginLuaApi()"));
    LxString type;
    EXPECT_EQ(reinterpret_cast<void*>(&lua_gettop), m_sm.GetUserDataVariable("api", type));
#endif

    m_pm.UnloadPlugin(plugin);
    EXPECT_FALSE(IsMapped("LxTestPlugin_good"));
    EXPECT_EQ(0u, m_pm.GetPluginCount());
    EXPECT_EQ(1.0, Number("PluginShutdowns"));
    EXPECT_EQ(1.0, Number("PluginsDestroyed"));
    EXPECT_FALSE(m_sm.ExecuteCode("PluginAdd(1, 2)"));
    bool found = true;
    m_sm.GetStringVariable("PluginAdd", "", &found);
    EXPECT_FALSE(found);

    m_pm.UnloadPlugin(plugin);
    EXPECT_EQ("LxPluginManager::UnloadPlugin.  The plugin is not loaded", m_log.Messages(LX_LOG_WARNING).back());
}

TEST_F(PluginManagerTest, FailuresUnloadTheModuleAndRegisterNothing)
{
    const std::string junkDir = LxTest::MakeTempDir("junk");
    LxTest::WriteBytes(junkDir + "/LxTestPlugin_corrupt" + kSuffix, "this is no module");
    m_pm.AddSearchPath(junkDir.c_str());

    struct Case
    {
        const char* name;
        std::string message;
    } cases[] = {
        {"LxTestPlugin_nofactory",
         "Couldn't find plugin creation function in plugin DLL: " + kPluginDir + "/LxTestPlugin_nofactory" + kSuffix},
        {"LxTestPlugin_nullfactory",
         "Plugin creation failed in plugin DLL: " + kPluginDir + "/LxTestPlugin_nullfactory" + kSuffix},
        {"LxTestPlugin_initgated",
         "Plugin Initialization failed in plugin DLL: " + kPluginDir + "/LxTestPlugin_initgated" + kSuffix},
        {"LxTestPlugin_corrupt", "Couldn't open plugin DLL: " + junkDir + "/LxTestPlugin_corrupt" + kSuffix},
        {"LxTestPlugin_absent", "Couldn't locate DLL for plugin: 'LxTestPlugin_absent'  Make sure that the plugin "
                                "search path is set up correctly."},
    };
    for (const Case& c : cases)
    {
        m_log.Clear();
        EXPECT_EQ(nullptr, m_pm.LoadPlugin(c.name)) << c.name;
        EXPECT_EQ(Strings{c.message}, m_log.Errors()) << c.name;
        EXPECT_FALSE(IsMapped(c.name)) << c.name;
        EXPECT_EQ(nullptr, m_pm.FindPlugin(c.name)) << c.name;
    }
    EXPECT_EQ(0u, m_pm.GetPluginCount());
    // The failed initialisation deleted its object while the code was still there.
    EXPECT_EQ(1.0, Number("PluginsDestroyed"));
    EXPECT_EQ(0.0, Number("PluginShutdowns"));
}

// A failed initialisation leaves nothing behind, so a retry loads the module afresh; shutting the manager down
// then unloads every plug-in.
TEST_F(PluginManagerTest, RetryAfterFailedInitialisationAndShutDownUnloadsEveryPlugin)
{
    EXPECT_EQ(nullptr, m_pm.LoadPlugin("LxTestPlugin_initgated"));
    EXPECT_FALSE(IsMapped("LxTestPlugin_initgated"));
    ASSERT_TRUE(m_sm.SetBoolVariable("AllowInit", true));
    LxPlugin* plugin = m_pm.LoadPlugin("LxTestPlugin_initgated");
    ASSERT_NE(nullptr, plugin);
    EXPECT_EQ(2.0, Number("InitAttempts"));
    EXPECT_TRUE(IsMapped("LxTestPlugin_initgated"));
    EXPECT_EQ(plugin, m_pm.FindPlugin("LxTestPlugin_initgated"));

    m_log.Clear();
    ASSERT_NE(nullptr, m_pm.LoadPlugin("LxTestPlugin_good"));
    EXPECT_EQ(2u, m_pm.GetPluginCount());
    LxPluginManager::ShutDown();
    EXPECT_FALSE(IsMapped("LxTestPlugin_good"));
    EXPECT_FALSE(IsMapped("LxTestPlugin_initgated"));
    EXPECT_EQ(2.0, Number("PluginShutdowns"));
    EXPECT_EQ(3.0, Number("PluginsDestroyed")); // the refused object of the first attempt, then both plug-ins
    EXPECT_TRUE(m_log.Errors().empty());
}

TEST_F(PluginManagerTest, BaseClassRefusesPlugins)
{
    struct Bare : LxPluginManager
    {
    } bare;
    bare.AddSearchPath(kPluginDir.c_str());
    EXPECT_EQ(nullptr, bare.LoadPlugin("LxTestPlugin_good"));
    EXPECT_EQ(Strings{"Plugin support is not implemented on this platform!"}, m_log.Errors());
    EXPECT_FALSE(IsMapped("LxTestPlugin_good"));
}
} // namespace
