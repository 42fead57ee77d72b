// Scanner tests, through small effects: token numbering, keywords, literals, comments, strings, captures.
#include "EffectManager/LxEffectTestUtil.h"

#include "EffectManager/LxEffectParserGrammar.hpp"

#include <gtest/gtest.h>

using LxFxTest::Parse;

TEST(LxEffectScanner, TokenKindsAreNumberedFrom258InTheirFixedOrder)
{
    // Spot checks along the list; the stream types come last, in their own (not the element table's) order.
    EXPECT_EQ(258, T_ART_NOTES);
    EXPECT_EQ(258 + 28, T_BINARY_SHADER_PAIR);
    EXPECT_EQ(258 + 33, T_ID);
    EXPECT_EQ(258 + 61, T_TEXTURE);
    EXPECT_EQ(258 + 62, T_STREAM_TYPE_FLOAT);
    EXPECT_EQ(258 + 62 + 25, T_STREAM_TYPE_UBYTE2); // token order has ubyte2 before byte2n
    EXPECT_EQ(258 + 62 + 26, T_STREAM_TYPE_BYTE2N);
    EXPECT_EQ(258 + 62 + 38, T_STREAM_TYPE_INT2N);
}

TEST(LxEffectScanner, KeywordsAreWholeCaseSensitiveWords)
{
    LxTest::LogCapture capture;
    // "texturecube" and "Technique2" are identifiers, so they can name parameters.
    std::unique_ptr<LxEffect> fx =
        Parse("Float texturecube\nFloat Technique2\nFloat TextureCubes\n"
              "TextureCUBE tUpper < >\nTextureCube tMixed < >\n"
              "Stream S { float3 POSITION }\nStreamMap M { S }\n"
              "Technique T { Pass P { StreamOutMap = M StreamOutMap0 = M\n"
              "VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }}\n");
    ASSERT_TRUE(fx) << capture.All();
    EXPECT_TRUE(fx->GetParameter("texturecube"));
    EXPECT_TRUE(fx->GetParameter("Technique2"));
    EXPECT_TRUE(fx->GetParameter("TextureCubes"));
    EXPECT_EQ(LxTextureSlot::TEXTURE_CUBE, fx->GetTextureSlot("tUpper")->GetType());
    EXPECT_EQ(LxTextureSlot::TEXTURE_CUBE, fx->GetTextureSlot("tMixed")->GetType());
    EXPECT_EQ(fx->GetStreamMap("M"), fx->GetTechnique("T")->GetPass(0u)->GetStreamOutMap(0));
}

TEST(LxEffectScanner, NumbersFollowTheLiteralRules)
{
    // Integer arithmetic wraps at 32 bits rather than overflowing.
    const std::pair<const char*, int> ints[] = {{"-3", -3},          {"3 - 1", 2},  {"0xFf", 255},
                                                {"-0x10", -16},      {"0b1001", 9}, {"2147483647 + 1", -2147483647 - 1},
                                                {"65536 * 65536", 0}};
    for (const auto& c : ints)
    {
        std::unique_ptr<LxEffect> fx = Parse(std::string("Int n (") + c.first + ")\n");
        ASSERT_TRUE(fx) << c.first;
        EXPECT_EQ(c.second, fx->GetParameter("n")->GetDefaultValueInt()) << c.first;
    }
    for (const auto& c : {std::make_pair("0.", 0.0f), std::make_pair(".5", 0.5f), std::make_pair("-1.5", -1.5f)})
    {
        std::unique_ptr<LxEffect> fx = Parse(std::string("Float f (") + c.first + ")\n");
        ASSERT_TRUE(fx) << c.first;
        EXPECT_FLOAT_EQ(c.second, fx->GetParameter("f")->GetDefaultValueFloat()) << c.first;
    }

    // "3 -1" is 3 followed by the literal -1; "1e5" is 1 followed by the identifier e5; integer and float literals
    // do not mix in one expression.
    const std::pair<const char*, const char*> refused[] = {
        {"Int n (3 -1)", "syntax error, unexpected T_INTEGER"},
        {"Float f (1e5)", "syntax error, unexpected T_ID"},
        {"Float f (1.0 + 1)", "syntax error, unexpected T_INTEGER, expecting T_FLOAT or '('"},
        {"Int n (4 / (2 - 2))", "Division by zero in integer expression"}};
    for (const auto& c : refused)
    {
        LxTest::LogCapture capture;
        EXPECT_FALSE(Parse(std::string(c.first) + "\n", "n.fx")) << c.first;
        EXPECT_TRUE(capture.Contains(std::string("n.fx(1) : ") + c.second)) << capture.All();
    }
}

