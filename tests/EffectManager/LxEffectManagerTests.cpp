// Effect manager: the default-effect rule and load messages, one shared reference per file and unloading on the
// last outside reference, hot reload (changed files and includes, listeners, failed rebuilds), defines, option
// overrides, override techniques, app updates and binder factories.
#include "EffectManager/LxEffectManager.h"
#include "EffectManager/LxEffectReloadListener.h"
#include "EffectManager/LxResourceDimUpdateHandler.h"
#include "EffectManager/LxStreamBinder.h"
#include "EffectManager/LxStreamBinderFactory.h"
#include "EffectManager/LxTextureSlotBinder.h"
#include "EffectManager/LxTextureSlotBinderFactory.h"
#include "EffectManager/LxUAVSlotBinder.h"
#include "EffectManager/LxUAVSlotBinderFactory.h"
#include "EffectManager/LxUpdateHandlerFactory.h"
#include "GPUResourceManager/LxGPUBuffer.h"
#include "GPUResourceManager/LxGPUTexture2DArray.h"
#include "GPUResourceManager/LxGPUTexture3D.h"
#include "LxEffectManagerTestUtil.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
using LxFxTest::TestEffectManager;

const char* const kDefaultEffect = "Sampler DEFAULT_SAMPLER { Filter = MIN_MAG_MIP_LINEAR; }\n"
                                   "Technique DEFAULT_TECHNIQUE { Pass DEFAULT_PASS {\n"
                                   "  VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }\n";

// A drawable effect whose float "fVersion" tells builds apart; `extra` goes before the technique.
std::string Effect(float version, const std::string& extra = std::string())
{
    return "Float fVersion (" + std::to_string(version) + ")\n" + extra +
           "Technique T { Pass P {\n"
           "  VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }\n";
}

float VersionOf(const LxCountedPtr<LxEffect>& effect)
{
    const LxEffectParameter* p = effect ? effect->GetParameter("fVersion") : nullptr;
    return p ? p->GetDefaultValueFloat() : -1.0f;
}

class LxEffectManagerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_dir = LxTest::MakeTempDir("fxm");
        m_manager = new TestEffectManager();
        ASSERT_TRUE(LxEffectManager::Init(m_manager));
        m_manager->AddSearchPath(m_dir.c_str());
    }
    void TearDown() override { LxEffectManager::ShutDown(); }

    void Write(const std::string& name, const std::string& text) { LxTest::WriteBytes(m_dir + "/" + name, text); }
    // Rewrites a file and moves its time stamp on explicitly (no waiting for the clock to tick).
    void Rewrite(const std::string& name, const std::string& text)
    {
        Write(name, text);
        Touch(name);
    }
    void Touch(const std::string& name)
    {
        const std::filesystem::path path(m_dir + "/" + name);
        m_bump += 10;
        std::filesystem::last_write_time(path, std::filesystem::last_write_time(path) + std::chrono::seconds(m_bump));
    }
    void LoadDefault()
    {
        Write("default.fx", kDefaultEffect);
        LxCountedPtr<LxEffect> effect = m_manager->LoadEffect("default.fx", LxEffectManager::LOAD_DEFAULT_EFFECT);
        ASSERT_TRUE(effect);
        ASSERT_TRUE(m_manager->SetDefaultEffect(effect));
    }

    std::string m_dir;
    TestEffectManager* m_manager = nullptr;
    int m_bump = 0;
};

// Records every reload call as "<name> <old version> -> <new version>" and optionally keeps the old effect.
class RecordingListener : public LxEffectReloadListener
{
public:
    RecordingListener(const std::string& name, std::vector<std::string>& calls) : m_name(name), m_calls(calls) {}
    void OnEffectReload(LxCountedPtr<LxEffect> oldEffect, LxCountedPtr<LxEffect> newEffect) override
    {
        m_calls.push_back(m_name + " " + std::to_string(static_cast<int>(VersionOf(oldEffect))) + " -> " +
                          std::to_string(static_cast<int>(VersionOf(newEffect))));
        lastNew = newEffect.Get();
        if (keepOld)
            kept = oldEffect;
        if (dropOnCall)
            *dropOnCall = nullptr;
    }
    bool keepOld = false;
    LxCountedPtr<LxEffect> kept;
    LxCountedPtr<LxEffect>* dropOnCall = nullptr;
    LxEffect* lastNew = nullptr;

private:
    std::string m_name;
    std::vector<std::string>& m_calls;
};
} // namespace

