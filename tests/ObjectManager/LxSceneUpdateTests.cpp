// Particle groups as scene objects, the strategy and fly-path camera controllers, and the per-frame update order.
#include "LxSceneTestUtil.h"
#include "support/LxTestSupport.h"

#include "Common/LxClock.h"
#include "Common/LxTimeSource.h"
#include "ObjectManager/LxFlypathCameraController.h"
#include "ObjectManager/LxFrameUpdate.h"
#include "ObjectManager/LxObjectListener.h"
#include "ObjectManager/LxParticleGroup.h"
#include "ObjectManager/LxRTSCameraController.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "WindowManager/LxKeyCodes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

using LxSceneTest::Scene;

namespace
{
void ExpectPoint(float x, float y, float z, const LxPoint3& p, const char* what)
{
    EXPECT_NEAR(x, p.x, 1e-4f) << what;
    EXPECT_NEAR(y, p.y, 1e-4f) << what;
    EXPECT_NEAR(z, p.z, 1e-4f) << what;
}

bool SameParticles(const LxParticleSimulator& a, const LxParticleSimulator& b)
{
    return a.GetCount() == b.GetCount() &&
           std::memcmp(a.GetData(), b.GetData(), a.GetCount() * sizeof(LxParticleSimulator::Particle)) == 0;
}
} // namespace

TEST(LxParticleGroup, SimulatesAndDrawsItsSystems)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    scene.Write("fire/particleFile.txt",
                "Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard Sparks Effect \"particles.fx\"\n"
                "  WarmUp 0.5 EffectParam vTint Param KeyFrame KeyFrameChannel 0 0 20 1 EndKeyFrameChannel EndParam\n"
                "  Emitter Shape E Rate Param Fixed 10 Life Param Fixed 2 Velocity Param Random -1 1 0 2 -1 1\n"
                "    Size Param KeyFrame KeyFrameChannel 0 1 1 2 EndKeyFrameChannel EndParam EndEmitter\n"
                "EndParticleSystem\n");
    LxParticleGroup* group = LxObjectManager::GetRef().CreateParticleGroup("fire", "fire");
    ASSERT_NE(nullptr, group);
    ASSERT_EQ(1u, group->GetSystemCount());
    EXPECT_TRUE(group->GetSystemEffect(0));
    EXPECT_TRUE(group->GetAnimationSet().GetCurve("Sparks.0.E.Size")) << "keyframed parameters become curves";

    // The group's system replays a simulator of the same description and seed: warm-up in 1/30 s steps, then the
    // time between updates (a long gap clamped to 0.25 s).
    LxParticleSimulator reference(group->GetDesc().GetSystem(0), group->GetSeed());
    for (int i = 0; i < 15; ++i)
        reference.Step(1.0f / 30.0f);
    group->UpdateObject(10.0);
    EXPECT_TRUE(SameParticles(reference, group->GetSimulator(0)));
    reference.Step(0.25f);
    group->UpdateObject(12.0);
    ASSERT_TRUE(SameParticles(reference, group->GetSimulator(0)));
    const LxBoundingBox bounds = reference.ComputeBounds();
    EXPECT_EQ(bounds.GetMax().y, group->GetBoundingVolume().GetMax().y);

    LxCamera* camera = LxCameraManager::GetRef().CreateCamera("eye");
    camera->SetPosition(LxPoint3(0, 0, -10));
    camera->SetLookAt(LxPoint3(0, 0, 0), LxVector3(0, 1, 0));
    LxCameraManager::GetRef().SetActiveCamera(camera);
    LxMatrix4 world;
    world.MakeTranslation(0, 3, 0);
    group->SetWorldTransform(world);
    LxRenderManager::GetRef().GetFrameStats().Clear();
    LxObjectManager::GetRef().StartDrawTracking();
    ASSERT_TRUE(group->Draw(nullptr));
    EXPECT_EQ(6 * reference.GetCount(), group->GetBillboards(0).GetCount());
    EXPECT_EQ(1u, LxRenderManager::GetRef().GetFrameStats().GetValue(LX_FRAME_STAT_NON_INDEXED_DRAWS));
    EXPECT_EQ("Lumex Objects Drawn:\n( DrawIndexed:DrawNonIndexed\tPoints:Lines:Tris )\n\nfire\t( 0:1\t0:0:1 )\n",
              std::string(LxObjectManager::GetRef().EndDrawTracking().c_str()));
    const float* drawnWorld =
        static_cast<const float*>(group->GetSystemEffect(0)->GetParameter("mWorld")->GetDataPtr());
    EXPECT_EQ(3.0f, drawnWorld[13]);
    // The keyframed effect parameter at the system's time (0.75 s: 0.5 warm-up and one clamped step).
    EXPECT_NEAR(0.75f / 20.0f,
                static_cast<const float*>(group->GetSystemEffect(0)->GetParameter("vTint")->GetDataPtr())[0], 1e-6f);

    group->Restart();
    EXPECT_EQ(0u, group->GetSimulator(0).GetCount());
    group->UpdateObject(20.0);
    LxParticleSimulator again(group->GetDesc().GetSystem(0), group->GetSeed());
    for (int i = 0; i < 15; ++i)
        again.Step(1.0f / 30.0f);
    EXPECT_TRUE(SameParticles(again, group->GetSimulator(0)));
}

