// Curve and set utilities: concatenating animations one after another and holding their end for a while.
//
// Only keyframe curves take part. Appending shifts the appended keys by the destination's length, so the
// appended animation starts where the destination ends; when it starts at time 0, its first key shares the
// destination's last key time and the seam is a cut (the jump happens exactly at the seam).
//
// Every call checks everything before it changes anything: on failure (logged, false) no curve has changed.
// Curves are shared, so appending to or extending a curve changes it in every set that holds it. Not
// thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "ObjectManager/LxAnimationCurve.h"

class LxAnimationSet;

// Appends src's keys to dst, shifted by dst's length. Both must be keyframe curves ("Concatenation is only
// supported for keyframe curves") of one class ("Animation curve type doesn't match") and one data type
// ("Animation curve data type doesn't match"). dst and src may be the same curve.
LX_API bool LxAppendAnimationCurve(const LxCountedPtr<LxAnimationCurve>& dst,
                                   const LxCountedPtr<LxAnimationCurve>& src);
// Appends curve by curve; both sets must hold the same names ("Cannot concatenate animation sets: Curve
// \"NAME\" not present in all sets").
LX_API bool LxAppendAnimationSet(LxAnimationSet& dst, const LxAnimationSet& src);
// Adds one key at length + dt holding the end value, so the curve holds still for dt more seconds. Keyframe
// curves only ("Extension is only supported for keyframe curves"), with at least one key, dt >= 0.
LX_API bool LxExtendAnimationCurve(const LxCountedPtr<LxAnimationCurve>& curve, float dt);
// Extends every curve of the set.
LX_API bool LxExtendAnimationSet(LxAnimationSet& set, float dt);
