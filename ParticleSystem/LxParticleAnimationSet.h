// LxParticleAnimationSet: the animation curves that come with a particle group, as the particle builder sees
// them. Animated transforms are driven by curves looked up here; keyframed parameters are exported into it as one
// curve per channel (see LxParticleBuilder for the names). The object manager adapts its animation sets to this
// interface; tests implement it directly. The builder does not own the set; one thread at a time.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

class LxParticleKeyFrameChannel;

class LX_API LxParticleAnimationSet
{
public:
    virtual ~LxParticleAnimationSet() = default;
    virtual bool HasCurve(const LxString& name) const = 0;
    // Adds (or replaces) the curve `name` with the keys of `channel`; false when the set refuses it.
    virtual bool AddCurve(const LxString& name, const LxParticleKeyFrameChannel& channel) = 0;
};
