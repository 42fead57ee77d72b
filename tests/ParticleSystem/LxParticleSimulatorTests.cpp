// The CPU particle simulation: steps worked out by hand, replay for a seed, shapes, colliders, life interpolation,
// transforms of systems, emitters and actions, and the camera-facing quads (order, texture tiles).
#include "LxParticleTestUtil.h"
#include "ObjectManager/LxSceneTestUtil.h"
#include "support/LxTestSupport.h"

#include "ObjectManager/LxParticleGroup.h"
#include "ParticleSystem/LxParticleAnimationSet.h"
#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleSimulator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

using LxPxTest::Parse;

namespace
{
std::unique_ptr<LxParticleGroupDesc> System(const std::string& body)
{
    std::unique_ptr<LxParticleGroupDesc> group = Parse("Lumex Particle Editor Project 1.0\n"
                                                       "ParticleSystem GPUBillboard S Effect \"p.fx\"\n" +
                                                       body + "\nEndParticleSystem\n");
    EXPECT_TRUE(group);
    return group;
}

void ExpectNear(const LxVector3& expected, const LxVector3& actual, const char* what)
{
    EXPECT_NEAR(expected.x, actual.x, 1e-5f) << what;
    EXPECT_NEAR(expected.y, actual.y, 1e-5f) << what;
    EXPECT_NEAR(expected.z, actual.z, 1e-5f) << what;
}
} // namespace

TEST(LxParticleSimulator, StepsEmitActMoveAndAge)
{
    auto group = System("Emitter Shape E Rate Param Fixed 10 Life Param Fixed 1 Velocity Param Fixed 1 0 0 EndEmitter\n"
                        "Action ConstAccel G Acceleration Param Fixed 0 -2 0 EndAction");
    LxParticleSimulator sim(group->GetSystem(0), 1);
    // 10/s for 0.5 s: five particles at the origin; the acceleration acts, then they move.
    sim.Step(0.5f);
    ASSERT_EQ(5u, sim.GetCount());
    for (unsigned int i = 0; i < 5; ++i)
    {
        ExpectNear(LxVector3(1, -1, 0), sim.GetData()[i].velocity, "velocity");
        ExpectNear(LxVector3(0.5f, -0.5f, 0), sim.GetData()[i].position, "position");
        EXPECT_FLOAT_EQ(0.5f, sim.GetData()[i].age);
    }
    // 0.6 s later the first five are past their life; six new ones took their place.
    sim.Step(0.6f);
    ASSERT_EQ(6u, sim.GetCount());
    ExpectNear(LxVector3(0.6f, -0.72f, 0), sim.GetData()[0].position, "new particle");
    EXPECT_NEAR(1.1f, sim.GetTime(), 1e-6f);
    // Steps that are not positive do nothing.
    sim.Step(0.0f);
    sim.Step(-1.0f);
    EXPECT_EQ(6u, sim.GetCount());
}

