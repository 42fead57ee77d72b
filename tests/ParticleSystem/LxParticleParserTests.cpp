// Parser tests: the full editor file builds the expected description, every file of
// tests/data/particles/errors reports exactly the messages it lists, and the lexical and syntactic edge cases.
#include "ParticleSystem/LxParticleTestUtil.h"

#include "ParticleSystem/LxParticleSystemDesc.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <thread>

using LxPxTest::ErrorMessages;
using LxPxTest::Parse;

namespace
{
const std::set<std::string> kCampfireCurves = {"fire.path", "fire.roll", "swirl", "Smoke.transform"};

void ExpectVector(const LxVector3& v, float x, float y, float z)
{
    EXPECT_FLOAT_EQ(x, v.x);
    EXPECT_FLOAT_EQ(y, v.y);
    EXPECT_FLOAT_EQ(z, v.z);
}

std::vector<float> Values(const LxParticleParameter& p)
{
    std::vector<float> v;
    for (unsigned int i = 0; i < p.GetValueCount(); ++i)
        v.push_back(p.GetValue(i));
    return v;
}

std::vector<float> Keys(const LxParticleKeyFrameChannel& c)
{
    std::vector<float> v;
    for (unsigned int i = 0; i < c.GetKeyCount(); ++i)
    {
        v.push_back(c.GetKeyTime(i));
        v.push_back(c.GetKeyValue(i));
    }
    return v;
}
} // namespace

