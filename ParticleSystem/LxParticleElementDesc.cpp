#include "ParticleSystem/LxParticleElementDesc.h"

bool LxParticleElementDesc::AddParameter(const LxString& name, const LxParticleParameter& parameter)
{
    if (HasMember(name))
        return false;
    m_parameterIndex.Set(name, m_parameters.Add(NamedParameter{name, parameter}));
    return true;
}

bool LxParticleElementDesc::AddValue(const LxString& name, const LxParticleValue& value)
{
    if (HasMember(name))
        return false;
    m_valueIndex.Set(name, m_values.Add(NamedValue{name, value}));
    return true;
}

const LxParticleParameter* LxParticleElementDesc::FindParameter(const LxString& name) const
{
    const unsigned int* i = m_parameterIndex.FindValue(name);
    return i ? &m_parameters[*i].parameter : nullptr;
}

const LxParticleValue* LxParticleElementDesc::FindValue(const LxString& name) const
{
    const unsigned int* i = m_valueIndex.FindValue(name);
    return i ? &m_values[*i].value : nullptr;
}

void LxParticleElementDesc::SetTransform(const LxParticleTransform& transform)
{
    m_transform = transform;
    m_bHasTransform = true;
}

void LxParticleElementDesc::SetShape(const LxParticleDomain& shape)
{
    m_shape = shape;
    m_bHasShape = true;
}
