#include "PluginManager/Posix/LxPosixPluginManager.h"

#include "Common/LxFile.h"
#include "Common/LxLogManager.h"

#include <dlfcn.h>

LxPluginManager* LxPluginManager::CreatePlatformManager()
{
    return new LxPosixPluginManager();
}

LxPosixPluginManager::~LxPosixPluginManager()
{
    UnloadAllPlugins();
}

LxPlugin* LxPosixPluginManager::LoadModule(const LxString& name, void** module)
{
    const LxString fileName = name + ".so";
    LxString path;
    if (!GetSearchPath().FileExists(fileName, &path))
    {
        LX_ERROR("Couldn't locate DLL for plugin: '%s'  Make sure that the plugin search path is set up correctly.",
                 name.c_str());
        return nullptr;
    }
    // A name without a slash would make dlopen search the system's library path instead.
    if (path.Find('/') < 0)
        path = "./" + path;
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
    {
        const char* reason = dlerror();
        LX_ERROR("Couldn't open plugin DLL: %s", path.c_str());
        LX_DEBUG("dlopen: %s", reason ? reason : "(no reason given)");
        return nullptr;
    }
    LxFile::LogFileAccess(path, "DLL", true);
    void* symbol = dlsym(handle, LX_PLUGIN_CREATE_NAME);
    if (!symbol)
    {
        LX_ERROR("Couldn't find plugin creation function in plugin DLL: %s", path.c_str());
        dlclose(handle);
        return nullptr;
    }
    LxPlugin* plugin = CreatePlugin(reinterpret_cast<LxPluginCreateFunction>(symbol), path);
    if (!plugin)
    {
        dlclose(handle);
        return nullptr;
    }
    *module = handle;
    return plugin;
}

void LxPosixPluginManager::UnloadModule(LxPlugin* plugin, void* module)
{
    delete plugin;
    dlclose(module);
}
