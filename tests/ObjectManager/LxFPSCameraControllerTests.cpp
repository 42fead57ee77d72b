// First-person controller: which keys drive which axis and which events it consumes, the integration of
// acceleration, speed limits and damping against hand-computed positions, mouse turning with the pitch limit,
// freezing, lost focus and the field-of-view clamp.
#include "support/LxTestSupport.h"

#include "ObjectManager/LxFPSCameraController.h"
#include "WindowManager/LxKeyCodes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
void Press(LxFPSCameraController& c, unsigned key, unsigned modifiers = 0, bool* handled = nullptr)
{
    LxKeyEvent e(key, 0, modifiers);
    c.KeyPressed(e);
    if (handled)
        *handled = e.IsHandled();
}

void Release(LxFPSCameraController& c, unsigned key)
{
    LxKeyEvent e(key, 0, 0);
    c.KeyReleased(e);
}

// Runs `steps` updates of `dt` seconds after the initial time stamp.
void Advance(LxFPSCameraController& c, double& time, int steps, double dt)
{
    for (int i = 0; i < steps; ++i)
    {
        time += dt;
        c.Update(time);
    }
}

struct Rig
{
    LxCamera camera;
    LxFPSCameraController controller;
    double time = 0.0;
    Rig() : controller(&camera) { controller.Update(time); }
};
} // namespace

TEST(FPSCameraController, TuningDefaults)
{
    LxFPSCameraController c;
    const float expected[] = {100, 120, 2, 100, 0.75f, 8, 0.75f, 0.85f, 100, 120};
    const float actual[] = {c.m_fAcceleration,         c.m_fFastAcceleration,   c.m_fMouseRadiansPerKPixel,
                            c.m_fVerticalAcceleration, c.m_fTranslationDamping, c.m_fDampingRate,
                            c.m_fRotationDamping,      c.m_fMaxPitchFraction,   c.m_fMaxSpeed,
                            c.m_fFastMaxSpeed};
    for (unsigned i = 0; i < 10; ++i)
        EXPECT_FLOAT_EQ(actual[i], expected[i]) << i;
}

TEST(FPSCameraController, KeysDriveAxesAndConsumeEvents)
{
    struct Case
    {
        unsigned key, modifiers;
        bool handled;
        float x, y, z;
    } cases[] = {
        {'W', 0, true, 0, 0, 100},
        {'S', 0, true, 0, 0, -100},
        {'A', 0, true, -100, 0, 0},
        {'D', 0, true, 100, 0, 0},
        {'Q', 0, true, 0, -100, 0},
        {'E', 0, true, 0, 100, 0},
        {'W', LxKeyEvent::MODIFIER_ALT, false, 0, 0, 0},
        {'W', LxKeyEvent::MODIFIER_SHIFT, true, 0, 0, 100}, // the modifier bit alone is not the speed key
        {LX_KEY_SHIFT, 0, false, 0, 0, 0},
        {'X', 0, false, 0, 0, 0},
    };
    for (const Case& k : cases)
    {
        SCOPED_TRACE(k.key);
        LxFPSCameraController c;
        bool handled = false;
        Press(c, k.key, k.modifiers, &handled);
        EXPECT_EQ(handled, k.handled);
        const LxVector3 a = c.GetTranslationAccelerationFromInput();
        EXPECT_FLOAT_EQ(a.x, k.x);
        EXPECT_FLOAT_EQ(a.y, k.y);
        EXPECT_FLOAT_EQ(a.z, k.z);
        Release(c, k.key);
        EXPECT_FLOAT_EQ(c.GetTranslationAccelerationFromInput().Length(), 0.0f);
    }

    // The speed key switches to the fast acceleration; opposite keys cancel; losing focus forgets everything.
    LxFPSCameraController c;
    Press(c, LX_KEY_SHIFT);
    Press(c, 'W');
    Press(c, 'D');
    Press(c, 'A');
    LxVector3 a = c.GetTranslationAccelerationFromInput();
    EXPECT_FLOAT_EQ(a.x, 0.0f);
    EXPECT_FLOAT_EQ(a.z, 120.0f);
    c.FocusLost();
    EXPECT_FLOAT_EQ(c.GetTranslationAccelerationFromInput().Length(), 0.0f);
}

