// LxUAVSlotBinderFactory: makes the binders of UAV slots whose "BindUAV" annotation names the type the factory is
// registered under with the effect manager. Not owned by the manager.
#pragma once

#include "Common/LxApi.h"

class LxEffect;
class LxUAVSlot;
class LxUAVSlotBinder;

class LX_API LxUAVSlotBinderFactory
{
public:
    virtual ~LxUAVSlotBinderFactory() = default;
    // A new binder (owned by the caller) for `slot` of `effect`, which is fully built; null after reporting why.
    virtual LxUAVSlotBinder* CreateBinder(LxEffect& effect, LxUAVSlot& slot) = 0;
};
