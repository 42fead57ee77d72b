// LxEffectTechnique: a named, ordered list of passes, with properties, an optional base technique it inherits
// from, and the override passes that override techniques substitute for its passes.
//
// A base technique ("BaseTechnique") is abstract: it is only inherited from, never drawn. A compute technique holds
// compute passes only. Override passes are kept per override-technique index, one per pass of the technique (a
// null entry where an override does not apply). The technique owns its passes and override passes.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"

class LxEffect;
class LxEffectPass;

class LX_API LxEffectTechnique
{
public:
    LxEffectTechnique(const LxString& name, LxEffect* effect, bool isBase, bool isCompute,
                      LxEffectTechnique* baseTechnique);
    virtual ~LxEffectTechnique();
    LxEffectTechnique(const LxEffectTechnique&) = delete;
    LxEffectTechnique& operator=(const LxEffectTechnique&) = delete;

    const LxString& GetName() const { return m_name; }
    LxEffect* GetEffect() const { return m_pEffect; }
    LxEffectTechnique* GetBaseTechnique() const { return m_pBase; }
    bool IsBase() const { return m_bIsBase; }
    bool IsCompute() const { return m_bIsCompute; }

    void AddProperty(const LxString& property) { m_properties.Add(property); }
    unsigned int GetNumProperties() const { return m_properties.GetCount(); }
    const LxString& GetProperty(unsigned int index) const { return m_properties[index]; }
    bool HasProperty(const LxString& property) const { return m_properties.Contains(property); }

    // Takes ownership.
    void AppendPass(LxEffectPass* pass);
    // Deletes the pass at `index` and puts `pass` in its place (ownership taken).
    void ReplacePass(unsigned int index, LxEffectPass* pass);
    unsigned int GetNumPasses() const { return m_passes.GetCount(); }
    LxEffectPass* GetPass(unsigned int index) const { return index < m_passes.GetCount() ? m_passes[index] : nullptr; }
    LxEffectPass* GetPass(const LxString& name) const;
    int GetPassIndex(const LxString& name) const;

    // Override passes: appended in pass order for each override-technique index (ownership taken; null allowed).
    void AppendOverridePass(unsigned int overrideIndex, LxEffectPass* pass);
    // Null when the technique has no override pass there.
    LxEffectPass* GetOverridePass(unsigned int overrideIndex, unsigned int passIndex) const;
    // Deletes the old one.
    void ReplaceOverridePass(unsigned int overrideIndex, unsigned int passIndex, LxEffectPass* pass);
    // True when any pass has an override for that index.
    bool HasOverridePasses(unsigned int overrideIndex) const;

private:
    LxString m_name;
    LxEffect* m_pEffect;
    LxEffectTechnique* m_pBase;
    bool m_bIsBase;
    bool m_bIsCompute;
    LxArray<LxString> m_properties;
    LxArray<LxEffectPass*> m_passes;
    LxArray<LxArray<LxEffectPass*>> m_overridePasses;
};