TEST_F(LxEffectManagerTest, DefaultEffectIsRequiredUnlessLoadingItWithTheFlag)
{
    LxTest::LogCapture capture;
    Write("a.fx", Effect(1));
    EXPECT_FALSE(m_manager->LoadEffect("a.fx"));
    EXPECT_TRUE(capture.Contains("LxEffectManager::LoadEffect: Default effect is not set. Set a default effect using "
                                 "LxEffectManager::SetDefaultEffect ()\n",
                                 LX_LOG_ERROR))
        << capture.All();
    EXPECT_TRUE(capture.Contains("before loading an effect, or use the LOAD_DEFAULT_EFFECT load flag\n"));
    EXPECT_FALSE(capture.Contains("Loading effect file")) << "nothing may be parsed without a default effect";

    // The flag waives the rule and tells the builder hook it builds the default effect.
    LxCountedPtr<LxEffect> a = m_manager->LoadEffect("a.fx", LxEffectManager::LOAD_DEFAULT_EFFECT);
    ASSERT_TRUE(a) << capture.All();
    LoadDefault();
    EXPECT_EQ("DEFAULT_SAMPLER", std::string(m_manager->GetDefaultSampler()->GetName().c_str()));
    EXPECT_EQ("DEFAULT_TECHNIQUE", std::string(m_manager->GetDefaultTechnique()->GetName().c_str()));
    EXPECT_EQ("DEFAULT_PASS", std::string(m_manager->GetDefaultPass()->GetName().c_str()));
    Write("b.fx", Effect(2));
    EXPECT_TRUE(m_manager->LoadEffect("b.fx"));
    EXPECT_EQ((std::vector<bool>{true, true, false}), m_manager->builderRequests);

    // A second manager is refused and leaves the first one in charge.
    EXPECT_FALSE(LxEffectManager::Init(new TestEffectManager()));
    EXPECT_EQ(m_manager, LxEffectManager::GetExistingPtr());
    EXPECT_EQ(m_manager, LxEffectDrawContext::GetGlobal());
}

TEST_F(LxEffectManagerTest, DefaultEffectMustHoldItsThreeObjects)
{
    LoadDefault();
    LxEffect* const previous = m_manager->GetDefaultEffect().Get();
    struct Case
    {
        const char* text;
        const char* message;
    } cases[] = {
        {"Technique DEFAULT_TECHNIQUE { Pass DEFAULT_PASS { VertexShader() float4 main() : SV_Position { return 0; } "
         "EndVertexShader } }",
         "Default effect doesn't contain required default sampler declaration named DEFAULT_SAMPLER"},
        {"Sampler DEFAULT_SAMPLER { Filter = MIN_MAG_MIP_LINEAR; }\nTechnique T { Pass DEFAULT_PASS { VertexShader() "
         "float4 main() : SV_Position { return 0; } EndVertexShader } }",
         "Default effect doesn't contain required default technique named DEFAULT_TECHNIQUE"},
        {"Sampler DEFAULT_SAMPLER { Filter = MIN_MAG_MIP_LINEAR; }\nTechnique DEFAULT_TECHNIQUE { Pass P { "
         "VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }",
         "Default effect doesn't contain required default pass declaration named DEFAULT_PASS"},
    };
    int n = 0;
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.message);
        LxTest::LogCapture capture;
        const std::string name = "candidate" + std::to_string(n++) + ".fx";
        Write(name, c.text);
        LxCountedPtr<LxEffect> candidate = m_manager->LoadEffect(name.c_str());
        ASSERT_TRUE(candidate) << capture.All();
        EXPECT_FALSE(m_manager->SetDefaultEffect(candidate));
        EXPECT_EQ(1, capture.Count(c.message, LX_LOG_ERROR)) << capture.All();
        EXPECT_EQ(previous, m_manager->GetDefaultEffect().Get());
    }
}

TEST_F(LxEffectManagerTest, LoadFailuresReportTheFileAndLoseNothing)
{
    LoadDefault();
    Write("good.fx", Effect(1));
    LxCountedPtr<LxEffect> good = m_manager->LoadEffect("good.fx");
    ASSERT_TRUE(good);
    Write("bad.fx", "Technique T { Pass P { ZEnable = }");
    std::filesystem::create_directory(m_dir + "/folder.fx");
    struct Case
    {
        const char* file;
        std::vector<std::string> messages;
    } cases[] = {
        {"missing.fx", {"Effect file \"missing.fx\" not found in search path"}},
        {"bad.fx", {"Loading effect file: \"bad.fx\"", "Invalid effect file \"bad.fx\""}},
        {"folder.fx", {"Loading effect file: \"folder.fx\"", "Error opening effect file \"folder.fx\""}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.file);
        LxTest::LogCapture capture;
        EXPECT_FALSE(m_manager->LoadEffect(c.file));
        for (const std::string& message : c.messages)
            EXPECT_TRUE(capture.Contains(message)) << capture.All();
        EXPECT_FALSE(m_manager->IsEffectLoaded(c.file));
    }
    EXPECT_EQ(2u, m_manager->GetLoadedEffectCount());
    EXPECT_EQ(good, m_manager->LoadEffect("good.fx"));
}

