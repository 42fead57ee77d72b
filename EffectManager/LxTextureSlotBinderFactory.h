// LxTextureSlotBinderFactory: makes the binders of texture slots whose "BindRT" annotation names the type the
// factory is registered under with the effect manager. Not owned by the manager.
#pragma once

#include "Common/LxApi.h"

class LxEffect;
class LxTextureSlot;
class LxTextureSlotBinder;

class LX_API LxTextureSlotBinderFactory
{
public:
    virtual ~LxTextureSlotBinderFactory() = default;
    // A new binder (owned by the caller) for `slot` of `effect`, which is fully built; null after reporting why.
    virtual LxTextureSlotBinder* CreateBinder(LxEffect& effect, LxTextureSlot& slot) = 0;
};
