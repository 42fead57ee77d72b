#include "ParticleSystem/LxParticleParameter.h"

unsigned int LxParticleParameter::GetStride() const
{
    switch (m_kind)
    {
    case LX_PARTICLE_PARAM_RANDOM:
        return 2;
    case LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM:
    case LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM:
        return 3;
    default:
        return 1;
    }
}

unsigned int LxParticleParameter::GetComponentCount() const
{
    const unsigned int n = IsKeyFramed() ? m_channels.GetCount() : m_values.GetCount();
    return n / GetStride();
}

float LxParticleParameter::ComponentValue(unsigned int component, unsigned int part) const
{
    const unsigned int i = component * GetStride() + part;
    return i < m_values.GetCount() ? m_values[i] : 0.0f;
}

float LxParticleParameter::GetFixed(unsigned int component) const
{
    return m_kind == LX_PARTICLE_PARAM_FIXED ? ComponentValue(component, 0) : 0.0f;
}

float LxParticleParameter::GetMinimum(unsigned int component) const
{
    const bool ranged = m_kind == LX_PARTICLE_PARAM_RANDOM || m_kind == LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM;
    return ranged ? ComponentValue(component, 0) : 0.0f;
}

float LxParticleParameter::GetMaximum(unsigned int component) const
{
    const bool ranged = m_kind == LX_PARTICLE_PARAM_RANDOM || m_kind == LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM;
    return ranged ? ComponentValue(component, 1) : 0.0f;
}

float LxParticleParameter::GetExponent(unsigned int component) const
{
    return m_kind == LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM ? ComponentValue(component, 2) : 0.0f;
}

const LxParticleKeyFrameChannel* LxParticleParameter::GetComponentChannel(unsigned int component,
                                                                          unsigned int part) const
{
    if (!IsKeyFramed() || part >= GetStride())
        return nullptr;
    const unsigned int i = component * GetStride() + part;
    return i < m_channels.GetCount() ? &m_channels[i] : nullptr;
}

void LxParticleParameter::SetCurveName(unsigned int channel, const LxString& name)
{
    if (channel >= m_channels.GetCount())
        return;
    while (m_curveNames.GetCount() <= channel)
        m_curveNames.Add(LxString());
    m_curveNames[channel] = name;
}

const LxString& LxParticleParameter::GetCurveName(unsigned int channel) const
{
    static const LxString kNone;
    return channel < m_curveNames.GetCount() ? m_curveNames[channel] : kNone;
}
