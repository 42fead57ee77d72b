// LxWin32PluginManager: plug-in modules as DLLs. "<name>.dll" is looked up through the plug-in search path, mapped
// with LoadLibraryA (logged to the file-access log with the mode "DLL"), and created through its "LxPluginCreate"
// export; every failure frees the module again. Unloading deletes the plug-in before FreeLibrary. Contract and
// threading as LxPluginManager.
#pragma once

#include "PluginManager/LxPluginManager.h"

class LX_API LxWin32PluginManager : public LxPluginManager
{
public:
    LxWin32PluginManager() = default;
    ~LxWin32PluginManager() override;

protected:
    LxPlugin* LoadModule(const LxString& name, void** module) override;
    void UnloadModule(LxPlugin* plugin, void* module) override;
};
