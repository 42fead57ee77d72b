#include "EffectManager/LxEffectTechnique.h"

#include "EffectManager/LxEffectPass.h"

LxEffectTechnique::LxEffectTechnique(const LxString& name, LxEffect* effect, bool isBase, bool isCompute,
                                     LxEffectTechnique* baseTechnique)
    : m_name(name), m_pEffect(effect), m_pBase(baseTechnique), m_bIsBase(isBase), m_bIsCompute(isCompute)
{
}

LxEffectTechnique::~LxEffectTechnique()
{
    for (LxEffectPass* p : m_passes)
        delete p;
    for (LxArray<LxEffectPass*>& list : m_overridePasses)
        for (LxEffectPass* p : list)
            delete p;
}

void LxEffectTechnique::AppendPass(LxEffectPass* pass)
{
    if (pass)
        m_passes.Add(pass);
}

void LxEffectTechnique::ReplacePass(unsigned int index, LxEffectPass* pass)
{
    if (index >= m_passes.GetCount())
    {
        delete pass;
        return;
    }
    if (m_passes[index] != pass)
        delete m_passes[index];
    m_passes[index] = pass;
}

LxEffectPass* LxEffectTechnique::GetPass(const LxString& name) const
{
    const int i = GetPassIndex(name);
    return i < 0 ? nullptr : m_passes[static_cast<unsigned int>(i)];
}

int LxEffectTechnique::GetPassIndex(const LxString& name) const
{
    for (unsigned int i = 0; i < m_passes.GetCount(); ++i)
        if (m_passes[i]->GetName() == name)
            return static_cast<int>(i);
    return -1;
}

void LxEffectTechnique::AppendOverridePass(unsigned int overrideIndex, LxEffectPass* pass)
{
    if (overrideIndex > 1024)
    {
        delete pass;
        return;
    }
    while (m_overridePasses.GetCount() <= overrideIndex)
        m_overridePasses.Add(LxArray<LxEffectPass*>());
    m_overridePasses[overrideIndex].Add(pass);
}

LxEffectPass* LxEffectTechnique::GetOverridePass(unsigned int overrideIndex, unsigned int passIndex) const
{
    if (overrideIndex >= m_overridePasses.GetCount() || passIndex >= m_overridePasses[overrideIndex].GetCount())
        return nullptr;
    return m_overridePasses[overrideIndex][passIndex];
}

void LxEffectTechnique::ReplaceOverridePass(unsigned int overrideIndex, unsigned int passIndex, LxEffectPass* pass)
{
    if (overrideIndex >= m_overridePasses.GetCount() || passIndex >= m_overridePasses[overrideIndex].GetCount())
    {
        delete pass;
        return;
    }
    LxEffectPass*& slot = m_overridePasses[overrideIndex][passIndex];
    if (slot != pass)
        delete slot;
    slot = pass;
}

bool LxEffectTechnique::HasOverridePasses(unsigned int overrideIndex) const
{
    if (overrideIndex >= m_overridePasses.GetCount())
        return false;
    for (LxEffectPass* p : m_overridePasses[overrideIndex])
        if (p)
            return true;
    return false;
}
