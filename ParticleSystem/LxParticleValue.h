// LxParticleValue: one scalar setting of a particle description (a named "Sort true", "MaxParticles 500",
// "Speed 2.5"), keeping the kind the file wrote it as. Reading it as another kind converts (an integer reads as a
// float, a non-zero number reads as true). A plain value: no allocation, no failure.
#pragma once

#include "Common/LxApi.h"

class LX_API LxParticleValue
{
public:
    enum Kind
    {
        BOOL = 0,
        INT,
        FLOAT
    };

    LxParticleValue() = default;
    static LxParticleValue FromBool(bool value);
    static LxParticleValue FromInt(int value);
    static LxParticleValue FromFloat(float value);

    Kind GetKind() const { return m_kind; }
    bool GetBool() const;
    int GetInt() const;
    float GetFloat() const;
    bool operator==(const LxParticleValue& other) const;
    bool operator!=(const LxParticleValue& other) const { return !(*this == other); }

private:
    Kind m_kind = INT;
    bool m_bValue = false;
    int m_nValue = 0;
    float m_fValue = 0.0f;
};
