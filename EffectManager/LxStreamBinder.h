// LxStreamBinder: an object that keeps a vertex stream of one effect supplied with a vertex buffer (named by the
// stream's "BindStream" annotation). Made by an LxStreamBinderFactory when the effect is built, owned by the
// effect manager and deleted just before the effect it was made for.
#pragma once

#include "Common/LxApi.h"

class LX_API LxStreamBinder
{
public:
    virtual ~LxStreamBinder() = default;
};