TEST(LxRTSCameraController, LooksDownAtAFocusWithinLimits)
{
    LxCamera camera;
    LxRTSCameraController rts(&camera);
    rts.SetViewParameters(10, 45, 0);
    ExpectPoint(0, 10, -10, camera.GetPosition(), "45 degrees, 10 up: 10 back");
    EXPECT_NEAR(-0.70710678f, camera.GetView().y, 1e-5f);
    EXPECT_NEAR(0.70710678f, camera.GetView().z, 1e-5f);

    rts.RestrictMovement(5, -5, -5, 5);
    rts.JumpToPosition(LxVector2(100, -100));
    ExpectPoint(5, 0, -5, LxPoint3(rts.GetFocus().x, rts.GetFocus().y, rts.GetFocus().z), "clamped focus");

    LxKeyEvent alt('W', 'w', LxKeyEvent::MODIFIER_ALT);
    rts.KeyPressed(alt);
    EXPECT_FALSE(alt.IsHandled());
    LxKeyEvent forward('W', 'w', 0);
    rts.KeyPressed(forward);
    EXPECT_TRUE(forward.IsHandled());
    rts.Update(1.0);
    rts.Update(1.25); // 10 units/s at height 10, for a quarter second
    EXPECT_NEAR(-2.5f, rts.GetFocus().z, 1e-5f);
    rts.Update(10.0); // a long stall moves at most 0.25 s worth, and the limit holds
    EXPECT_NEAR(0.0f, rts.GetFocus().z, 1e-5f);
    rts.Update(10.25);
    EXPECT_NEAR(2.5f, rts.GetFocus().z, 1e-5f);
    LxKeyEvent released('W', 'w', 0);
    rts.KeyReleased(released);
    rts.Update(11.0);
    EXPECT_NEAR(2.5f, rts.GetFocus().z, 1e-5f);

    LxKeyEvent wheel(LX_KEY_WHEEL_UP, 0, 0);
    rts.KeyPressed(wheel);
    EXPECT_FLOAT_EQ(9.0f, rts.GetHeight());
    EXPECT_NEAR(9.0f, camera.GetPosition().y, 1e-5f);
    // Straight down still has a frame (the heading serves as up).
    rts.SetViewParameters(10, 90, 0);
    ExpectPoint(5, 10, 2.5f, camera.GetPosition(), "above the focus");
}

