// Keyframe evaluation cost in playback order: a 100,000-key curve against a 100-key curve (the cursor search
// must make the cost per step independent of the key count), for float, vec3, quat and matrix curves.
//
// Keys lie at irregular times (spacing 0.5 to 1.5 x 1/30 s); playback steps by a quarter of the mean spacing and
// turns round at either end (ping-pong, so no step is a far jump), which is how a frame loop drives a curve.
// Each benchmark iteration is kBatch evaluations; items per second count evaluations. The baseline of each pair
// is the 100-key curve, whose keys and values stay in the first-level cache.
#include "Common/LxMatrix4.h"
#include "Common/LxQuat.h"
#include "ObjectManager/LxKeyframeCurve.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>

namespace
{
const unsigned int kBatch = 1024;
const float kMeanSpacing = 1.0f / 30.0f;

std::unique_ptr<LxKeyframeCurve> MakeCurve(LxAnimationCurve::AnimationDataType type, unsigned int keys)
{
    std::mt19937 random(12345);
    std::uniform_real_distribution<float> spacing(0.5f * kMeanSpacing, 1.5f * kMeanSpacing), value(-1.0f, 1.0f);
    std::unique_ptr<LxKeyframeCurve> curve(new LxKeyframeCurve(type));
    float time = 0.0f, v[16];
    for (unsigned int k = 0; k < keys; ++k)
    {
        for (float& f : v)
            f = value(random);
        curve->AddKey(time, v);
        time += spacing(random);
    }
    return curve;
}

void Playback(benchmark::State& state, LxAnimationCurve::AnimationDataType type)
{
    const std::unique_ptr<LxKeyframeCurve> curve = MakeCurve(type, static_cast<unsigned int>(state.range(0)));
    const float length = curve->GetAnimationLength();
    const float step = kMeanSpacing / 4.0f;
    float t = 0.0f, direction = step;
    alignas(16) float out[16];
    for (auto _ : state)
    {
        for (unsigned int i = 0; i < kBatch; ++i)
        {
            curve->GetValueRaw(t, out);
            benchmark::DoNotOptimize(out);
            t += direction;
            if (t >= length || t <= 0.0f)
                direction = -direction;
        }
    }
    state.SetItemsProcessed(static_cast<long long>(state.iterations()) * kBatch);
}

void BM_PlaybackFloat(benchmark::State& state)
{
    Playback(state, LxAnimationCurve::DATA_FLOAT);
}
void BM_PlaybackVec3(benchmark::State& state)
{
    Playback(state, LxAnimationCurve::DATA_VEC3);
}
void BM_PlaybackQuat(benchmark::State& state)
{
    Playback(state, LxAnimationCurve::DATA_QUAT);
}
void BM_PlaybackMatrix(benchmark::State& state)
{
    Playback(state, LxAnimationCurve::DATA_MATRIX);
}
} // namespace

BENCHMARK(BM_PlaybackFloat)->Arg(100)->Arg(100000);
BENCHMARK(BM_PlaybackVec3)->Arg(100)->Arg(100000);
BENCHMARK(BM_PlaybackQuat)->Arg(100)->Arg(100000);
BENCHMARK(BM_PlaybackMatrix)->Arg(100)->Arg(100000);

BENCHMARK_MAIN();
