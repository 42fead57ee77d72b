#include "ObjectManager/LxParticleGroup.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxImageData2D.h"
#include "Common/LxImageIO.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxQuat.h"
#include "EffectManager/LxEffectManager.h"
#include "GPUResourceManager/LxGPUResourceManager.h"
#include "ObjectManager/LxCameraManager.h"
#include "ObjectManager/LxKeyframeCurve.h"
#include "ObjectManager/LxObjectManager.h"
#include "ParticleSystem/LxParticleAnimationSet.h"
#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "ParticleSystem/LxParticleGroupLoader.h"
#include "ParticleSystem/LxParticleKeyFrameChannel.h"
#include "ParticleSystem/LxParticleSystemDesc.h"
#include "RenderManager/include/LxRenderManager.h"

#include <cstdint>
#include <cstring>
#include <memory>

namespace
{
const float kMaxStep = 0.25f;
const float kWarmUpStep = 1.0f / 30.0f;

// The group's animation set as the particle builder sees it: channels become float keyframe curves.
class CurveSetAdapter : public LxParticleAnimationSet
{
public:
    explicit CurveSetAdapter(LxAnimationSet& set) : m_set(set) {}
    bool HasCurve(const LxString& name) const override { return m_set.GetCurve(name) != nullptr; }
    bool AddCurve(const LxString& name, const LxParticleKeyFrameChannel& channel) override
    {
        LxKeyframeCurve* curve = new LxKeyframeCurve(LxAnimationCurve::DATA_FLOAT);
        LxCountedPtr<LxAnimationCurve> shared(curve);
        for (unsigned int i = 0; i < channel.GetKeyCount(); ++i)
            if (!curve->AddKey(channel.GetKeyTime(i), channel.GetKeyValue(i)))
                return false;
        m_set.RemoveCurve(name);
        return m_set.AddCurve(name, shared);
    }

private:
    LxAnimationSet& m_set;
};

// Animated transforms read the group's curves: a matrix curve as it is, a vector curve as a translation, a
// quaternion curve as a rotation.
class TransformCurves : public LxParticleSimulator::CurveSource
{
public:
    explicit TransformCurves(const LxAnimationSet& set) : m_set(set) {}
    bool EvaluateTransform(const LxString& name, float time, LxMatrix4* out) const override
    {
        LxCountedPtr<LxAnimationCurve> curve = m_set.GetCurve(name);
        if (!curve)
            return false;
        switch (curve->GetDataType())
        {
        case LxAnimationCurve::DATA_MATRIX:
            return curve->GetValueMatrix(time, out);
        case LxAnimationCurve::DATA_VEC3:
        {
            LxVector3 t;
            if (!curve->GetValueVec3(time, &t))
                return false;
            out->MakeTranslation(t);
            return true;
        }
        case LxAnimationCurve::DATA_QUAT:
        {
            LxQuat q;
            if (!curve->GetValueQuat(time, &q))
                return false;
            *out = q.ToRotationMatrix();
            return true;
        }
        default:
            return false;
        }
    }

private:
    const LxAnimationSet& m_set;
};

// A PNG of the particle archive as a 2D RGBA8 texture (grey becomes grey, a missing alpha opaque); null after
// logging when the file cannot be read or decoded, or the resource manager makes nothing.
LxCountedPtr<LxGPUTexture2DArray> LoadParticleTexture(const LxArchive& archive, const LxString& file)
{
    std::unique_ptr<LxFile> in(archive.OpenFile(file, "rb"));
    LxCountedPtr<LxMemoryBuffer> bytes(in ? LxFile::ReadFileToMemoryBuffer(*in) : nullptr);
    LxImageData2D image;
    if (!bytes || !LxImageIO::LoadPNGFromMemory(bytes->GetData(), bytes->GetSize(), file, &image) ||
        image.GetNumChannels() < 1 || image.GetNumChannels() > 4)
        return LxCountedPtr<LxGPUTexture2DArray>();
    const unsigned width = image.GetWidth(), height = image.GetHeight(), channels = image.GetNumChannels();
    LxCountedPtr<LxMemoryBuffer> texels(LxMemoryBuffer::Allocate(width * height * 4));
    unsigned char* out = texels->GetData();
    auto byte = [](double v) { return static_cast<unsigned char>(v <= 0.0 ? 0 : v >= 1.0 ? 255 : v * 255.0 + 0.5); };
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x, out += 4)
        {
            const double* p = image.GetPixel(x, y);
            const bool grey = channels < 3;
            out[0] = byte(p[0]);
            out[1] = byte(grey ? p[0] : p[1]);
            out[2] = byte(grey ? p[0] : p[2]);
            out[3] = channels == 2 ? byte(p[1]) : channels == 4 ? byte(p[3]) : 255;
        }
    return LxGPUResourceManager::GetRef().CreateTexture2DArray(LxGPUResource::GPU_RESOURCE_STATIC, width, height,
                                                               LX_FORMAT_R8G8B8A8_UNORM, LxGPUTexture::MIP_NONE, 1, 1,
                                                               LxGPUResource::BIND_SHADER_RESOURCE, 0, texels, file);
}

// Loads each system's effect through the effect manager while the file is built.
class EffectLoadingBuilder : public LxParticleBuilder
{
public:
    bool LoadShader(const LxString& effectFile) override
    {
        if (effectFile.IsEmpty())
            return false;
        LxCountedPtr<LxEffect> effect = LxEffectManager::GetRef().LoadEffect(effectFile);
        if (!effect)
            return false;
        for (const Loaded& l : loaded)
            if (l.file == effectFile)
                return true;
        loaded.Add(Loaded{effectFile, effect});
        return true;
    }
    // Each file of the archive is made a texture once, whichever systems use it.
    bool CreateTexture(const LxArchive& archive, const LxString& file, const LxParticleSystemDesc&) override
    {
        for (const LxParticleGroup::TextureFile& t : textures)
            if (t.file == file)
                return true;
        LxCountedPtr<LxGPUTexture2DArray> texture = LoadParticleTexture(archive, file);
        if (!texture)
            return false;
        textures.Add(LxParticleGroup::TextureFile{file, texture});
        return true;
    }
    LxCountedPtr<LxEffect> Find(const LxString& file) const
    {
        for (const Loaded& l : loaded)
            if (l.file == file)
                return l.effect;
        return LxCountedPtr<LxEffect>();
    }

    struct Loaded
    {
        LxString file;
        LxCountedPtr<LxEffect> effect;
    };
    LxArray<Loaded> loaded;
    LxArray<LxParticleGroup::TextureFile> textures;
};
} // namespace

LxParticleGroup::LxParticleGroup(const LxString& name) : LxObject(name), m_pCurves(new TransformCurves(m_animations)) {}

LxParticleGroup::~LxParticleGroup()
{
    DeleteSystems();
    delete m_pDesc;
    delete m_pCurves;
}

LxParticleGroup* LxParticleGroup::Create(const LxString& name, const LxString& path, const LxAnimationSet* animations)
{
    LxParticleGroup* group = new LxParticleGroup(name);
    if (animations)
        group->m_animations.AddCurvesFromSet(*animations);
    LxParticleGroupDesc* desc = nullptr;
    LxArray<LxCountedPtr<LxEffect>> effects;
    LxArray<TextureFile> textures;
    if (!group->Load(path, group->m_animations, &desc, effects, textures))
    {
        delete group;
        return nullptr;
    }
    group->Adopt(desc, effects, textures);
    return group;
}

bool LxParticleGroup::Load(const LxString& path, LxAnimationSet& animations, LxParticleGroupDesc** desc,
                           LxArray<LxCountedPtr<LxEffect>>& effects, LxArray<TextureFile>& textures) const
{
    CurveSetAdapter adapter(animations);
    EffectLoadingBuilder builder;
    builder.SetAnimationSet(&adapter);
    LxParticleGroupDesc* loaded = LxParticleGroupLoader::Load(path, builder);
    if (!loaded)
        return false;
    for (unsigned int i = 0; i < loaded->GetSystemCount(); ++i)
        effects.Add(builder.Find(loaded->GetSystem(i).GetEffectFile()));
    textures = builder.textures;
    *desc = loaded;
    return true;
}

void LxParticleGroup::Adopt(LxParticleGroupDesc* desc, const LxArray<LxCountedPtr<LxEffect>>& effects,
                            const LxArray<TextureFile>& textures)
{
    DeleteSystems();
    delete m_pDesc;
    m_pDesc = desc;
    for (unsigned int i = 0; i < desc->GetSystemCount(); ++i)
    {
        System s;
        s.simulator = new LxParticleSimulator(desc->GetSystem(i), m_nSeed + i);
        s.simulator->SetCurveSource(m_pCurves);
        s.effect = effects[i];
        s.bufferCapacity = 0;
        s.framesSkipped = 0;
        s.pendingTime = 0.0f;
        s.stepsSinceBounds = 0;
        BindTextures(s, desc->GetSystem(i), textures);
        m_systems.Add(s);
    }
    m_bHaveTime = false;
    RefreshBounds();
}

void LxParticleGroup::BindTextures(System& s, const LxParticleSystemDesc& desc, const LxArray<TextureFile>& textures)
{
    if (!s.effect)
        return;
    for (unsigned int t = 0; t < desc.GetTextureSetCount(); ++t)
    {
        const LxParticleTextureSet& set = desc.GetTextureSet(t);
        for (unsigned int i = 0; i < set.GetSlotCount(); ++i)
        {
            const LxTextureSlot* slot = s.effect->GetTextureSlot(set.GetSlot(i).slot);
            if (!slot)
            {
                LX_WARNING("LxParticleGroup.  The effect of particle system %s has no texture slot %s; %s is not bound",
                           desc.GetName().c_str(), set.GetSlot(i).slot.c_str(), set.GetSlot(i).file.c_str());
                continue;
            }
            for (const TextureFile& f : textures)
                if (f.file == set.GetSlot(i).file && f.texture)
                    s.textures.Add(TextureBinding{slot, f.texture});
        }
    }
}

void LxParticleGroup::DeleteSystems()
{
    for (System& s : m_systems)
        delete s.simulator;
    m_systems.Clear();
}

void LxParticleGroup::Restart()
{
    for (unsigned int i = 0; i < m_systems.GetCount(); ++i)
    {
        System& s = m_systems[i];
        s.simulator->Reset(m_nSeed + i);
        s.framesSkipped = 0;
        s.pendingTime = 0.0f;
        s.stepsSinceBounds = 0;
        s.bounds.SetEmpty();
    }
    m_bHaveTime = false;
    RefreshBounds();
}

bool LxParticleGroup::Reload(const LxString& path)
{
    LxAnimationSet animations;
    animations.AddCurvesFromSet(m_animations);
    LxParticleGroupDesc* desc = nullptr;
    LxArray<LxCountedPtr<LxEffect>> effects;
    LxArray<TextureFile> textures;
    if (!Load(path, animations, &desc, effects, textures))
        return false;
    m_animations.Clear();
    m_animations.AddCurvesFromSet(animations);
    Adopt(desc, effects, textures);
    NotifyListenersOfReload();
    return true;
}

bool LxParticleGroup::GetWorldTransform(LxMatrix4* out) const
{
    *out = m_world;
    return true;
}

bool LxParticleGroup::SetVisible(bool visible)
{
    m_bVisible = visible;
    return true;
}

void LxParticleGroup::StepSystem(System& s, float dt)
{
    const LxParticleSystemDesc& desc = s.simulator->GetDesc();
    s.pendingTime += dt;
    if (s.framesSkipped < desc.GetSimulationSkip())
    {
        ++s.framesSkipped;
        return;
    }
    s.framesSkipped = 0;
    s.simulator->Step(s.pendingTime > kMaxStep ? kMaxStep : s.pendingTime);
    s.pendingTime = 0.0f;
    if (s.stepsSinceBounds++ >=
        static_cast<unsigned int>(desc.GetBoundingBoxSkip() > 0 ? desc.GetBoundingBoxSkip() : 0))
    {
        s.stepsSinceBounds = 0;
        s.bounds = s.simulator->ComputeBounds();
    }
}

void LxParticleGroup::RefreshBounds()
{
    LxBoundingBox box;
    for (const System& s : m_systems)
        if (!s.bounds.IsEmpty())
            box.AddBox(s.bounds);
    SetBoundingVolume(box);
}

bool LxParticleGroup::GetCameraFrame(LxMatrix4* frame, LxVector3* right, LxVector3* up) const
{
    const LxCameraManager* cameras = LxCameraManager::GetExistingPtr();
    const LxCamera* camera = cameras ? cameras->GetActiveCamera() : nullptr;
    if (!camera)
        return false;
    LxMatrix4 world;
    const LxPoint3& p = camera->GetPosition();
    world.SetColumn(0, LxVector4(camera->GetRight().x, camera->GetRight().y, camera->GetRight().z, 0.0f));
    world.SetColumn(1, LxVector4(camera->GetUp().x, camera->GetUp().y, camera->GetUp().z, 0.0f));
    world.SetColumn(2, LxVector4(camera->GetView().x, camera->GetView().y, camera->GetView().z, 0.0f));
    world.SetColumn(3, LxVector4(p.x, p.y, p.z, 1.0f));
    LxMatrix4 inverse;
    *frame = m_world.Inverse(&inverse) ? inverse * world : world;
    if (right)
        *right = frame->TransformVector(LxVector3(1, 0, 0)).Normalized();
    if (up)
        *up = frame->TransformVector(LxVector3(0, 1, 0)).Normalized();
    return true;
}

void LxParticleGroup::UpdateObject(double time)
{
    LxMatrix4 camera;
    if (GetCameraFrame(&camera, nullptr, nullptr))
        for (System& s : m_systems)
            s.simulator->SetCamera(camera);
    if (!m_bHaveTime)
    {
        m_bHaveTime = true;
        for (System& s : m_systems)
        {
            for (float t = 0.0f; t + 0.5f * kWarmUpStep < s.simulator->GetDesc().GetWarmUp(); t += kWarmUpStep)
                s.simulator->Step(kWarmUpStep);
            s.bounds = s.simulator->ComputeBounds();
        }
    }
    else
    {
        double dt = time - m_lastTime;
        if (dt > kMaxStep)
            dt = kMaxStep;
        if (dt > 0.0)
            for (System& s : m_systems)
                // A system that was culled at the last draw stands still (its time is not carried over) unless
                // it asks to be updated anyway.
                if (!m_bCulled || s.simulator->GetDesc().GetUpdateWhenCulled())
                    StepSystem(s, static_cast<float>(dt));
    }
    m_lastTime = time;
    RefreshBounds();
    NotifyListenersOfUpdate(time);
}

bool LxParticleGroup::Draw(const LxFrustum* cullFrustum)
{
    m_bCulled = cullFrustum && !IntersectsFrustum(*cullFrustum);
    if (!m_bVisible || m_bCulled)
        return false;
    // Camera axes and position, brought into the group's space (world axes, no sorting, without a camera).
    LxVector3 right(1, 0, 0), up(0, 1, 0);
    LxMatrix4 camera;
    const bool haveCamera = GetCameraFrame(&camera, &right, &up);
    const LxVector3 eye = camera.GetTranslation();
    LxObjectManager& objects = LxObjectManager::GetRef();
    LxObject* previous = objects.GetObjectBeingDrawn();
    objects.SetObjectBeingDrawn(this);
    bool drew = false;
    for (System& s : m_systems)
        drew = DrawSystem(s, right, up, haveCamera ? &eye : nullptr) || drew;
    objects.SetObjectBeingDrawn(previous);
    return drew;
}

void LxParticleGroup::ApplyEffectParameters(System& s)
{
    const LxParticleSystemDesc& desc = s.simulator->GetDesc();
    const float time = s.simulator->GetTime();
    for (unsigned int i = 0; i < desc.GetEffectParameterCount(); ++i)
    {
        const LxParticleSystemDesc::EffectParameter& p = desc.GetEffectParameter(i);
        LxEffectParameter* target = s.effect->GetParameter(p.name);
        if (!target || (target->GetDataType() != LxEffectParameter::TYPE_FLOAT &&
                        target->GetDataType() != LxEffectParameter::TYPE_VECTOR))
            continue;
        float values[4] = {0.0f, 0.0f, 0.0f, 0.0f};
        const unsigned int count = p.parameter.GetComponentCount() < 4 ? p.parameter.GetComponentCount() : 4;
        for (unsigned int c = 0; c < count; ++c)
        {
            switch (p.parameter.GetKind())
            {
            case LX_PARTICLE_PARAM_FIXED:
                values[c] = p.parameter.GetFixed(c);
                break;
            case LX_PARTICLE_PARAM_KEYFRAME:
            case LX_PARTICLE_PARAM_KEYFRAMED_NON_UNIFORM:
            {
                const LxParticleKeyFrameChannel* channel = p.parameter.GetComponentChannel(c);
                values[c] = channel ? channel->Evaluate(time) : 0.0f;
                break;
            }
            default:
                // Random kinds have no single value per draw: the middle of their range.
                values[c] = 0.5f * (p.parameter.GetMinimum(c) + p.parameter.GetMaximum(c));
                break;
            }
        }
        const unsigned int size =
            target->GetParameterSize() < sizeof values ? target->GetParameterSize() : sizeof values;
        target->SetRawValue(values, size);
    }
}

bool LxParticleGroup::DrawSystem(System& s, const LxVector3& right, const LxVector3& up, const LxVector3* eye)
{
    s.vertices.Clear();
    if (eye)
        s.simulator->BuildBillboards(right, up, *eye, s.vertices);
    else
        s.simulator->BuildBillboards(right, up, s.vertices);
    if (s.vertices.IsEmpty() || !s.effect)
        return false;
    LxEffect& effect = *s.effect;
    const unsigned int count = s.vertices.GetCount();
    if (count > s.bufferCapacity)
    {
        // Grown by half again so that a growing system does not make a buffer every frame.
        const unsigned int capacity = count + count / 2;
        s.buffer = LxGPUResourceManager::GetRef().CreateResourceVertex(
            LxGPUResource::GPU_RESOURCE_DYNAMIC, sizeof(LxParticleSimulator::Vertex), capacity,
            LxCountedPtr<LxMemoryBuffer>(), LxGPUResource::BIND_VERTEX_BUFFER, LxGPUResource::CPU_ACCESS_WRITE);
        s.bufferCapacity = s.buffer ? capacity : 0;
    }
    if (s.buffer)
    {
        if (const unsigned long long address = s.buffer->Map(LxGPUResource::MAP_WRITE_DISCARD))
        {
            std::memcpy(reinterpret_cast<void*>(static_cast<uintptr_t>(address)), s.vertices.GetData(),
                        count * sizeof(LxParticleSimulator::Vertex));
            s.buffer->Unmap();
        }
    }
    if (effect.GetNumVertexStreamDecls() > 0)
        effect.BindVertexBuffer(effect.GetVertexStreamDecl(0u), s.buffer);
    ApplyEffectParameters(s);
    // The view is asked of the slot at each draw, not kept from load time: a kept view need not resolve to a
    // descriptor any more when the frame binds it, and the resource answers with a current one.
    for (const TextureBinding& b : s.textures)
        effect.BindTexture(b.slot, b.slot->CreateView(*b.texture));
    LxEffectTechnique* technique = effect.FindTechnique(0);
    unsigned int passes = 0;
    if (!technique || !effect.Begin(technique, &passes))
        return false;
    LxRenderManager& renderer = LxRenderManager::GetRef();
    LxObjectManager& objects = LxObjectManager::GetRef();
    bool drew = true;
    for (unsigned int p = 0; p < passes; ++p)
    {
        if (!effect.BeginPass(p))
        {
            drew = false;
            continue;
        }
        renderer.DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, count, 0);
        objects.TrackDraw(*this, false, LxRenderManager::PRIM_TRIANGLE_LIST);
        effect.EndPass();
    }
    effect.End();
    return drew;
}
