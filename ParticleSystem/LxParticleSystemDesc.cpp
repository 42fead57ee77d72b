#include "ParticleSystem/LxParticleSystemDesc.h"

namespace
{
template <class T>
void AddIndexed(LxArray<T*>& items, LxHashMap<LxString, unsigned int, LxStringHasher>& index, T* item)
{
    index.Insert(item->GetName(), items.GetCount()); // the first of a name stays the one found
    items.Add(item);
}

template <class T>
const T* FindIndexed(const LxArray<T*>& items, const LxHashMap<LxString, unsigned int, LxStringHasher>& index,
                     const LxString& name)
{
    const unsigned int* i = index.FindValue(name);
    return i ? items[*i] : nullptr;
}
} // namespace

LxParticleSystemDesc::~LxParticleSystemDesc()
{
    for (LxParticleTextureSet* set : m_textureSets)
        delete set;
    for (LxParticleElementDesc* e : m_emitters)
        delete e;
    for (LxParticleElementDesc* a : m_actions)
        delete a;
}

bool LxParticleSystemDesc::AddEffectParameter(const LxString& name, const LxParticleParameter& parameter)
{
    if (FindEffectParameter(name))
        return false;
    m_effectParameterIndex.Set(name, m_effectParameters.Add(EffectParameter{name, parameter}));
    return true;
}

const LxParticleParameter* LxParticleSystemDesc::FindEffectParameter(const LxString& name) const
{
    const unsigned int* i = m_effectParameterIndex.FindValue(name);
    return i ? &m_effectParameters[*i].parameter : nullptr;
}

void LxParticleSystemDesc::AddTextureSet(LxParticleTextureSet* set)
{
    AddIndexed(m_textureSets, m_textureSetIndex, set);
}

const LxParticleTextureSet* LxParticleSystemDesc::FindTextureSet(const LxString& name) const
{
    return FindIndexed(m_textureSets, m_textureSetIndex, name);
}

void LxParticleSystemDesc::AddEmitter(LxParticleElementDesc* emitter)
{
    AddIndexed(m_emitters, m_emitterIndex, emitter);
}

void LxParticleSystemDesc::AddAction(LxParticleElementDesc* action)
{
    AddIndexed(m_actions, m_actionIndex, action);
}

void LxParticleSystemDesc::SetKeyFrameTexSize(int width, int height)
{
    m_nKeyFrameTexWidth = width;
    m_nKeyFrameTexHeight = height;
}

void LxParticleSystemDesc::SetTextureTile(int across, int down)
{
    m_nTilesAcross = across;
    m_nTilesDown = down;
}

void LxParticleSystemDesc::SetParticleObject(const LxString& name, const LxString& file)
{
    m_objectName = name;
    m_objectFile = file;
}

void LxParticleSystemDesc::SetTransform(const LxParticleTransform& transform)
{
    m_transform = transform;
    m_bHasTransform = true;
}

const LxParticleElementDesc* LxParticleSystemDesc::FindEmitter(const LxString& name) const
{
    return FindIndexed(m_emitters, m_emitterIndex, name);
}

const LxParticleElementDesc* LxParticleSystemDesc::FindAction(const LxString& name) const
{
    return FindIndexed(m_actions, m_actionIndex, name);
}
