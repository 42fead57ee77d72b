#include "ParticleSystem/LxParticleDomain.h"

void LxParticleDomain::SetParameter(const Parameter& parameter)
{
    for (Parameter& p : m_parameters)
        if (p.name == parameter.name)
        {
            p = parameter;
            return;
        }
    m_parameters.Add(parameter);
}

const LxParticleDomain::Parameter* LxParticleDomain::FindParameter(const LxString& name) const
{
    for (const Parameter& p : m_parameters)
        if (p.name == name)
            return &p;
    return nullptr;
}

float LxParticleDomain::GetFloat(const LxString& name) const
{
    const Parameter* p = FindParameter(name);
    return p ? p->value.x : 0.0f;
}

LxVector3 LxParticleDomain::GetVector3(const LxString& name) const
{
    const Parameter* p = FindParameter(name);
    return p ? LxVector3(p->value.x, p->value.y, p->value.z) : LxVector3();
}

LxVector4 LxParticleDomain::GetVector4(const LxString& name) const
{
    const Parameter* p = FindParameter(name);
    return p ? p->value : LxVector4();
}

bool LxParticleDomain::GetBool(const LxString& name) const
{
    const Parameter* p = FindParameter(name);
    return p && p->value.x != 0.0f;
}
