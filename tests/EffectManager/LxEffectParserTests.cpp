// Parser tests: the example effect, the whole grammar, every error file of tests/data/effects/errors, includes,
// defines and parsing on two threads.
#include "EffectManager/LxEffectTestUtil.h"

#include "Common/LxSearchPath.h"
#include "EffectManager/LxOverrideTechniqueEffectBuilder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <thread>
#include <vector>

using LxFxTest::Parse;
using LxFxTest::ParseDataFile;

TEST(LxEffectParser, ExampleEffectBuildsEveryDeclaration)
{
    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx = ParseDataFile("example.fx");
    ASSERT_TRUE(fx) << capture.All();
    EXPECT_EQ(0, capture.ErrorCount()) << capture.All();

    ASSERT_EQ(2u, fx->GetNumParameters());
    const LxEffectParameter* wvp = fx->GetParameter("mWorldViewProj");
    ASSERT_TRUE(wvp);
    EXPECT_EQ(LxEffectParameter::TYPE_MATRIX, wvp->GetDataType());
    const LxEffectParameter* color = fx->GetParameter("vColor");
    ASSERT_TRUE(color);
    EXPECT_EQ(LxVector4(1.0f, 0.5f, 0.25f, 1.0f), color->GetDefaultValueVector());
    EXPECT_EQ(0, std::memcmp(color->GetDataPtr(), color->GetDefaultValuePtr(), 16));

    const LxTextureSlot* tex = fx->GetTextureSlot("tDiffuse");
    ASSERT_TRUE(tex);
    EXPECT_EQ(LxTextureSlot::TEXTURE_2D, tex->GetType());
    EXPECT_FLOAT_EQ(1.0f, tex->GetAnnotations().LookupFloat("ViewParams.MipLevels", -1.0f));

    const LxSampler* sampler = fx->GetSampler("sLinear");
    ASSERT_TRUE(sampler);
    ASSERT_EQ(1u, sampler->GetNumTextures());
    EXPECT_EQ(tex, sampler->GetTexture(0));
    ASSERT_EQ(2u, sampler->GetNumStates());
    EXPECT_STREQ("Filter", sampler->GetState(0).name.c_str());
    EXPECT_STREQ("MIN_MAG_MIP_LINEAR", sampler->GetState(0).value.text.c_str());
    EXPECT_STREQ("WRAP", sampler->FindState("AddressU")->text.c_str());

    const LxVertexStreamDecl* stream = fx->GetVertexStreamDecl("Vertices");
    ASSERT_TRUE(stream);
    ASSERT_EQ(3u, stream->GetNumElements());
    EXPECT_EQ(32u, stream->GetStride());
    EXPECT_STREQ("TEXCOORD", stream->GetElement(2)->GetName().c_str());
    EXPECT_EQ(LxVertexElement::TYPE_FLOAT2, stream->GetElement(2)->GetDataType());

    const LxStreamMap* map = fx->GetStreamMap("DefaultMap");
    ASSERT_TRUE(map);
    ASSERT_EQ(1u, map->GetNumStreams());
    EXPECT_EQ(stream, map->GetStreamDecl(0));
    EXPECT_FALSE(map->IsStreamInstanced(0));

    const LxShaderCodeBlock* common = fx->GetCodeBlock("Common");
    ASSERT_TRUE(common);
    EXPECT_EQ(LX_SHADING_LANGUAGE_HLSL, common->language);
    EXPECT_EQ(8u, common->firstLine);
    EXPECT_STREQ("  float4 Shade(float4 c) { return c; }\n", common->text.c_str());

    ASSERT_EQ(1u, fx->GetNumTechniques());
    const LxEffectTechnique* render = fx->GetTechnique("Render");
    ASSERT_TRUE(render);
    ASSERT_EQ(1u, render->GetNumPasses());
    const LxEffectPass* pass = render->GetPass(0u);
    EXPECT_STREQ("P0", pass->GetName().c_str());
    EXPECT_EQ(map, pass->GetStreamMap());
    ASSERT_EQ(2u, pass->GetNumRenderStates());
    EXPECT_TRUE(pass->FindRenderState("ZEnable")->boolValue);
    EXPECT_STREQ("BACK", pass->FindRenderState("CullMode")->text.c_str());
    ASSERT_TRUE(pass->HasShader(LX_VERTEX_SHADER) && pass->HasShader(LX_PIXEL_SHADER));
    EXPECT_FALSE(pass->HasShader(LX_GEOMETRY_SHADER));
    const LxEffectShader& vs = *pass->GetShader(LX_VERTEX_SHADER);
    EXPECT_STREQ("VS", vs.GetEntryPoint().c_str());
    EXPECT_EQ(18u, vs.GetCode().firstLine);
    // The body is preprocessed: the code block is pulled in between line directives.
    EXPECT_NE(-1, vs.GetPreprocessedSource().Find("float4 Shade(float4 c)"));
    EXPECT_NE(-1, vs.GetPreprocessedSource().Find("#line 8 \""));
    EXPECT_STREQ("PS", pass->GetShader(LX_PIXEL_SHADER)->GetEntryPoint().c_str());
}

