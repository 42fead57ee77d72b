// Builder tests through the API: the messages no file can provoke (misordered calls, null channels, unknown
// kinds, curves without an animation set), failure as a whole after an error, reuse after a result, and the
// description classes' own rules (key order, value conversion, name lookup).
#include "ParticleSystem/LxParticleTestUtil.h"

#include "ParticleSystem/LxParticleSystemDesc.h"
#include "ParticleSystem/LxParticleTransform.h"

#include <gtest/gtest.h>

#include <functional>

using LxPxTest::ErrorMessages;

namespace
{
LxArray<float> Floats(std::initializer_list<float> values)
{
    LxArray<float> a;
    for (float v : values)
        a.Add(v);
    return a;
}

void OpenSystem(LxParticleBuilder& b)
{
    b.BeginSystem("S");
    b.SetSystemType("GPUBillboard");
}
} // namespace

TEST(LxParticleBuilder, MisusesAreReportedAndFailTheBuild)
{
    struct Case
    {
        const char* message;
        std::function<void(LxParticleBuilder&)> calls;
    };
    const Case cases[] = {
        {"Particle System build already in progress",
         [](LxParticleBuilder& b)
         {
             OpenSystem(b);
             b.BeginSystem("T");
             b.EndSystem();
         }},
        {"Particle system build cannot end before it begins.", [](LxParticleBuilder& b) { b.EndSystem(); }},
        {"No particle system build in progress", [](LxParticleBuilder& b) { b.SetSystemType("GPUBillboard"); }},
        {"No particle system build in progress", [](LxParticleBuilder& b) { b.SetEffect("e.fx"); }},
        {"Can't add emitter", [](LxParticleBuilder& b) { b.GetEmitterBuilder().Begin("Shape", "E"); }},
        {"Can't add action", [](LxParticleBuilder& b) { b.GetActionBuilder().Begin("Vortex", "A"); }},
        {"Can't add emitter",
         [](LxParticleBuilder& b)
         {
             OpenSystem(b);
             b.GetActionBuilder().Begin("Vortex", "A");
             b.GetEmitterBuilder().Begin("Shape", "E"); // inside an open action
             b.GetActionBuilder().End();
             b.EndSystem();
         }},
        {"Can't end emitter",
         [](LxParticleBuilder& b)
         {
             OpenSystem(b);
             b.GetEmitterBuilder().End();
             b.EndSystem();
         }},
        {"Can't end action",
         [](LxParticleBuilder& b)
         {
             OpenSystem(b);
             b.GetActionBuilder().End();
             b.EndSystem();
         }},
        {"Can't add emitter parameter",
         [](LxParticleBuilder& b) { b.GetEmitterBuilder().AddValue("Rate", LxParticleValue::FromInt(1)); }},
        {"Can't add action shape",
         [](LxParticleBuilder& b) { b.GetActionBuilder().SetShape("Point", LxArray<LxParticleDomain::Parameter>()); }},
        {"Cannot add NULL channel to a parameter.",
         [](LxParticleBuilder& b)
         {
             std::unique_ptr<LxParticleParameter> p(b.CreateParameter(LX_PARTICLE_PARAM_KEYFRAME, LxArray<float>()));
             b.AddKeyFrameChannel(p.get(), nullptr);
         }},
        {"Cannot add NULL channel to a parameter.",
         [](LxParticleBuilder& b)
         {
             LxParticleKeyFrameChannel channel;
             b.AddKeyFrameChannel(nullptr, &channel);
         }},
        {"Unknown particle parameter type",
         [](LxParticleBuilder& b) { b.CreateParameter(static_cast<LxParticleParameterKind>(17), Floats({1})); }},
        {"Unknown particle parameter type",
         [](LxParticleBuilder& b)
         {
             std::unique_ptr<LxParticleParameter> p(b.CreateParameter(LX_PARTICLE_PARAM_FIXED, Floats({1})));
             LxParticleKeyFrameChannel channel;
             b.AddKeyFrameChannel(p.get(), &channel); // not a keyframed parameter
         }},
        {"Invalid number of values for a Fixed parameter: 5",
         [](LxParticleBuilder& b) {
             b.CreateParameter(LX_PARTICLE_PARAM_FIXED, Floats({1, 2, 3, 4, 5}));
         }},
        {"Invalid number of values for a KeyFrame parameter: 1",
         [](LxParticleBuilder& b) { b.CreateParameter(LX_PARTICLE_PARAM_KEYFRAME, Floats({1})); }},
        {"Invalid number of keyframe channels.",
         [](LxParticleBuilder& b) { b.FinishParameter(LxParticleParameter(LX_PARTICLE_PARAM_KEYFRAME)); }},
        {"Unknown particle transform type: Orbit", [](LxParticleBuilder& b) { b.CreateTransform("Orbit"); }},
        {"Adding animation curves to particle builder with no animation set.  This is probably a bug.",
         [](LxParticleBuilder& b) { b.AddAnimationCurves(LxParticleSystemDesc("S")); }},
        {"Particle system S was never ended", [](LxParticleBuilder& b) { OpenSystem(b); }},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.message);
        LxTest::LogCapture capture;
        LxParticleBuilder builder;
        c.calls(builder);
        EXPECT_FALSE(builder.TakeResult());
        EXPECT_EQ(std::multiset<std::string>{c.message}, ErrorMessages(capture)) << capture.All();
        // The builder is empty again: a clean build now succeeds.
        capture.Clear();
        OpenSystem(builder);
        EXPECT_TRUE(builder.EndSystem());
        std::unique_ptr<LxParticleGroupDesc> group(builder.TakeResult());
        ASSERT_TRUE(group) << capture.All();
        EXPECT_EQ(1u, group->GetSystemCount());
    }
}

