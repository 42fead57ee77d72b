// LxPosixPluginManager: plug-in modules as shared objects for the native lane. "<name>.so" is looked up through the
// plug-in search path, mapped with dlopen (RTLD_NOW | RTLD_LOCAL; logged to the file-access log with the mode
// "DLL"), and created through its "LxPluginCreate" symbol; every failure closes the module again and reports the
// same texts as the Windows loader, with dlerror() as a debug line. Unloading deletes the plug-in before dlclose.
// Contract and threading as LxPluginManager.
#pragma once

#include "PluginManager/LxPluginManager.h"

class LX_API LxPosixPluginManager : public LxPluginManager
{
public:
    LxPosixPluginManager() = default;
    ~LxPosixPluginManager() override;

protected:
    LxPlugin* LoadModule(const LxString& name, void** module) override;
    void UnloadModule(LxPlugin* plugin, void* module) override;
};