TEST_F(LxEffectManagerTest, OneSharedReferencePerFileUntilTheLastOutsideReferenceGoes)
{
    LoadDefault();
    Write("a.fx", Effect(1));
    LxTest::LogCapture capture;
    LxCountedPtr<LxEffect> first = m_manager->LoadEffect("a.fx");
    LxCountedPtr<LxEffect> second = m_manager->LoadEffect("a.fx");
    ASSERT_TRUE(first);
    EXPECT_EQ(first, second) << "both must share one record";
    EXPECT_EQ(1, capture.Count("Loading effect file: \"a.fx\""));
    EXPECT_EQ(3u, first.GetRefCount()); // the manager's and two outside

    capture.Clear();
    m_manager->ListLoadedEffects();
    EXPECT_TRUE(capture.Contains("Loaded effect files:\n")) << capture.All();
    EXPECT_TRUE(capture.Contains("default.fx\n")) << capture.All();
    EXPECT_TRUE(capture.Contains("a.fx\n")) << capture.All();

    second = nullptr;
    EXPECT_TRUE(m_manager->IsEffectLoaded("a.fx"));
    first = nullptr; // only the manager's reference is left: unloaded
    EXPECT_FALSE(m_manager->IsEffectLoaded("a.fx"));
    EXPECT_TRUE(m_manager->IsEffectLoaded("default.fx")) << "the default effect is held by the manager itself";
    capture.Clear();
    LxCountedPtr<LxEffect> again = m_manager->LoadEffect("a.fx");
    EXPECT_EQ(1, capture.Count("Loading effect file: \"a.fx\""));

    // Effects outlive the manager for whoever still holds them.
    LxEffectManager::ShutDown();
    EXPECT_EQ(1.0f, VersionOf(again));
    again = nullptr;
}

TEST_F(LxEffectManagerTest, ReloadRebuildsChangedFilesAndTellsListenersInOrder)
{
    LoadDefault();
    Write("common.fxh", "Float fShared (0.5)\n");
    Write("a.fx", Effect(1, "#include \"common.fxh\"\n"));
    Write("b.fx", Effect(10));
    LxCountedPtr<LxEffect> a = m_manager->LoadEffect("a.fx");
    LxCountedPtr<LxEffect> b = m_manager->LoadEffect("b.fx");
    ASSERT_TRUE(a && b);
    LxArray<LxEffectManager::Dependency> dependencies;
    ASSERT_TRUE(m_manager->GetDependencyTimestamps("a.fx", dependencies));
    ASSERT_EQ(1u, dependencies.GetCount());
    EXPECT_STREQ("common.fxh", dependencies[0].fileName.c_str());
    EXPECT_GT(dependencies[0].timeStamp, 0);

    std::vector<std::string> calls;
    RecordingListener first("first", calls), second("second", calls);
    m_manager->AddReloadListener(&first);
    m_manager->AddReloadListener(&second);

    LxTest::LogCapture capture;
    m_manager->ReloadEffects(false);
    EXPECT_TRUE(capture.Contains("Starting effect re-load.....")) << capture.All();
    EXPECT_TRUE(capture.Contains("Skipped effect re-load: No changed shader files found on disk")) << capture.All();
    EXPECT_FALSE(capture.Contains("Loading effect file"));
    EXPECT_FALSE(capture.Contains("Finished effect re-load"));
    EXPECT_TRUE(calls.empty());

    // The file itself changed.
    LxEffect* const oldA = a.Get();
    Rewrite("a.fx", Effect(2, "#include \"common.fxh\"\n"));
    capture.Clear();
    m_manager->ReloadEffects(false);
    EXPECT_EQ((std::vector<std::string>{"first 1 -> 2", "second 1 -> 2"}), calls);
    EXPECT_EQ(2.0f, VersionOf(a)) << "the holder must see the new effect";
    EXPECT_NE(oldA, a.Get());
    EXPECT_EQ(a.Get(), first.lastNew);
    EXPECT_EQ(10.0f, VersionOf(b));
    EXPECT_EQ(1, capture.Count("Loading effect file: \"a.fx\""));
    EXPECT_EQ(0, capture.Count("Loading effect file: \"b.fx\"")) << "untouched files are not rebuilt";
    EXPECT_TRUE(capture.Contains("Finished effect re-load\n")) << capture.All();
    EXPECT_EQ(0, capture.ErrorCount()) << capture.All();

    // Only an included file changed.
    calls.clear();
    Rewrite("common.fxh", "Float fShared (0.75)\n");
    m_manager->ReloadEffects(false);
    EXPECT_EQ((std::vector<std::string>{"first 2 -> 2", "second 2 -> 2"}), calls);
    EXPECT_EQ(0.75f, a->GetParameter("fShared")->GetDefaultValueFloat());

    // Forced: every effect is rebuilt, the default one included.
    calls.clear();
    capture.Clear();
    m_manager->RemoveReloadListener(&second);
    m_manager->ReloadEffects(true);
    EXPECT_EQ((std::vector<std::string>{"first -1 -> -1", "first 2 -> 2", "first 10 -> 10"}), calls);
    EXPECT_EQ(1, capture.Count("Loading effect file: \"default.fx\""));
    EXPECT_EQ(m_manager->GetDefaultEffect()->GetSampler("DEFAULT_SAMPLER"), m_manager->GetDefaultSampler());
}