TEST(LxParticleSimulator, ASeedReplaysExactly)
{
    auto group = System("Emitter Shape Spray Rate Param Fixed 1000 MaxParticles 300\n"
                        "  Velocity Param Random -1 1 -1 1 -1 1 Size Param NonUniformRandom 0.5 1.5 2\n"
                        "  Shape Sphere Center 0 2 0 Radius 1 InnerRadius 0.5 EndShape EndEmitter\n"
                        "Emitter Shape Shell Rate Param Fixed 100 Life Param Fixed 5\n"
                        "  Shape Sphere Center 0 2 0 Radius 1 Surface TRUE EndShape EndEmitter");
    LxParticleSimulator a(group->GetSystem(0), 7), b(group->GetSystem(0), 7), c(group->GetSystem(0), 8);
    for (int i = 0; i < 5; ++i)
    {
        a.Step(0.1f);
        b.Step(0.1f);
        c.Step(0.1f);
    }
    ASSERT_EQ(a.GetCount(), b.GetCount());
    EXPECT_EQ(0, std::memcmp(a.GetData(), b.GetData(), a.GetCount() * sizeof(LxParticleSimulator::Particle)));
    ASSERT_EQ(a.GetCount(), c.GetCount());
    EXPECT_NE(0, std::memcmp(a.GetData(), c.GetData(), a.GetCount() * sizeof(LxParticleSimulator::Particle)));

    unsigned int spray = 0, shell = 0;
    for (unsigned int i = 0; i < a.GetCount(); ++i)
    {
        const LxParticleSimulator::Particle& p = a.GetData()[i];
        if (p.emitter == 0)
        {
            ++spray;
            EXPECT_GE(p.size, 0.5f);
            EXPECT_LE(p.size, 1.5f);
        }
        else
        {
            ++shell;
            EXPECT_NEAR(1.0f, (p.position - LxVector3(0, 2, 0)).Length(), 1e-5f) << "on the surface, never moved";
        }
    }
    EXPECT_EQ(300u, spray) << "MaxParticles caps the emitter";
    EXPECT_EQ(50u, shell);
    a.Reset(7);
    EXPECT_EQ(0u, a.GetCount());
    a.Step(0.1f);
    b.Reset(7);
    b.Step(0.1f);
    EXPECT_EQ(0, std::memcmp(a.GetData(), b.GetData(), a.GetCount() * sizeof(LxParticleSimulator::Particle)));
}

TEST(LxParticleSimulator, KillPlaneAndLifeInterpolation)
{
    auto group = System(
        "Emitter Shape Drip Rate Param Fixed 10 Life Param Fixed 10 Velocity Param Fixed 0 -1 0\n"
        "  Shape Point Center 0 1 0 EndShape EndEmitter\n"
        "Action ColliderKill Floor Shape Plane Point 0 0 0 Normal 0 1 0 EndShape EndAction\n"
        "Action LifeLerp Fade\n"
        "  Color Param KeyFrame KeyFrameChannel 0 1 1 0 EndKeyFrameChannel KeyFrameChannel 0 1 1 0 EndKeyFrameChannel\n"
        "    KeyFrameChannel 0 1 1 0 EndKeyFrameChannel KeyFrameChannel 0 1 1 1 EndKeyFrameChannel EndParam\n"
        "  Size Param KeyFrame KeyFrameChannel 0 1 1 3 EndKeyFrameChannel EndParam\n"
        "EndAction");
    LxParticleSimulator sim(group->GetSystem(0), 1);
    for (int i = 0; i < 5; ++i)
        sim.Step(0.5f);
    // Batches start at y = 1 and fall 0.5 a step; one below the plane when the collider looks is killed, so the
    // batches of the last three steps remain, at -0.5, 0 and 0.5.
    ASSERT_EQ(15u, sim.GetCount());
    unsigned int oldest = 0;
    for (unsigned int i = 0; i < sim.GetCount(); ++i)
    {
        const LxParticleSimulator::Particle& p = sim.GetData()[i];
        EXPECT_GE(p.position.y, -0.5f - 1e-5f);
        if (std::fabs(p.position.y + 0.5f) < 1e-4f)
        {
            ++oldest;
            // Interpolated at age 1 of 10 (before this step's ageing): colour 0.9, size 1.2.
            EXPECT_NEAR(0.9f, p.color.x, 1e-5f);
            EXPECT_NEAR(1.0f, p.color.w, 1e-5f);
            EXPECT_NEAR(1.2f, p.size, 1e-5f);
        }
    }
    EXPECT_EQ(5u, oldest);
    const LxBoundingBox box = sim.ComputeBounds();
    EXPECT_NEAR(-0.5f - 0.6f, box.GetMin().y, 1e-5f) << "grown by half the largest size";
}

