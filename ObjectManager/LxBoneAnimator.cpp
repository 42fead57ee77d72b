#include "ObjectManager/LxBoneAnimator.h"

#include "Common/LxLogManager.h"
#include "Common/LxMatrix4.h"
#include "Common/LxQuat.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxBone.h"

#include <algorithm>
#include <cmath>
#include <limits>

LxBoneAnimator* LxBoneAnimator::Create(const LxBone& bone, const LxAnimationSet& set)
{
    const LxString& name = bone.GetName();
    const LxString prefix = LxString("bone.") + name;
    LxBoneAnimator* animator = nullptr;
    LxCountedPtr<LxAnimationCurve> matrix = set.GetCurve(prefix);
    if (matrix)
    {
        if (matrix->GetDataType() != LxAnimationCurve::DATA_MATRIX)
        {
            LX_ERROR("Wrong data type for bone curve for bone named: %s", name.c_str());
            return nullptr;
        }
        animator = new LxBoneAnimator();
        animator->m_matrix = matrix;
        animator->m_fLength = matrix->GetAnimationLength();
        return animator;
    }
    struct Part
    {
        const char* suffix;
        LxAnimationCurve::AnimationDataType type;
        const char* message;
    };
    static const Part parts[3] = {
        {".translate", LxAnimationCurve::DATA_VEC3, "Wrong data type for translation curve for bone named: %s"},
        {".rotate", LxAnimationCurve::DATA_QUAT, "Wrong data type for rotation curve for bone named: %s"},
        {".scale", LxAnimationCurve::DATA_VEC3, "Wrong data type for scale curve for bone named: %s"},
    };
    LxCountedPtr<LxAnimationCurve> curves[3];
    for (unsigned int i = 0; i < 3; ++i)
    {
        curves[i] = set.GetCurve(prefix + parts[i].suffix);
        if (curves[i] && curves[i]->GetDataType() != parts[i].type)
        {
            LX_ERROR(parts[i].message, name.c_str());
            return nullptr;
        }
    }
    if (!curves[0] && !curves[1] && !curves[2])
    {
        LX_ERROR("Unable to create animator for bone named: %s.  The appropriate curves could not be found.",
                 name.c_str());
        return nullptr;
    }
    animator = new LxBoneAnimator();
    animator->m_translate = curves[0];
    animator->m_rotate = curves[1];
    animator->m_scale = curves[2];
    for (const LxCountedPtr<LxAnimationCurve>& curve : curves)
    {
        if (curve)
            animator->m_fLength = std::max(animator->m_fLength, curve->GetAnimationLength());
    }
    return animator;
}

float LxBoneAnimator::Wrap(float t) const
{
    // A zero-length animation (keys at time 0 only) would make the remainder NaN: it has one pose.
    return m_fLength > 0.0f ? std::fmod(t, m_fLength) : 0.0f;
}

void LxBoneAnimator::GetTransform(float t, LxMatrix4* out) const
{
    const float wrapped = Wrap(t);
    if (m_matrix)
    {
        LxMatrix4 m;
        m_matrix->GetValueMatrix(wrapped, &m);
        *out = m;
        return;
    }
    LxVector3 translation(0.0f, 0.0f, 0.0f), scale(1.0f, 1.0f, 1.0f);
    LxQuat rotation;
    if (m_translate)
        m_translate->GetValueVec3(wrapped, &translation);
    if (m_rotate)
        m_rotate->GetValueQuat(wrapped, &rotation);
    if (m_scale)
        m_scale->GetValueVec3(wrapped, &scale);
    out->MakeTransform(translation, rotation, scale);
}

void LxBoneAnimator::ExtrapolateTransform(float t, float dt, LxMatrix4* out) const
{
    if (!(dt > 0.0f))
    {
        GetTransform(t, out);
        return;
    }
    const float wrapped = Wrap(t);
    if (m_matrix)
    {
        LxMatrix4 value, gradient;
        gradient.MakeZero();
        m_matrix->GetValueMatrix(wrapped, &value);
        m_matrix->GetGradientMatrix(wrapped, &gradient, dt);
        for (unsigned int k = 0; k < 16; ++k)
            value[k] += gradient[k] * dt;
        *out = value;
        return;
    }
    LxVector3 translation(0.0f, 0.0f, 0.0f), scale(1.0f, 1.0f, 1.0f), rate;
    LxQuat rotation;
    if (m_translate && m_translate->GetValueVec3(wrapped, &translation) &&
        m_translate->GetGradientVec3(wrapped, &rate, dt))
        translation += rate * dt;
    if (m_scale && m_scale->GetValueVec3(wrapped, &scale) && m_scale->GetGradientVec3(wrapped, &rate, dt))
        scale += rate * dt;
    LxQuat before, after;
    if (m_rotate && m_rotate->GetValueQuat(wrapped, &rotation) && m_rotate->GetValueQuat(wrapped - dt, &before) &&
        m_rotate->GetValueQuat(wrapped + dt, &after))
    {
        // Linear quaternion blending may hand back -q across a key: compare the neighbours with the sign of the
        // rotation at t before differencing.
        if (rotation.Dot(before) < 0.0f)
            before = -before;
        if (rotation.Dot(after) < 0.0f)
            after = -after;
        rotation += (after - before) * 0.5f;
        rotation.Normalize();
    }
    out->MakeTransform(translation, rotation, scale);
}

bool LxBoneAnimator::AnyCutBetween(float t0, float t1) const
{
    const LxCountedPtr<LxAnimationCurve>* curves[4] = {&m_matrix, &m_translate, &m_rotate, &m_scale};
    for (const LxCountedPtr<LxAnimationCurve>* curve : curves)
    {
        if (*curve && (*curve)->HasCutInTimeInterval(t0, t1))
            return true;
    }
    return false;
}

bool LxBoneAnimator::HasCutInTimeInterval(float t0, float t1) const
{
    const float a = Wrap(t0);
    const float b = Wrap(t1);
    if (t1 >= t0 && b < a)
    {
        // Went round the end: from a to the end, then from before the start to b. The start itself is where the
        // loop lands, so a cut at time 0 counts as crossed.
        return AnyCutBetween(a, m_fLength) || AnyCutBetween(-std::numeric_limits<float>::infinity(), b);
    }
    return AnyCutBetween(a, b);
}
