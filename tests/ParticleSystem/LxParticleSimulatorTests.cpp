// The CPU particle simulation: steps worked out by hand, replay for a seed, shapes, colliders, life interpolation and
// the camera-facing quads.
#include "LxParticleTestUtil.h"

#include "ParticleSystem/LxParticleSimulator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

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
