// LxStreamBinderFactory: makes the binders of vertex streams whose "BindStream" annotation names the type the
// factory is registered under with the effect manager. Not owned by the manager.
#pragma once

#include "Common/LxApi.h"

class LxEffect;
class LxStreamBinder;
class LxVertexStreamDecl;

class LX_API LxStreamBinderFactory
{
public:
    virtual ~LxStreamBinderFactory() = default;
    // A new binder (owned by the caller) for `stream` of `effect`, which is fully built; null after reporting why.
    virtual LxStreamBinder* CreateBinder(LxEffect& effect, LxVertexStreamDecl& stream) = 0;
};