TEST(LxParticleSimulator, VortexAndBillboards)
{
    auto swirl = System("Emitter Shape One Rate Param Fixed 2 Shape Point Center 1 0 0 EndShape EndEmitter\n"
                        "Action Vortex V Strength Param Fixed 1 EndAction");
    LxParticleSimulator vortex(swirl->GetSystem(0), 1);
    vortex.Step(0.5f);
    ASSERT_EQ(1u, vortex.GetCount());
    // Axis y x (1, 0, 0) = (0, 0, -1), times 0.5 s; then half a second of motion.
    ExpectNear(LxVector3(0, 0, -0.5f), vortex.GetData()[0].velocity, "vortex velocity");
    ExpectNear(LxVector3(1, 0, -0.25f), vortex.GetData()[0].position, "vortex position");

    auto quads = System("Emitter Shape One Rate Param Fixed 2 Size Param Fixed 2 Rotation Param Fixed 1.57079633\n"
                        "  Color Param Fixed 1 0.5 0.25 1 EndEmitter");
    LxParticleSimulator sim(quads->GetSystem(0), 1);
    sim.Step(0.5f);
    LxArray<LxParticleSimulator::Vertex> vertices;
    sim.BuildBillboards(LxVector3(1, 0, 0), LxVector3(0, 1, 0), vertices);
    ASSERT_EQ(6u, vertices.GetCount());
    // A quarter turn: the corner that would be lower left lies at lower right.
    EXPECT_NEAR(1.0f, vertices[0].position[0], 1e-5f);
    EXPECT_NEAR(-1.0f, vertices[0].position[1], 1e-5f);
    EXPECT_NEAR(-1.0f, vertices[1].position[0], 1e-5f);
    EXPECT_NEAR(-1.0f, vertices[1].position[1], 1e-5f);
    EXPECT_EQ(0.0f, vertices[0].uv[0]);
    EXPECT_EQ(1.0f, vertices[0].uv[1]);
    EXPECT_EQ(0.5f, vertices[5].color[1]);
}

namespace
{
// Curves for animated transforms: "slide" moves along x at 2 units a second, "lift" raises by 1; every name the
// builder asks about exists.
class SlideCurves : public LxParticleAnimationSet, public LxParticleSimulator::CurveSource
{
public:
    bool HasCurve(const LxString&) const override { return true; }
    bool AddCurve(const LxString&, const LxParticleKeyFrameChannel&) override { return true; }
    bool EvaluateTransform(const LxString& curve, float time, LxMatrix4* out) const override
    {
        const bool lift = curve == "lift";
        if (!lift && curve != "slide" && curve != "S.E.transform")
            return false;
        out->MakeTranslation(lift ? 0.0f : 2.0f * time, lift ? 1.0f : 0.0f, 0.0f);
        return true;
    }
};
} // namespace

TEST(LxParticleSimulator, TransformsPlaceNewParticles)
{
    // A particle born at the emitter's point (1, 0, 0) with velocity (1, 0, 0) before the transforms, where it is
    // after one step of 0.1 s. `system` is the system's transform, `emitter` the emitter's (type and items).
    struct Case
    {
        const char *what, *system, *emitter;
        LxVector3 position, velocity;
    };
    const Case cases[] = {
        // Scale (2, 0, 0), turn a quarter about z (0, 2, 0), move (0, 4, 0); the velocity only scales and turns.
        {"first outermost", "", "World Translation 0 2 0 Rotation 0 0 90 Scale 2 2 2", {0, 4.2f, 0}, {0, 2, 0}},
        {"written order", "", "World Scale 2 2 2 Translation 0 2 0", {2.2f, 4, 0}, {2, 0, 0}},
        {"rotation x then y", "", "World Rotation 90 90 0", {0, 0, -1.1f}, {0, 0, -1}},
        {"shear", "", "World Shear 1 2 3 Translation 0 1 1", {4.1f, 4, 1}, {1, 0, 0}},
        // (1, 0, 0) in the camera's frame is its right: (5, 0, 1); ahead 3 is 3 further down -x.
        {"camera", "", "Camera Translation 0 0 3", {2, 0, 1.1f}, {0, 0, 1}},
        {"world axes at the camera", "", "WorldRotCamPos Translation 0 0 3", {6.1f, 0, 3}, {1, 0, 0}},
        {"system over emitter",
         "World Translation 10 0 0 Rotation 0 0 90",
         "World Translation 0 1 0",
         {9, 1.1f, 0},
         {0, 1, 0}},
        // Curves are read at the system's time (0 at the first step) plus the offset: slide 2 * 0.5.
        {"animation item", "", "World Animation \"slide\" \"lift\" 0.5", {2.1f, 1, 0}, {1, 0, 0}},
        {"element's curve", "", "Animation Scale 3 3 3", {3.3f, 0, 0}, {3, 0, 0}},
    };
    SlideCurves curves;
    auto transform = [](const std::string& t) { return t.empty() ? t : "Transform " + t + " EndTransform\n"; };
    for (const Case& c : cases)
    {
        LxParticleBuilder builder;
        builder.SetAnimationSet(&curves);
        auto group =
            LxPxTest::Parse("Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S\n" + transform(c.system) +
                                "Emitter Shape E Rate Param Fixed 10 Velocity Param Fixed 1 0 0\n"
                                "  Shape Point Center 1 0 0 EndShape " +
                                transform(c.emitter) + " EndEmitter EndParticleSystem\n",
                            "test.txt", &builder);
        ASSERT_TRUE(group) << c.what;
        LxParticleSimulator sim(group->GetSystem(0), 1);
        sim.SetCurveSource(&curves);
        // The camera at (5, 0, 0) looking down -x, its right along +z.
        const float camera[16] = {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 5, 0, 0, 1};
        sim.SetCamera(LxMatrix4(camera));
        sim.Step(0.1f);
        ASSERT_EQ(1u, sim.GetCount()) << c.what;
        ExpectNear(c.position, sim.GetData()[0].position, c.what);
        ExpectNear(c.velocity, sim.GetData()[0].velocity, c.what);
    }
}