TEST(LxEffectParser, FullGrammarParsesWithoutErrors)
{
    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx = ParseDataFile("full_grammar.fx");
    ASSERT_TRUE(fx) << capture.All();
    EXPECT_EQ(0, capture.ErrorCount()) << capture.All();

    // Includes: once, though named twice; their declarations and defines are visible.
    ASSERT_EQ(1u, fx->GetIncludedFiles().GetCount());
    EXPECT_STREQ("include/common.fxh", fx->GetIncludedFiles()[0].c_str());
    EXPECT_TRUE(fx->GetParameter("fShared"));
    EXPECT_TRUE(fx->GetCodeBlock("SharedCode"));
    EXPECT_TRUE(fx->GetParameter("nFromIfdef"));
    EXPECT_FALSE(fx->GetParameter("nSkipped"));

    // Text macros: "BLUR_TAPS + 1" * 2 reads as 4 + 1 * 2.
    EXPECT_EQ(4 + 1 * 2 - 16 % 3, fx->GetParameter("nTaps")->GetDefaultValueInt());
    EXPECT_EQ(10, fx->GetParameter("nMask")->GetDefaultValueInt());
    EXPECT_FLOAT_EQ(7.0f, fx->GetParameter("fScale")->GetDefaultValueFloat());
    EXPECT_FLOAT_EQ(3.0f, fx->GetParameter("fFromInt")->GetDefaultValueFloat());
    EXPECT_EQ(LxVector4(1.0f, 2.0f, 0.0f, 0.0f), fx->GetParameter("vShort")->GetDefaultValueVector());
    EXPECT_TRUE(fx->GetParameter("bEnabled")->GetDefaultValueBool());
    EXPECT_EQ(LxVector4(1.0f, 0.0f, 1.0f, 0.0f), fx->GetParameter("vbFlags")->GetDefaultValueVector());
    const LxEffectParameter* weights = fx->GetParameter("afWeights");
    EXPECT_TRUE(weights->IsArray());
    EXPECT_EQ(4u, weights->GetArrayCount());
    EXPECT_FLOAT_EQ(0.25f, static_cast<const float*>(weights->GetDataPtr())[3]);
    EXPECT_EQ(128u, fx->GetParameter("amBones")->GetParameterSize());
    EXPECT_EQ(48u, fx->GetParameter("avPalette")->GetParameterSize());
    const float* identity = fx->GetParameter("mIdentity")->GetDefaultValueMatrix();
    ASSERT_TRUE(identity);
    EXPECT_TRUE(identity[0] == 1.0f && identity[1] == 0.0f && identity[15] == 1.0f);
    const float* tint = static_cast<const float*>(fx->GetParameter("vTint")->GetDataPtr());
    EXPECT_FLOAT_EQ(std::pow(0.5f, 2.2f), tint[0]);
    EXPECT_FLOAT_EQ(0.5f, tint[3]);

    // Art notes: escapes and both blocks; options with every value kind.
    EXPECT_NE(-1, fx->GetArtNotes().Find("braces } and backslashes \\ are escaped."));
    EXPECT_NE(-1, fx->GetArtNotes().Find("second block"));
    EXPECT_STREQ("High", fx->GetOptions().LookupString("ShadowQuality", "").c_str());
    EXPECT_TRUE(fx->GetOptions().LookupBool("Enabled", false));
    EXPECT_FLOAT_EQ(2.0f, fx->GetOptions().LookupFloat("Version", 0.0f));
    EXPECT_EQ(LxVector4(1.0f, 0.5f, 0.25f, 1.0f), fx->GetOptions().LookupVector("Tint", LxVector4()));

    // Slots of every kind.
    EXPECT_EQ(10u, fx->GetNumTextureSlots());
    EXPECT_EQ(7u, fx->GetNumUAVSlots());
    EXPECT_EQ(LxTextureSlot::TEXTURE_CUBE, fx->GetTextureSlot("tSky2")->GetType());
    EXPECT_EQ(LxTextureSlot::TEXTURE_CUBE_ARRAY, fx->GetTextureSlot("tSkies2")->GetType());
    EXPECT_EQ(LxTextureSlot::BYTE_ADDRESS_BUFFER, fx->GetTextureSlot("tRaw")->GetType());
    EXPECT_EQ(LxUAVSlot::APPEND_RAW_BUFFER, fx->GetUAVSlot("uAppendRaw")->GetType());
    EXPECT_EQ(LxUAVSlot::APPEND_STRUCTURED_BUFFER, fx->GetUAVSlot("uAppend")->GetType());

    // Sampler states of every value kind.
    const LxSampler* sampler = fx->GetSampler("sLinear");
    EXPECT_EQ(LxStateValue::TYPE_INT, sampler->FindState("MaxAnisotropy")->type);
    EXPECT_EQ(8, sampler->FindState("MaxAnisotropy")->intValue);
    EXPECT_FLOAT_EQ(-0.5f, sampler->FindState("MipLODBias")->floatValue);
    EXPECT_EQ(LxVector4(0, 0, 0, 1), sampler->FindState("BorderColor")->vectorValue);
    EXPECT_TRUE(sampler->FindState("UseMips")->boolValue);

    // Streams: every element type in order, second names, trailing comma, instancing.
    const LxVertexStreamDecl* all = fx->GetVertexStreamDecl("AllTypes");
    ASSERT_EQ(39u, all->GetNumElements());
    for (unsigned int i = 0; i < 39; ++i)
        EXPECT_EQ(LxVertexElement::DataType(i), all->GetElement(i)->GetDataType()) << "element " << i;
    const LxVertexStreamDecl* vertices = fx->GetVertexStreamDecl("Vertices");
    ASSERT_EQ(4u, vertices->GetNumElements());
    EXPECT_STREQ("position", vertices->GetElement(0)->GetSecondName().c_str());
    EXPECT_STREQ("", vertices->GetElement(1)->GetSecondName().c_str());
    EXPECT_FLOAT_EQ(1.0f, vertices->GetElement(2)->GetAnnotations().LookupFloat("Scale", 0.0f));
    const LxStreamMap* instanced = fx->GetStreamMap("InstancedMap");
    EXPECT_FALSE(instanced->IsStreamInstanced(0));
    EXPECT_TRUE(instanced->IsStreamInstanced(1));
    EXPECT_EQ(0u, fx->GetStreamMap("EmptyMap")->GetNumStreams());
    EXPECT_EQ(LX_SHADING_LANGUAGE_GLSL, fx->GetCodeBlock("GlslHelpers")->language);

    // Techniques: the base is abstract, the derived one inherits and completes its pass.
    const LxEffectTechnique* lit = fx->GetTechnique("Lit");
    EXPECT_TRUE(lit->IsBase());
    ASSERT_EQ(3u, lit->GetNumProperties());
    EXPECT_STREQ("Casts Shadows", lit->GetProperty(1).c_str());
    const LxEffectTechnique* red = fx->GetTechnique("LitRed");
    EXPECT_EQ(lit, red->GetBaseTechnique());
    ASSERT_EQ(1u, red->GetNumPasses());
    const LxEffectPass* redMain = red->GetPass(0u);
    EXPECT_TRUE(redMain->HasShader(LX_PIXEL_SHADER));
    EXPECT_EQ(lit->GetPass(0u)->GetShader(LX_VERTEX_SHADER), redMain->GetShader(LX_VERTEX_SHADER));
    EXPECT_EQ(fx->GetStreamMap("DefaultMap"), redMain->GetStreamMap());
    EXPECT_EQ(2, redMain->FindRenderState("DepthBias")->intValue);
    EXPECT_EQ(fx->FindTechnique(0), red); // the base is skipped

    const LxEffectTechnique* everything = fx->GetTechnique("Everything");
    ASSERT_EQ(4u, everything->GetNumPasses());
    const LxEffectPass* full = everything->GetPass("Full");
    for (LxShaderType t : {LX_VERTEX_SHADER, LX_GEOMETRY_SHADER, LX_HULL_SHADER, LX_DOMAIN_SHADER, LX_PIXEL_SHADER})
        EXPECT_TRUE(full->HasShader(t)) << LxShaderTypeName(t);
    EXPECT_EQ(fx->GetStreamMap("DefaultMap"), full->GetStreamOutMap(0));
    EXPECT_EQ(nullptr, full->GetStreamOutMap(1));
    EXPECT_EQ(fx->GetStreamMap("EmptyMap"), full->GetStreamOutMap(2));
    EXPECT_TRUE(full->GetShader(LX_VERTEX_SHADER)->GetOptions().ValueExists("SkipOptimization"));
    EXPECT_STREQ(" float4 PS() : SV_Target { return 1; } ", full->GetShader(LX_PIXEL_SHADER)->GetCode().text.c_str());
    // A line holding the end keyword inside a comment ends the body there.
    EXPECT_STREQ("      float4 VS() : SV_Position { return 0; } // ",
                 full->GetShader(LX_VERTEX_SHADER)->GetCode().text.c_str());
    const LxEffectPass* disabled = everything->GetPass("Disabled");
    EXPECT_FALSE(disabled->HasShader(LX_GEOMETRY_SHADER) || disabled->HasShader(LX_PIXEL_SHADER));
    EXPECT_EQ(0u, fx->GetTechnique("Abstract")->GetPass("Empty")->GetNumRenderStates());
    const LxEffectPass* binary = everything->GetPass("Binary");
    ASSERT_TRUE(binary->HasBinaryShaderPair());
    EXPECT_EQ(14u, binary->GetBinaryShaderPair()->GetSize());
    EXPECT_FALSE(everything->GetPass("BinaryNull")->HasBinaryShaderPair());

    const LxEffectTechnique* simulate = fx->GetTechnique("Simulate");
    EXPECT_TRUE(simulate->IsCompute());
    EXPECT_TRUE(simulate->GetPass(0u)->HasShader(LX_COMPUTE_SHADER));
}