TEST_F(LxEffectManagerTest, FailedRebuildKeepsTheOldEffect)
{
    LoadDefault();
    Write("a.fx", Effect(1));
    LxCountedPtr<LxEffect> a = m_manager->LoadEffect("a.fx");
    std::vector<std::string> calls;
    RecordingListener listener("l", calls);
    m_manager->AddReloadListener(&listener);
    LxEffect* const original = a.Get();

    for (int attempt = 0; attempt < 2; ++attempt)
    {
        SCOPED_TRACE(attempt);
        Rewrite("a.fx", "Float fVersion (2.0)\nTechnique T { Pass P { CullMode = BACK");
        LxTest::LogCapture capture;
        m_manager->ReloadEffects(false);
        EXPECT_EQ(original, a.Get());
        EXPECT_EQ(1.0f, VersionOf(a));
        EXPECT_TRUE(calls.empty());
        // Every attempt shows the file's errors again, even when they read as before.
        EXPECT_TRUE(capture.Contains("Invalid effect file \"a.fx\"")) << capture.All();
        EXPECT_TRUE(capture.Contains("Effect load failure: a.fx", LX_LOG_ERROR)) << capture.All();
        EXPECT_TRUE(capture.Contains("Finished effect re-load with ERRORS!!!", LX_LOG_ERROR)) << capture.All();
    }
    Rewrite("a.fx", Effect(3));
    m_manager->ReloadEffects(false);
    EXPECT_EQ(3.0f, VersionOf(a));
    EXPECT_EQ((std::vector<std::string>{"l 1 -> 3"}), calls);
}

TEST_F(LxEffectManagerTest, ReloadReportsKeptOldReferencesAndDefersUnloads)
{
    LoadDefault();
    Write("a.fx", Effect(1));
    Write("b.fx", Effect(5));
    LxCountedPtr<LxEffect> a = m_manager->LoadEffect("a.fx");
    LxCountedPtr<LxEffect> b = m_manager->LoadEffect("b.fx");
    std::vector<std::string> calls;
    RecordingListener keeper("keeper", calls);
    keeper.keepOld = true;
    m_manager->AddReloadListener(&keeper);

    LxTest::LogCapture capture;
    Rewrite("a.fx", Effect(2));
    m_manager->ReloadEffects(false);
    EXPECT_TRUE(capture.Contains("Not all references to effect: a.fx were updated during re-load.", LX_LOG_ERROR))
        << capture.All();
    EXPECT_EQ(1.0f, VersionOf(keeper.kept));
    keeper.kept = nullptr;

    // The last outside reference goes while the manager is reloading: the effect is unloaded afterwards.
    keeper.keepOld = false;
    keeper.dropOnCall = &b;
    Rewrite("b.fx", Effect(6));
    m_manager->ReloadEffects(false);
    EXPECT_FALSE(b);
    EXPECT_FALSE(m_manager->IsEffectLoaded("b.fx"));
    EXPECT_TRUE(m_manager->IsEffectLoaded("a.fx"));
}