TEST(LxParticleSimulator, ActionsWorkInTheirTransformedFrame)
{
    // Particles born at (5, 0, 0) and at the origin; a kill sphere at the origin moved to x = 5 by its action's
    // transform takes the first, and the acceleration along x, turned a quarter about z, lifts the survivors.
    auto group = System("Emitter Shape A Rate Param Fixed 10 Life Param Fixed 10 Shape Point Center 5 0 0 EndShape "
                        "EndEmitter\n"
                        "Emitter Shape B Rate Param Fixed 10 Life Param Fixed 10 EndEmitter\n"
                        "Action ColliderKill K Shape Sphere Center 0 0 0 Radius 1 EndShape\n"
                        "  Transform World Translation 5 0 0 EndTransform EndAction\n"
                        "Action ConstAccel G Acceleration Param Fixed 10 0 0\n"
                        "  Transform World Rotation 0 0 90 EndTransform EndAction\n"
                        "Action ColliderKill Flat Shape Sphere Center 0 0 0 Radius 100 EndShape\n"
                        "  Transform World Scale 0 1 1 EndTransform EndAction");
    LxParticleSimulator sim(group->GetSystem(0), 1);
    sim.Step(0.1f);
    ASSERT_EQ(1u, sim.GetCount()) << "a collider squashed to nothing kills nothing";
    EXPECT_EQ(1u, sim.GetData()[0].emitter);
    ExpectNear(LxVector3(0, 1, 0), sim.GetData()[0].velocity, "turned acceleration");
}

