// LxFPSCameraController: first-person flying. W/S move along the view axis, A/D along the right axis, Q/E down and
// up along the world's +Y; Shift selects the faster speeds. Keys are ignored while Alt is held; a movement key marks
// its event handled, Shift does not (other listeners still see it). Moving the mouse with a button held turns the
// camera: yaw about world +Y and pitch, the pitch kept within MaxPitchFraction of a right angle.
//
// Motion: a held key accelerates the camera along its axis (Acceleration, FastAcceleration, VerticalAcceleration,
// units/s^2); speed is clamped to MaxSpeed (FastMaxSpeed with Shift). With no key held the velocity decays by the
// factor (1 - TranslationDamping) every 1/DampingRate seconds. Mouse turns are queued and applied smoothly: each
// update applies the share 1 - (1 - RotationDamping)^(dt * DampingRate) of what is still queued. Update steps are
// clamped to 0.25 s so that a stall does not fling the camera; the first Update only records the time.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxVector3.h"
#include "ObjectManager/LxCameraController.h"

class LX_API LxFPSCameraController : public LxCameraController
{
public:
    explicit LxFPSCameraController(LxCamera* camera = nullptr);

    // Takes the camera's current view direction as the starting yaw and pitch.
    void SetCamera(LxCamera* camera) override;

    void KeyPressed(LxKeyEvent& event) override;
    void KeyReleased(LxKeyEvent& event) override;
    void MouseMoved(LxMouseMoveEvent& event) override;
    void FocusLost() override;

    void Update(double time) override;
    // Stops all motion: velocity and queued turns are dropped (held keys still accelerate on the next update).
    void FreezeCamera();
    // Widens (positive) or narrows the camera's field of view by `delta` degrees, clamped to [1, 179], keeping
    // aspect ratio, near and far.
    void ChangeFOV(float delta);

    // Camera-local acceleration (x right, y world up, z forward) the held keys ask for.
    LxVector3 GetTranslationAccelerationFromInput() const;
    // Queued turn (x yaw, y pitch, radians) still to be applied.
    LxVector3 GetRotationAccelerationFromInput() const { return LxVector3(m_fPendingYaw, m_fPendingPitch, 0.0f); }
    const LxVector3& GetVelocity() const { return m_velocity; }
    float GetYaw() const { return m_fYaw; }
    float GetPitch() const { return m_fPitch; }

    // Tuning (see the header comment for their meaning).
    float m_fAcceleration;
    float m_fFastAcceleration;
    float m_fMouseRadiansPerKPixel;
    float m_fVerticalAcceleration;
    float m_fTranslationDamping;
    float m_fDampingRate;
    float m_fRotationDamping;
    float m_fMaxPitchFraction;
    float m_fMaxSpeed;
    float m_fFastMaxSpeed;

protected:
    void UpdatePosition(float dt);
    void UpdateOrientation(float dt);
    void ApplyOrientation();

private:
    enum Flag
    {
        FLAG_FORWARD = 1 << 0,
        FLAG_BACKWARD = 1 << 1,
        FLAG_LEFT = 1 << 2,
        FLAG_RIGHT = 1 << 3,
        FLAG_DOWN = 1 << 4,
        FLAG_UP = 1 << 5,
        FLAG_FAST = 1 << 6,
    };
    static unsigned FlagForKey(unsigned keyCode);

    unsigned m_nFlags = 0;
    LxVector3 m_velocity;
    float m_fYaw = 0.0f, m_fPitch = 0.0f;
    float m_fPendingYaw = 0.0f, m_fPendingPitch = 0.0f;
    bool m_bHaveMouse = false;
    int m_nMouseX = 0, m_nMouseY = 0;
};
