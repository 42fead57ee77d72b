// LxEffectDrawContext: what an effect asks of the rest of the system while drawing: which override technique is
// active (so Begin can substitute override passes) and where to record the current pass (read by the "PassNumber"
// app-update). The effect manager registers one process-wide; without one no override is active and nothing is
// recorded.
#pragma once

#include "Common/LxApi.h"

class LxEffect;

class LX_API LxEffectDrawContext
{
public:
    virtual ~LxEffectDrawContext() = default;
    // The index of the active override technique, or -1.
    virtual int GetActiveOverrideTechnique() const = 0;
    virtual void SetCurrentPass(LxEffect* effect, unsigned int passIndex) = 0;

    // The registered context (not owned), or null.
    static void SetGlobal(LxEffectDrawContext* context);
    static LxEffectDrawContext* GetGlobal();
};
