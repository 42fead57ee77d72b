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
    // Longest step a controller moves by: a stall (a breakpoint, a slow load) must not fling the camera.
    static constexpr float kMaxTimeStep = 0.25f;

    // The seconds since the previous call, clamped to kMaxTimeStep. False when there is nothing to move: on the first
    // call, which only records the time (*first set when given), and when time did not advance.
    bool StepTime(double time, float* dt, bool* first = nullptr)
    {
        if (!m_bHaveStepTime)
        {
            m_bHaveStepTime = true;
            m_stepTime = time;
            if (first)
                *first = true;
            return false;
        }
        const float step = static_cast<float>(time - m_stepTime);
        m_stepTime = time;
        if (!(step > 0.0f))
            return false;
        *dt = step > kMaxTimeStep ? kMaxTimeStep : step;
        return true;
    }

    LxCamera* m_pCamera;

private:
    bool m_bHaveStepTime = false;
    double m_stepTime = 0.0;
};