TEST_F(LxEffectManagerTest, DefinesAndOptionOverridesReachEveryBuild)
{
    LoadDefault();
    m_manager->AddDefine("QUALITY", "1");
    m_manager->AddDefine("QUALITY", "2"); // replaces
    m_manager->OverrideEffectOption("Shadows", LxCountedPtr<LxAnnotationValue>(new LxAnnotationValue("Off")));
    LxFxTest::FakeShaderCompiler compiler;
    m_manager->compiler = &compiler;
    Write("q.fx",
          "#ifdef QUALITY\nInt nQuality (QUALITY)\n#endif\nOptions < Shadows = \"On\", Tint = 1.0 >\n" + Effect(1));
    LxCountedPtr<LxEffect> q = m_manager->LoadEffect("q.fx");
    ASSERT_TRUE(q);
    ASSERT_TRUE(q->GetParameter("nQuality"));
    EXPECT_EQ(2, q->GetParameter("nQuality")->GetDefaultValueInt());
    EXPECT_STREQ("Off", q->GetOptions().LookupString("Shadows", "").c_str());
    EXPECT_EQ(1.0f, q->GetOptions().LookupFloat("Tint", 0.0f));
    ASSERT_EQ(1, compiler.compileCount);
    EXPECT_TRUE(compiler.requests[0].source.StartsWith("#define QUALITY 2\n")) << compiler.requests[0].source.c_str();
}

TEST_F(LxEffectManagerTest, OverrideTechniquesAreNamedSelectedAndApplied)
{
    Write("overrides.fx", "Technique Depth { Pass P { PixelShader() float4 main() : SV_Target { return 0; } "
                          "EndPixelShader } }\n"
                          "Technique Normals { Pass P { PixelShader() float4 main() : SV_Target { return 1; } "
                          "EndPixelShader } }\n");
    ASSERT_TRUE(m_manager->LoadOverrideTechniqueEffect("overrides.fx"));
    ASSERT_EQ(2u, m_manager->GetOverrideTechniqueCount());
    EXPECT_STREQ("Normals", m_manager->GetOverrideTechniqueName(1).c_str());
    EXPECT_STREQ("", m_manager->GetOverrideTechniqueName(2).c_str());
    EXPECT_EQ(-1, m_manager->GetActiveOverrideTechnique());

    LxTest::LogCapture capture;
    EXPECT_FALSE(m_manager->LoadOverrideTechniqueEffect("overrides.fx"));
    EXPECT_TRUE(
        capture.Contains("LxEffectManager::LoadOverrideTechniqueEffect.  Override technique Depth is already defined"));
    EXPECT_EQ(2u, m_manager->GetOverrideTechniqueCount());
    EXPECT_FALSE(m_manager->SetOverrideTechnique("Wireframe"));
    EXPECT_TRUE(capture.Contains("LxEffectManager::SetOverrideTechnique.  Unknown override technique: Wireframe"));

    ASSERT_TRUE(m_manager->SetOverrideTechnique("Normals"));
    EXPECT_EQ(1, m_manager->GetActiveOverrideTechnique());
    EXPECT_STREQ("Normals", m_manager->GetActiveOverrideTechniqueName().c_str());
    EXPECT_EQ(1, LxEffectDrawContext::GetGlobal()->GetActiveOverrideTechnique());
    m_manager->ForceDisableOverrideTechniques(true);
    EXPECT_TRUE(m_manager->AreOverrideTechniquesDisabled());
    EXPECT_EQ(-1, m_manager->GetActiveOverrideTechnique());
    EXPECT_STREQ("", m_manager->GetActiveOverrideTechniqueName().c_str());
    m_manager->ForceDisableOverrideTechniques(false);
    EXPECT_EQ(1, m_manager->GetActiveOverrideTechnique());
    EXPECT_TRUE(m_manager->SetOverrideTechnique(""));
    EXPECT_EQ(-1, m_manager->GetActiveOverrideTechnique());

    // Effects get override passes for every override technique; the default effect gets none.
    LoadDefault();
    Write("a.fx", Effect(1));
    LxCountedPtr<LxEffect> a = m_manager->LoadEffect("a.fx");
    ASSERT_TRUE(a) << capture.All();
    EXPECT_TRUE(a->GetTechnique("T")->HasOverridePasses(0));
    EXPECT_TRUE(a->GetTechnique("T")->HasOverridePasses(1));
    EXPECT_FALSE(m_manager->GetDefaultTechnique()->HasOverridePasses(0));
}

namespace
{
class ConstantIntHandler : public LxUpdateHandler
{
public:
    void Update(LxEffectParameter&, void* data, unsigned int) override { *static_cast<int*>(data) = 77; }
};

class ConstantFactory : public LxUpdateHandlerFactory
{
public:
    LxCountedPtr<LxUpdateHandler> CreateUpdateHandler(const LxString& name, LxEffectParameter::DataType type,
                                                      unsigned int count, const LxAnnotationMap&) override
    {
        seen =
            std::string(name.c_str()) + " " + LxEffectParameter::DataTypeToString(type) + " " + std::to_string(count);
        return LxCountedPtr<LxUpdateHandler>(new ConstantIntHandler());
    }
    std::string seen;
};
} // namespace

