// LxTextureSlotBinder: an object that keeps a texture slot of one effect supplied with a resource (a render target
// named by the slot's "BindRT" annotation, say). Made by an LxTextureSlotBinderFactory when the effect is built,
// owned by the effect manager and deleted just before the effect it was made for; what it does in between belongs
// to the subsystem that registered the factory.
#pragma once

#include "Common/LxApi.h"

class LX_API LxTextureSlotBinder
{
public:
    virtual ~LxTextureSlotBinder() = default;
};
