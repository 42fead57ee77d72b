// Scene objects, per frame, without a device:
//  - Skinning palettes: 100 animated models of 64 bones (a chain, every bone with a translation and a rotation
//    curve of 120 keys) posed per frame; one iteration is one frame of all 100. Items: bones posed.
//  - Particles: one billboard system held at 100,000 particles (constant acceleration, vortex, life interpolation,
//    a kill plane none reaches); one iteration is one 1/60 s step. Items: particles stepped.
//  - Drawing 10,000 small objects: the object manager draws quads whose effect reads the world transform and both
//    bounding-box corners through update handlers, against a raw loop that writes the same values into the same
//    parameters and makes the same effect and render-manager calls. Draws are counted, never issued (draw
//    blocking). One iteration draws all 10,000; items: objects drawn.
#include "../tests/ObjectManager/LxSceneTestUtil.h"

#include "Common/LxBoundingBox.h"
#include "Common/LxQuat.h"
#include "ObjectManager/LxAnimatedModel.h"
#include "ObjectManager/LxModel.h"
#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "ParticleSystem/LxParticleParser.h"
#include "ParticleSystem/LxParticleSimulator.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
const unsigned int kModels = 100;
const unsigned int kBones = 64;
const unsigned int kObjects = 10000;

void SkinningPalettes(benchmark::State& state)
{
    LxAnimationSet set;
    LxSkeleton* skeleton = new LxSkeleton();
    for (unsigned int b = 0; b < kBones; ++b)
    {
        const std::string name = "b" + std::to_string(b);
        LxMatrix4 offset;
        offset.MakeTranslation(0.0f, -static_cast<float>(b), 0.0f);
        skeleton->AddBone(LxBone(name.c_str(), offset),
                          b ? LxString(("b" + std::to_string(b - 1)).c_str()) : LxString());
        LxKeyframeCurve* translate = new LxKeyframeCurve(LxAnimationCurve::DATA_VEC3);
        LxKeyframeCurve* rotate = new LxKeyframeCurve(LxAnimationCurve::DATA_QUAT);
        for (unsigned int k = 0; k < 120; ++k)
        {
            const float t = k / 30.0f, a = 0.3f * std::sin(t + b);
            translate->AddKey(t, LxVector3(0.0f, b ? 1.0f : 0.0f, 0.0f));
            rotate->AddKey(t, LxQuat(std::cos(a), 0.0f, 0.0f, std::sin(a)));
        }
        set.AddCurve(("bone." + name + ".translate").c_str(), LxCountedPtr<LxAnimationCurve>(translate));
        set.AddCurve(("bone." + name + ".rotate").c_str(), LxCountedPtr<LxAnimationCurve>(rotate));
    }
    LxModelData* data = new LxModelData();
    data->SetSkeleton(skeleton);
    // One model shared by every object, as the object manager shares the model of one file.
    const LxCountedPtr<LxModel> model(LxModel::Create(data));
    std::vector<std::unique_ptr<LxAnimatedModel>> models;
    for (unsigned int m = 0; m < kModels; ++m)
    {
        LxAnimationSet* curves = new LxAnimationSet();
        curves->AddCurvesFromSet(set);
        models.emplace_back(new LxAnimatedModel(("m" + std::to_string(m)).c_str(), model, curves));
    }
    double time = 0.0;
    for (auto _ : state)
    {
        time += 1.0 / 60.0;
        for (unsigned int m = 0; m < kModels; ++m)
            models[m]->UpdateObject(time + 0.01 * m);
        benchmark::DoNotOptimize(models[kModels - 1]->GetBonePalette()[kBones - 1].GetData()[12]);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kModels * kBones);
}
BENCHMARK(SkinningPalettes)->Unit(benchmark::kMicrosecond);

void ParticleStep(benchmark::State& state)
{
    const char* text = "Lumex Particle Editor Project 1.0\n"
                       "ParticleSystem GPUBillboard Swarm Effect \"p.fx\"\n"
                       "Emitter Shape E Rate Param Fixed 6000000 MaxParticles 100000 Life Param Fixed 1000\n"
                       "  Velocity Param Random -1 1 0 2 -1 1 Size Param Random 0.5 1\n"
                       "  Shape Sphere Center 0 0 0 Radius 5 EndShape EndEmitter\n"
                       "Action ConstAccel G Acceleration Param Fixed 0 -0.5 0 EndAction\n"
                       "Action Vortex V Strength Param Fixed 0.2 EndAction\n"
                       "Action LifeLerp L Size Param KeyFrame KeyFrameChannel 0 1 1 2 EndKeyFrameChannel EndParam\n"
                       "EndAction\n"
                       "Action ColliderKill Floor Shape Plane Point 0 -1000000 0 Normal 0 1 0 EndShape EndAction\n"
                       "EndParticleSystem\n";
    LxParticleBuilder builder;
    LxParticleParser parser;
    parser.Init("bench.txt", text, &builder);
    if (!parser.Parse())
    {
        state.SkipWithError("particle text did not parse");
        return;
    }
    std::unique_ptr<LxParticleGroupDesc> group(builder.TakeResult());
    LxParticleSimulator sim(group->GetSystem(0), 1);
    while (sim.GetCount() < 100000)
        sim.Step(1.0f / 60.0f);
    for (auto _ : state)
        sim.Step(1.0f / 60.0f);
    state.counters["particles"] = sim.GetCount();
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * sim.GetCount());
}
BENCHMARK(ParticleStep)->Unit(benchmark::kMillisecond);

