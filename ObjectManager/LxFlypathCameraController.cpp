#include "ObjectManager/LxFlypathCameraController.h"

#include "Common/LxLogManager.h"
#include "Common/LxQuat.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxCamera.h"

#include <cmath>

LxFlypathCameraController::LxFlypathCameraController(LxCamera* camera, const LxCountedPtr<LxAnimationCurve>& position,
                                                     const LxCountedPtr<LxAnimationCurve>& rotation,
                                                     const LxCountedPtr<LxAnimationCurve>& fov)
    : LxCameraController(camera), m_position(position), m_rotation(rotation), m_fov(fov)
{
    for (const LxCountedPtr<LxAnimationCurve>* c : {&m_position, &m_rotation, &m_fov})
        if (*c && (*c)->GetAnimationLength() > m_fLength)
            m_fLength = (*c)->GetAnimationLength();
}

LxFlypathCameraController* LxFlypathCameraController::CreateFromSet(LxCamera* camera, const LxAnimationSet& set,
                                                                    const LxString& name)
{
    LxCountedPtr<LxAnimationCurve> position = set.GetCurve(name + ".position");
    if (!position || position->GetDataType() != LxAnimationCurve::DATA_VEC3)
    {
        LX_ERROR("LxFlypathCameraController::CreateFromSet.  No vec3 curve %s.position", name.c_str());
        return nullptr;
    }
    LxCountedPtr<LxAnimationCurve> rotation = set.GetCurve(name + ".orientation");
    if (rotation && rotation->GetDataType() != LxAnimationCurve::DATA_QUAT)
    {
        LX_ERROR("LxFlypathCameraController::CreateFromSet.  Curve %s.orientation must be a quat curve", name.c_str());
        return nullptr;
    }
    if (!rotation)
    {
        rotation = set.GetCurve(name + ".target");
        if (rotation && rotation->GetDataType() != LxAnimationCurve::DATA_VEC3)
        {
            LX_ERROR("LxFlypathCameraController::CreateFromSet.  Curve %s.target must be a vec3 curve", name.c_str());
            return nullptr;
        }
    }
    LxCountedPtr<LxAnimationCurve> fov = set.GetCurve(name + ".fov");
    if (fov && fov->GetDataType() != LxAnimationCurve::DATA_FLOAT)
    {
        LX_ERROR("LxFlypathCameraController::CreateFromSet.  Curve %s.fov must be a float curve", name.c_str());
        return nullptr;
    }
    return new LxFlypathCameraController(camera, position, rotation, fov);
}

void LxFlypathCameraController::SetAnimationSpeed(float speed)
{
    // Curve time is accumulated update by update, so a new speed applies from here on without a jump.
    m_fSpeed = speed;
}

float LxFlypathCameraController::Wrap(float t) const
{
    if (!m_bLoop || !(m_fLength > 0.0f))
        return t;
    const float w = std::fmod(t, m_fLength);
    return w < 0.0f ? w + m_fLength : w;
}

void LxFlypathCameraController::Update(double time)
{
    if (!m_bHaveTime)
    {
        m_bHaveTime = true;
        m_lastTime = time;
        m_fCurveTime = 0.0f;
    }
    else
    {
        m_fCurveTime = Wrap(m_fCurveTime + static_cast<float>(time - m_lastTime) * m_fSpeed);
        m_lastTime = time;
    }
    ApplyCurveTime(m_fCurveTime);
}

void LxFlypathCameraController::ApplyCurveTime(float t)
{
    if (!m_pCamera || !m_position)
        return;
    t = Wrap(t);
    LxVector3 p;
    if (!m_position->GetValueVec3(t, &p))
        return;
    m_pCamera->SetPosition(LxPoint3(p.x, p.y, p.z));
    if (m_rotation)
    {
        if (m_rotation->GetDataType() == LxAnimationCurve::DATA_QUAT)
        {
            LxQuat q;
            if (m_rotation->GetValueQuat(t, &q))
                m_pCamera->SetOrientation(q);
        }
        else
        {
            LxVector3 target;
            if (m_rotation->GetValueVec3(t, &target))
                m_pCamera->SetLookAt(LxPoint3(target.x, target.y, target.z), LxVector3(0, 1, 0));
        }
    }
    float fov = 0.0f;
    if (m_fov && m_fov->GetValueFloat(t, &fov))
        m_pCamera->SetFrustum(fov, m_pCamera->GetAspect(), m_pCamera->GetNear(), m_pCamera->GetFar());
}

bool LxFlypathCameraController::DoesCameraCut(float t0, float t1) const
{
    for (const LxCountedPtr<LxAnimationCurve>* c : {&m_position, &m_rotation, &m_fov})
        if (*c && (*c)->HasCutInTimeInterval(t0, t1))
            return true;
    return false;
}
