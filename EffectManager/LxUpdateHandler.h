// LxUpdateHandler: fills an application-updated effect parameter before a draw ("AppUpdate" annotation). Handlers
// come from the subsystems that own the values (objects, cameras, the effect manager's built-in updates) through
// LxUpdateHandlerProvider; a parameter shares its handler through LxCountedPtr.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"

class LxAnnotationMap;
class LxEffectParameter;

class LX_API LxUpdateHandler
{
public:
    virtual ~LxUpdateHandler() = default;
    // Writes the parameter's value: `data` is its storage of `size` bytes (element size x array count).
    virtual void Update(LxEffectParameter& parameter, void* data, unsigned int size) = 0;
};

// Hands out update handlers by the name an "AppUpdate" annotation gives (the effect manager implements it).
class LX_API LxUpdateHandlerProvider
{
public:
    virtual ~LxUpdateHandlerProvider() = default;
    // Null when no handler fits; the provider reports why. dataType is an LxEffectParameter::DataType.
    virtual LxCountedPtr<LxUpdateHandler> GetUpdateHandler(const LxString& name, int dataType, unsigned int count,
                                                           const LxAnnotationMap& annotations) = 0;
};