TEST_F(LxEffectManagerTest, AppUpdateRequirementsAreChecked)
{
    LoadDefault();
    ConstantFactory factory;
    ASSERT_TRUE(m_manager->RegisterUpdateHandlerFactory("Seven", &factory));
    struct Case
    {
        const char* declaration;
        const char* message; // null: accepted
    } cases[] = {
        {"Int iPass < AppUpdate = \"PassNumber\" >", nullptr},
        {"Float fPass < AppUpdate = \"PassNumber\" >", "PassNumber app-update can only be applied to an integer "
                                                       "parameter."},
        {"Vector vDim < AppUpdate = \"ResourceDimensions\", Slot = \"tA\" >", nullptr},
        {"Float fDim < AppUpdate = \"ResourceDimensions\", Slot = \"tA\" >",
         "ResourceDimensions app-update can only be applied to a vector parameter."},
        {"Vector vDim < AppUpdate = \"ResourceDimensions\" >",
         "ResourceDimensions app-update must have a string-valued 'Slot' annotation."},
        {"Vector vInv < AppUpdate = \"ResourceInverseDimensions\", Slot = \"tA\" >", nullptr},
        {"Matrix mInv < AppUpdate = \"ResourceInverseDimensions\", Slot = \"tA\" >",
         "ResourceInverseDimensions app-update can only be applied to a vector parameter."},
        {"Vector vInv < AppUpdate = \"ResourceInverseDimensions\", Slot = 2.0 >",
         "ResourceInverseDimensions app-update must have a string-valued 'Slot' annotation."},
        {"Int aSeven[3] < AppUpdate = \"Seven\" >", nullptr},
        {"Int iOther < AppUpdate = \"Eight\" >", "Don't know how to handle AppUpdate named: Eight"},
    };
    int n = 0;
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.declaration);
        LxTest::LogCapture capture;
        const std::string name = "u" + std::to_string(n++) + ".fx";
        Write(name, std::string("Texture2D tA < >\n") + c.declaration + "\n" + Effect(1));
        LxCountedPtr<LxEffect> effect = m_manager->LoadEffect(name.c_str());
        if (!c.message)
        {
            EXPECT_TRUE(effect) << capture.All();
            EXPECT_EQ(0, capture.ErrorCount()) << capture.All();
            continue;
        }
        EXPECT_FALSE(effect);
        EXPECT_TRUE(capture.Contains(c.message, LX_LOG_ERROR)) << capture.All();
        EXPECT_TRUE(capture.Contains("Unsupported app-update type")) << capture.All();
    }
    EXPECT_EQ("Seven Int 3", factory.seen);

    LxTest::LogCapture capture;
    ConstantFactory other;
    EXPECT_FALSE(m_manager->RegisterUpdateHandlerFactory("Seven", &other));
    EXPECT_TRUE(capture.Contains("Second update handler factory defined for AppUpdate: Seven", LX_LOG_ERROR));
    EXPECT_EQ(&factory, m_manager->GetUpdateHandlerFactory("Seven"));
    EXPECT_TRUE(m_manager->DeregisterUpdateHandlerFactory("Seven"));
    EXPECT_FALSE(m_manager->DeregisterUpdateHandlerFactory("Seven"));
    EXPECT_EQ(nullptr, m_manager->GetUpdateHandlerFactory("Seven"));
}

