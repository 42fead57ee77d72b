// Loading a model archive from a zip file through LxModelData (manifest, chunk descriptions, skeleton, meta file
// and every item file through the serializer) against reading the same entries with raw minizip calls (open the
// zip once, locate each entry, inflate it whole into a buffer), measured in the same run.
//
// The model: a 64,000-vertex VB of 32-byte vertices (2 MB), a 96,000-index IB, a 512x512 RGBA8 texture (1 MB),
// a 256 KB binary ADB, 16 chunks with parameter settings and a 64-bone skeleton. The data is mesh-like (smooth
// positions, noisy low bits), so it deflates about as real exports do.
#include "Common/LxMemoryBuffer.h"
#include "ObjectManager/LxADBWriter.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"
#include "ObjectManager/LxSkeleton.h"

#include <benchmark/benchmark.h>
#include <minizip/unzip.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
LxCountedPtr<LxMemoryBuffer> Block(const std::vector<unsigned char>& bytes)
{
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(static_cast<unsigned int>(bytes.size()));
    std::memcpy(buffer->GetData(), bytes.data(), bytes.size());
    return LxCountedPtr<LxMemoryBuffer>(buffer);
}

template <class T>
std::vector<unsigned char> Bytes(const std::vector<T>& values)
{
    std::vector<unsigned char> b(values.size() * sizeof(T));
    std::memcpy(b.data(), values.data(), b.size());
    return b;
}

const std::string& ModelZip()
{
    static std::string path;
    if (!path.empty())
        return path;
    path = (std::filesystem::temp_directory_path() /
            ("lumex-model-bench-" + std::to_string(std::random_device{}()) + ".zip"))
               .string();
    std::mt19937 rng(11);
    std::uniform_real_distribution<float> noise(-0.001f, 0.001f);
    LxModelData model;
    LxModelDataManifest& manifest = model.GetManifest();

    const unsigned int vertices = 64000;
    std::vector<float> vb;
    for (unsigned int i = 0; i < vertices; ++i)
    {
        const float a = static_cast<float>(i) * 0.01f;
        const float v[8] = {std::cos(a) + noise(rng),
                            std::sin(a) + noise(rng),
                            a * 0.001f,
                            0.0f,
                            0.0f,
                            1.0f,
                            static_cast<float>(i % 256) / 255.0f,
                            static_cast<float>(i / 256) / 255.0f};
        vb.insert(vb.end(), v, v + 8);
    }
    LxModelVB* vertexBuffer = new LxModelVB("vertices", "vertices.vb", LxModelVBDesc{32, vertices});
    vertexBuffer->SetData(Block(Bytes(vb)));
    manifest.AddModelDataItem(vertexBuffer);

    std::vector<unsigned int> ib;
    for (unsigned int i = 0; i < 96000; ++i)
        ib.push_back((i / 3 + i % 3) % vertices);
    LxModelIB* indexBuffer = new LxModelIB("indices", "indices.ib", LxModelIBDesc{4, 96000});
    indexBuffer->SetData(Block(Bytes(ib)));
    manifest.AddModelDataItem(indexBuffer);

    std::vector<unsigned char> texels(512 * 512 * 4);
    for (size_t i = 0; i < texels.size(); ++i)
        texels[i] = static_cast<unsigned char>((i / 4 % 512) ^ (i / 2048) ^ (rng() & 7));
    LxModelTextureDesc desc;
    desc.width = desc.height = 512;
    desc.depth = desc.mipLevels = desc.arraySize = 1;
    desc.format = 28;
    LxModelTexture* texture = new LxModelTexture("diffuse", "diffuse.tex", desc);
    texture->SetData(Block(texels));
    manifest.AddModelDataItem(texture);

    LxADBWriter writer;
    for (int i = 0; i < 65536; ++i)
    {
        const float key = std::sin(static_cast<float>(i) * 0.001f);
        writer.WriteData(&key, 4);
    }
    manifest.AddModelDataItem(writer.FinalizeADB("animation", "BoneAnimation", 1));

    for (unsigned int c = 0; c < 16; ++c)
    {
        LxModelChunkDesc* chunk = new LxModelChunkDesc(("chunk" + std::to_string(c)).c_str());
        chunk->SetIBName("indices");
        chunk->SetIndexRange(c * 6000, (c + 1) * 6000);
        chunk->SetVertexRange(0, vertices);
        chunk->SetEffectFile("skinned.fx");
        chunk->SetTechnique("Lit");
        chunk->AddVBMapping("VERTEX", "vertices");
        chunk->AddTexMapping("DiffuseMap", "diffuse");
        LxParameterSetting tint("Tint", LxEffectParameter::TYPE_VECTOR, 1);
        const float values[4] = {1.0f, 0.5f, 0.25f, 1.0f};
        unsigned int words[4];
        std::memcpy(words, values, sizeof(words));
        tint.SetValues(words);
        chunk->AddParameterSetting(tint);
        model.AddChunkDesc(chunk);
    }
    LxSkeleton* skeleton = new LxSkeleton;
    for (int b = 0; b < 64; ++b)
    {
        LxMatrix4 m;
        m.MakeTranslation(0.0f, static_cast<float>(b), 0.0f);
        skeleton->AddBone(LxBone(("bone" + std::to_string(b)).c_str(), m),
                          b ? ("bone" + std::to_string(b - 1)).c_str() : "");
    }
    model.SetSkeleton(skeleton);
    model.GetMetaFile().AddEntry("generator LxModelDataBench");
    if (!model.SaveToPath(path.c_str()))
        std::abort();
    std::atexit([] { std::remove(ModelZip().c_str()); });
    return path;
}

void BM_LoadThroughModelData(benchmark::State& state)
{
    const LxString path = ModelZip().c_str();
    for (auto _ : state)
    {
        std::unique_ptr<LxModelData> model(LxModelData::LoadFromPath(path, true));
        if (!model)
            state.SkipWithError("load failed");
        benchmark::DoNotOptimize(model.get());
    }
}
BENCHMARK(BM_LoadThroughModelData)->Unit(benchmark::kMillisecond);

void BM_Baseline_RawMinizip(benchmark::State& state)
{
    const std::string path = ModelZip();
    for (auto _ : state)
    {
        unzFile uf = unzOpen64(path.c_str());
        size_t total = 0;
        for (int err = unzGoToFirstFile(uf); err == UNZ_OK; err = unzGoToNextFile(uf))
        {
            unz_file_info64 info;
            unzGetCurrentFileInfo64(uf, &info, nullptr, 0, nullptr, 0, nullptr, 0);
            std::unique_ptr<unsigned char[]> data(new unsigned char[info.uncompressed_size + 1]);
            unzOpenCurrentFile(uf);
            total += static_cast<size_t>(
                unzReadCurrentFile(uf, data.get(), static_cast<unsigned int>(info.uncompressed_size)));
            unzCloseCurrentFile(uf);
            benchmark::DoNotOptimize(data.get());
        }
        unzClose(uf);
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(BM_Baseline_RawMinizip)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