TEST(LxParticleBuilder, ExportRefusedByTheAnimationSetIsAnError)
{
    LxTest::LogCapture capture;
    LxPxTest::TestAnimationSet curves;
    curves.refused = {"S.1.E.Color"};
    LxParticleBuilder builder;
    builder.SetAnimationSet(&curves);
    OpenSystem(builder);
    ASSERT_TRUE(builder.GetEmitterBuilder().Begin("Shape", "E"));
    std::unique_ptr<LxParticleParameter> color(builder.CreateParameter(LX_PARTICLE_PARAM_KEYFRAME, LxArray<float>()));
    LxParticleKeyFrameChannel channel;
    channel.AddKey(0.0f, 1.0f);
    ASSERT_TRUE(builder.AddKeyFrameChannel(color.get(), &channel));
    ASSERT_TRUE(builder.AddKeyFrameChannel(color.get(), &channel));
    ASSERT_TRUE(builder.FinishParameter(*color));
    EXPECT_TRUE(builder.GetEmitterBuilder().AddParameter("Color", *color));
    EXPECT_TRUE(builder.GetEmitterBuilder().End());
    EXPECT_FALSE(builder.EndSystem());
    EXPECT_FALSE(builder.TakeResult());
    EXPECT_EQ(std::multiset<std::string>{"Error loading animation curve"}, ErrorMessages(capture));
    EXPECT_EQ(1u, curves.added.count("S.0.E.Color"));
}

