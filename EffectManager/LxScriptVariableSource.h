// LxScriptVariableSource: numeric variables of the scripting environment, read when a slot's view parameters are
// bound to script variables ("ViewParams = < MipLevels = < ScriptVariable = "mips" > >" reads
// "DrawScriptEnv.mips"). The script manager registers one process-wide; without one every lookup fails.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

class LX_API LxScriptVariableSource
{
public:
    virtual ~LxScriptVariableSource() = default;
    // False when the variable does not exist or is not a number.
    virtual bool GetNumber(const LxString& name, double& value) = 0;

    // The registered source (not owned), or null.
    static void SetGlobal(LxScriptVariableSource* source);
    static LxScriptVariableSource* GetGlobal();
};