TEST(LxParticleSimulator, SortedQuadsAndTextureTiles)
{
    // One particle per 0.25 s moving along x at 1/s, living 1 s: after four steps the oldest has just died and the
    // others are at x = 0.75, 0.5, 0.25 in birth order, aged as far as they moved.
    for (const bool sort : {false, true})
    {
        auto group = System(std::string(sort ? "Sort TRUE " : "") +
                            "TextureTile 2 2 Emitter Shape E Rate Param Fixed 4 Life Param Fixed 1 "
                            "Velocity Param Fixed 1 0 0 EndEmitter");
        LxParticleSimulator sim(group->GetSystem(0), 1);
        for (int i = 0; i < 4; ++i)
            sim.Step(0.25f);
        LxArray<LxParticleSimulator::Vertex> quads;
        sim.BuildBillboards(LxVector3(0, 0, 1), LxVector3(0, 1, 0), LxVector3(10, 0, 0), quads);
        ASSERT_EQ(18u, quads.GetCount());
        // Unsorted, storage order (the newest took the dead one's place); sorted from far out on +x, the newest
        // (smallest x) is farthest and comes first.
        const float expected[2][3] = {{0.25f, 0.75f, 0.5f}, {0.25f, 0.5f, 0.75f}};
        for (unsigned int q = 0; q < 3; ++q)
        {
            const LxParticleSimulator::Vertex& lowerLeft = quads[q * 6];
            EXPECT_NEAR(expected[sort][q], lowerLeft.position[0], 1e-5f) << "sort " << sort << " quad " << q;
            // Tiles by age over life, row by row: ages 0.25, 0.5, 0.75 pick tiles 1, 2, 3; the lower left corner
            // lies at the tile's left edge and bottom.
            const int tile = static_cast<int>(expected[sort][q] * 4.0f + 0.5f);
            EXPECT_FLOAT_EQ(0.5f * (tile % 2), lowerLeft.uv[0]) << "tile " << tile;
            EXPECT_FLOAT_EQ(0.5f * (tile / 2) + 0.5f, lowerLeft.uv[1]) << "tile " << tile;
        }
    }
}

TEST(LxParticleSimulator, TailAndCollisionEmitters)
{
    // Two heads rising at 1/s from the line y = 1 (emitted in the first step only); the tail follows "Heads" by name
    // (not the first emitter), four particles a second behind each, inheriting half its velocity. A floor at y = 0.25
    // kills a falling drop (Drip) and the collision emitter, listening to that collider only, puts three particles
    // where it died; the other collider (far away) is not listened to.
    auto group =
        System("Emitter Shape Drip Rate Param Fixed 10 MaxParticles 1 Velocity Param Fixed 0 -1 0\n"
               "  Shape Point Center 9 0.5 0 EndShape EndEmitter\n"
               "Emitter Shape Heads Rate Param Fixed 20 MaxParticles 2 Life Param Fixed 10 Velocity Param Fixed 0 1 0\n"
               "  Shape Line Start 0 1 0 End 5 1 0 EndShape EndEmitter\n"
               "Emitter Tail Trail Heads TRUE Rate Param Fixed 4 Life Param Fixed 10 InheritVelocity 0.5\n"
               "  Transform World Translation 100 0 0 Scale 1 1 1 EndTransform EndEmitter\n"
               "Emitter Collision Burst Floor TRUE Count 3 Life Param Fixed 10 MaxParticles 100 EndEmitter\n"
               "Action ColliderKill Floor Shape Plane Point 0 0.25 0 Normal 0 1 0 EndShape EndAction\n"
               "Action ColliderKill Far Shape Sphere Center 50 50 50 Radius 1 EndShape Invert FALSE EndAction");
    LxParticleSimulator sim(group->GetSystem(0), 3);
    auto count = [&](unsigned int emitter)
    {
        unsigned int n = 0;
        for (unsigned int i = 0; i < sim.GetCount(); ++i)
            n += sim.GetData()[i].emitter == emitter;
        return n;
    };
    sim.Step(0.1f);
    EXPECT_EQ(2u, count(1));
    EXPECT_EQ(0u, count(2)) << "no tail before a step has carried a whole particle";
    for (int i = 0; i < 3; ++i)
        sim.Step(0.1f);
    // 4/s: the first whole particle in the third step, one behind each head where it stood then (y = 1.2).
    ASSERT_EQ(2u, count(2));
    EXPECT_EQ(3u, count(3));
    EXPECT_EQ(0u, count(0));
    float headX[2];
    for (unsigned int i = 0, h = 0; i < sim.GetCount(); ++i)
        if (sim.GetData()[i].emitter == 1 && h < 2)
            headX[h++] = sim.GetData()[i].position.x;
    for (unsigned int i = 0; i < sim.GetCount(); ++i)
    {
        const LxParticleSimulator::Particle& p = sim.GetData()[i];
        if (p.emitter == 2)
        {
            // Then moved 0.05 in each of two steps, the transform's translation left out, under one of the heads.
            ExpectNear(LxVector3(0, 0.5f, 0), p.velocity, "inherited half");
            EXPECT_NEAR(1.3f, p.position.y, 1e-5f);
            EXPECT_TRUE(std::fabs(headX[0] - p.position.x) < 1e-5f || std::fabs(headX[1] - p.position.x) < 1e-5f);
        }
        // The drop left y = 0.5 at 1/s: below the floor after its third move, killed when the fourth step acted;
        // the burst came there (y = 0.2) right after, and did not move (no velocity).
        if (p.emitter == 3)
            ExpectNear(LxVector3(9, 0.2f, 0), p.position, "burst where the drop died");
    }
}