TEST(LxParticleParser, CampfireBuildsEveryConstruct)
{
    LxTest::LogCapture capture;
    LxPxTest::TestAnimationSet curves(kCampfireCurves);
    LxParticleBuilder builder;
    builder.SetAnimationSet(&curves);
    std::unique_ptr<LxParticleGroupDesc> group =
        Parse(LxPxTest::ReadText(LxPxTest::ParticlesDir() + "/campfire.txt"), "campfire.txt", &builder);
    ASSERT_TRUE(group) << capture.All();
    EXPECT_EQ(0, capture.ErrorCount()) << capture.All();

    // Header and editor settings.
    EXPECT_FLOAT_EQ(1.25f, group->GetVersion());
    EXPECT_STREQ("C:\\Projects\\Fire\\textures", group->GetTexturePath().c_str());
    EXPECT_STREQ("objects", group->GetObjectPath().c_str());
    EXPECT_EQ(LxVector4(0.1f, 0.2f, 0.3f, 1.0f), group->GetClearColor());
    EXPECT_FLOAT_EQ(0.5f, group->GetNearClipPlane());
    EXPECT_FLOAT_EQ(1000.0f, group->GetFarClipPlane());
    EXPECT_FLOAT_EQ(1.0f, group->GetGridUnitSize());
    EXPECT_FLOAT_EQ(20.0f, group->GetGridSize());
    const float camera[] = {0.0f, 1.5f, -10.0f, 45.0f, -0.5f};
    for (unsigned int i = 0; i < LxParticleGroupDesc::kCameraPosCount; ++i)
        EXPECT_FLOAT_EQ(camera[i], group->GetCameraPos(i));
    EXPECT_FLOAT_EQ(0.25f, group->GetCoordinateFrameSize());
    ASSERT_EQ(2u, group->GetSystemCount());

    // The first system: settings, textures, effect parameters, transform.
    const LxParticleSystemDesc& fire = group->GetSystem(0);
    EXPECT_STREQ("Camp Fire", fire.GetName().c_str());
    EXPECT_EQ(LX_PARTICLE_SYSTEM_GPU_BILLBOARD, fire.GetType());
    EXPECT_STREQ("particles.fx", fire.GetEffectFile().c_str());
    EXPECT_EQ(256, fire.GetKeyFrameTexWidth());
    EXPECT_EQ(4, fire.GetKeyFrameTexHeight());
    EXPECT_EQ(4, fire.GetTextureTilesAcross());
    EXPECT_EQ(2, fire.GetTextureTilesDown());
    EXPECT_STREQ("Spark", fire.GetParticleObjectName().c_str());
    EXPECT_STREQ("spark.lmx", fire.GetParticleObjectFile().c_str());
    EXPECT_TRUE(fire.GetUpdateWhenCulled());
    EXPECT_FALSE(fire.GetSort());
    EXPECT_EQ(2, fire.GetSimulationSkip());
    EXPECT_EQ(10, fire.GetBoundingBoxSkip());
    EXPECT_FLOAT_EQ(1.5f, fire.GetWarmUp());

    ASSERT_EQ(2u, fire.GetTextureSetCount());
    const LxParticleTextureSet& diffuse = fire.GetTextureSet(0);
    EXPECT_STREQ("Diffuse", diffuse.GetName().c_str());
    ASSERT_EQ(2u, diffuse.GetSlotCount());
    EXPECT_STREQ("tDiffuse", diffuse.GetSlot(0).slot.c_str());
    EXPECT_STREQ("flame.png", diffuse.GetSlot(0).file.c_str());
    EXPECT_STREQ("textures\\noise.png", diffuse.FindFile("tNoise")->c_str());
    EXPECT_STREQ("smoke.png", fire.FindTextureSet("Alternate")->FindFile("tDiffuse")->c_str());

    ASSERT_EQ(3u, fire.GetEffectParameterCount());
    const LxParticleParameter* tint = fire.FindEffectParameter("Tint");
    ASSERT_TRUE(tint);
    EXPECT_EQ(LX_PARTICLE_PARAM_FIXED, tint->GetKind());
    EXPECT_EQ(4u, tint->GetComponentCount());
    EXPECT_EQ((std::vector<float>{1.0f, 0.5f, 0.25f, 1.0f}), Values(*tint));
    const LxParticleParameter* rotation = fire.FindEffectParameter("Rotation");
    ASSERT_TRUE(rotation);
    EXPECT_EQ(LX_PARTICLE_PARAM_RANDOM, rotation->GetKind());
    EXPECT_EQ(1u, rotation->GetComponentCount());
    EXPECT_FLOAT_EQ(0.0f, rotation->GetMinimum(0));
    EXPECT_FLOAT_EQ(360.0f, rotation->GetMaximum(0));
    const LxParticleParameter* flicker = fire.FindEffectParameter("Flicker");
    ASSERT_EQ(1u, flicker->GetChannelCount());
    EXPECT_EQ((std::vector<float>{0, 1, 0.5f, 0.25f, 1, 1}), Keys(flicker->GetChannel(0)));
    EXPECT_STREQ("Camp Fire.0.Flicker", flicker->GetCurveName(0).c_str());

    ASSERT_TRUE(fire.HasTransform());
    const LxParticleTransform& world = fire.GetTransform();
    EXPECT_EQ(LX_PARTICLE_TRANSFORM_WORLD, world.GetType());
    EXPECT_EQ(4u, world.GetItemCount());
    ExpectVector(world.GetTranslation(), 1, 2, 3);
    ExpectVector(world.GetRotation(), 0, 90, 0);
    ExpectVector(world.GetScale(), 2, 2, 2);
    ExpectVector(world.GetShear(), 0, 0, 0.5f);
    EXPECT_TRUE(world.GetCurveName().IsEmpty());

    // Emitters: kinds, parameters of every kind, scalar values, shape and animated transform.
    ASSERT_EQ(2u, fire.GetEmitterCount());
    const LxParticleElementDesc& flames = fire.GetEmitter(0);
    EXPECT_STREQ("Flames", flames.GetName().c_str());
    EXPECT_EQ(LX_PARTICLE_KIND_EMITTER, flames.GetKind());
    EXPECT_STREQ("Emitter", flames.GetKindDisplayName());
    ASSERT_EQ(4u, flames.GetParameterCount());
    EXPECT_STREQ("Rate", flames.GetParameter(0).name.c_str());
    const LxParticleParameter* rate = flames.FindParameter("Rate");
    EXPECT_EQ(LX_PARTICLE_PARAM_NON_UNIFORM_RANDOM, rate->GetKind());
    EXPECT_FLOAT_EQ(10.0f, rate->GetMinimum(0));
    EXPECT_FLOAT_EQ(20.0f, rate->GetMaximum(0));
    EXPECT_FLOAT_EQ(2.0f, rate->GetExponent(0));
    const LxParticleParameter* color = flames.FindParameter("Color");
    EXPECT_EQ(LX_PARTICLE_PARAM_KEYFRAME, color->GetKind());
    EXPECT_EQ(3u, color->GetComponentCount());
    EXPECT_EQ((std::vector<float>{0, 0.5f, 1, 0}), Keys(*color->GetComponentChannel(1)));
    EXPECT_FLOAT_EQ(0.75f, color->GetComponentChannel(0)->Evaluate(0.5f));
    EXPECT_STREQ("Camp Fire.2.Flames.Color", color->GetCurveName(2).c_str());
    const LxParticleParameter* size = flames.FindParameter("Size");
    EXPECT_EQ(LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM, size->GetKind());
    EXPECT_EQ(1u, size->GetComponentCount());
    EXPECT_EQ((std::vector<float>{0, 2, 1, 3}), Keys(*size->GetComponentChannel(0, 1)));
    EXPECT_FALSE(size->GetComponentChannel(0, 3));
    EXPECT_EQ(3u, flames.FindParameter("Rotation")->GetComponentCount());
    ASSERT_EQ(3u, flames.GetValueCount());
    EXPECT_EQ(LxParticleValue::FromInt(500), *flames.FindValue("MaxParticles"));
    EXPECT_EQ(LxParticleValue::FromBool(true), *flames.FindValue("Loop"));
    EXPECT_EQ(LxParticleValue::FromFloat(2.5f), *flames.FindValue("Speed"));
    ASSERT_TRUE(flames.HasShape());
    const LxParticleDomain& sphere = flames.GetShape();
    EXPECT_EQ(LX_PARTICLE_DOMAIN_SPHERE, sphere.GetType());
    ExpectVector(sphere.GetVector3("Center"), 0, 0.5f, 0);
    EXPECT_FLOAT_EQ(0.75f, sphere.GetFloat("Radius"));
    EXPECT_FLOAT_EQ(0.0f, sphere.GetFloat("InnerRadius")); // the default
    EXPECT_TRUE(sphere.GetBool("Surface"));
    EXPECT_EQ(4u, sphere.GetParameterCount());
    ASSERT_TRUE(flames.HasTransform());
    const LxParticleTransform& path = flames.GetTransform();
    EXPECT_EQ(LX_PARTICLE_TRANSFORM_ANIMATION, path.GetType());
    EXPECT_STREQ("fire.path", path.GetCurveName().c_str());
    ASSERT_TRUE(path.GetAnimation());
    EXPECT_STREQ("fire.roll", path.GetAnimation()->curve2.c_str());
    EXPECT_FLOAT_EQ(0.25f, path.GetAnimation()->timeOffset);
    ExpectVector(path.GetScale(), 1, 1, 1);

    const LxParticleElementDesc& trails = fire.GetEmitter(1);
    EXPECT_EQ(LX_PARTICLE_KIND_EMITTER_TAIL, trails.GetKind());
    EXPECT_STREQ("Emitter (Tail)", trails.GetKindDisplayName());
    EXPECT_EQ(&trails, fire.FindEmitter("Spark Trails"));
    EXPECT_TRUE(trails.FindParameter("Shape")); // "Shape" as a plain name
    EXPECT_FALSE(trails.HasShape());
    EXPECT_EQ(4u, trails.FindParameter("Spread")->GetComponentCount());

    // Actions.
    ASSERT_EQ(2u, fire.GetActionCount());
    const LxParticleElementDesc& gravity = fire.GetAction(0);
    EXPECT_EQ(LX_PARTICLE_KIND_CONST_ACCEL, gravity.GetKind());
    EXPECT_STREQ("Const. Accel.", gravity.GetKindDisplayName());
    EXPECT_FLOAT_EQ(-9.81f, gravity.FindParameter("Acceleration")->GetFixed(1));
    const LxParticleElementDesc* ground = fire.FindAction("Ground");
    ASSERT_TRUE(ground);
    EXPECT_STREQ("Collider (Bounce)", ground->GetKindDisplayName());
    EXPECT_EQ(LxParticleValue::FromFloat(0.2f), *ground->FindValue("Friction"));
    EXPECT_EQ(LX_PARTICLE_DOMAIN_PLANE, ground->GetShape().GetType());
    ExpectVector(ground->GetShape().GetVector3("Normal"), 0, 1, 0);
    EXPECT_EQ(LX_PARTICLE_TRANSFORM_CAMERA, ground->GetTransform().GetType());
    ExpectVector(ground->GetTransform().GetTranslation(), 0, -1, 0);

    // The second system: defaults where nothing was said, the default curve of an animated system transform.
    const LxParticleSystemDesc& smoke = group->GetSystem(1);
    EXPECT_EQ(&smoke, group->FindSystem("Smoke"));
    EXPECT_EQ(0, smoke.GetKeyFrameTexWidth());
    EXPECT_EQ(1, smoke.GetTextureTilesAcross());
    EXPECT_FALSE(smoke.GetUpdateWhenCulled());
    EXPECT_EQ(0u, smoke.GetTextureSetCount());
    const LxParticleElementDesc& puffs = smoke.GetEmitter(0);
    EXPECT_EQ(LX_PARTICLE_KIND_EMITTER_COLLISION, puffs.GetKind());
    EXPECT_EQ(LxVector4(1, 0, 0, 0), puffs.GetShape().GetVector4("Orientation"));
    ExpectVector(puffs.GetShape().GetVector3("Max"), 1, 2, 1);
    EXPECT_EQ(LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM, puffs.FindParameter("Drift")->GetKind());
    const LxParticleElementDesc& swirl = smoke.GetAction(0);
    EXPECT_EQ(LX_PARTICLE_KIND_VORTEX, swirl.GetKind());
    EXPECT_EQ(LX_PARTICLE_TRANSFORM_WORLD_ROT_CAM_POS, swirl.GetTransform().GetType());
    EXPECT_STREQ("swirl", swirl.GetTransform().GetAnimation()->curve.c_str());
    EXPECT_TRUE(swirl.GetTransform().GetAnimation()->curve2.IsEmpty());
    EXPECT_EQ(2u, swirl.FindParameter("Strength")->GetComponentCount());
    EXPECT_STREQ("Smoke.transform", smoke.GetTransform().GetCurveName().c_str());

    // Keyframed parameters were exported into the animation set, one curve per channel.
    const std::vector<std::string> exported = {
        "Camp Fire.0.Flicker",     "Camp Fire.0.Flames.Color", "Camp Fire.1.Flames.Color", "Camp Fire.2.Flames.Color",
        "Camp Fire.0.Flames.Size", "Camp Fire.1.Flames.Size",  "Camp Fire.2.Flames.Size",  "Smoke.0.Puffs.Drift",
        "Smoke.1.Puffs.Drift",     "Smoke.2.Puffs.Drift"};
    EXPECT_EQ(exported.size(), curves.added.size());
    for (const std::string& name : exported)
        EXPECT_EQ(1u, curves.added.count(name)) << name;
    EXPECT_EQ((std::vector<float>{0, 2, 1, 3}), Keys(curves.added["Camp Fire.1.Flames.Size"]));
}

