// LxUpdateHandlerFactory: makes the update handlers for one "AppUpdate" name (registered with the effect manager
// under that name by the subsystem that owns the values: objects, cameras, ...). The manager does not own it; the
// registering subsystem deregisters it before it goes away.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffectParameter.h"

class LxAnnotationMap;

class LX_API LxUpdateHandlerFactory
{
public:
    virtual ~LxUpdateHandlerFactory() = default;
    // The handler for a parameter of `type` with `count` elements and the parameter's annotations; null after the
    // factory reported why this parameter cannot take the update.
    virtual LxCountedPtr<LxUpdateHandler> CreateUpdateHandler(const LxString& name, LxEffectParameter::DataType type,
                                                              unsigned int count,
                                                              const LxAnnotationMap& annotations) = 0;
};
