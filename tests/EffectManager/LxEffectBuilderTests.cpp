// Builder tests: the checks that only direct builder calls can reach, initializer counts, technique inheritance,
// override techniques, app updates and the result hand-over.
#include "EffectManager/LxEffectTestUtil.h"

#include "EffectManager/LxOverrideTechniqueEffectBuilder.h"

#include <gtest/gtest.h>

using LxFxTest::Parse;

TEST(LxEffectBuilder, InitializerCountsPerType)
{
    using P = LxEffectParameter;
    // Type, a count accepted, the largest count accepted, a count refused.
    const struct
    {
        P::DataType type;
        unsigned int good, most, bad;
    } cases[] = {{P::TYPE_FLOAT, 0, 1, 2},   {P::TYPE_INT, 0, 1, 2},        {P::TYPE_BOOL, 0, 1, 2},
                 {P::TYPE_VECTOR, 2, 4, 5},  {P::TYPE_VECTOR_INT, 2, 4, 5}, {P::TYPE_VECTOR_BOOL, 2, 4, 5},
                 {P::TYPE_MATRIX, 0, 16, 15}};
    for (const auto& c : cases)
    {
        EXPECT_TRUE(LxEffectBuilder::CheckEffectParameterParameterCount(c.type, c.good)) << c.type;
        EXPECT_TRUE(LxEffectBuilder::CheckEffectParameterParameterCount(c.type, c.most)) << c.type;
        EXPECT_FALSE(LxEffectBuilder::CheckEffectParameterParameterCount(c.type, c.bad)) << c.type;
    }
    EXPECT_FALSE(LxEffectBuilder::CheckEffectParameterParameterCount(P::DataType(99), 0));
}

// Most scope errors are provoked through the grammar by the error files; these calls the grammar never makes.
TEST(LxEffectBuilder, MisorderedCallsAreReportedAndFailTheBuild)
{
    LxTest::LogCapture capture;
    LxEffectBuilder builder;
    builder.SetEffectName("direct.fx");
    builder.AddSamplerState("Filter", LxString("POINT"));
    builder.EndSampler();
    builder.SetStreamOutMap(1, "M");
    for (const char* message :
         {"direct.fx : Trying to set sampler state outside of a Sampler {...} block",
          "EndSampler() without corresponding StartSampler()", "SetStreamOutMap outside of a Pass {...} block"})
        EXPECT_TRUE(capture.Contains(message)) << message;
    EXPECT_TRUE(builder.ParseErrorOccured());
    builder.EndEffect();
    EXPECT_EQ(nullptr, builder.GetResult());
}

TEST(LxEffectBuilder, ShaderOptionsWarnAboutANonStringProfile)
{
    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx =
        Parse("Technique T { Pass P {\nVertexShader( Profile = 5, SkipOptimization ) float4 main() : SV_Position "
              "{ return 0; } EndVertexShader } }\n",
              "profile.fx");
    ASSERT_TRUE(fx) << capture.All();
    EXPECT_EQ(1, capture.Count("profile.fx(2) : Ignoring shader annotation \"Profile\" because it is not of type "
                               "STRING.",
                               LX_LOG_WARNING))
        << capture.All();
}

// The parse hands the builder's effect out, named after the file, once.
TEST(LxEffectBuilder, OptionOverridesReplaceFileOptionsAndTheResultIsHandedOutOnce)
{
    LxAnnotationMap overrides;
    overrides.SetValue("Quality", new LxAnnotationValue("Low"));
    LxEffectBuilder builder;
    builder.SetOptionOverrides(overrides);
    std::unique_ptr<LxEffect> fx = Parse("Options < Quality = \"High\", Other = 1 >\n", "o.fx", &builder);
    ASSERT_TRUE(fx);
    EXPECT_STREQ("o.fx", fx->GetName().c_str());
    EXPECT_EQ(nullptr, builder.GetResult());
    EXPECT_STREQ("Low", fx->GetOptions().LookupString("Quality", "").c_str());
    EXPECT_FLOAT_EQ(1.0f, fx->GetOptions().LookupFloat("Other", 0.0f));

    LxEffectBuilder builder2;
    builder2.SetOptionOverrides(overrides);
    fx = Parse("Float f\n", "none.fx", &builder2);
    ASSERT_TRUE(fx);
    EXPECT_STREQ("Low", fx->GetOptions().LookupString("Quality", "").c_str());
}

