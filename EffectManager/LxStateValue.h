// LxStateValue: the value of one render state or sampler state as written in an effect file ("CullMode = BACK",
// "ZEnable = true", "MaxAniso = 8", "MipLODBias = 0.5", "BorderColor = (0, 0, 0, 1)"). The platform pass and
// sampler interpret it; the generic ones keep it so that passes can be cloned and states inspected.
#pragma once

#include "Common/LxString.h"
#include "Common/LxVector4.h"

struct LxStateValue
{
    enum Type
    {
        TYPE_ENUM = 0, // an identifier, kept as text
        TYPE_BOOL = 1,
        TYPE_INT = 2,
        TYPE_FLOAT = 3,
        TYPE_VECTOR = 4
    };

    LxStateValue() = default;
    explicit LxStateValue(const LxString& v) : type(TYPE_ENUM), text(v) {}
    explicit LxStateValue(bool v) : type(TYPE_BOOL), boolValue(v) {}
    explicit LxStateValue(int v) : type(TYPE_INT), intValue(v) {}
    explicit LxStateValue(float v) : type(TYPE_FLOAT), floatValue(v) {}
    explicit LxStateValue(const LxVector4& v) : type(TYPE_VECTOR), vectorValue(v) {}

    Type type = TYPE_ENUM;
    LxString text;
    bool boolValue = false;
    int intValue = 0;
    float floatValue = 0.0f;
    LxVector4 vectorValue;
};

// A named state, as stored by passes and samplers in the order the effect file gives them.
struct LxNamedState
{
    LxString name;
    LxStateValue value;
};