// Every file of errors/ lists the messages it must provoke in "// expect: " lines; each must be logged verbatim,
// and the parse must fail. Files named override_* are built by the override-technique builder.
TEST(LxEffectParser, ErrorFilesReportEveryExpectedMessage)
{
    namespace fs = std::filesystem;
    int files = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(LxFxTest::EffectsDir() + "/errors"))
    {
        const std::string name = entry.path().filename().string();
        SCOPED_TRACE(name);
        const std::string text = LxFxTest::ReadText(entry.path().string());
        LxTest::LogCapture capture;
        LxEffectBuilder generic;
        LxOverrideTechniqueEffectBuilder overrideBuilder;
        LxEffectBuilder* builder = name.rfind("override_", 0) == 0 ? &overrideBuilder : &generic;
        std::unique_ptr<LxEffect> fx = Parse(text, name, builder);
        EXPECT_FALSE(fx);
        EXPECT_TRUE(builder->ParseErrorOccured());

        std::istringstream lines(text);
        int expectations = 0;
        for (std::string line; std::getline(lines, line);)
        {
            const std::string tag = "// expect: ";
            if (line.rfind(tag, 0) != 0)
                continue;
            ++expectations;
            const std::string message = line.substr(tag.size());
            EXPECT_TRUE(capture.Contains(message)) << "missing: " << message << "\nlogged:\n" << capture.All();
        }
        EXPECT_GT(expectations, 0);
        ++files;
    }
    EXPECT_GE(files, 12);
}