namespace
{
class ConstantHandler : public LxUpdateHandler
{
public:
    void Update(LxEffectParameter&, void* data, unsigned int) override { static_cast<int*>(data)[0] = 42; }
};

class Provider : public LxUpdateHandlerProvider
{
public:
    LxCountedPtr<LxUpdateHandler> GetUpdateHandler(const LxString& name, int dataType, unsigned int count,
                                                   const LxAnnotationMap& annotations) override
    {
        asked.push_back(std::string(name.c_str()));
        EXPECT_EQ(1u, count);
        EXPECT_TRUE(annotations.ValueExists("AppUpdate"));
        if (name != "PassNumber" || dataType != LxEffectParameter::TYPE_INT)
            return LxCountedPtr<LxUpdateHandler>();
        return LxCountedPtr<LxUpdateHandler>(new ConstantHandler());
    }
    std::vector<std::string> asked;
};
} // namespace

TEST(LxEffectBuilder, AppUpdateAnnotationsFindTheirHandlers)
{
    LxTest::LogCapture capture;
    Provider provider;
    LxEffectBuilder builder;
    builder.SetUpdateHandlerProvider(&provider);
    std::unique_ptr<LxEffect> fx = Parse("Int pass < AppUpdate = \"PassNumber\" >\nFloat plain\n", "a.fx", &builder);
    ASSERT_TRUE(fx) << capture.All();
    LxEffectParameter* pass = fx->GetParameter("pass");
    ASSERT_TRUE(pass->GetUpdateHandler());
    pass->ExecuteUpdateHandler();
    EXPECT_EQ(42, *static_cast<const int*>(pass->GetDataPtr()));
    EXPECT_FALSE(fx->GetParameter("plain")->GetUpdateHandler());

    LxEffectBuilder builder2;
    builder2.SetUpdateHandlerProvider(&provider);
    EXPECT_FALSE(Parse("Float f < AppUpdate = \"Nonsense\" >\n", "b.fx", &builder2));
    EXPECT_TRUE(capture.Contains("b.fx(1) : Unsupported app-update type")) << capture.All();
    EXPECT_EQ((std::vector<std::string>{"PassNumber", "Nonsense"}), provider.asked);
}

TEST(LxEffectBuilder, ArraysAreBoundedAndInitializersMustFitTheType)
{
    LxTest::LogCapture capture;
    EXPECT_FALSE(Parse("Float huge[1000000]\n", "big.fx"));
    EXPECT_TRUE(capture.Contains("big.fx(1) : Effect parameter huge: array size 1000000 is out of range (1 to 65536)"))
        << capture.All();
    // Empty initializers are allowed for every type: the default is zero.
    std::unique_ptr<LxEffect> empty = Parse("Float f ()\nInt i ()\nBool b ()\nMatrix m ()\n", "empty.fx");
    ASSERT_TRUE(empty) << capture.All();
    EXPECT_EQ(0, empty->GetParameter("i")->GetDefaultValueInt());
}

TEST(LxEffectBuilder, InheritedPassesAreClonedAndMayBeReopened)
{
    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx =
        Parse("BaseTechnique Base\n{\n"
              "  Pass A { ZEnable = false VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }\n"
              "  Pass B { CullMode = BACK }\n}\n"
              "Technique Derived : Base\n{\n"
              "  Pass B { VertexShader() float4 main() : SV_Position { return 1; } EndVertexShader }\n"
              "  Pass C { VertexShader() float4 main() : SV_Position { return 2; } EndVertexShader }\n}\n"
              "BaseTechnique Mid : Base { Pass A { CullMode = FRONT } }\n"
              "Technique Leaf : Mid { Pass B { VertexShader() float4 main() : SV_Position { return 3; } "
              "EndVertexShader } }\n",
              "inherit.fx");
    ASSERT_TRUE(fx) << capture.All();
    const LxEffectTechnique* base = fx->GetTechnique("Base");
    const LxEffectTechnique* derived = fx->GetTechnique("Derived");
    ASSERT_EQ(3u, derived->GetNumPasses());
    EXPECT_NE(base->GetPass(0u), derived->GetPass(0u)); // a clone, not a shared pass
    EXPECT_EQ(base->GetPass(0u)->GetShader(LX_VERTEX_SHADER), derived->GetPass(0u)->GetShader(LX_VERTEX_SHADER));
    EXPECT_FALSE(derived->GetPass("A")->FindRenderState("ZEnable")->boolValue);
    EXPECT_STREQ("BACK", derived->GetPass("B")->FindRenderState("CullMode")->text.c_str());
    EXPECT_NE(-1, derived->GetPass("B")->GetShader(LX_VERTEX_SHADER)->GetCode().text.Find("return 1;"));
    EXPECT_EQ(derived, derived->GetPass("C")->GetTechnique());
    const LxEffectTechnique* leaf = fx->GetTechnique("Leaf");
    EXPECT_STREQ("FRONT", leaf->GetPass("A")->FindRenderState("CullMode")->text.c_str());
    // The base itself is untouched by its descendants.
    EXPECT_FALSE(base->GetPass("B")->HasShader(LX_VERTEX_SHADER));

    capture.Clear();
    EXPECT_FALSE(Parse("ComputeTechnique C { Pass P { ComputeShader() void main() {} EndComputeShader } }\n"
                       "Technique G : C { }\n",
                       "mix.fx"));
    EXPECT_TRUE(capture.Contains("mix.fx(2) : Technique \"G\" cannot derive from \"C\": compute and graphics "
                                 "techniques do not mix"))
        << capture.All();
}