TEST(LxEffectScanner, StringsUnescapeAndComments)
{
    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx =
        Parse("Options < A = \"tab\\there\", B = \"q\\\"b\\\\n\\n\\x\" > // trailing comment\n"
              "/* one /* two */ still one */ Float f\n/* multi\nline */ Float g\n");
    ASSERT_TRUE(fx) << capture.All();
    EXPECT_STREQ("tab\there", fx->GetOptions().LookupString("A", "").c_str());
    EXPECT_STREQ("q\"b\\n\nx", fx->GetOptions().LookupString("B", "").c_str());
    EXPECT_TRUE(fx->GetParameter("f"));
    EXPECT_TRUE(fx->GetParameter("g"));

    // A surplus closing mark after a comment is the punctuation '*' '/', which the grammar refuses.
    capture.Clear();
    EXPECT_FALSE(Parse("/* a /* b */ */ */ Float f\n", "surplus.fx"));
    EXPECT_TRUE(capture.Contains("surplus.fx(1) : syntax error, unexpected '*'")) << capture.All();

    // Line numbers count inside comments, strings of art notes and captured code.
    capture.Clear();
    EXPECT_FALSE(Parse("/*\n\n*/ArtNotes {\n\n}\nStartHLSL B\nx\ny\nEndHLSL\n@", "lines.fx"));
    EXPECT_TRUE(capture.Contains("lines.fx(10) : Invalid character: @ (ASCII: 64)")) << capture.All();
    // An include name runs into the end of its line: the message is the include's own.
    LxTest::LogCapture include;
    EXPECT_FALSE(Parse("#include \"open\nFloat f\n", "inc.fx"));
    EXPECT_TRUE(include.Contains("inc.fx(1) : Unterminated string")) << include.All();
    EXPECT_FALSE(include.Contains("Unterminated string!"));
}

TEST(LxEffectScanner, ShaderBodiesEndAtThePlainSubstring)
{
    LxTest::LogCapture capture;
    std::unique_ptr<LxEffect> fx = Parse("Technique T\n{\n  Pass P\n  {\n"
                                         "    VertexShader( EntryPoint = \"main\" )\n"
                                         "      float4 main() : SV_Position { return 0; }\n"
                                         "    EndVertexShader\n"
                                         "    PixelShader( )\n"
                                         "      float x; // EndPixelShader\n"
                                         "  }\n}\n",
                                         "body.fx");
    ASSERT_TRUE(fx) << capture.All();
    const LxEffectPass* pass = fx->GetTechnique("T")->GetPass(0u);
    const LxShaderCodeBlock& vs = pass->GetShader(LX_VERTEX_SHADER)->GetCode();
    EXPECT_EQ(6u, vs.firstLine);
    EXPECT_STREQ("      float4 main() : SV_Position { return 0; }\n    ", vs.text.c_str());
    EXPECT_STREQ("body.fx", vs.fileName.c_str());
    const LxShaderCodeBlock& ps = pass->GetShader(LX_PIXEL_SHADER)->GetCode();
    EXPECT_EQ(9u, ps.firstLine);
    EXPECT_STREQ("      float x; // ", ps.text.c_str());

    // A body that never ends is reported at the end of the file.
    capture.Clear();
    EXPECT_FALSE(Parse("Technique T { Pass P { VertexShader()\n float4 main();\n", "open.fx"));
    EXPECT_TRUE(capture.Contains("Missing EndVertexShader before the end of the file")) << capture.All();
}
