#include "ObjectManager/LxAnimationUtils.h"

#include "Common/LxLogManager.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxKeyframeCurve.h"

namespace
{
// The checks of LxAppendAnimationCurve, without changing anything.
bool CanAppend(const LxCountedPtr<LxAnimationCurve>& dst, const LxCountedPtr<LxAnimationCurve>& src)
{
    if (!dst || !src)
    {
        LX_ERROR("Concatenation is only supported for keyframe curves");
        return false;
    }
    if (dst->GetCurveClass() != src->GetCurveClass())
    {
        LX_ERROR("Animation curve type doesn't match");
        return false;
    }
    if (!dynamic_cast<LxKeyframeCurve*>(dst.Get()) || !dynamic_cast<LxKeyframeCurve*>(src.Get()))
    {
        LX_ERROR("Concatenation is only supported for keyframe curves");
        return false;
    }
    if (dst->GetDataType() != src->GetDataType())
    {
        LX_ERROR("Animation curve data type doesn't match");
        return false;
    }
    return true;
}

bool CanExtend(const LxCountedPtr<LxAnimationCurve>& curve, float dt)
{
    const LxKeyframeCurve* keyframes = dynamic_cast<LxKeyframeCurve*>(curve.Get());
    if (!keyframes)
    {
        LX_ERROR("Extension is only supported for keyframe curves");
        return false;
    }
    if (keyframes->GetNumKeys() == 0 || !(dt >= 0.0f))
    {
        LX_ERROR("LxExtendAnimationCurve.  Only a curve with keys can be extended, and only by a time >= 0.");
        return false;
    }
    return true;
}

void Append(LxKeyframeCurve& dst, const LxKeyframeCurve& src)
{
    const float offset = dst.GetAnimationLength();
    const unsigned int count = src.GetNumKeys(); // taken first: dst may be src
    for (unsigned int i = 0; i < count; ++i)
        dst.AddKey(offset + src.GetKeyTime(i), src.GetKeyData(i));
}
} // namespace

bool LxAppendAnimationCurve(const LxCountedPtr<LxAnimationCurve>& dst, const LxCountedPtr<LxAnimationCurve>& src)
{
    if (!CanAppend(dst, src))
        return false;
    Append(static_cast<LxKeyframeCurve&>(*dst), static_cast<const LxKeyframeCurve&>(*src));
    return true;
}

bool LxAppendAnimationSet(LxAnimationSet& dst, const LxAnimationSet& src)
{
    bool ok = true;
    for (const LxAnimationSet::CurveMap::Entry& entry : dst.GetCurves())
    {
        if (!src.GetCurve(entry.key))
        {
            LX_ERROR("Cannot concatenate animation sets: Curve \"%s\" not present in all sets", entry.key.c_str());
            ok = false;
        }
    }
    for (const LxAnimationSet::CurveMap::Entry& entry : src.GetCurves())
    {
        if (!dst.GetCurve(entry.key))
        {
            LX_ERROR("Cannot concatenate animation sets: Curve \"%s\" not present in all sets", entry.key.c_str());
            ok = false;
        }
    }
    if (!ok)
        return false;
    for (const LxAnimationSet::CurveMap::Entry& entry : dst.GetCurves())
        ok = CanAppend(entry.value, src.GetCurve(entry.key)) && ok;
    if (!ok)
        return false;
    for (const LxAnimationSet::CurveMap::Entry& entry : dst.GetCurves())
        Append(static_cast<LxKeyframeCurve&>(*entry.value),
               static_cast<const LxKeyframeCurve&>(*src.GetCurve(entry.key)));
    return true;
}

bool LxExtendAnimationCurve(const LxCountedPtr<LxAnimationCurve>& curve, float dt)
{
    if (!CanExtend(curve, dt))
        return false;
    LxKeyframeCurve& keyframes = static_cast<LxKeyframeCurve&>(*curve);
    return keyframes.AddKey(keyframes.GetAnimationLength() + dt, keyframes.GetKeyData(keyframes.GetNumKeys() - 1));
}

bool LxExtendAnimationSet(LxAnimationSet& set, float dt)
{
    bool ok = true;
    for (const LxAnimationSet::CurveMap::Entry& entry : set.GetCurves())
        ok = CanExtend(entry.value, dt) && ok;
    if (!ok)
        return false;
    for (const LxAnimationSet::CurveMap::Entry& entry : set.GetCurves())
        LxExtendAnimationCurve(entry.value, dt);
    return true;
}