TEST(LxEffectParser, SyntaxErrorsNameTokensRecoveryReportsLaterErrorsAndDeepNestingStops)
{
    LxTest::LogCapture capture;
    EXPECT_FALSE(Parse("Float a\nTechnique { }\nFloat a\n", "t.fx"));
    EXPECT_TRUE(capture.Contains("t.fx(2) : syntax error, unexpected '{', expecting T_ID")) << capture.All();
    // The parse goes on after the error: the redefinition below it is reported too.
    EXPECT_TRUE(capture.Contains("t.fx(3) : Effect parameter redefinition: a")) << capture.All();

    capture.Clear();
    EXPECT_FALSE(Parse("Float f (1.0\n", "eof.fx"));
    EXPECT_TRUE(capture.Contains("syntax error, unexpected end of file")) << capture.All();

    capture.Clear();
    // A trailing comma after the last stream-map entry is refused; after the last stream element it is not.
    EXPECT_TRUE(Parse("Stream S { float3 POSITION, }\nStreamMap M { S }\n"));
    EXPECT_FALSE(Parse("Stream S { float3 POSITION }\nStreamMap M { S, }\n", "comma.fx"));
    EXPECT_TRUE(capture.Contains("comma.fx(2) : syntax error, unexpected '}', expecting T_ID")) << capture.All();

    // Deep nesting overflows the parser stack with a message, not the thread's stack.
    EXPECT_FALSE(Parse("Int n (" + std::string(20000, '(') + "1", "deep.fx"));
    EXPECT_TRUE(capture.Contains("deep.fx(1) : parser stack overflow")) << capture.All().substr(0, 500);
}

