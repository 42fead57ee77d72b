// LxEffectReloadListener: told by the effect manager when an effect file was rebuilt after a change on disk.
//
// The manager calls every registered listener in registration order, after it has repointed the shared counted
// reference at the new effect: every holder of that reference already sees `newEffect`. `oldEffect` is the effect
// that was replaced; it is destroyed once the last listener lets go of it. A listener that keeps raw pointers into
// an effect (techniques, parameters, slots) refreshes them here; one that keeps `oldEffect` beyond the call makes
// the manager report that not all references were updated. Called on the thread that runs ReloadEffects.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"

class LxEffect;

class LX_API LxEffectReloadListener
{
public:
    virtual ~LxEffectReloadListener() = default;
    virtual void OnEffectReload(LxCountedPtr<LxEffect> oldEffect, LxCountedPtr<LxEffect> newEffect) = 0;
};