TEST(FPSCameraController, IntegratesLimitsAndDampsMotion)
{
    Rig r;
    Press(r.controller, 'W');
    Advance(r.controller, r.time, 1, 0.1);
    // v = 100 * 0.1 = 10; x += v * 0.1.
    EXPECT_NEAR(r.camera.GetPosition().z, 1.0f, 1e-5f);
    EXPECT_NEAR(r.controller.GetVelocity().z, 10.0f, 1e-4f);
    Advance(r.controller, r.time, 20, 0.1);
    EXPECT_NEAR(r.controller.GetVelocity().z, 100.0f, 1e-3f);
    const float before = r.camera.GetPosition().z;
    Advance(r.controller, r.time, 1, 0.1);
    EXPECT_NEAR(r.camera.GetPosition().z - before, 10.0f, 1e-3f);
    Press(r.controller, LX_KEY_SHIFT);
    Advance(r.controller, r.time, 20, 0.1);
    EXPECT_NEAR(r.controller.GetVelocity().z, 120.0f, 1e-3f);

    // Released: the speed falls to a quarter every eighth of a second.
    Release(r.controller, 'W');
    Advance(r.controller, r.time, 1, 0.125);
    EXPECT_NEAR(r.controller.GetVelocity().z, 30.0f, 1e-3f);
    // A stall counts as a quarter second at most.
    r.time += 10.0;
    r.controller.Update(r.time);
    EXPECT_NEAR(r.controller.GetVelocity().z, 30.0f * std::pow(0.25f, 2.0f), 1e-3f);
    r.controller.FreezeCamera();
    const LxPoint3 frozen = r.camera.GetPosition();
    Advance(r.controller, r.time, 3, 0.1);
    EXPECT_TRUE(r.camera.GetPosition() == frozen);

    // Movement follows the camera's axes; vertical movement follows the world's.
    Rig s;
    s.camera.SetLookAt(LxPoint3(-1, 0, 0), LxVector3(0, 1, 0));
    s.controller.SetCamera(&s.camera);
    Press(s.controller, 'D');
    Press(s.controller, 'E');
    Advance(s.controller, s.time, 1, 0.1);
    EXPECT_NEAR(s.camera.GetPosition().x, 0.0f, 1e-5f);
    EXPECT_NEAR(s.camera.GetPosition().y, 1.0f, 1e-5f);
    EXPECT_NEAR(s.camera.GetPosition().z, 1.0f, 1e-5f); // right of a camera looking along -X is +Z
}

TEST(FPSCameraController, MouseTurnsWithPitchLimit)
{
    Rig r;
    LxMouseMoveEvent first(100, 100, LxMouseMoveEvent::BUTTON_LEFT);
    r.controller.MouseMoved(first);
    EXPECT_FALSE(first.IsHandled()); // only records where the cursor is
    LxMouseMoveEvent hover(200, 100, 0);
    r.controller.MouseMoved(hover);
    EXPECT_FALSE(hover.IsHandled());
    EXPECT_FLOAT_EQ(r.controller.GetRotationAccelerationFromInput().x, 0.0f);
    LxMouseMoveEvent drag(300, 100, LxMouseMoveEvent::BUTTON_RIGHT);
    r.controller.MouseMoved(drag);
    EXPECT_TRUE(drag.IsHandled());
    EXPECT_NEAR(r.controller.GetRotationAccelerationFromInput().x, 0.2f, 1e-6f);

    // Half an eighth of a second applies 1 - 0.25^0.5 = half of the queued turn.
    Advance(r.controller, r.time, 1, 0.0625);
    EXPECT_NEAR(r.controller.GetYaw(), 0.1f, 1e-5f);
    Advance(r.controller, r.time, 40, 0.1);
    EXPECT_NEAR(r.controller.GetYaw(), 0.2f, 1e-5f);
    EXPECT_NEAR(r.camera.GetView().x, std::sin(0.2f), 1e-5f);
    EXPECT_NEAR(r.camera.GetView().z, std::cos(0.2f), 1e-5f);
    EXPECT_NEAR(r.camera.GetUp().y, 1.0f, 1e-5f);

    // Dragging upwards a long way stops at 0.85 of a right angle.
    LxMouseMoveEvent up(300, -5000, LxMouseMoveEvent::BUTTON_LEFT);
    r.controller.MouseMoved(up);
    Advance(r.controller, r.time, 40, 0.1);
    EXPECT_NEAR(r.controller.GetPitch(), 0.85f * 1.5707964f, 1e-5f);
    EXPECT_NEAR(r.camera.GetView().y, std::sin(0.85f * 1.5707964f), 1e-5f);
    EXPECT_NEAR(r.camera.GetRight().y, 0.0f, 1e-6f);
}

TEST(FPSCameraController, ChangeFOVClamps)
{
    struct Case
    {
        float start, delta, expected;
    } cases[] = {{60, 500, 179}, {60, -500, 1}, {60, 15, 75}, {179, 1, 179}};
    for (const Case& k : cases)
    {
        LxCamera camera;
        camera.SetFrustum(k.start, 1.5f, 0.25f, 300.0f);
        LxFPSCameraController c(&camera);
        c.ChangeFOV(k.delta);
        EXPECT_FLOAT_EQ(camera.GetFOV(), k.expected);
        EXPECT_FLOAT_EQ(camera.GetAspect(), 1.5f);
        EXPECT_FLOAT_EQ(camera.GetNear(), 0.25f);
        EXPECT_FLOAT_EQ(camera.GetFar(), 300.0f);
    }
    LxFPSCameraController none;
    none.ChangeFOV(10.0f);
    none.Update(0.0);
    none.Update(1.0);
}
