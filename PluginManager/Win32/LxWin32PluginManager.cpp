#include "PluginManager/Win32/LxWin32PluginManager.h"

#include "Common/LxFile.h"
#include "Common/LxLogManager.h"

#include <windows.h>

LxPluginManager* LxPluginManager::CreatePlatformManager()
{
    return new LxWin32PluginManager();
}

LxWin32PluginManager::~LxWin32PluginManager()
{
    UnloadAllPlugins();
}

LxPlugin* LxWin32PluginManager::LoadModule(const LxString& name, void** module)
{
    const LxString fileName = name + ".dll";
    LxString path;
    if (!GetSearchPath().FileExists(fileName, &path))
    {
        LX_ERROR("Couldn't locate DLL for plugin: '%s'  Make sure that the plugin search path is set up correctly.",
                 name.c_str());
        return nullptr;
    }
    // The archives hand out '/' separators; the loader wants '\'.
    LxString nativePath(path);
    nativePath.Replace('/', '\\');
    HMODULE handle = LoadLibraryA(nativePath.c_str());
    if (!handle)
    {
        LX_ERROR("Couldn't open plugin DLL: %s", path.c_str());
        return nullptr;
    }
    LxFile::LogFileAccess(path, "DLL", true);
    FARPROC proc = GetProcAddress(handle, LX_PLUGIN_CREATE_NAME);
    if (!proc)
    {
        LX_ERROR("Couldn't find plugin creation function in plugin DLL: %s", path.c_str());
        FreeLibrary(handle);
        return nullptr;
    }
    LxPluginCreateFunction factory = reinterpret_cast<LxPluginCreateFunction>(reinterpret_cast<void*>(proc));
    LxPlugin* plugin = CreatePlugin(factory, path);
    if (!plugin)
    {
        FreeLibrary(handle);
        return nullptr;
    }
    *module = handle;
    return plugin;
}

void LxWin32PluginManager::UnloadModule(LxPlugin* plugin, void* module)
{
    delete plugin;
    FreeLibrary(static_cast<HMODULE>(module));
}
