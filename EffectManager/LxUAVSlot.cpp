#include "EffectManager/LxUAVSlot.h"

LxUAVSlot::LxUAVSlot(const LxString& name, Type type, const LxAnnotationMap* annotations)
    : LxShaderResourceSlot(name, annotations), m_type(type)
{
}

const char* LxUAVSlot::TypeToString(Type type)
{
    static const char* const names[NUM_TYPES] = {"RWBuffer",
                                                 "RWTexture2D",
                                                 "RWTexture3D",
                                                 "RWStructuredBuffer",
                                                 "AppendStructuredBuffer",
                                                 "RWByteAddressBuffer",
                                                 "AppendByteAddressBuffer"};
    return static_cast<unsigned int>(type) < NUM_TYPES ? names[type] : "Unknown";
}
