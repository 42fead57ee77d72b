// LxParticleSystemDesc: one particle system of a group as the file describes it: name and type, the particle
// effect with its effect parameters (effect parameter name -> particle parameter) and texture sets, the keyframe
// texture size, texture tiling, the optional mesh object, the system parameters, the optional world transform,
// and the emitters and actions in file order. Counts and indexed getters walk it; Find* look up by name (null
// when absent). The system owns everything in it. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"
#include "ParticleSystem/LxParticleElementDesc.h"
#include "ParticleSystem/LxParticleParameter.h"
#include "ParticleSystem/LxParticleTextureSet.h"
#include "ParticleSystem/LxParticleTransform.h"
#include "ParticleSystem/LxParticleTypes.h"

class LX_API LxParticleSystemDesc
{
public:
    struct EffectParameter
    {
        LxString name;
        LxParticleParameter parameter;
    };

    explicit LxParticleSystemDesc(const LxString& name) : m_name(name) {}
    ~LxParticleSystemDesc();
    LxParticleSystemDesc(const LxParticleSystemDesc&) = delete;
    LxParticleSystemDesc& operator=(const LxParticleSystemDesc&) = delete;

    const LxString& GetName() const { return m_name; }
    LxParticleSystemType GetType() const { return m_type; }
    void SetType(LxParticleSystemType type) { m_type = type; }

    // --- rendering ----------------------------------------------------------------------------------------------
    const LxString& GetEffectFile() const { return m_effectFile; }
    void SetEffectFile(const LxString& file) { m_effectFile = file; }
    // False when the name is taken.
    bool AddEffectParameter(const LxString& name, const LxParticleParameter& parameter);
    unsigned int GetEffectParameterCount() const { return m_effectParameters.GetCount(); }
    const EffectParameter& GetEffectParameter(unsigned int i) const { return m_effectParameters[i]; }
    const LxParticleParameter* FindEffectParameter(const LxString& name) const;
    // Takes ownership.
    void AddTextureSet(LxParticleTextureSet* set);
    unsigned int GetTextureSetCount() const { return m_textureSets.GetCount(); }
    const LxParticleTextureSet& GetTextureSet(unsigned int i) const { return *m_textureSets[i]; }
    LxParticleTextureSet& GetTextureSet(unsigned int i) { return *m_textureSets[i]; }
    const LxParticleTextureSet* FindTextureSet(const LxString& name) const;
    // Width and height of the texture that keyframed parameters are baked into (0 x 0 when not given).
    void SetKeyFrameTexSize(int width, int height);
    int GetKeyFrameTexWidth() const { return m_nKeyFrameTexWidth; }
    int GetKeyFrameTexHeight() const { return m_nKeyFrameTexHeight; }
    // Tiles of the particle texture across and down (1 x 1 when not given).
    void SetTextureTile(int across, int down);
    int GetTextureTilesAcross() const { return m_nTilesAcross; }
    int GetTextureTilesDown() const { return m_nTilesDown; }
    // A mesh drawn per particle: object name and the file it comes from (empty when none).
    void SetParticleObject(const LxString& name, const LxString& file);
    const LxString& GetParticleObjectName() const { return m_objectName; }
    const LxString& GetParticleObjectFile() const { return m_objectFile; }

    // --- system parameters --------------------------------------------------------------------------------------
    bool GetUpdateWhenCulled() const { return m_bUpdateWhenCulled; }
    void SetUpdateWhenCulled(bool update) { m_bUpdateWhenCulled = update; }
    bool GetSort() const { return m_bSort; }
    void SetSort(bool sort) { m_bSort = sort; }
    // Frames skipped between simulation steps / bounding-box updates.
    int GetSimulationSkip() const { return m_nSimulationSkip; }
    void SetSimulationSkip(int frames) { m_nSimulationSkip = frames; }
    int GetBoundingBoxSkip() const { return m_nBoundingBoxSkip; }
    void SetBoundingBoxSkip(int frames) { m_nBoundingBoxSkip = frames; }
    // Seconds simulated before the first frame is shown.
    float GetWarmUp() const { return m_fWarmUp; }
    void SetWarmUp(float seconds) { m_fWarmUp = seconds; }

    // --- placement, emitters and actions ------------------------------------------------------------------------
    bool HasTransform() const { return m_bHasTransform; }
    const LxParticleTransform& GetTransform() const { return m_transform; }
    void SetTransform(const LxParticleTransform& transform);
    // Take ownership. Names should be unique among the emitters (actions); Find* give the first of a name.
    void AddEmitter(LxParticleElementDesc* emitter);
    void AddAction(LxParticleElementDesc* action);
    unsigned int GetEmitterCount() const { return m_emitters.GetCount(); }
    const LxParticleElementDesc& GetEmitter(unsigned int i) const { return *m_emitters[i]; }
    unsigned int GetActionCount() const { return m_actions.GetCount(); }
    const LxParticleElementDesc& GetAction(unsigned int i) const { return *m_actions[i]; }
    const LxParticleElementDesc* FindEmitter(const LxString& name) const;
    const LxParticleElementDesc* FindAction(const LxString& name) const;

private:
    LxString m_name;
    LxParticleSystemType m_type = LX_PARTICLE_SYSTEM_GPU_BILLBOARD;
    LxString m_effectFile;
    LxArray<EffectParameter> m_effectParameters;
    LxArray<LxParticleTextureSet*> m_textureSets;
    int m_nKeyFrameTexWidth = 0;
    int m_nKeyFrameTexHeight = 0;
    int m_nTilesAcross = 1;
    int m_nTilesDown = 1;
    LxString m_objectName;
    LxString m_objectFile;
    bool m_bUpdateWhenCulled = false;
    bool m_bSort = false;
    int m_nSimulationSkip = 0;
    int m_nBoundingBoxSkip = 0;
    float m_fWarmUp = 0.0f;
    bool m_bHasTransform = false;
    LxParticleTransform m_transform;
    LxArray<LxParticleElementDesc*> m_emitters;
    LxArray<LxParticleElementDesc*> m_actions;
    // Name -> index, so that systems with many members stay linear to build.
    LxHashMap<LxString, unsigned int, LxStringHasher> m_effectParameterIndex;
    LxHashMap<LxString, unsigned int, LxStringHasher> m_textureSetIndex;
    LxHashMap<LxString, unsigned int, LxStringHasher> m_emitterIndex;
    LxHashMap<LxString, unsigned int, LxStringHasher> m_actionIndex;
};
