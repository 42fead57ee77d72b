// Shader-code preprocessor tests: $include once, $insert every time, cycles, failures and #line directives, and the
// map that takes compiler positions in the generated text back to the effect file.
#include "EffectManager/LxShaderCodePreprocessor.h"
#include "EffectManager/LxShaderLineMap.h"

#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
struct Blocks
{
    ~Blocks()
    {
        for (LxShaderCodeBlock* b : array)
            delete b;
    }
    void Add(const char* name, const char* text, unsigned int line, LxShadingLanguage lang = LX_SHADING_LANGUAGE_HLSL)
    {
        array.Add(new LxShaderCodeBlock(name, lang, text, "blocks.fx", line));
    }
    LxArray<LxShaderCodeBlock*> array;
};

int Occurrences(const LxString& text, const char* what)
{
    int n = 0;
    for (int at = text.Find(what); at >= 0; at = text.Find(what, static_cast<unsigned int>(at) + 1))
        ++n;
    return n;
}
} // namespace

TEST(LxShaderCodePreprocessor, IncludeOnceInsertEveryTimeWithLineDirectives)
{
    Blocks blocks;
    blocks.Add("Common", "float common;\n", 3);
    blocks.Add("Uses", "$include Common\nfloat uses;\n", 10);
    LxShaderCodePreprocessor pp;
    pp.SetCodeBlocks(&blocks.array);
    LxString out;
    LxTest::LogCapture capture;
    ASSERT_TRUE(pp.Process("$include Common\n$include Uses\n$include Common\nmain\n", 20, "shader.fx",
                           LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_EQ(1, Occurrences(out, "float common;"));
    EXPECT_EQ(1, Occurrences(out, "float uses;"));
    EXPECT_TRUE(out.StartsWith("#line 20 \"shader.fx\"\n")) << out.c_str();
    EXPECT_NE(-1, out.Find("#line 3 \"blocks.fx\"\nfloat common;\n#line 20 \"shader.fx\"\n")) << out.c_str();
    // After "Uses" (inserted from line 21) numbering resumes at 21 for the rest of that line.
    EXPECT_NE(-1, out.Find("float uses;\n#line 21 \"shader.fx\"\n")) << out.c_str();
    EXPECT_NE(-1, out.Find("main\n"));
    EXPECT_EQ(0, capture.ErrorCount());

    ASSERT_TRUE(pp.Process("$insert Common\n$insert \"Common\"\n", 1, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_EQ(2, Occurrences(out, "float common;"));
}

TEST(LxShaderCodePreprocessor, FailuresAreReportedWithTheInnermostPosition)
{
    Blocks blocks;
    blocks.Add("Loop", "a\n$insert Loop\n", 30);
    blocks.Add("Glsl", "vec3 x;\n", 40, LX_SHADING_LANGUAGE_GLSL);
    blocks.Add("Broken", "\n\n$include Nowhere\n", 50);
    LxShaderCodePreprocessor pp;
    LxString out;
    LxTest::LogCapture capture;

    EXPECT_FALSE(pp.Process("x", 1, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("Code block array not set"));

    pp.SetCodeBlocks(&blocks.array);
    EXPECT_FALSE(pp.Process("$insert Loop\n", 5, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("blocks.fx(31) : Recursive $insert detected for code block\"Loop\"")) << capture.All();

    EXPECT_FALSE(pp.Process("\n$include Glsl\n", 5, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("s.fx(6) : Trying to $include undefined code block \"Glsl\", or shading language does "
                                 "not match"))
        << capture.All();
    EXPECT_TRUE(pp.Process("$include Glsl\n", 5, "s.fx", LX_SHADING_LANGUAGE_GLSL, out));

    EXPECT_FALSE(pp.Process("$insert Broken\n", 5, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("blocks.fx(52) : Trying to $include undefined code block \"Nowhere\""))
        << capture.All();

    EXPECT_FALSE(pp.Process("$include\n", 7, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("s.fx(7) : Missing name string after $include"));
    EXPECT_FALSE(pp.Process("$insert;\n", 7, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("s.fx(7) : Missing name string after $insert"));
    EXPECT_FALSE(pp.Process("$insert Missing\n", 8, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("s.fx(8) : Trying to $insert undefined code block \"Missing\""));
}

TEST(LxShaderCodePreprocessor, ExponentialInsertionIsBounded)
{
    // Each block inserts the next one twice: 2^30 copies would be far too many.
    Blocks blocks;
    for (int i = 0; i < 30; ++i)
    {
        const std::string next = "B" + std::to_string(i + 1);
        const std::string text = "$insert " + next + "\n$insert " + next + "\n";
        blocks.Add(("B" + std::to_string(i)).c_str(), text.c_str(), 1);
    }
    blocks.Add("B30", "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef\n", 1);
    LxShaderCodePreprocessor pp;
    pp.SetCodeBlocks(&blocks.array);
    LxString out;
    LxTest::LogCapture capture;
    EXPECT_FALSE(pp.Process("$insert B0\n", 1, "s.fx", LX_SHADING_LANGUAGE_HLSL, out));
    EXPECT_TRUE(capture.Contains("makes the shader larger than")) << capture.All().substr(0, 400);
}

// Compiler positions in the generated text (macro lines, then preprocessed code with its directives) map back to the
// lines the user wrote, in both message forms; macro lines, other files and text without a position stay.
TEST(LxShaderLineMap, CompilerPositionsMapBackThroughTheDirectives)
{
    Blocks blocks;
    blocks.Add("Common", "float common;\nfloat common2;\n", 3);
    LxShaderCodePreprocessor pp;
    pp.SetCodeBlocks(&blocks.array);
    LxString code;
    ASSERT_TRUE(pp.Process("float a;\n$include Common\nfloat b;\n", 20, "shader.fx", LX_SHADING_LANGUAGE_HLSL, code));
    LxString source = "#define LX_3D_API_D3D12 1\n#define Q 2\n";
    source.Append(code);
    const LxShaderLineMap map(source);

    // Every line holding a declaration maps to where it was written.
    struct Where
    {
        const char* text;
        const char* file;
        unsigned int line;
    };
    const Where expected[] = {{"float a;", "shader.fx", 20},
                              {"float common;", "blocks.fx", 3},
                              {"float common2;", "blocks.fx", 4},
                              {"float b;", "shader.fx", 22}};
    for (const Where& w : expected)
    {
        SCOPED_TRACE(w.text);
        const int at = source.Find(w.text);
        ASSERT_GE(at, 0);
        unsigned int generated = 1;
        for (int i = 0; i < at; ++i)
            generated += source.c_str()[i] == '\n' ? 1 : 0;
        LxString file;
        unsigned int line = 0;
        ASSERT_TRUE(map.Lookup(generated, &file, &line));
        EXPECT_STREQ(w.file, file.c_str());
        EXPECT_EQ(w.line, line);
    }
    LxString file;
    unsigned int line = 0;
    EXPECT_FALSE(map.Lookup(1, &file, &line)) << "a macro line has no origin";
    EXPECT_FALSE(map.Lookup(0, &file, &line));
    EXPECT_FALSE(map.Lookup(10000, &file, &line));

    unsigned int aLine = 1;
    for (const char* p = source.c_str(); p < source.c_str() + source.Find("float a;"); ++p)
        aLine += *p == '\n' ? 1 : 0;
    LxString messages;
    messages.Format("gen.hlsl(%u,5-9): error X3004: undeclared identifier 'x'\n"
                    "gen.hlsl:%u:7: E5017: Aborting due to not implemented feature.\n"
                    "gen.hlsl(1,1): warning X0000: on a macro line\n"
                    "other.hlsl(%u,1): error X1: another file\n"
                    "compilation failed\n",
                    aLine, aLine, aLine);
    const LxString mapped = map.MapMessages(messages, "gen.hlsl");
    const std::string expectedText = "shader.fx(20,5-9): error X3004: undeclared identifier 'x'\n"
                                     "shader.fx(20,7): E5017: Aborting due to not implemented feature.\n"
                                     "gen.hlsl(1,1): warning X0000: on a macro line\n"
                                     "other.hlsl(" +
                                     std::to_string(aLine) +
                                     ",1): error X1: another file\n"
                                     "compilation failed\n";
    EXPECT_EQ(expectedText, std::string(mapped.c_str()));
}
