// Helpers of the scene-object tests and benchmarks: an effect manager whose passes "bind" the way the platform pass
// does on the CPU side (every application-updated parameter runs its handler), and a scene with the effect, object,
// camera and render managers set up over a folder: the render and resource managers are the device-less base classes
// (on either lane), draws are counted but never issued, so everything above the GPU runs without a device.
#pragma once

#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectManager.h"
#include "GPUResourceManager/LxGPUResourceManager.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxCameraManager.h"
#include "ObjectManager/LxKeyframeCurve.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelVB.h"
#include "ObjectManager/LxObjectManager.h"
#include "ObjectManager/LxSkeleton.h"
#include "RenderManager/include/LxRenderManager.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace LxSceneTest
{
class CpuPass : public LxEffectPass
{
public:
    using LxEffectPass::LxEffectPass;
    bool Bind(LxEffect& effect) override
    {
        for (unsigned int i = 0; i < effect.GetNumParameters(); ++i)
            effect.GetParameter(i)->ExecuteUpdateHandler();
        return true;
    }
};

class CpuBuilder : public LxEffectBuilder
{
public:
    LxEffectPass* CreatePass(const LxString& name, LxEffectTechnique* technique) override
    {
        return new CpuPass(name, technique);
    }
};

class CpuEffectManager : public LxEffectManager
{
protected:
    LxEffectBuilder* CreateEffectBuilder(bool) override { return new CpuBuilder(); }
};

const char* const kDefaultEffect = "Sampler DEFAULT_SAMPLER { Filter = MIN_MAG_MIP_LINEAR; }\n"
                                   "Technique DEFAULT_TECHNIQUE { Pass DEFAULT_PASS {\n"
                                   "  VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }\n";

// A skinning effect: a palette of four bones in every layout, the world transform and a bound.
const char* const kSkinEffect = "Matrix amBones[4] < AppUpdate = \"Bones\" >\n"
                                "Vector avBones[6] < AppUpdate = \"Bones4x3\" >\n"
                                "Matrix amLastBones[4] < AppUpdate = \"LastFrameBones\" >\n"
                                "Matrix amBonesIT[4] < AppUpdate = \"BonesInverseTranspose\" >\n"
                                "Matrix mWorld < AppUpdate = \"WorldTransform\" >\n"
                                "Vector vBoxMax < AppUpdate = \"BoundingBoxMax\" >\n"
                                "Stream Vertices { float3 POSITION, float2 TEXCOORD }\n"
                                "StreamMap Map { Vertices }\n"
                                "Technique Lit { Pass P { StreamMap = Map\n"
                                "  VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }\n";

// A particle effect: one stream of billboard corners and the world transform.
const char* const kParticleEffect = "Matrix mWorld < AppUpdate = \"WorldTransform\" >\n"
                                    "Vector vTint\n"
                                    "Stream Corners { float3 POSITION, float4 COLOR, float2 TEXCOORD }\n"
                                    "StreamMap Map { Corners }\n"
                                    "Technique Draw { Pass P { StreamMap = Map\n"
                                    "  VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }\n";

inline LxCountedPtr<LxMemoryBuffer> Buffer(const void* data, unsigned int size)
{
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(size);
    std::memcpy(buffer->GetData(), data, size);
    return LxCountedPtr<LxMemoryBuffer>(buffer);
}

// A unit quad (x and y in [-1, 1]) drawn by "skin.fx" with a two-bone skeleton: "root" at the origin and "tip" one
// unit up (bind offset: translation by -1 in y).
inline LxModelData* MakeQuadModel()
{
    LxModelData* model = new LxModelData();
    const float vertices[20] = {-1, -1, 0, 0, 1, 1, -1, 0, 1, 1, 1, 1, 0, 1, 0, -1, 1, 0, 0, 0};
    LxModelVB* vb = new LxModelVB("corners", "corners.vb", LxModelVBDesc{20, 4});
    vb->SetData(Buffer(vertices, sizeof vertices));
    model->GetManifest().AddModelDataItem(vb);
    const unsigned short indices[6] = {0, 1, 2, 0, 2, 3};
    LxModelIB* ib = new LxModelIB("indices", "indices.ib", LxModelIBDesc{2, 6});
    ib->SetData(Buffer(indices, sizeof indices));
    model->GetManifest().AddModelDataItem(ib);
    LxModelChunkDesc* chunk = new LxModelChunkDesc("quad");
    chunk->SetIBName("indices");
    chunk->SetIndexRange(0, 6);
    chunk->SetVertexRange(0, 4);
    chunk->SetEffectFile("skin.fx");
    chunk->SetTechnique("Lit");
    chunk->AddVBMapping("Vertices", "corners");
    model->AddChunkDesc(chunk);
    LxSkeleton* skeleton = new LxSkeleton();
    skeleton->AddBone(LxBone("root", LxMatrix4()), LxString());
    LxMatrix4 offset;
    offset.MakeTranslation(0.0f, -1.0f, 0.0f);
    skeleton->AddBone(LxBone("tip", offset), "root");
    model->SetSkeleton(skeleton);
    return model;
}

// Over a folder that exists (searched by the effect and object managers): the CPU effect manager with its
// default effect, the object and camera managers registered as update-handler factories, draw blocking on.
class Scene
{
public:
    explicit Scene(const std::string& folder)
    {
        dir = folder;
        // The device-less base classes, also where the platform library registered its own managers.
        LxGPUResourceManager::SetCreateFunction(nullptr);
        LxRenderManager::SetCreateFunction(nullptr);
        LxEffectManager::Init(new CpuEffectManager());
        LxEffectManager::GetRef().AddSearchPath(dir.c_str());
        Write("default.fx", kDefaultEffect);
        Write("skin.fx", kSkinEffect);
        Write("particles.fx", kParticleEffect);
        LxEffectManager::GetRef().SetDefaultEffect(
            LxEffectManager::GetRef().LoadEffect("default.fx", LxEffectManager::LOAD_DEFAULT_EFFECT));
        LxObjectManager::GetRef().Initialize();
        LxObjectManager::GetRef().AddSearchPath(dir.c_str());
        LxCameraManager::GetRef().Initialize();
        LxRenderManager::GetRef().SetDrawBlocking(true);
    }
    ~Scene()
    {
        LxObjectManager::ShutDown();
        LxCameraManager::ShutDown();
        LxEffectManager::ShutDown();
        LxRenderManager::ShutDown();
        LxGPUResourceManager::ShutDown();
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // Creates the folders on the way.
    void Write(const std::string& name, const std::string& text) const
    {
        const std::filesystem::path path(dir + "/" + name);
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    std::string Path(const std::string& name) const { return dir + "/" + name; }

    std::string dir;
};
} // namespace LxSceneTest