// Every file of errors/ lists, in "// expect: " lines, the messages it must provoke; exactly those are logged,
// and the parse fails. Files whose name starts with "curves_" are built with an animation set holding "known".
TEST(LxParticleParser, ErrorFilesReportExactlyTheExpectedMessages)
{
    namespace fs = std::filesystem;
    int files = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(LxPxTest::ParticlesDir() + "/errors"))
    {
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        const std::string text = LxPxTest::ReadText(entry.path().string());
        LxTest::LogCapture capture;
        LxPxTest::TestAnimationSet curves({"known"});
        LxPxTest::TestBuilder builder;
        if (name.rfind("curves_", 0) == 0)
            builder.SetAnimationSet(&curves);
        EXPECT_FALSE(Parse(text, name, &builder));

        std::multiset<std::string> expected;
        std::istringstream lines(text);
        const std::string tag = "// expect: ";
        for (std::string line; std::getline(lines, line);)
            if (line.rfind(tag, 0) == 0)
                expected.insert(line.substr(tag.size()));
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(expected, ErrorMessages(capture)) << capture.All();
        ++files;
    }
    EXPECT_GE(files, 8);
}

TEST(LxParticleParser, KeyFramedNonUniformRandomHasTwoSpellings)
{
    LxTest::LogCapture capture;
    const std::string channels = "KeyFrameChannel 0 1 EndKeyFrameChannel KeyFrameChannel 0 2 EndKeyFrameChannel "
                                 "KeyFrameChannel 0 3 EndKeyFrameChannel EndParam\n";
    const std::string head = "Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S Effect \"e.fx\"\n";
    std::unique_ptr<LxParticleGroupDesc> a =
        Parse(head + "EffectParam P Param KFNonUniformRandom " + channels + "EndParticleSystem\n");
    std::unique_ptr<LxParticleGroupDesc> b =
        Parse(head + "EffectParam P Param KeyFramedNonUniformRandom " + channels + "EndParticleSystem\n");
    ASSERT_TRUE(a && b) << capture.All();
    const LxParticleParameter* pa = a->GetSystem(0).FindEffectParameter("P");
    const LxParticleParameter* pb = b->GetSystem(0).FindEffectParameter("P");
    EXPECT_EQ(LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM, pa->GetKind());
    EXPECT_EQ(pa->GetKind(), pb->GetKind());
    ASSERT_EQ(3u, pa->GetChannelCount());
    for (unsigned int c = 0; c < 3; ++c)
        EXPECT_EQ(Keys(pa->GetChannel(c)), Keys(pb->GetChannel(c)));
}