TEST(LxEffectParser, DefinesFromTheApiAndConditionals)
{
    LxTest::LogCapture capture;
    LxEffectParser parser;
    parser.AddDefine("QUALITY", "3");
    parser.AddDefine("HIGH", "");
    LxString value;
    EXPECT_TRUE(parser.GetDefine("QUALITY", value));
    EXPECT_STREQ("3", value.c_str());
    std::unique_ptr<LxEffect> fx = Parse("#ifdef HIGH\nInt q (QUALITY)\n#endif\n#ifndef HIGH\nInt low (1)\n#endif\n"
                                         "#define QUALITY 5\nInt q2 (QUALITY)\n#undef QUALITY\n"
                                         "#ifdef QUALITY\nInt never (0)\n#endif\n   #define INDENTED 1\n",
                                         "d.fx", nullptr, &parser);
    ASSERT_TRUE(fx) << capture.All();
    EXPECT_EQ(3, fx->GetParameter("q")->GetDefaultValueInt());
    EXPECT_FALSE(fx->GetParameter("low"));
    EXPECT_EQ(5, fx->GetParameter("q2")->GetDefaultValueInt());
    EXPECT_FALSE(fx->GetParameter("never"));
    // Directives of the file change the parser's table.
    EXPECT_FALSE(parser.GetDefine("QUALITY", value));
    EXPECT_TRUE(parser.GetDefine("INDENTED", value));

    // "#define" not at the start of a line is no directive: '#' is an invalid character there.
    capture.Clear();
    EXPECT_FALSE(Parse("Float f #define X 1\n", "mid.fx"));
    EXPECT_TRUE(capture.Contains("mid.fx(1) : Invalid character: # (ASCII: 35)")) << capture.All();
}

