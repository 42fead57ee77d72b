// LxBoneAnimator: turns the curves of one bone into its 4x4 transform at a time, looping the animation.
//
// The curves come from an animation set: "bone.NAME" (a matrix curve, used alone) or any of "bone.NAME.translate"
// (vec3), "bone.NAME.rotate" (quat) and "bone.NAME.scale" (vec3); a part without a curve stays at translation 0,
// identity rotation or scale 1. The animator's length is the largest length among its curves, and every time is
// wrapped by the floating-point remainder by that length (a length of 0 evaluates at time 0).
//
// Ownership: Create returns a new animator the caller deletes; it shares the curves with the set. Failure: Create
// logs and returns null. Threading: evaluation moves the curves' search cursors, so one thread at a time per
// curve, across all animators that share it.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "ObjectManager/LxAnimationCurve.h"

class LxAnimationSet;
class LxBone;
class LxMatrix4;

class LX_API LxBoneAnimator
{
public:
    // Null (after an error) when a curve of the bone has the wrong data type or the bone has no curve at all.
    static LxBoneAnimator* Create(const LxBone& bone, const LxAnimationSet& set);

    float GetAnimationLength() const { return m_fLength; }
    // The bone's transform at the wrapped time.
    void GetTransform(float t, LxMatrix4* out) const;
    // The transform the bone would reach dt seconds after t if each curve kept the rate of change it has at t
    // (its gradient over the step dt): value + gradient x dt per part, the rotation renormalised. dt <= 0 gives
    // GetTransform(t).
    void ExtrapolateTransform(float t, float dt, LxMatrix4* out) const;
    // Whether playback from t0 to t1 crosses a cut in one of the curves, both times wrapped first; when the
    // wrapped t1 lies before the wrapped t0 the playback went round the end and both pieces are checked.
    bool HasCutInTimeInterval(float t0, float t1) const;

private:
    LxBoneAnimator() = default;
    float Wrap(float t) const;
    bool AnyCutBetween(float t0, float t1) const;

    float m_fLength = 0.0f;
    LxCountedPtr<LxAnimationCurve> m_translate;
    LxCountedPtr<LxAnimationCurve> m_rotate;
    LxCountedPtr<LxAnimationCurve> m_scale;
    LxCountedPtr<LxAnimationCurve> m_matrix;
};
