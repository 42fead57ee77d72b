// LxPluginManager: loads extension modules by name, creates one LxPlugin from each through the exported factory
// "LxPluginCreate", initialises it with the script manager's Lua state, and keeps it under its name (exact text) so
// that a second LoadPlugin returns the same object. The registry owns the plug-ins and their modules.
//
// The platform layer (LxWin32PluginManager, LxPosixPluginManager) finds the module through the plug-in search
// path and maps, creates and initialises it; every failure is logged with the module path, leaves nothing mapped
// or registered, and returns null, so a later attempt starts afresh. The base class refuses both directions with
// "Plugin support is not implemented on this platform!".
//
// Threading: main thread only (plug-ins share the script manager's Lua state).
// Lifetime: GetPtr/GetRef create the platform's manager; ShutDown unloads every plug-in and destroys it.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxHashMap.h"
#include "Common/LxSearchPath.h"
#include "Common/LxString.h"
#include "PluginManager/LxPlugin.h"

class LX_API LxPluginManager
{
public:
    static LxPluginManager* GetPtr();
    static LxPluginManager& GetRef() { return *GetPtr(); }
    static void ShutDown();

    // Adds a folder (or zip file) to the plug-in search path.
    void AddSearchPath(const LxString& path);
    // The registered plug-in of that name, or a newly loaded one; null on failure.
    LxPlugin* LoadPlugin(const LxString& name);
    // Removes the plug-in from the registry, calls its Shutdown, deletes it, then unmaps its module.
    void UnloadPlugin(LxPlugin* plugin);
    void UnloadAllPlugins();
    unsigned int GetPluginCount() const { return m_plugins.GetCount(); }
    // The registered plug-in of that name, or null (loads nothing).
    LxPlugin* FindPlugin(const LxString& name) const;

    virtual ~LxPluginManager();
    LxPluginManager(const LxPluginManager&) = delete;
    LxPluginManager& operator=(const LxPluginManager&) = delete;

protected:
    LxPluginManager() = default;

    // The platform layer. LoadModule returns the initialised plug-in and its module handle, or null having
    // released everything; UnloadModule deletes the plug-in, then releases the module.
    virtual LxPlugin* LoadModule(const LxString& name, void** module);
    virtual void UnloadModule(LxPlugin* plugin, void* module);

    const LxSearchPath& GetSearchPath() const { return m_searchPath; }
    // For the platform layers: creates, initialises and on failure deletes the plug-in. `path` names the module
    // in the messages. Null when the factory or the initialisation failed (logged).
    static LxPlugin* CreatePlugin(LxPluginCreateFunction factory, const LxString& path);

private:
    // The manager of this platform (defined by the platform layer that is compiled in).
    static LxPluginManager* CreatePlatformManager();

    struct Entry
    {
        LxPlugin* plugin;
        void* module;
    };
    LxSearchPath m_searchPath;
    LxHashMap<LxString, Entry, LxStringHasher> m_plugins;

    static LxPluginManager* ms_pInstance;
};