TEST_F(LxEffectManagerTest, BuiltInAppUpdatesWriteThePassAndTextureSize)
{
    LoadDefault();
    Write("u.fx", "Texture2D tA < >\nTexture3D tVolume < >\nBuffer tBuf < >\nTexture2D tEmpty < >\n"
                  "Int iPass < AppUpdate = \"PassNumber\" >\n"
                  "Vector vDim (0, 0, 0, 9) < AppUpdate = \"ResourceDimensions\", Slot = \"tA\" >\n"
                  "Vector vInv < AppUpdate = \"ResourceInverseDimensions\", Slot = \"tVolume\" >\n"
                  "Vector vBuf < AppUpdate = \"ResourceDimensions\", Slot = \"tBuf\" >\n"
                  "Vector vEmpty < AppUpdate = \"ResourceDimensions\", Slot = \"tEmpty\" >\n"
                  "Vector vNone < AppUpdate = \"ResourceDimensions\", Slot = \"tNowhere\" >\n" +
                      Effect(1));
    LxCountedPtr<LxEffect> u = m_manager->LoadEffect("u.fx");
    ASSERT_TRUE(u);
    LxGPUTexture2DArray texture(LxGPUResource::GPU_RESOURCE_STATIC, LxGPUResource::BIND_SHADER_RESOURCE, 0, 0,
                                LX_FORMAT_R8G8B8A8_UNORM, 256, 64, 1, 1, LxGPUTexture::MIP_NONE);
    LxGPUTexture3D volume(LxGPUResource::GPU_RESOURCE_STATIC, LxGPUResource::BIND_SHADER_RESOURCE, 0, 0,
                          LX_FORMAT_R8G8B8A8_UNORM, 8, 4, 2, 1, LxGPUTexture::MIP_NONE);
    LxGPUBuffer buffer(LxGPUResource::GPU_RESOURCE_STATIC, LxGPUResource::BIND_SHADER_RESOURCE, 0, 0, 256);
    auto viewOf = [](LxGPUResource& r)
    { return LxCountedPtr<LxGPUSamplingResourceView>(new LxGPUSamplingResourceView(&r, {})); };
    ASSERT_TRUE(u->BindTexture("tA", viewOf(texture)));
    ASSERT_TRUE(u->BindTexture("tVolume", viewOf(volume)));
    ASSERT_TRUE(u->BindTexture("tBuf", viewOf(buffer)));

    m_manager->SetCurrentPass(u.Get(), 3);
    LxTest::LogCapture capture;
    auto run = [&](const char* name)
    {
        LxEffectParameter* p = u->GetParameter(name);
        p->ExecuteUpdateHandler();
        return static_cast<const float*>(p->GetDataPtr());
    };
    LxEffectParameter* pass = u->GetParameter("iPass");
    pass->ExecuteUpdateHandler();
    EXPECT_EQ(3, *static_cast<const int*>(pass->GetDataPtr()));
    const float* dim = run("vDim");
    EXPECT_EQ(256.0f, dim[0]);
    EXPECT_EQ(64.0f, dim[1]);
    EXPECT_EQ(1.0f, dim[2]);
    EXPECT_EQ(9.0f, dim[3]) << "the fourth component keeps its value";
    const float* inv = run("vInv");
    EXPECT_FLOAT_EQ(0.125f, inv[0]);
    EXPECT_FLOAT_EQ(0.25f, inv[1]);
    EXPECT_FLOAT_EQ(0.5f, inv[2]);
    EXPECT_EQ(0, capture.ErrorCount()) << capture.All();

    run("vBuf");
    run("vEmpty");
    run("vNone");
    EXPECT_TRUE(capture.Contains("Resource bound to slot: tBuf is not a texture.  Retrieval of dimensions for "
                                 "buffers is not supported.",
                                 LX_LOG_ERROR))
        << capture.All();
    EXPECT_TRUE(capture.Contains("No texture bound to slot: 'tEmpty'.  Cannot retrieve resource dimensions."));
    EXPECT_TRUE(capture.Contains("Texture slot named: 'tNowhere' not found"));
    LxResourceDimUpdateHandler handler("tA", false);
    float small[2] = {0, 0};
    handler.Update(*u->GetParameter("vDim"), small, sizeof small);
    EXPECT_TRUE(capture.Contains("Buffer for 'ResourceDimensions' app-update is too small."));
    EXPECT_EQ(0.0f, small[0]);

    // Switched off, handlers leave values alone.
    m_manager->EnableAppUpdates(false);
    m_manager->SetCurrentPass(u.Get(), 5);
    pass->ExecuteUpdateHandler();
    m_manager->EnableAppUpdates(true);
    EXPECT_EQ(3, *static_cast<const int*>(pass->GetDataPtr()));
}

namespace
{
int g_liveBinders = 0;
class CountingBinder : public LxTextureSlotBinder
{
public:
    CountingBinder() { ++g_liveBinders; }
    ~CountingBinder() override { --g_liveBinders; }
};
class CountingBinderFactory : public LxTextureSlotBinderFactory
{
public:
    LxTextureSlotBinder* CreateBinder(LxEffect& effect, LxTextureSlot& slot) override
    {
        made.push_back(std::string(effect.GetName().c_str()) + ":" + slot.GetName().c_str());
        return new CountingBinder();
    }
    std::vector<std::string> made;
};
} // namespace

