#include "PluginManager/LxPluginManager.h"

#include "Common/LxLogManager.h"
#include "ScriptManager/LxScriptManager.h"

LxPluginManager* LxPluginManager::ms_pInstance = nullptr;

LxPluginManager* LxPluginManager::GetPtr()
{
    if (!ms_pInstance)
        ms_pInstance = CreatePlatformManager();
    return ms_pInstance;
}

void LxPluginManager::ShutDown()
{
    delete ms_pInstance;
    ms_pInstance = nullptr;
}

LxPluginManager::~LxPluginManager()
{
    // Derived managers unload in their own destructors (UnloadModule is theirs); this catches the base class.
    UnloadAllPlugins();
}

void LxPluginManager::AddSearchPath(const LxString& path)
{
    m_searchPath.AddToSearchPath(path);
}

LxPlugin* LxPluginManager::FindPlugin(const LxString& name) const
{
    const Entry* entry = m_plugins.FindValue(name);
    return entry ? entry->plugin : nullptr;
}

LxPlugin* LxPluginManager::LoadPlugin(const LxString& name)
{
    if (const Entry* entry = m_plugins.FindValue(name))
    {
        LX_MESSAGE("Plugin: '%s' already loaded.  Returning existing plugin interface...", name.c_str());
        return entry->plugin;
    }
    void* module = nullptr;
    LxPlugin* plugin = LoadModule(name, &module);
    if (!plugin)
        return nullptr;
    m_plugins.Insert(name, Entry{plugin, module});
    return plugin;
}

void LxPluginManager::UnloadPlugin(LxPlugin* plugin)
{
    for (auto it = m_plugins.begin(); it != m_plugins.end(); ++it)
    {
        if (it->value.plugin != plugin)
            continue;
        const Entry entry = it->value;
        m_plugins.Erase(it);
        entry.plugin->Shutdown();
        UnloadModule(entry.plugin, entry.module);
        return;
    }
    LX_WARNING("LxPluginManager::UnloadPlugin.  The plugin is not loaded");
}

void LxPluginManager::UnloadAllPlugins()
{
    while (!m_plugins.IsEmpty())
        UnloadPlugin(m_plugins.begin()->value.plugin);
}

LxPlugin* LxPluginManager::LoadModule(const LxString&, void**)
{
    LX_ERROR("Plugin support is not implemented on this platform!");
    return nullptr;
}

void LxPluginManager::UnloadModule(LxPlugin*, void*)
{
    LX_ERROR("Plugin support is not implemented on this platform!");
}

LxPlugin* LxPluginManager::CreatePlugin(LxPluginCreateFunction factory, const LxString& path)
{
    LxPlugin* plugin = factory();
    if (!plugin)
    {
        LX_ERROR("Plugin creation failed in plugin DLL: %s", path.c_str());
        return nullptr;
    }
    if (!plugin->Initialize(LxScriptManager::GetRef().GetLuaState()))
    {
        LX_ERROR("Plugin Initialization failed in plugin DLL: %s", path.c_str());
        // Destroyed while its code is still mapped.
        delete plugin;
        return nullptr;
    }
    return plugin;
}