const char* const kSmallEffect = "Matrix mWorld < AppUpdate = \"WorldTransform\" >\n"
                                 "Vector vBoxMin < AppUpdate = \"BoundingBoxMin\" >\n"
                                 "Vector vBoxMax < AppUpdate = \"BoundingBoxMax\" >\n"
                                 "Stream Vertices { float3 POSITION, float2 TEXCOORD }\n"
                                 "StreamMap Map { Vertices }\n"
                                 "Technique Lit { Pass P { StreamMap = Map\n"
                                 "  VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }\n";

// 10,000 quads on a grid, drawn with "small.fx".
struct SmallScene
{
    SmallScene() : folder(std::filesystem::temp_directory_path() / ("lumex-scene-bench-" + std::to_string(::getpid())))
    {
        std::filesystem::create_directories(folder);
        scene.reset(new LxSceneTest::Scene(folder.string()));
        scene->Write("small.fx", kSmallEffect);
        LxModelData* data = LxSceneTest::MakeQuadModel();
        data->GetChunkDesc(0)->SetEffectFile("small.fx");
        data->SetSkeleton(nullptr);
        data->SaveToPath(scene->Path("small").c_str());
        delete data;
        LxObjectManager& objects = LxObjectManager::GetRef();
        for (unsigned int i = 0; i < kObjects; ++i)
        {
            LxAnimatedModel* model = objects.CreateAnimatedModel(("o" + std::to_string(i)).c_str(), "small");
            LxMatrix4 world;
            world.MakeTranslation(static_cast<float>(i % 100) * 3.0f, static_cast<float>(i / 100) * 3.0f, 0.0f);
            model->SetWorldTransform(world);
            models.push_back(model);
        }
        effect = models[0]->GetModel().GetChunkEffect(0);
    }
    ~SmallScene()
    {
        scene.reset();
        std::filesystem::remove_all(folder);
    }
    std::filesystem::path folder;
    std::unique_ptr<LxSceneTest::Scene> scene;
    std::vector<LxAnimatedModel*> models;
    LxCountedPtr<LxEffect> effect;
};

void DrawObjects(benchmark::State& state)
{
    SmallScene small;
    LxObjectManager& objects = LxObjectManager::GetRef();
    for (auto _ : state)
        benchmark::DoNotOptimize(objects.DrawObjects(nullptr));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kObjects);
}
BENCHMARK(DrawObjects)->Unit(benchmark::kMillisecond);

// The same values written straight into the parameters, then the same effect and draw calls.
void DrawRawLoop(benchmark::State& state)
{
    SmallScene small;
    LxEffect& effect = *small.effect;
    LxEffectTechnique* technique = effect.GetTechnique("Lit");
    const LxVertexStreamDecl* stream = effect.GetVertexStreamDecl("Vertices");
    LxEffectParameter* world = effect.GetParameter("mWorld");
    LxEffectParameter* boxMin = effect.GetParameter("vBoxMin");
    LxEffectParameter* boxMax = effect.GetParameter("vBoxMax");
    const LxCountedPtr<LxGPUVertexBuffer> noBuffer;
    const LxCountedPtr<LxGPUIndexBuffer> noIndices;
    LxRenderManager& renderer = LxRenderManager::GetRef();
    LxEffectManager::GetRef().EnableAppUpdates(false);
    for (auto _ : state)
    {
        for (LxAnimatedModel* model : small.models)
        {
            LxMatrix4 m;
            model->GetWorldTransform(&m);
            std::memcpy(world->GetDataPtr(), m.GetData(), 16 * sizeof(float));
            LxBoundingBox box;
            model->GetBoundingVolume().Transform(m, &box);
            const float lo[4] = {box.GetMin().x, box.GetMin().y, box.GetMin().z, 1.0f};
            const float hi[4] = {box.GetMax().x, box.GetMax().y, box.GetMax().z, 1.0f};
            std::memcpy(boxMin->GetDataPtr(), lo, sizeof lo);
            std::memcpy(boxMax->GetDataPtr(), hi, sizeof hi);
            effect.BindIndexBuffer(noIndices);
            effect.BindVertexBuffer(stream, noBuffer);
            unsigned int passes = 0;
            effect.Begin(technique, &passes);
            effect.BeginPass(0);
            renderer.DrawIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 6, 0, 0);
            effect.EndPass();
            effect.End();
        }
    }
    LxEffectManager::GetRef().EnableAppUpdates(true);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kObjects);
}
BENCHMARK(DrawRawLoop)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
