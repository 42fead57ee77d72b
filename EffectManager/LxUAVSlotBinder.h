// LxUAVSlotBinder: an object that keeps an unordered-access slot of one effect supplied with a resource (named by
// the slot's "BindUAV" annotation). Made by an LxUAVSlotBinderFactory when the effect is built, owned by the
// effect manager and deleted just before the effect it was made for.
#pragma once

#include "Common/LxApi.h"

class LX_API LxUAVSlotBinder
{
public:
    virtual ~LxUAVSlotBinder() = default;
};
