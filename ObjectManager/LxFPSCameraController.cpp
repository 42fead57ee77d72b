#include "ObjectManager/LxFPSCameraController.h"

#include "WindowManager/LxKeyCodes.h"

#include <cmath>

namespace
{
const float kHalfPi = 1.5707964f;
} // namespace

LxFPSCameraController::LxFPSCameraController(LxCamera* camera)
    : LxCameraController(nullptr), m_fAcceleration(100.0f), m_fFastAcceleration(120.0f), m_fMouseRadiansPerKPixel(2.0f),
      m_fVerticalAcceleration(100.0f), m_fTranslationDamping(0.75f), m_fDampingRate(8.0f), m_fRotationDamping(0.75f),
      m_fMaxPitchFraction(0.85f), m_fMaxSpeed(100.0f), m_fFastMaxSpeed(120.0f)
{
    SetCamera(camera);
}

void LxFPSCameraController::SetCamera(LxCamera* camera)
{
    m_pCamera = camera;
    if (!camera)
        return;
    const LxVector3& view = camera->GetView();
    m_fYaw = std::atan2(view.x, view.z);
    const float y = view.y < -1.0f ? -1.0f : (view.y > 1.0f ? 1.0f : view.y);
    m_fPitch = std::asin(y);
}

unsigned LxFPSCameraController::FlagForKey(unsigned keyCode)
{
    switch (keyCode)
    {
    case 'W':
        return FLAG_FORWARD;
    case 'S':
        return FLAG_BACKWARD;
    case 'A':
        return FLAG_LEFT;
    case 'D':
        return FLAG_RIGHT;
    case 'Q':
        return FLAG_DOWN;
    case 'E':
        return FLAG_UP;
    case LX_KEY_SHIFT:
        return FLAG_FAST;
    default:
        return 0;
    }
}

void LxFPSCameraController::KeyPressed(LxKeyEvent& event)
{
    if (event.IsAltPressed())
        return;
    const unsigned flag = FlagForKey(event.GetKeyCode());
    m_nFlags |= flag;
    if (flag != 0 && flag != FLAG_FAST)
        event.SetHandled();
}

void LxFPSCameraController::KeyReleased(LxKeyEvent& event)
{
    if (event.IsAltPressed())
        return;
    const unsigned flag = FlagForKey(event.GetKeyCode());
    m_nFlags &= ~flag;
    if (flag != 0 && flag != FLAG_FAST)
        event.SetHandled();
}

void LxFPSCameraController::FocusLost()
{
    m_nFlags = 0;
    m_bHaveMouse = false;
}

void LxFPSCameraController::MouseMoved(LxMouseMoveEvent& event)
{
    const bool turning = event.GetButtons() != 0 && m_bHaveMouse;
    if (turning)
    {
        const float scale = m_fMouseRadiansPerKPixel * 0.001f;
        m_fPendingYaw += static_cast<float>(event.GetX() - m_nMouseX) * scale;
        m_fPendingPitch -= static_cast<float>(event.GetY() - m_nMouseY) * scale;
        event.SetHandled();
    }
    m_bHaveMouse = true;
    m_nMouseX = event.GetX();
    m_nMouseY = event.GetY();
}

void LxFPSCameraController::FreezeCamera()
{
    m_velocity = LxVector3(0.0f, 0.0f, 0.0f);
    m_fPendingYaw = m_fPendingPitch = 0.0f;
}

void LxFPSCameraController::ChangeFOV(float delta)
{
    if (!m_pCamera)
        return;
    float fov = m_pCamera->GetFOV() + delta;
    fov = fov < 1.0f ? 1.0f : (fov > 179.0f ? 179.0f : fov);
    m_pCamera->SetFrustum(fov, m_pCamera->GetAspect(), m_pCamera->GetNear(), m_pCamera->GetFar());
}

LxVector3 LxFPSCameraController::GetTranslationAccelerationFromInput() const
{
    const float a = (m_nFlags & FLAG_FAST) ? m_fFastAcceleration : m_fAcceleration;
    LxVector3 acc(0.0f, 0.0f, 0.0f);
    if (m_nFlags & FLAG_RIGHT)
        acc.x += a;
    if (m_nFlags & FLAG_LEFT)
        acc.x -= a;
    if (m_nFlags & FLAG_UP)
        acc.y += m_fVerticalAcceleration;
    if (m_nFlags & FLAG_DOWN)
        acc.y -= m_fVerticalAcceleration;
    if (m_nFlags & FLAG_FORWARD)
        acc.z += a;
    if (m_nFlags & FLAG_BACKWARD)
        acc.z -= a;
    return acc;
}

void LxFPSCameraController::Update(double time)
{
    float dt = 0.0f;
    if (!StepTime(time, &dt))
        return;
    if (!m_pCamera)
        return;
    UpdateOrientation(dt);
    UpdatePosition(dt);
}

void LxFPSCameraController::UpdatePosition(float dt)
{
    const LxVector3 acc = GetTranslationAccelerationFromInput();
    if (acc.SquaredLength() > 0.0f)
        m_velocity += acc * dt;
    else
        m_velocity = m_velocity * std::pow(1.0f - m_fTranslationDamping, dt * m_fDampingRate);
    const float maxSpeed = (m_nFlags & FLAG_FAST) ? m_fFastMaxSpeed : m_fMaxSpeed;
    const float speed = m_velocity.Length();
    if (speed > maxSpeed)
        m_velocity = m_velocity * (maxSpeed / speed);
    const LxVector3 world =
        m_pCamera->GetRight() * m_velocity.x + LxVector3(0, 1, 0) * m_velocity.y + m_pCamera->GetView() * m_velocity.z;
    m_pCamera->SetPosition(m_pCamera->GetPosition() + world * dt);
}

void LxFPSCameraController::UpdateOrientation(float dt)
{
    if (m_fPendingYaw == 0.0f && m_fPendingPitch == 0.0f)
        return;
    const float share = 1.0f - std::pow(1.0f - m_fRotationDamping, dt * m_fDampingRate);
    const float yaw = m_fPendingYaw * share, pitch = m_fPendingPitch * share;
    m_fPendingYaw -= yaw;
    m_fPendingPitch -= pitch;
    if (std::fabs(m_fPendingYaw) < 1e-6f)
        m_fPendingYaw = 0.0f;
    if (std::fabs(m_fPendingPitch) < 1e-6f)
        m_fPendingPitch = 0.0f;
    m_fYaw += yaw;
    const float limit = m_fMaxPitchFraction * kHalfPi;
    m_fPitch += pitch;
    m_fPitch = m_fPitch < -limit ? -limit : (m_fPitch > limit ? limit : m_fPitch);
    ApplyOrientation();
}

void LxFPSCameraController::ApplyOrientation()
{
    const float cp = std::cos(m_fPitch), sp = std::sin(m_fPitch);
    const float cy = std::cos(m_fYaw), sy = std::sin(m_fYaw);
    const LxVector3 view(cp * sy, sp, cp * cy);
    const LxVector3 right(cy, 0.0f, -sy);
    m_pCamera->SetOrientation(right, view.Cross(right), view);
}