// One mistake, one message: the members of a refused emitter are taken silently, and the build fails at the end.
TEST(LxParticleBuilder, RefusedElementsSwallowTheirMembers)
{
    LxTest::LogCapture capture;
    LxParticleBuilder builder;
    builder.SetSourcePosition("f.txt", 7);
    OpenSystem(builder);
    LxEmitterBuilder& emitter = builder.GetEmitterBuilder();
    EXPECT_FALSE(emitter.Begin("Fountain", "E"));
    EXPECT_TRUE(emitter.AddValue("Rate", LxParticleValue::FromInt(1)));
    EXPECT_TRUE(emitter.AddValue("Rate", LxParticleValue::FromInt(2)));
    EXPECT_TRUE(emitter.SetShape("Nowhere", LxArray<LxParticleDomain::Parameter>()));
    EXPECT_TRUE(emitter.End());
    EXPECT_TRUE(builder.EndSystem());
    EXPECT_TRUE(builder.ErrorOccurred());
    EXPECT_FALSE(builder.TakeResult());
    EXPECT_EQ(std::multiset<std::string>{"f.txt(7) : Unknown emitter type: Fountain"}, ErrorMessages(capture));
}

TEST(LxParticleBuilder, DescriptionRules)
{
    // Sorted keys are in time order, equal times in the order given (a jump); evaluation holds the ends.
    LxParticleKeyFrameChannel channel;
    channel.AddKey(1.0f, 10.0f);
    channel.AddKey(2.0f, 40.0f);
    channel.AddKey(0.0f, 0.0f);
    channel.AddKey(1.0f, 20.0f);
    channel.SortKeys();
    ASSERT_EQ(4u, channel.GetKeyCount());
    EXPECT_FLOAT_EQ(0.0f, channel.GetKeyTime(0));
    EXPECT_FLOAT_EQ(10.0f, channel.GetKeyValue(1));
    EXPECT_FLOAT_EQ(20.0f, channel.GetKeyValue(2));
    EXPECT_FLOAT_EQ(0.0f, channel.Evaluate(-5.0f));
    EXPECT_FLOAT_EQ(5.0f, channel.Evaluate(0.5f));
    EXPECT_FLOAT_EQ(30.0f, channel.Evaluate(1.5f));
    EXPECT_FLOAT_EQ(40.0f, channel.Evaluate(9.0f));
    EXPECT_FLOAT_EQ(0.0f, LxParticleKeyFrameChannel().Evaluate(1.0f));

    // Scalar values convert between kinds; a float saturates into an int.
    EXPECT_EQ(1, LxParticleValue::FromBool(true).GetInt());
    EXPECT_TRUE(LxParticleValue::FromFloat(0.5f).GetBool());
    EXPECT_FLOAT_EQ(3.0f, LxParticleValue::FromInt(3).GetFloat());
    EXPECT_EQ(2147483647, LxParticleValue::FromFloat(1e20f).GetInt());
    EXPECT_NE(LxParticleValue::FromInt(1), LxParticleValue::FromFloat(1.0f));

    // Names: every kind has a file name and a display name; emitter and action names do not overlap.
    for (int k = 0; k < LX_PARTICLE_KIND_COUNT; ++k)
    {
        const LxParticleActionKind kind = static_cast<LxParticleActionKind>(k);
        LxParticleActionKind found;
        const bool emitter = LxParticleEmitterKindFromName(LxParticleKindTypeName(kind), &found);
        const bool action = LxParticleActionKindFromName(LxParticleKindTypeName(kind), &found);
        EXPECT_EQ(LxParticleKindIsEmitter(kind), emitter) << k;
        EXPECT_EQ(!emitter && kind != LX_PARTICLE_KIND_PARTICLE_SYSTEM, action) << k;
        if (emitter || action)
        {
            EXPECT_EQ(kind, found);
        }
    }
    EXPECT_STREQ("Advection (based on Obj.Transform)", LxParticleKindDisplayName(LX_PARTICLE_KIND_ADVECTION));
    EXPECT_STREQ("", LxParticleKindDisplayName(LX_PARTICLE_KIND_COUNT));

    // A parameter's channel names stay within its channels.
    LxParticleParameter parameter(LX_PARTICLE_PARAM_KEYFRAME);
    parameter.SetCurveName(3, "beyond");
    EXPECT_TRUE(parameter.GetCurveName(3).IsEmpty());
}