TEST(LxEffectBuilder, OverrideTechniquesAddPixelShaderPasses)
{
    LxTest::LogCapture capture;
    LxOverrideTechniqueEffectBuilder overrideBuilder;
    std::unique_ptr<LxEffect> overrides =
        Parse("Technique Depth { Pass P { ZWriteEnable = false\n"
              "  PixelShader( EntryPoint = \"DepthPS\" )\n    $include Shared\n    float4 DepthPS() : SV_Target "
              "{ return Shared(); }\n  EndPixelShader } }\n"
              "Technique Broken { Pass P { PixelShader() $include NotThere\n EndPixelShader } }\n",
              "overrides.fx", &overrideBuilder);
    ASSERT_TRUE(overrides) << capture.All();

    LxArray<LxEffectTechnique*> list;
    list.Add(overrides->GetTechnique("Depth"));
    LxEffectDrawContext::SetGlobal(nullptr);
    LxFxTest::RecordingBuilder builder;
    builder.SetOverrideTechniques(list);
    std::unique_ptr<LxEffect> fx = Parse("StartHLSL Shared\nfloat4 Shared() { return 0; }\nEndHLSL\n"
                                         "Technique T { Pass P { ZWriteEnable = true\n"
                                         "VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader\n"
                                         "PixelShader() float4 main() : SV_Target { return 1; } EndPixelShader } }\n",
                                         "target.fx", &builder);
    ASSERT_TRUE(fx) << capture.All();
    const LxEffectTechnique* t = fx->GetTechnique("T");
    const LxEffectPass* overridePass = t->GetOverridePass(0, 0);
    ASSERT_TRUE(overridePass);
    EXPECT_TRUE(overridePass->HasShader(LX_VERTEX_SHADER));
    EXPECT_STREQ("DepthPS", overridePass->GetShader(LX_PIXEL_SHADER)->GetEntryPoint().c_str());
    // Compiled against the target effect: its code block was included.
    EXPECT_NE(-1, overridePass->GetShader(LX_PIXEL_SHADER)->GetPreprocessedSource().Find("float4 Shared()"));
    EXPECT_FALSE(overridePass->FindRenderState("ZWriteEnable")->boolValue);
    EXPECT_TRUE(t->GetPass(0u)->FindRenderState("ZWriteEnable")->boolValue);

    // Begin substitutes the override pass while its technique is active.
    LxFxTest::RecordingDrawContext context;
    LxEffectDrawContext::SetGlobal(&context);
    context.activeOverride = 0;
    ASSERT_TRUE(fx->Begin("T", nullptr));
    ASSERT_TRUE(fx->BeginPass(0));
    EXPECT_EQ(overridePass, LxFxTest::RecordingPass::lastBound);
    fx->End();
    context.activeOverride = -1;
    ASSERT_TRUE(fx->Begin("T", nullptr));
    ASSERT_TRUE(fx->BeginPass(0));
    EXPECT_EQ(t->GetPass(0u), LxFxTest::RecordingPass::lastBound);
    fx->End();
    LxEffectDrawContext::SetGlobal(nullptr);

    // An override that cannot be applied fails the effect with its own message.
    list.Add(overrides->GetTechnique("Broken"));
    LxFxTest::RecordingBuilder builder2;
    builder2.SetOverrideTechniques(list);
    EXPECT_FALSE(Parse("Technique T { Pass P { VertexShader() float4 main() : SV_Position { return 0; } "
                       "EndVertexShader } }\n",
                       "target2.fx", &builder2));
    EXPECT_TRUE(capture.Contains("Error applying override technique Broken")) << capture.All();
}

namespace
{
class FailingFinalizeBuilder : public LxEffectBuilder
{
public:
    bool FinalizePass(LxEffectPass*) override { return false; }
};
} // namespace

TEST(LxEffectBuilder, FinalizeFailuresNameThePassAndTechnique)
{
    LxTest::LogCapture capture;
    FailingFinalizeBuilder builder;
    EXPECT_FALSE(Parse("Technique T { Pass P { VertexShader() float4 main() : SV_Position { return 0; } "
                       "EndVertexShader } }\nComputeTechnique C { Pass Q { ComputeShader() void main() {} "
                       "EndComputeShader } }\n",
                       "fin.fx", &builder));
    EXPECT_TRUE(capture.Contains("Error finalizing effect pass named: 'P' in technique named: 'T'"));
    EXPECT_TRUE(capture.Contains("Error finalizing compute effect pass named: 'Q' in technique named: 'C'"));
}
