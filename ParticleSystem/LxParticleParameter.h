// LxParticleParameter: a particle parameter as the file describes it: its kind (fixed, random, non-uniform random,
// keyframed, keyframed non-uniform random), the numbers written for it and, for the keyframed kinds, its keyframe
// channels with the names of the animation curves they are exported as.
//
// Numbers are stored as written, grouped per component: a fixed value has one per component, a random one a
// minimum and a maximum, a non-uniform random one a minimum, a maximum and an exponent (the value is
// min + (max - min) * u^exponent for a uniform u in [0, 1]). A keyframed parameter has one channel per component;
// a keyframed non-uniform random one three per component (minimum, maximum, exponent over time). The builder
// checks the counts (LxParticleBuilder); a parameter made by hand is taken as it is. A plain value, not
// thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "ParticleSystem/LxParticleKeyFrameChannel.h"
#include "ParticleSystem/LxParticleTypes.h"

class LX_API LxParticleParameter
{
public:
    explicit LxParticleParameter(LxParticleParameterKind kind = LX_PARTICLE_PARAM_FIXED) : m_kind(kind) {}

    LxParticleParameterKind GetKind() const { return m_kind; }
    bool IsKeyFramed() const
    {
        return m_kind == LX_PARTICLE_PARAM_KEYFRAME || m_kind == LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM;
    }
    // Numbers (or channels) per component for this kind: 1, 2, 3, 1, 3.
    unsigned int GetStride() const;
    // Components (1 to 4 once built): numbers or channels divided by the stride.
    unsigned int GetComponentCount() const;

    // --- the numbers, as written --------------------------------------------------------------------------------
    void AddValue(float value) { m_values.Add(value); }
    unsigned int GetValueCount() const { return m_values.GetCount(); }
    float GetValue(unsigned int i) const { return m_values[i]; }
    // Per component, for the kinds that have them (0 otherwise).
    float GetFixed(unsigned int component) const;
    float GetMinimum(unsigned int component) const;
    float GetMaximum(unsigned int component) const;
    float GetExponent(unsigned int component) const;

    // --- keyframe channels --------------------------------------------------------------------------------------
    void AddChannel(const LxParticleKeyFrameChannel& channel) { m_channels.Add(channel); }
    unsigned int GetChannelCount() const { return m_channels.GetCount(); }
    const LxParticleKeyFrameChannel& GetChannel(unsigned int i) const { return m_channels[i]; }
    // The channel of `component` and `part` (0 minimum or the value, 1 maximum, 2 exponent); null when absent.
    const LxParticleKeyFrameChannel* GetComponentChannel(unsigned int component, unsigned int part = 0) const;
    // Name under which channel i is exported as an animation curve (empty until the builder names it).
    void SetCurveName(unsigned int channel, const LxString& name);
    const LxString& GetCurveName(unsigned int channel) const;

private:
    float ComponentValue(unsigned int component, unsigned int part) const;

    LxParticleParameterKind m_kind;
    LxArray<float> m_values;
    LxArray<LxParticleKeyFrameChannel> m_channels;
    LxArray<LxString> m_curveNames;
};
