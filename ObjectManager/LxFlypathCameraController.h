// LxFlypathCameraController: moves a camera along animation curves: a position curve (vec3) and either an
// orientation curve (quat) or a look-at target curve (vec3, the up direction world +Y), with an optional
// field-of-view curve (float, degrees; aspect, near and far kept).
//
// Time: the first Update records the start; afterwards the curves are evaluated at (time - start) x speed, wrapped
// by the longest curve's length when looping (the default). SetAnimationSpeed changes the rate from the current
// point on, without a jump. DoesCameraCut(t0, t1) asks the curves, in curve time, whether playback from t0 to t1
// jumps (a cut: two keys at one time), so a renderer can drop motion blur or temporal history across it.
//
// CreateFromSet reads the curves "<name>.position", "<name>.orientation" or "<name>.target", and "<name>.fov" from
// an animation set; null (logged) without a vec3 position curve or when a curve has the wrong type. The controller
// shares the curves. Input events are not used.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"
#include "ObjectManager/LxAnimationCurve.h"
#include "ObjectManager/LxCameraController.h"

class LxAnimationSet;

class LX_API LxFlypathCameraController : public LxCameraController
{
public:
    // `rotation` is a quat curve (orientation) or a vec3 curve (look-at target); either may be empty, as may `fov`.
    LxFlypathCameraController(LxCamera* camera, const LxCountedPtr<LxAnimationCurve>& position,
                              const LxCountedPtr<LxAnimationCurve>& rotation,
                              const LxCountedPtr<LxAnimationCurve>& fov = LxCountedPtr<LxAnimationCurve>());
    static LxFlypathCameraController* CreateFromSet(LxCamera* camera, const LxAnimationSet& set, const LxString& name);

    void SetAnimationSpeed(float speed);
    float GetAnimationSpeed() const { return m_fSpeed; }
    void SetLooping(bool loop) { m_bLoop = loop; }
    float GetAnimationLength() const { return m_fLength; }
    // The curve time of the last update.
    float GetCurveTime() const { return m_fCurveTime; }

    void Update(double time) override;
    // Places the camera at curve time t (wrapped when looping).
    void ApplyCurveTime(float t);
    bool DoesCameraCut(float t0, float t1) const;

private:
    float Wrap(float t) const;

    LxCountedPtr<LxAnimationCurve> m_position;
    LxCountedPtr<LxAnimationCurve> m_rotation;
    LxCountedPtr<LxAnimationCurve> m_fov;
    float m_fLength = 0.0f;
    float m_fSpeed = 1.0f;
    bool m_bLoop = true;
    bool m_bHaveTime = false;
    double m_lastTime = 0.0;
    float m_fCurveTime = 0.0f;
};