TEST_F(LxEffectManagerTest, BindRTSlotsGetBindersFromTheirFactory)
{
    LoadDefault();
    CountingBinderFactory factory;
    ASSERT_TRUE(m_manager->RegisterTextureSlotBinderFactory("Shadow", &factory));
    Write("rt.fx", "Texture2D tShadow < BindRT = \"Shadow\" >\nTexture2D tPlain < >\n" + Effect(1));
    LxCountedPtr<LxEffect> rt = m_manager->LoadEffect("rt.fx");
    ASSERT_TRUE(rt);
    EXPECT_EQ((std::vector<std::string>{"rt.fx:tShadow"}), factory.made);
    EXPECT_EQ(1, g_liveBinders);
    Touch("rt.fx");
    m_manager->ReloadEffects(false);
    EXPECT_EQ(2u, factory.made.size());
    EXPECT_EQ(1, g_liveBinders) << "the old effect's binder goes with it";
    rt = nullptr;
    EXPECT_EQ(0, g_liveBinders);

    struct Case
    {
        const char* declaration;
        const char* message;
    } cases[] = {
        {"Texture2D tRT < BindRT = \"Bloom\" >",
         "Error creating texture slot binder for BindRT value: 'Bloom'.  No factory is set!\n"},
        {"Texture2D tRT < BindRT = \"\" >", "Value of 'BindRT' annotation must be a non-empty STRING"},
        {"Texture2D tRT < BindRT = 1.0 >", "Value of 'BindRT' annotation must be a non-empty STRING"},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.declaration);
        LxTest::LogCapture capture;
        Write("bad.fx", std::string(c.declaration) + "\nTexture2D tS < BindRT = \"Shadow\" >\n" + Effect(1));
        EXPECT_FALSE(m_manager->LoadEffect("bad.fx"));
        EXPECT_TRUE(capture.Contains(c.message, LX_LOG_ERROR)) << capture.All();
        EXPECT_TRUE(capture.Contains("Invalid effect file \"bad.fx\"")) << capture.All();
        EXPECT_EQ(0, g_liveBinders) << "binders of a failed build are freed";
    }

    LxTest::LogCapture capture;
    CountingBinderFactory second;
    EXPECT_FALSE(m_manager->RegisterTextureSlotBinderFactory("Shadow", &second));
    EXPECT_TRUE(capture.Contains("Second texture binder factory defined for binder type: Shadow"));
    EXPECT_TRUE(m_manager->DeregisterTextureSlotBinderFactory("Shadow"));
    EXPECT_EQ(nullptr, m_manager->GetTextureSlotBinderFactory("Shadow"));
}

namespace
{
class StreamFactory : public LxStreamBinderFactory
{
public:
    LxStreamBinder* CreateBinder(LxEffect&, LxVertexStreamDecl& stream) override
    {
        made.push_back(stream.GetName().c_str());
        return new LxStreamBinder();
    }
    std::vector<std::string> made;
};
class UAVFactory : public LxUAVSlotBinderFactory
{
public:
    LxUAVSlotBinder* CreateBinder(LxEffect&, LxUAVSlot& slot) override
    {
        made.push_back(slot.GetName().c_str());
        return new LxUAVSlotBinder();
    }
    std::vector<std::string> made;
};
} // namespace

TEST_F(LxEffectManagerTest, StreamAndUAVBindersComeFromTheirRegistries)
{
    LoadDefault();
    StreamFactory streams, otherStreams;
    UAVFactory uavs, otherUAVs;
    ASSERT_TRUE(m_manager->RegisterStreamBinderFactory("Particles", &streams));
    ASSERT_TRUE(m_manager->RegisterUAVSlotBinderFactory("Particles", &uavs));
    LxTest::LogCapture capture;
    EXPECT_FALSE(m_manager->RegisterStreamBinderFactory("Particles", &otherStreams));
    EXPECT_TRUE(capture.Contains("Second stream binder factory defined for binder type: Particles", LX_LOG_ERROR));
    EXPECT_FALSE(m_manager->RegisterUAVSlotBinderFactory("Particles", &otherUAVs));
    EXPECT_TRUE(capture.Contains("Second UAV binder factory defined for binder type: Particles", LX_LOG_ERROR));
    EXPECT_FALSE(m_manager->RegisterStreamBinderFactory("Null", nullptr));

    Write("p.fx", "Stream Points < BindStream = \"Particles\" > { float3 POSITION }\n"
                  "RWStructuredBuffer uState < BindUAV = \"Particles\" >\n" +
                      Effect(1));
    LxCountedPtr<LxEffect> p = m_manager->LoadEffect("p.fx");
    ASSERT_TRUE(p) << capture.All();
    EXPECT_EQ((std::vector<std::string>{"Points"}), streams.made);
    EXPECT_EQ((std::vector<std::string>{"uState"}), uavs.made);
    EXPECT_EQ(&streams, m_manager->GetStreamBinderFactory("Particles"));
    EXPECT_TRUE(m_manager->DeregisterUAVSlotBinderFactory("Particles"));
    EXPECT_EQ(nullptr, m_manager->GetUAVSlotBinderFactory("Particles"));
    EXPECT_TRUE(m_manager->DeregisterStreamBinderFactory("Particles"));
}
