#include "ObjectManager/LxAnimatedModel.h"

#include "Common/LxBoundingSphere.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxBoneAnimator.h"
#include "ObjectManager/LxModel.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxObjectManager.h"
#include "ObjectManager/LxSkeleton.h"

#include <cstring>

LxAnimatedModel::LxAnimatedModel(const LxString& name, const LxCountedPtr<LxModel>& model, LxAnimationSet* animations)
    : LxObject(name), m_model(model)
{
    if (animations)
    {
        m_animations.AddCurvesFromSet(*animations);
        delete animations;
    }
    SetBoundingVolume(m_model->GetStaticBoundingBox());
    RebuildAnimators();
}

LxAnimatedModel::~LxAnimatedModel()
{
    for (LxBoneAnimator* a : m_animators)
        delete a;
}

bool LxAnimatedModel::GetWorldTransform(LxMatrix4* out) const
{
    *out = m_world;
    return true;
}

bool LxAnimatedModel::SetVisible(bool visible)
{
    m_bVisible = visible;
    return true;
}

bool LxAnimatedModel::GetStaticBoundingBox(LxPoint3* min, LxPoint3* max) const
{
    const LxBoundingBox& box = m_model->GetStaticBoundingBox();
    if (box.IsEmpty())
        return false;
    *min = box.GetMin();
    *max = box.GetMax();
    return true;
}

bool LxAnimatedModel::GetStaticBoundingSphere(LxPoint3* center, float* radius) const
{
    const LxBoundingBox& box = m_model->GetStaticBoundingBox();
    if (box.IsEmpty())
        return false;
    const LxBoundingSphere sphere(box);
    *center = sphere.GetCenter();
    *radius = sphere.GetRadius();
    return true;
}

void LxAnimatedModel::RebuildAnimators()
{
    for (LxBoneAnimator* a : m_animators)
        delete a;
    m_animators.Clear();
    m_restPose.Clear();
    const LxSkeleton* skeleton = m_model->GetSkeleton();
    const unsigned int bones = skeleton ? skeleton->GetNumBones() : 0;
    for (unsigned int i = 0; i < bones; ++i)
    {
        const LxBone& bone = *skeleton->GetBoneByIndex(i);
        // A bone's rest world transform undoes its bind offset; relative to its parent that is the parent's offset
        // followed by the bone's rest transform.
        LxMatrix4 restWorld;
        if (!bone.GetMatrix().Inverse(&restWorld))
            restWorld.MakeIdentity();
        const int parent = skeleton->GetParentIndex(i);
        m_restPose.Add(parent >= 0 ? skeleton->GetBoneByIndex(parent)->GetMatrix() * restWorld : restWorld);

        const LxString prefix = LxString("bone.") + bone.GetName();
        const bool animated = m_animations.GetCurve(prefix) || m_animations.GetCurve(prefix + ".translate") ||
                              m_animations.GetCurve(prefix + ".rotate") || m_animations.GetCurve(prefix + ".scale");
        m_animators.Add(animated ? LxBoneAnimator::Create(bone, m_animations) : nullptr);
    }
    m_palette.Clear();
    PoseSkeleton(m_fAnimationTime, m_palette);
    m_lastPalette = m_palette;
}

void LxAnimatedModel::PoseSkeleton(float t, LxArray<LxMatrix4>& out) const
{
    const LxSkeleton* skeleton = m_model->GetSkeleton();
    if (!skeleton)
        return;
    LxArray<LxMatrix4>& pose = m_scratch;
    pose.Clear();
    for (unsigned int i = 0; i < m_restPose.GetCount(); ++i)
    {
        if (m_animators[i])
        {
            LxMatrix4 m;
            m_animators[i]->GetTransform(t, &m);
            pose.Add(m);
        }
        else
            pose.Add(m_restPose[i]);
    }
    skeleton->ConvertBonesToWorldSpace(pose);
    for (const LxMatrix4& m : pose)
        out.Add(m);
}

void LxAnimatedModel::UpdateObject(double time)
{
    m_fAnimationTime = static_cast<float>(time) * m_fSpeed;
    m_lastPalette = m_palette;
    m_palette.Clear();
    PoseSkeleton(m_fAnimationTime, m_palette);
    NotifyListenersOfUpdate(time);
}

void LxAnimatedModel::WriteBone(const LxMatrix4& m, float* dst, bool rows4x3)
{
    if (rows4x3)
        m.GetRowMajor4x3(dst);
    else
        std::memcpy(dst, m.GetData(), 16 * sizeof(float));
}

bool LxAnimatedModel::HandleBoneAppUpdate(void* dst, unsigned int count, bool lastFrame, bool inverseTranspose,
                                          bool rows4x3)
{
    const LxArray<LxMatrix4>& palette = lastFrame ? m_lastPalette : m_palette;
    const unsigned int registers = rows4x3 ? 3 : 4;
    const unsigned int slots = count / registers;
    const LxArray<int>* map = nullptr;
    if (m_nChunkBeingDrawn >= 0)
    {
        const LxArray<int>& chunkMap =
            m_model->GetChunkDesc(static_cast<unsigned int>(m_nChunkBeingDrawn)).GetBoneMap();
        if (!chunkMap.IsEmpty())
            map = &chunkMap;
    }
    float* out = static_cast<float*>(dst);
    const LxMatrix4 identity;
    for (unsigned int j = 0; j < slots; ++j)
    {
        int bone = static_cast<int>(j);
        if (map)
            bone = j < map->GetCount() ? (*map)[j] : -1;
        const bool known = bone >= 0 && static_cast<unsigned int>(bone) < palette.GetCount();
        const LxMatrix4& m = known ? palette[static_cast<unsigned int>(bone)] : identity;
        if (inverseTranspose && known)
        {
            LxMatrix4 inverse;
            if (!m.Inverse(&inverse))
                inverse.MakeIdentity();
            WriteBone(inverse.Transpose(), out + 4 * registers * j, rows4x3);
        }
        else
            WriteBone(m, out + 4 * registers * j, rows4x3);
    }
    return true;
}

bool LxAnimatedModel::Draw(const LxFrustum* cullFrustum)
{
    if (!m_bVisible || (cullFrustum && !IntersectsFrustum(*cullFrustum)))
        return false;
    LxObjectManager& objects = LxObjectManager::GetRef();
    LxObject* previous = objects.GetObjectBeingDrawn();
    objects.SetObjectBeingDrawn(this);
    bool drew = false;
    LxModel& model = *m_model;
    const unsigned int chunks = model.GetChunkCount();
    for (unsigned int i = 0; i < chunks; ++i)
    {
        if (!model.IsChunkVisible(i, &m_animations, m_fAnimationTime))
            continue;
        m_nChunkBeingDrawn = static_cast<int>(i);
        drew = model.DrawChunk(i, this, &m_animations, m_fAnimationTime) || drew;
    }
    m_nChunkBeingDrawn = -1;
    objects.SetObjectBeingDrawn(previous);
    return drew;
}

void LxAnimatedModel::SetSourceFiles(const LxString& modelFile, long long modelStamp, const LxString& animationFile,
                                     long long animationStamp)
{
    m_modelFile = modelFile;
    m_nModelStamp = modelStamp;
    m_animationFile = animationFile;
    m_nAnimationStamp = animationStamp;
}

void LxAnimatedModel::ReplaceAnimations(const LxAnimationSet& animations)
{
    m_animations.Clear();
    m_animations.AddCurvesFromSet(animations);
}

void LxAnimatedModel::ReplaceModel(const LxCountedPtr<LxModel>& model)
{
    if (!model || model == m_model)
        return;
    m_model = model;
    SetBoundingVolume(m_model->GetStaticBoundingBox());
}

void LxAnimatedModel::EndReload()
{
    if (!m_bReloading)
        return;
    m_bReloading = false;
    RebuildAnimators();
    NotifyListenersOfReload();
}
