// LxCameraController: moves one camera (not owned) from input events or over time. Register it as an input
// listener with the window manager and call Update once per frame with the clock's time in seconds; with no camera
// set it consumes input but moves nothing. The camera must outlive the controller or be unset first.
#pragma once

#include "Common/LxApi.h"
#include "ObjectManager/LxCamera.h"
#include "WindowManager/LxInputListener.h"

class LX_API LxCameraController : public LxInputListener
{
public:
    explicit LxCameraController(LxCamera* camera = nullptr) : m_pCamera(camera) {}
    ~LxCameraController() override = default;

    virtual void SetCamera(LxCamera* camera) { m_pCamera = camera; }
    LxCamera* GetCamera() const { return m_pCamera; }

    // Advances the motion to `time` (seconds, the same clock on every call).
    virtual void Update(double time) = 0;
    // The window lost the keyboard focus: forget every held key.
    virtual void FocusLost() {}

protected:
    LxCamera* m_pCamera;
};
