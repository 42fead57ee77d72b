#include "ParticleSystem/LxParticleValue.h"

LxParticleValue LxParticleValue::FromBool(bool value)
{
    LxParticleValue v;
    v.m_kind = BOOL;
    v.m_bValue = value;
    return v;
}

LxParticleValue LxParticleValue::FromInt(int value)
{
    LxParticleValue v;
    v.m_kind = INT;
    v.m_nValue = value;
    return v;
}

LxParticleValue LxParticleValue::FromFloat(float value)
{
    LxParticleValue v;
    v.m_kind = FLOAT;
    v.m_fValue = value;
    return v;
}

bool LxParticleValue::GetBool() const
{
    switch (m_kind)
    {
    case BOOL:
        return m_bValue;
    case INT:
        return m_nValue != 0;
    default:
        return m_fValue != 0.0f;
    }
}

int LxParticleValue::GetInt() const
{
    switch (m_kind)
    {
    case BOOL:
        return m_bValue ? 1 : 0;
    case INT:
        return m_nValue;
    default:
        // Saturates rather than overflowing the conversion.
        if (!(m_fValue > -2147483648.0f))
            return m_fValue != m_fValue ? 0 : -2147483647 - 1;
        if (m_fValue >= 2147483648.0f)
            return 2147483647;
        return static_cast<int>(m_fValue);
    }
}

float LxParticleValue::GetFloat() const
{
    switch (m_kind)
    {
    case BOOL:
        return m_bValue ? 1.0f : 0.0f;
    case INT:
        return static_cast<float>(m_nValue);
    default:
        return m_fValue;
    }
}

bool LxParticleValue::operator==(const LxParticleValue& other) const
{
    if (m_kind != other.m_kind)
        return false;
    switch (m_kind)
    {
    case BOOL:
        return m_bValue == other.m_bValue;
    case INT:
        return m_nValue == other.m_nValue;
    default:
        return m_fValue == other.m_fValue;
    }
}