TEST(LxEffectParser, SelfReferentialDefinesStopWithAMessage)
{
    LxTest::LogCapture capture;
    EXPECT_FALSE(Parse("#define LOOP LOOP\nInt n (LOOP)\n", "loop.fx"));
    EXPECT_TRUE(capture.Contains("Expansion of #define LOOP nests too deeply or grows too large")) << capture.All();

    // Each level doubles the text: the expansion budget ends it long before memory does.
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "#define D" + std::to_string(i) + " D" + std::to_string(i + 1) + " D" + std::to_string(i + 1) + "\n";
    text += "Int n (D0)\n";
    capture.Clear();
    EXPECT_FALSE(Parse(text, "double.fx"));
    EXPECT_TRUE(capture.Contains("nests too deeply or grows too large")) << capture.All().substr(0, 300);

    // Two defines naming each other twice over: bounded by the same budget, not by the (enormous) tree.
    capture.Clear();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(Parse("#define A @ B A\n#define B A B\nInt n (A)\n", "tree.fx"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_TRUE(capture.Contains("nests too deeply or grows too large"));
}

TEST(LxEffectParser, IncludesResolveThroughTheArchiveOncePerEffectAndUnreadableFilesAreReported)
{
    const std::string dir = LxTest::MakeTempDir("fxinclude");
    LxTest::WriteBytes(dir + "/a.fxh", "Float fromA (1.0)\n#include \"b.fxh\"\n");
    LxTest::WriteBytes(dir + "/b.fxh", "Float fromB (2.0)\n#include \"a.fxh\"\nFloat lineCheck\n@\n");
    LxSearchPath search;
    search.AddToSearchPath(dir.c_str());
    LxEffectParser parser;
    parser.SetIncludeArchive(&search);

    LxTest::LogCapture capture;
    LxEffectBuilder builder;
    std::unique_ptr<LxEffect> fx =
        Parse("#include \"a.fxh\"\n#include \"a.fxh\"\nFloat main (3.0)\n@\n", "main.fx", &builder, &parser);
    EXPECT_FALSE(fx); // the two '@' are errors; they must name the right file and line
    EXPECT_TRUE(capture.Contains("b.fxh(4) : Invalid character: @ (ASCII: 64)")) << capture.All();
    EXPECT_TRUE(capture.Contains("main.fx(4) : Invalid character: @ (ASCII: 64)")) << capture.All();
    EXPECT_EQ(2, capture.ErrorCount()) << capture.All();

    capture.Clear();
    LxEffectBuilder builder2;
    fx = Parse("#include \"a.fxh\"\nFloat main (3.0)\n#include \"nowhere.fxh\"\n", "main.fx", &builder2, &parser);
    EXPECT_FALSE(fx);
    EXPECT_TRUE(capture.Contains("main.fx(3) : Cannot find include file \"nowhere.fxh\"")) << capture.All();

    // A folder is found under the name but cannot be read as a file.
    std::filesystem::create_directories(dir + "/folder.fxh");
    LxTest::WriteBytes(dir + "/empty.bin", "");
    LxEffectBuilder builder3;
    EXPECT_FALSE(Parse("#include \"folder.fxh\"\nTechnique T {\n"
                       "Pass A { BinaryShaderPair(\"empty.bin\") }\nPass B { BinaryShaderPair(\"folder.fxh\") } }\n",
                       "u.fx", &builder3, &parser));
    EXPECT_TRUE(capture.Contains("u.fx(1) : Error opening include file \"folder.fxh\"")) << capture.All();
    EXPECT_TRUE(capture.Contains("u.fx(3) : No data in binary shader file \"%\"")) << capture.All();
    EXPECT_TRUE(capture.Contains("u.fx(4) : Error reading data in binary shader file \"%\"")) << capture.All();
}

TEST(LxEffectParser, TwoEffectsParseOnTwoThreadsAtOnce)
{
    const std::string path = LxFxTest::EffectsDir() + "/full_grammar.fx";
    const std::string text = LxFxTest::ReadText(path);
    std::vector<int> ok(2, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t)
        threads.emplace_back(
            [&, t]
            {
                for (int i = 0; i < 10; ++i)
                    ok[t] += Parse(text, path) != nullptr;
            });
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ((std::vector<int>{10, 10}), ok);
}

TEST(LxEffectParser, ParseWithoutBuilderAndResetAreHarmless)
{
    LxTest::LogCapture capture;
    LxEffectParser parser;
    EXPECT_EQ(nullptr, parser.Parse());
    EXPECT_TRUE(capture.Contains("Init was not called with a builder"));
    LxEffectBuilder builder;
    parser.Init("empty.fx", "", &builder);
    // An empty file has no file section: a syntax error.
    EXPECT_EQ(nullptr, parser.Parse());
    EXPECT_TRUE(capture.Contains("empty.fx(1) : syntax error, unexpected end of file")) << capture.All();
    parser.Reset();
    EXPECT_EQ(0u, parser.GetCurrentLineNumber());
}
