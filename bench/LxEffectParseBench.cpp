// Effect parse throughput: a large generated effect file (parameters, slots, samplers, streams, code blocks and
// techniques with shader bodies) scanned, parsed and built by the platform-free builder (nothing is compiled).
// Baseline: splitting the same text into whitespace-separated words, the least any tokenizer must do. Freeing the
// built effect is left out of the timed part.
#include "Common/LxLogManager.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectParser.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
// About `megabytes` of effect text: blocks of every kind of declaration with unique names.
std::string MakeEffect(size_t megabytes)
{
    std::string s;
    s.reserve(megabytes << 20);
    s += "StartHLSL Common\nfloat4 Shade(float4 c) { return c * 0.5; }\nEndHLSL\n";
    for (int i = 0; s.size() < (megabytes << 20); ++i)
    {
        const std::string n = std::to_string(i);
        s += "// block " + n + "\n";
        s += "Matrix mWorld" + n + " < AppUpdateHint = \"World\", UIName = \"World matrix " + n + "\" >\n";
        s += "Vector vColor" + n + " (1.0, 0.5, 0.25, 1.0) < colorConversion = < mask = \"RGB\", exponent = 2.2 > >\n";
        s += "Float fScale" + n + " (2.0 * 0.5 + 1.0)\nInt nCount" + n + " (16 + 4 * 2)\n";
        s += "Float afWeights" + n + "[8] (0.125)\n";
        s += "Texture2D tDiffuse" + n + " < ViewParams = < MipLevels = 1.0, MipSlice = 0 > >\n";
        s += "Sampler sLinear" + n + " { Texture = tDiffuse" + n +
             "; Filter = MIN_MAG_MIP_LINEAR; AddressU = WRAP; AddressV = CLAMP; MaxAnisotropy = 8 }\n";
        s += "Stream Vertices" + n + " { float3 POSITION, float3 NORMAL, float2 TEXCOORD0 uv, ubyte4n COLOR }\n";
        s += "StreamMap Map" + n + " { Vertices" + n + " }\n";
        s += "/* technique " + n + " draws the block's geometry */\n";
        s += "Technique Render" + n + "\n{\n  Pass P0\n  {\n    StreamMap = Map" + n +
             "\n    ZEnable = true\n    CullMode = BACK\n    BlendEnable = false\n";
        s += "    VertexShader( EntryPoint = \"VS\" )\n      $include Common\n"
             "      float4 VS(float3 p : POSITION) : SV_Position { return mul(mWorld" +
             n + ", float4(p, 1.0)); }\n    EndVertexShader\n";
        s += "    PixelShader( EntryPoint = \"PS\" )\n      $include Common\n"
             "      float4 PS() : SV_Target { return Shade(vColor" +
             n + " * fScale" + n + "); }\n    EndPixelShader\n  }\n}\n";
    }
    return s;
}

const std::string& EffectText()
{
    static const std::string text = MakeEffect(8);
    return text;
}

void QuietLog()
{
    static bool done = false;
    if (!done)
    {
        LxLogManager::Init(false, false, LxString());
        done = true;
    }
}

void BM_ParseEffect(benchmark::State& state)
{
    QuietLog();
    const std::string& text = EffectText();
    const LxString contents(text.c_str(), static_cast<unsigned int>(text.size()));
    for (auto _ : state)
    {
        LxEffectBuilder builder;
        LxEffectParser parser;
        parser.Init("bench.fx", contents, &builder);
        std::unique_ptr<LxEffect> effect(parser.Parse());
        if (!effect)
        {
            state.SkipWithError("the generated effect did not parse");
            break;
        }
        benchmark::DoNotOptimize(effect->GetNumTechniques());
        // Freeing the effect is not parsing: keep it out of the figure.
        state.PauseTiming();
        effect.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseEffect)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_Baseline_SplitWords(benchmark::State& state)
{
    const std::string& text = EffectText();
    for (auto _ : state)
    {
        std::vector<std::string> words;
        words.reserve(text.size() / 4);
        const char* p = text.data();
        const char* end = p + text.size();
        while (p < end)
        {
            while (p < end && (*p == ' ' || *p == '\n' || *p == '\t'))
                ++p;
            const char* start = p;
            while (p < end && *p != ' ' && *p != '\n' && *p != '\t')
                ++p;
            if (p > start)
                words.emplace_back(start, p);
        }
        benchmark::DoNotOptimize(words.size());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_Baseline_SplitWords)->Unit(benchmark::kMillisecond)->MinTime(2.0);
} // namespace

BENCHMARK_MAIN();
