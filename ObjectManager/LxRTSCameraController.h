// LxRTSCameraController: the strategy-game camera. It looks down at a focus point on the ground plane (y = 0) from
// a height, at a pitch below the horizon and a heading (yaw about world +Y, 0 looking along +Z):
//   SetViewParameters(height, pitchDegrees, yawDegrees); the camera sits height above the ground, on the line
//   through the focus point at that pitch.
// Input: W/S or the up/down arrows move the focus forwards/backwards along the heading, A/D or left/right sideways,
// at PanSpeed x height units per second (so the ground appears to move at one speed at any height); the wheel
// zooms (each notch scales the height by ZoomFactor, kept within [MinHeight, MaxHeight]); moving the mouse with the
// right button held turns the heading (RotateRadiansPerPixel). Keys are ignored while Alt is held; a handled key
// marks its event. RestrictMovement keeps the focus inside a rectangle of the ground (x and z).
// Update applies the held keys over the time since the previous update (the first only records the time; steps
// are clamped to 0.25 s) and places the camera.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxVector2.h"
#include "Common/LxVector3.h"
#include "ObjectManager/LxCameraController.h"

class LX_API LxRTSCameraController : public LxCameraController
{
public:
    explicit LxRTSCameraController(LxCamera* camera = nullptr);

    // Height above the ground (clamped to [MinHeight, MaxHeight]), pitch in degrees below the horizon (clamped to
    // [1, 90]), heading in degrees.
    void SetViewParameters(float height, float pitchDegrees, float yawDegrees);
    // Focus limits on the ground: x within [minX, maxX], z within [minY, maxY]. Reversed bounds are swapped.
    void RestrictMovement(float minX, float maxX, float minY, float maxY);
    // Moves the focus to (xy.x, 0, xy.y), kept within the limits, and places the camera there.
    void JumpToPosition(const LxVector2& xy);

    void KeyPressed(LxKeyEvent& event) override;
    void KeyReleased(LxKeyEvent& event) override;
    void MouseMoved(LxMouseMoveEvent& event) override;
    void FocusLost() override { m_nFlags = 0; }
    void Update(double time) override;

    const LxVector3& GetFocus() const { return m_focus; }
    float GetHeight() const { return m_fHeight; }
    float GetPitch() const { return m_fPitch; }
    float GetYaw() const { return m_fYaw; }

    float m_fPanSpeed = 1.0f;
    float m_fZoomFactor = 0.9f;
    float m_fMinHeight = 1.0f;
    float m_fMaxHeight = 1000.0f;
    float m_fRotateRadiansPerPixel = 0.005f;

private:
    void ClampFocus();
    void PlaceCamera();

    unsigned int m_nFlags = 0;
    LxVector3 m_focus;
    float m_fHeight = 20.0f;
    float m_fPitch = 60.0f * 3.14159265f / 180.0f;
    float m_fYaw = 0.0f;
    bool m_bRestricted = false;
    float m_limits[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    bool m_bHaveMouse = false;
    int m_nMouseX = 0;
};