// One complete file around each case: "%" stands for the case's text inside a system.
TEST(LxParticleParser, LexicalAndSyntacticEdgeCases)
{
    struct Case
    {
        const char* text;
        const char* message; // the first error logged, or null when the file is valid
    };
    const Case cases[] = {
        // The header: a phrase of its own, with a version number that is a float.
        {"Lumex Particle Editor Project 1.0\n", nullptr},
        {"Lumex  Particle\tEditor Project 2.\n", nullptr},
        {"ParticleSystem GPUBillboard S EndParticleSystem\n",
         "t.txt(1) : syntax error, unexpected ParticleSystem, expecting Lumex Particle Editor Project"},
        {"Lumex Particle Editor Project\nGridSize 1\n",
         "t.txt(2) : syntax error, unexpected GridSize, expecting float"},
        {"Lumex Particle Editor Project 1\n", "t.txt(1) : syntax error, unexpected integer, expecting float"},
        {"Lumex Particle Project 1.0\n",
         "t.txt(1) : syntax error, unexpected identifier, expecting Lumex Particle Editor Project"},
        {"", "t.txt(1) : syntax error, unexpected end of file, expecting Lumex Particle Editor Project"},
        // Component counts.
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S EffectParam P Param Random 1 2 3\n"
         "EndParticleSystem\n",
         "t.txt(3) : syntax error, unexpected EndParticleSystem, expecting integer or float"},
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S EffectParam P Param Fixed 1 2 3 4 5\n"
         "EndParticleSystem\n",
         "t.txt(2) : syntax error, unexpected integer"},
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S EffectParam P Param NonUniformRandom "
         "1 2 3 4\nEndParticleSystem\n",
         "t.txt(3) : syntax error, unexpected EndParticleSystem, expecting integer or float"},
        // Keywords are case-sensitive; the booleans have two spellings.
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S Sort TRUE UpdateWhenCulled true "
         "EndParticleSystem\n",
         nullptr},
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S Sort True EndParticleSystem\n",
         "t.txt(2) : syntax error, unexpected identifier, expecting boolean or integer or float"},
        {"Lumex Particle Editor Project 1.0\nparticleSystem GPUBillboard S EndParticleSystem\n",
         "t.txt(2) : syntax error, unexpected identifier"},
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S effect \"e.fx\" EndParticleSystem\n",
         "t.txt(2) : syntax error, unexpected string, expecting boolean or integer or float"},
        // Numbers: signs, a leading point, exponents; absurd ones are refused.
        {"Lumex Particle Editor Project -.5e1\nGridSize -3\nNearClipPlane 1E2\n", nullptr},
        {"Lumex Particle Editor Project 1.0\nGridSize 4294967296\n", "t.txt(2) : Number out of range: 4294967296"},
        {"Lumex Particle Editor Project 1.0\nGridSize 1e39\n", "t.txt(2) : Number out of range: 1e39"},
        // Strings are one line long; nothing is escaped in them (a backslash before the closing quote is a path's).
        {"Lumex Particle Editor Project 1.0\nTexturePath \"a\\\"\n", nullptr},
        {"Lumex Particle Editor Project 1.0\nTexturePath \"open\nGridSize 1\n", "t.txt(2) : Unterminated string!"},
        {"Lumex Particle Editor Project 1.0\nGridSize 1 @\n", "t.txt(2) : Invalid character: @ (ASCII: 64)"},
        {"Lumex Particle Editor Project 1.0\nGridSize 1 \x01\n", "t.txt(2) : Invalid character (ASCII: 1)"},
        // Unterminated constructs end in a syntax error at the end of the file.
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S Emitter Shape E Rate 1\n",
         "t.txt(3) : syntax error, unexpected end of file"},
        {"Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S Texture T { t \"a.png\"\n",
         "t.txt(3) : syntax error, unexpected end of file, expecting identifier or '}'"},
        {"Lumex Particle Editor Project 1.0 // a comment\n// GridSize x\n", nullptr},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        LxTest::LogCapture capture;
        std::unique_ptr<LxParticleGroupDesc> group = Parse(c.text, "t.txt");
        const std::multiset<std::string> errors = ErrorMessages(capture);
        if (!c.message)
        {
            EXPECT_TRUE(group) << capture.All();
            EXPECT_TRUE(errors.empty()) << capture.All();
            continue;
        }
        EXPECT_FALSE(group);
        ASSERT_FALSE(errors.empty());
        bool found = false;
        for (const std::string& e : errors)
            found = found || e.rfind(c.message, 0) == 0;
        EXPECT_TRUE(found) << "missing: " << c.message << "\nlogged:\n" << capture.All();
    }
}

