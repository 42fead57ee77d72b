#include "EffectManager/LxSampler.h"

LxSampler::LxSampler(const LxString& name, LxEffect* effect, const LxAnnotationMap* annotations)
    : m_name(name), m_pEffect(effect)
{
    if (annotations)
        m_annotations = *annotations;
}

void LxSampler::AddTexture(LxTextureSlot* slot)
{
    if (slot)
        m_textures.Add(slot);
}

bool LxSampler::AddState(const LxString& name, const LxStateValue& value)
{
    m_states.Add(LxNamedState{name, value});
    return true;
}

const LxStateValue* LxSampler::FindState(const LxString& name) const
{
    for (unsigned int i = m_states.GetCount(); i-- > 0;)
        if (m_states[i].name == name)
            return &m_states[i].value;
    return nullptr;
}
