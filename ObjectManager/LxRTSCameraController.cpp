#include "ObjectManager/LxRTSCameraController.h"

#include "ObjectManager/LxCamera.h"
#include "WindowManager/LxKeyCodes.h"

#include <cmath>

namespace
{
const float kPi = 3.14159265f;
enum
{
    PAN_FORWARD = 1 << 0,
    PAN_BACKWARD = 1 << 1,
    PAN_LEFT = 1 << 2,
    PAN_RIGHT = 1 << 3
};

unsigned int FlagForKey(unsigned int key)
{
    switch (key)
    {
    case 'W':
    case LX_KEY_UP:
        return PAN_FORWARD;
    case 'S':
    case LX_KEY_DOWN:
        return PAN_BACKWARD;
    case 'A':
    case LX_KEY_LEFT:
        return PAN_LEFT;
    case 'D':
    case LX_KEY_RIGHT:
        return PAN_RIGHT;
    default:
        return 0;
    }
}
} // namespace

LxRTSCameraController::LxRTSCameraController(LxCamera* camera) : LxCameraController(camera) {}

void LxRTSCameraController::SetViewParameters(float height, float pitchDegrees, float yawDegrees)
{
    m_fHeight = height < m_fMinHeight ? m_fMinHeight : (height > m_fMaxHeight ? m_fMaxHeight : height);
    const float pitch = pitchDegrees < 1.0f ? 1.0f : (pitchDegrees > 90.0f ? 90.0f : pitchDegrees);
    m_fPitch = pitch * kPi / 180.0f;
    m_fYaw = yawDegrees * kPi / 180.0f;
    PlaceCamera();
}

void LxRTSCameraController::RestrictMovement(float minX, float maxX, float minY, float maxY)
{
    m_limits[0] = minX < maxX ? minX : maxX;
    m_limits[1] = minX < maxX ? maxX : minX;
    m_limits[2] = minY < maxY ? minY : maxY;
    m_limits[3] = minY < maxY ? maxY : minY;
    m_bRestricted = true;
    ClampFocus();
    PlaceCamera();
}

void LxRTSCameraController::JumpToPosition(const LxVector2& xy)
{
    m_focus = LxVector3(xy.x, 0.0f, xy.y);
    ClampFocus();
    PlaceCamera();
}

void LxRTSCameraController::ClampFocus()
{
    if (!m_bRestricted)
        return;
    m_focus.x = m_focus.x < m_limits[0] ? m_limits[0] : (m_focus.x > m_limits[1] ? m_limits[1] : m_focus.x);
    m_focus.z = m_focus.z < m_limits[2] ? m_limits[2] : (m_focus.z > m_limits[3] ? m_limits[3] : m_focus.z);
}

void LxRTSCameraController::PlaceCamera()
{
    if (!m_pCamera)
        return;
    const LxVector3 heading(std::sin(m_fYaw), 0.0f, std::cos(m_fYaw));
    // Straight down has no usable up from the world; the heading serves instead.
    const float back = m_fHeight / std::tan(m_fPitch);
    const LxVector3 eye = m_focus - heading * back + LxVector3(0.0f, m_fHeight, 0.0f);
    m_pCamera->SetPosition(LxPoint3(eye.x, eye.y, eye.z));
    const bool straightDown = m_fPitch > 0.5f * kPi - 1e-4f;
    m_pCamera->SetLookAt(LxPoint3(m_focus.x, m_focus.y, m_focus.z), straightDown ? heading : LxVector3(0, 1, 0));
}

void LxRTSCameraController::KeyPressed(LxKeyEvent& event)
{
    if (event.IsAltPressed())
        return;
    const unsigned int key = event.GetKeyCode();
    if (key == LX_KEY_WHEEL_UP || key == LX_KEY_WHEEL_DOWN)
    {
        const float h = key == LX_KEY_WHEEL_UP ? m_fHeight * m_fZoomFactor : m_fHeight / m_fZoomFactor;
        m_fHeight = h < m_fMinHeight ? m_fMinHeight : (h > m_fMaxHeight ? m_fMaxHeight : h);
        PlaceCamera();
        event.SetHandled();
        return;
    }
    const unsigned int flag = FlagForKey(key);
    if (flag)
    {
        m_nFlags |= flag;
        event.SetHandled();
    }
}

void LxRTSCameraController::KeyReleased(LxKeyEvent& event)
{
    const unsigned int flag = FlagForKey(event.GetKeyCode());
    m_nFlags &= ~flag;
    if (flag && !event.IsAltPressed())
        event.SetHandled();
}

void LxRTSCameraController::MouseMoved(LxMouseMoveEvent& event)
{
    if (!event.IsRightButtonDown())
    {
        m_bHaveMouse = false;
        return;
    }
    if (m_bHaveMouse)
    {
        m_fYaw += static_cast<float>(event.GetX() - m_nMouseX) * m_fRotateRadiansPerPixel;
        PlaceCamera();
        event.SetHandled();
    }
    m_bHaveMouse = true;
    m_nMouseX = event.GetX();
}

void LxRTSCameraController::Update(double time)
{
    float dt = 0.0f;
    bool first = false;
    if (!StepTime(time, &dt, &first))
    {
        if (first)
            PlaceCamera();
        return;
    }
    const LxVector3 forward(std::sin(m_fYaw), 0.0f, std::cos(m_fYaw));
    const LxVector3 right(forward.z, 0.0f, -forward.x);
    LxVector3 move;
    if (m_nFlags & PAN_FORWARD)
        move += forward;
    if (m_nFlags & PAN_BACKWARD)
        move -= forward;
    if (m_nFlags & PAN_RIGHT)
        move += right;
    if (m_nFlags & PAN_LEFT)
        move -= right;
    if (move.SquaredLength() > 0.0f)
    {
        m_focus += move.Normalized() * (m_fPanSpeed * m_fHeight * dt);
        ClampFocus();
    }
    PlaceCamera();
}