TEST(LxParticleSimulator, GroupFeedsCameraAndCurvesAndHonoursCulling)
{
    LxSceneTest::Scene scene(LxTest::MakeTempDir("particles"));
    // "Near" emits 2 ahead of the camera; "Path" is carried along x at 10/s by the group's curve "path".
    scene.Write("fx/particleFile.txt",
                "Lumex Particle Editor Project 1.0\n"
                "ParticleSystem GPUBillboard Near Effect \"particles.fx\"\n"
                "  Emitter Shape E Rate Param Fixed 10 Life Param Fixed 10\n"
                "    Transform Camera Translation 0 0 2 EndTransform EndEmitter EndParticleSystem\n"
                "ParticleSystem GPUBillboard Path Effect \"particles.fx\" UpdateWhenCulled TRUE\n"
                "  Transform World Animation \"path\" 0 EndTransform\n"
                "  Emitter Shape E Rate Param Fixed 10 Life Param Fixed 10 EndEmitter EndParticleSystem\n");
    LxAnimationSet curves;
    LxKeyframeCurve* path = new LxKeyframeCurve(LxAnimationCurve::DATA_VEC3);
    path->AddKey(0.0f, LxVector3(0, 0, 0));
    path->AddKey(1.0f, LxVector3(10, 0, 0));
    curves.AddCurve("path", LxCountedPtr<LxAnimationCurve>(path));
    std::unique_ptr<LxParticleGroup> group(LxParticleGroup::Create("fx", scene.Path("fx").c_str(), &curves));
    ASSERT_TRUE(group);
    LxCamera* camera = LxCameraManager::GetRef().CreateCamera("eye");
    camera->SetPosition(LxPoint3(0, 0, -10));
    camera->SetLookAt(LxPoint3(0, 0, 0), LxVector3(0, 1, 0));
    LxCameraManager::GetRef().SetActiveCamera(camera);
    LxMatrix4 world;
    world.MakeTranslation(0, 3, 0);
    group->SetWorldTransform(world);

    group->UpdateObject(0.0);
    group->UpdateObject(0.1);
    ASSERT_EQ(1u, group->GetSimulator(0).GetCount());
    // The camera in the group's space is at (0, -3, -10) looking down +z.
    ExpectNear(LxVector3(0, -3, -8), group->GetSimulator(0).GetData()[0].position, "ahead of the camera");

    LxFrustum nowhere;
    for (unsigned int i = 0; i < 6; ++i)
        nowhere.SetPlane(i, LxVector4(0, 0, 0, -1));
    EXPECT_FALSE(group->Draw(&nowhere));
    group->UpdateObject(0.2);
    EXPECT_EQ(1u, group->GetSimulator(0).GetCount()) << "culled: not stepped";
    ASSERT_EQ(2u, group->GetSimulator(1).GetCount()) << "UpdateWhenCulled: stepped";
    ExpectNear(LxVector3(1, 0, 0), group->GetSimulator(1).GetData()[1].position, "the curve at 0.1 s");

    EXPECT_TRUE(group->Draw(nullptr));
    group->UpdateObject(0.3);
    EXPECT_EQ(2u, group->GetSimulator(0).GetCount());
    EXPECT_NEAR(0.2f, group->GetSimulator(0).GetTime(), 1e-6f) << "the culled time is not made up";
}