// Hostile input: a long run of garbage, many systems, a megabyte identifier and NUL bytes each end in a
// result (group or logged failure) in bounded time; nothing in them can nest, so nothing overflows.
TEST(LxParticleParser, HostileInputEndsWithAResult)
{
    LxTest::LogCapture capture;
    std::string garbage = "Lumex Particle Editor Project 1.0\n";
    for (int i = 0; i < 20000; ++i)
        garbage += "} Param EndEmitter 1 \"x\" ";
    EXPECT_FALSE(Parse(garbage));

    std::string many = "Lumex Particle Editor Project 1.0\n";
    for (int i = 0; i < 2000; ++i)
        many += "ParticleSystem GPUBillboard S" + std::to_string(i) + " Sort true EndParticleSystem\n";
    std::unique_ptr<LxParticleGroupDesc> group = Parse(many);
    ASSERT_TRUE(group);
    EXPECT_EQ(2000u, group->GetSystemCount());

    std::string longName = "Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard ";
    longName += std::string(1 << 20, 'a');
    EXPECT_FALSE(Parse(longName));

    std::string nul("Lumex Particle Editor Project 1.0\nGridSize 1\n");
    nul += std::string(3, '\0') + "GridSize 2\n";
    capture.Clear();
    EXPECT_FALSE(Parse(nul, "nul.txt"));
    EXPECT_EQ(1u, ErrorMessages(capture).count("nul.txt(3) : Invalid character (ASCII: 0)")) << capture.All();
}