TEST(LxFlypathCameraController, FollowsItsCurvesAndReportsCuts)
{
    LxAnimationSet set;
    LxKeyframeCurve* position = new LxKeyframeCurve(LxAnimationCurve::DATA_VEC3);
    position->AddKey(0.0f, LxVector3(0, 0, 0));
    position->AddKey(1.0f, LxVector3(1, 0, 0));
    position->AddKey(1.0f, LxVector3(5, 0, 0)); // a cut
    position->AddKey(2.0f, LxVector3(6, 0, 0));
    LxKeyframeCurve* fov = new LxKeyframeCurve(LxAnimationCurve::DATA_FLOAT);
    fov->AddKey(0.0f, 60.0f);
    fov->AddKey(2.0f, 90.0f);
    LxKeyframeCurve* wrong = new LxKeyframeCurve(LxAnimationCurve::DATA_FLOAT);
    wrong->AddKey(0.0f, 1.0f);
    set.AddCurve("fly.position", LxCountedPtr<LxAnimationCurve>(position));
    set.AddCurve("fly.fov", LxCountedPtr<LxAnimationCurve>(fov));
    set.AddCurve("bad.position", LxCountedPtr<LxAnimationCurve>(wrong));

    LxCamera camera;
    camera.SetFrustum(45, 2, 0.5f, 50);
    EXPECT_EQ(nullptr, LxFlypathCameraController::CreateFromSet(&camera, set, "bad"));
    std::unique_ptr<LxFlypathCameraController> fly(LxFlypathCameraController::CreateFromSet(&camera, set, "fly"));
    ASSERT_TRUE(fly);
    EXPECT_FLOAT_EQ(2.0f, fly->GetAnimationLength());
    fly->Update(5.0); // the start
    ExpectPoint(0, 0, 0, camera.GetPosition(), "start");
    fly->Update(5.5);
    ExpectPoint(0.5f, 0, 0, camera.GetPosition(), "half way to the cut");
    EXPECT_NEAR(67.5f, camera.GetFOV(), 1e-4f);
    EXPECT_FLOAT_EQ(2.0f, camera.GetAspect());
    fly->SetAnimationSpeed(2.0f);
    fly->Update(6.0); // 0.5 + 2 x 0.5: past the cut
    ExpectPoint(5.5f, 0, 0, camera.GetPosition(), "after the cut");
    fly->Update(6.5); // 2.5 wraps to 0.5
    ExpectPoint(0.5f, 0, 0, camera.GetPosition(), "wrapped");
    EXPECT_TRUE(fly->DoesCameraCut(0.5f, 1.5f));
    EXPECT_FALSE(fly->DoesCameraCut(1.5f, 1.9f));
}

namespace
{
// Records the order in which a frame reaches objects and controllers.
class Recorder : public LxObject, public LxCameraController
{
public:
    explicit Recorder(std::vector<std::string>& log) : LxObject("recorder"), m_log(log) {}
    void UpdateObject(double time) override { m_log.push_back("object " + std::to_string(time)); }
    void Update(double time) override { m_log.push_back("camera " + std::to_string(time)); }
    bool Draw(const LxFrustum*) override
    {
        m_log.push_back("draw");
        return true;
    }

private:
    std::vector<std::string>& m_log;
};

class StepSource : public LxTimeSource
{
public:
    double GetTime() const override { return now; }
    double now = 0.0;
};
} // namespace

TEST(LxFrameUpdate, UpdatesObjectsThenCamerasThenDraws)
{
    Scene scene(LxTest::MakeTempDir("scene"));
    std::vector<std::string> log;
    Recorder* recorder = new Recorder(log);
    ASSERT_TRUE(LxObjectManager::GetRef().RegisterPluginObject(recorder));
    StepSource source;
    LxClock clock(&source);
    LxFrameUpdate frame(&clock);
    frame.SetRunScripts(false);
    frame.AddCameraController(recorder);
    frame.SetDrawCallback([](void* context) { static_cast<std::vector<std::string>*>(context)->push_back("app"); },
                          &log);
    clock.SetSmoothTime(false);
    clock.FrameStep();
    source.now = 0.5;
    const double time = frame.Step();
    EXPECT_EQ(frame.DrawObjects(), 1u);
    EXPECT_EQ(
        (std::vector<std::string>{"object " + std::to_string(time), "camera " + std::to_string(time), "draw", "app"}),
        log);
    EXPECT_DOUBLE_EQ(0.5, time);
}
