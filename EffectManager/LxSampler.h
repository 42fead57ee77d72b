// LxSampler: a sampler an effect declares ("Sampler sLinear { Texture = tDiffuse; Filter = ...; }"): the texture
// slots it samples and its states. The generic sampler keeps the states as written; the platform sampler
// (LxD3D12Sampler) overrides AddState to check them and CreateResources to make the device object.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxStateValue.h"

class LxEffect;
class LxTextureSlot;

class LX_API LxSampler
{
public:
    LxSampler(const LxString& name, LxEffect* effect, const LxAnnotationMap* annotations);
    virtual ~LxSampler() = default;
    LxSampler(const LxSampler&) = delete;
    LxSampler& operator=(const LxSampler&) = delete;

    const LxString& GetName() const { return m_name; }
    LxEffect* GetEffect() const { return m_pEffect; }
    const LxAnnotationMap& GetAnnotations() const { return m_annotations; }

    void AddTexture(LxTextureSlot* slot);
    unsigned int GetNumTextures() const { return m_textures.GetCount(); }
    LxTextureSlot* GetTexture(unsigned int index) const { return m_textures[index]; }

    // Records the state; false (after a message) when the platform sampler refuses it.
    virtual bool AddState(const LxString& name, const LxStateValue& value);
    unsigned int GetNumStates() const { return m_states.GetCount(); }
    const LxNamedState& GetState(unsigned int index) const { return m_states[index]; }
    // The last value given to `name`, or null.
    const LxStateValue* FindState(const LxString& name) const;

    // Creates the platform object after the declaration ends; the generic sampler has nothing to create.
    virtual bool CreateResources() { return true; }

protected:
    LxString m_name;
    LxEffect* m_pEffect;
    LxAnnotationMap m_annotations;
    LxArray<LxTextureSlot*> m_textures;
    LxArray<LxNamedState> m_states;
};