// An internal failure of the generated scanner is reported and ends the input there; the process goes on.
TEST(LxParticleParser, ScannerFailureEndsTheParseNotTheProcess)
{
    class FailingBuilder : public LxParticleBuilder
    {
    public:
        LxParticleParser* parser = nullptr;
        bool LoadShader(const LxString&) override
        {
            parser->ReportScannerFailure("fatal flex scanner internal error--no action found");
            return true;
        }
    };
    LxTest::LogCapture capture;
    FailingBuilder builder;
    LxParticleParser parser;
    builder.parser = &parser;
    parser.Init("fatal.txt",
                "Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard S\nEffect \"e.fx\"\n"
                "Emitter Shape E Rate 1 EndEmitter EndParticleSystem\n",
                &builder);
    EXPECT_FALSE(parser.Parse());
    EXPECT_FALSE(builder.TakeResult());
    const std::multiset<std::string> errors = ErrorMessages(capture);
    EXPECT_EQ(1u, errors.count("fatal.txt(3) : fatal flex scanner internal error--no action found")) << capture.All();
    // What follows the failure was never read: the parse saw the end of the input instead.
    EXPECT_EQ(1u, errors.count("fatal.txt(3) : syntax error, unexpected end of file")) << capture.All();
}

// Separate parsers share nothing: two threads parse the campfire file at once.
TEST(LxParticleParser, ParsersRunOnSeparateThreads)
{
    const std::string text = LxPxTest::ReadText(LxPxTest::ParticlesDir() + "/campfire.txt");
    std::vector<int> systems(2, -1);
    auto parse = [&](int i)
    {
        LxPxTest::TestAnimationSet curves(kCampfireCurves);
        LxParticleBuilder builder;
        builder.SetAnimationSet(&curves);
        for (int n = 0; n < 20; ++n)
        {
            LxParticleParser parser;
            parser.Init("campfire.txt", LxPxTest::Lx(text), &builder);
            std::unique_ptr<LxParticleGroupDesc> group(parser.Parse() ? builder.TakeResult() : nullptr);
            systems[i] = group ? static_cast<int>(group->GetSystemCount()) : 0;
        }
    };
    std::thread a(parse, 0), b(parse, 1);
    a.join();
    b.join();
    EXPECT_EQ(2, systems[0]);
    EXPECT_EQ(2, systems[1]);
}
