// Hot reload of an effect set with a warm shader cache against a cold one. The compiler is the fake of the
// effect-manager tests with a fixed cost of 2 ms of busy waiting per shader (a stand-in: the cost of D3DCompile is
// measured in the Windows lane). Eight effect files of four techniques with a vertex and a pixel shader each: 64
// shaders per reload, forced (ReloadEffects(true)), so every file is parsed and built again each time.
//   Cold: the cache folder is emptied before each reload (not timed): every shader is compiled and written.
//   Warm: the cache holds every shader: each is read back and checked instead of compiled.
//   NoCache: no cache path at all (compiled, nothing written), the baseline for the cold case's writing cost.
#include "../tests/EffectManager/LxEffectManagerTestUtil.h"
#include "Common/LxLogManager.h"
#include "EffectManager/LxShaderCache.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{
const unsigned int kShaderCostMicroseconds = 2000;
const int kEffects = 8;
const int kTechniquesPerEffect = 4;

std::string MakeEffect(int e)
{
    std::string s = "StartHLSL Common\nfloat4 Shade(float4 c) { return c * 0.5; }\nEndHLSL\n";
    s += "Matrix mWorld\nVector vColor (1.0, 0.5, 0.25, 1.0)\nTexture2D tDiffuse < >\n";
    s += "Sampler sLinear { Texture = tDiffuse; Filter = MIN_MAG_MIP_LINEAR; }\n";
    s += "Stream Vertices { float3 POSITION, float3 NORMAL, float2 TEXCOORD0 }\nStreamMap Map { Vertices }\n";
    for (int t = 0; t < kTechniquesPerEffect; ++t)
    {
        const std::string id = std::to_string(e) + "_" + std::to_string(t);
        s += "Technique T" + id + " { Pass P { StreamMap = Map\n";
        s += "  VertexShader( EntryPoint = \"VS\" ) $include Common\n"
             "    float4 VS(float3 p : POSITION) : SV_Position { return mul(mWorld, float4(p, " +
             id.substr(0, 1) + ".0)); } // " + id + "\n  EndVertexShader\n";
        s += "  PixelShader( EntryPoint = \"PS\" ) $include Common\n"
             "    float4 PS() : SV_Target { return Shade(vColor); } // " +
             id + "\n  EndPixelShader } }\n";
    }
    return s;
}

// A manager with the effect set loaded from a fresh folder; the folder goes with it.
class ReloadFixture
{
public:
    explicit ReloadFixture(const char* name)
    {
        LxLogManager::Init(false, false, "");
        m_dir = std::filesystem::temp_directory_path() / ("lumex-reload-bench-" + std::string(name));
        std::filesystem::remove_all(m_dir);
        std::filesystem::create_directories(m_dir / "fx");
        m_compiler.busyMicroseconds = kShaderCostMicroseconds;
        m_manager = new LxFxTest::TestEffectManager();
        LxEffectManager::Init(m_manager);
        m_manager->compiler = &m_compiler;
        m_manager->AddSearchPath((m_dir / "fx").string().c_str());
        for (int e = 0; e < kEffects; ++e)
        {
            const std::string file = "effect" + std::to_string(e) + ".fx";
            std::ofstream(m_dir / "fx" / file, std::ios::binary) << MakeEffect(e);
            m_effects.push_back(m_manager->LoadEffect(file.c_str(), LxEffectManager::LOAD_DEFAULT_EFFECT));
        }
    }
    ~ReloadFixture()
    {
        m_effects.clear();
        LxEffectManager::ShutDown();
        std::error_code ec;
        std::filesystem::remove_all(m_dir, ec);
    }
    bool Loaded() const
    {
        for (const auto& effect : m_effects)
            if (!effect)
                return false;
        return true;
    }
    std::string CacheDir() const { return (m_dir / "cache").string(); }
    void EmptyCache() const
    {
        std::error_code ec;
        std::filesystem::remove_all(m_dir / "cache", ec);
        std::filesystem::create_directories(m_dir / "cache", ec);
    }

    LxFxTest::FakeShaderCompiler m_compiler;
    LxFxTest::TestEffectManager* m_manager;

private:
    std::filesystem::path m_dir;
    std::vector<LxCountedPtr<LxEffect>> m_effects;
};

void Report(benchmark::State& state, const ReloadFixture& fixture, int compilesBefore)
{
    const double reloads = static_cast<double>(state.iterations());
    state.counters["shaders"] = kEffects * kTechniquesPerEffect * 2;
    state.counters["compiled/reload"] = (fixture.m_compiler.compileCount - compilesBefore) / reloads;
}

void BM_ReloadColdCache(benchmark::State& state)
{
    ReloadFixture fixture("cold");
    if (!fixture.Loaded())
        return state.SkipWithError("the effect set did not load");
    fixture.m_manager->SetShaderCachePath(fixture.CacheDir().c_str());
    const int before = fixture.m_compiler.compileCount;
    for (auto _ : state)
    {
        state.PauseTiming();
        fixture.EmptyCache();
        state.ResumeTiming();
        fixture.m_manager->ReloadEffects(true);
    }
    Report(state, fixture, before);
}

void BM_ReloadWarmCache(benchmark::State& state)
{
    ReloadFixture fixture("warm");
    if (!fixture.Loaded())
        return state.SkipWithError("the effect set did not load");
    fixture.m_manager->SetShaderCachePath(fixture.CacheDir().c_str());
    fixture.m_manager->ReloadEffects(true); // fills the cache
    const int before = fixture.m_compiler.compileCount;
    for (auto _ : state)
        fixture.m_manager->ReloadEffects(true);
    Report(state, fixture, before);
}

void BM_ReloadNoCache(benchmark::State& state)
{
    ReloadFixture fixture("none");
    if (!fixture.Loaded())
        return state.SkipWithError("the effect set did not load");
    const int before = fixture.m_compiler.compileCount;
    for (auto _ : state)
        fixture.m_manager->ReloadEffects(true);
    Report(state, fixture, before);
}
} // namespace

BENCHMARK(BM_ReloadColdCache)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReloadWarmCache)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReloadNoCache)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
