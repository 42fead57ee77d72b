// LxPlugin: the interface of an extension module. A plug-in library exports
//     extern "C" LxPlugin* LxPluginCreate();
// which returns a new plug-in object (null on failure). The plug-in manager then calls Initialize with the script
// manager's Lua state (register script functions there; false fails the load), and on unloading calls Shutdown,
// deletes the object (its virtual destructor runs the plug-in's own code and operator delete) and only then
// unmaps the module.
//
// The interface is header-only, so a plug-in needs no library symbols to implement it. Plug-ins that use the Lua
// API must call the application's copy of Lua: the shared liblua5.1 on Linux, the Lua exported by
// LumexCoreD3D12.dll on Windows (README.md, "Building a plug-in"). Slot order (fixed for binary compatibility):
// destructor, Initialize, Shutdown.
#pragma once

struct lua_State;

class LxPlugin
{
public:
    virtual ~LxPlugin() {}
    // Called once, right after creation; `state` may be null when the script manager has no state.
    virtual bool Initialize(lua_State* state) = 0;
    // Called once before the object is deleted by UnloadPlugin or the manager's ShutDown (not after a failed
    // Initialize).
    virtual void Shutdown() {}
};

// The factory's type and exported name.
typedef LxPlugin* (*LxPluginCreateFunction)();
#define LX_PLUGIN_CREATE_NAME "LxPluginCreate"

#if defined(_WIN32)
#define LX_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define LX_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif
