// The test plug-ins, one module per LX_TEST_PLUGIN_KIND:
//   GOOD          registers PluginAdd and PluginLuaApi, counts Shutdown calls, removes its functions again;
//   NO_FACTORY    exports no "LxPluginCreate";
//   NULL_FACTORY  its factory returns null;
//   INIT_GATED    as GOOD, but initialisation fails unless the script global AllowInit is true (it counts
//                 attempts).
// They use only the Lua API and the header-only plug-in interface, as a plug-in built elsewhere would.
#include "PluginManager/LxPlugin.h"

extern "C"
{
#include <lauxlib.h>
#include <lua.h>
}

#define GOOD 1
#define NO_FACTORY 2
#define NULL_FACTORY 3
#define INIT_GATED 4

namespace
{
int Add(lua_State* L)
{
    lua_pushnumber(L, luaL_checknumber(L, 1) + luaL_checknumber(L, 2));
    return 1;
}

// The address of the Lua API as this module sees it: equal to the host's when both call one copy.
int LuaApi(lua_State* L)
{
    lua_pushlightuserdata(L, reinterpret_cast<void*>(&lua_gettop));
    return 1;
}

void Count(lua_State* L, const char* global)
{
    lua_getglobal(L, global);
    const lua_Number n = lua_isnumber(L, -1) ? lua_tonumber(L, -1) : 0;
    lua_pop(L, 1);
    lua_pushnumber(L, n + 1);
    lua_setglobal(L, global);
}

class TestPlugin : public LxPlugin
{
public:
    ~TestPlugin() override
    {
        if (m_pState)
            Count(m_pState, "PluginsDestroyed");
    }

    bool Initialize(lua_State* state) override
    {
        m_pState = state;
        if (!state)
            return false;
#if LX_TEST_PLUGIN_KIND == INIT_GATED
        Count(state, "InitAttempts");
        lua_getglobal(state, "AllowInit");
        const bool allowed = lua_toboolean(state, -1) != 0;
        lua_pop(state, 1);
        if (!allowed)
            return false;
#endif
        lua_register(state, "PluginAdd", &Add);
        lua_register(state, "PluginLuaApi", &LuaApi);
        return true;
    }

    void Shutdown() override
    {
        // The functions' code goes away with the module: scripts must not find them any more.
        lua_pushnil(m_pState);
        lua_setglobal(m_pState, "PluginAdd");
        lua_pushnil(m_pState);
        lua_setglobal(m_pState, "PluginLuaApi");
        Count(m_pState, "PluginShutdowns");
    }

private:
    lua_State* m_pState = nullptr;
};
} // namespace

#if LX_TEST_PLUGIN_KIND == NO_FACTORY
LX_PLUGIN_EXPORT LxPlugin* LxPluginMake()
{
    return new TestPlugin();
}
#elif LX_TEST_PLUGIN_KIND == NULL_FACTORY
LX_PLUGIN_EXPORT LxPlugin* LxPluginCreate()
{
    return nullptr;
}
#else
LX_PLUGIN_EXPORT LxPlugin* LxPluginCreate()
{
    return new TestPlugin();
}
#endif
