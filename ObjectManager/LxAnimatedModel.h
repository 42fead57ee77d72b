// LxAnimatedModel: a model placed in the scene: an LxModel with a world transform, visibility, and an animation set
// whose bone curves pose the model's skeleton.
//
// Posing (UpdateObject): each bone with curves in the set ("bone.NAME..." as LxBoneAnimator reads them) takes its
// parent-relative transform from its animator at the animation time; a bone without curves keeps its rest pose (the
// parent-relative transform its bind offsets imply), so an unanimated skeleton gives identity skinning matrices.
// The skeleton then converts them to skinning matrices (LxSkeleton::ConvertBonesToWorldSpace). The palette of the
// previous update is kept for the "LastFrame..." app-updates; before the first update both are the pose at time 0.
//
// Bone app-updates answer the palette of the chunk being drawn: through the chunk's bone map when it has one
// (palette entry j is skeleton bone map[j]; an index outside the skeleton gives identity), else in skeleton order.
//
// Reloading: the object manager calls StartReload, ReplaceAnimations and/or ReplaceModel, then EndReload, which
// rebuilds the animators and tells the listeners.
//
// Ownership: shares its model (objects of one model file share one LxModel) and owns its animation set (whose curves
// may be shared). Frame thread only.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMatrix4.h"
#include "Common/LxString.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxObject.h"

class LxBoneAnimator;
class LxModel;

class LX_API LxAnimatedModel : public LxObject
{
public:
    // Shares `model` (not null); takes ownership of `animations` (null: no animation).
    LxAnimatedModel(const LxString& name, const LxCountedPtr<LxModel>& model, LxAnimationSet* animations);
    ~LxAnimatedModel() override;

    ObjectType GetObjectType() const override { return OBJECT_ANIMATED_MODEL; }
    LxModel& GetModel() const { return *m_model; }
    const LxCountedPtr<LxModel>& GetSharedModel() const { return m_model; }
    LxAnimationSet& GetAnimationSet() { return m_animations; }
    const LxAnimationSet& GetAnimationSet() const { return m_animations; }

    // --- placement and visibility -------------------------------------------------------------------------------
    void SetWorldTransform(const LxMatrix4& world)
    {
        m_world = world;
        WorldTransformChanged();
    }
    bool GetWorldTransform(LxMatrix4* out) const override;
    bool HasWorldTransform() const override { return true; }
    bool IsVisible() const override { return m_bVisible; }
    bool SetVisible(bool visible) override;
    bool GetStaticBoundingBox(LxPoint3* min, LxPoint3* max) const override;
    bool GetStaticBoundingSphere(LxPoint3* center, float* radius) const override;

    // --- animation ----------------------------------------------------------------------------------------------
    // The animation time is the update time times the speed (1 by default).
    void SetAnimationSpeed(float speed) { m_fSpeed = speed; }
    float GetAnimationTime() const { return m_fAnimationTime; }
    void UpdateObject(double time) override;
    // The skinning matrices at animation time `t`, one per skeleton bone, appended to `out`.
    void PoseSkeleton(float t, LxArray<LxMatrix4>& out) const;
    const LxArray<LxMatrix4>& GetBonePalette() const { return m_palette; }
    const LxArray<LxMatrix4>& GetLastFrameBonePalette() const { return m_lastPalette; }
    bool HandleBoneAppUpdate(void* dst, unsigned int count, bool lastFrame, bool inverseTranspose,
                             bool rows4x3) override;

    // --- drawing ------------------------------------------------------------------------------------------------
    // Every visible chunk, with this object set as the one being drawn.
    bool Draw(const LxFrustum* cullFrustum) override;
    // The chunk being drawn, or -1.
    int GetChunkBeingDrawn() const { return m_nChunkBeingDrawn; }

    // --- reloading (object manager) -----------------------------------------------------------------------------
    const LxString& GetModelFile() const { return m_modelFile; }
    const LxString& GetAnimationFile() const { return m_animationFile; }
    void SetSourceFiles(const LxString& modelFile, long long modelStamp, const LxString& animationFile,
                        long long animationStamp);
    long long GetModelTimeStamp() const { return m_nModelStamp; }
    long long GetAnimationTimeStamp() const { return m_nAnimationStamp; }
    void SetModelTimeStamp(long long stamp) { m_nModelStamp = stamp; }
    void SetAnimationTimeStamp(long long stamp) { m_nAnimationStamp = stamp; }
    void StartReload() { m_bReloading = true; }
    // Clears the set and adds the curves of `animations` (shared).
    void ReplaceAnimations(const LxAnimationSet& animations);
    // Shares `model` (not null) instead of the current one.
    void ReplaceModel(const LxCountedPtr<LxModel>& model);
    void EndReload();

private:
    void RebuildAnimators();
    // Copies one palette entry (already chosen and transformed) into dst at register `reg`.
    static void WriteBone(const LxMatrix4& m, float* dst, bool rows4x3);

    LxCountedPtr<LxModel> m_model;
    LxAnimationSet m_animations;
    LxArray<LxBoneAnimator*> m_animators; // per skeleton bone; null where the bone has no curves
    LxArray<LxMatrix4> m_restPose;        // parent-relative rest transform per bone
    LxArray<LxMatrix4> m_palette;
    LxArray<LxMatrix4> m_lastPalette;
    mutable LxArray<LxMatrix4> m_scratch; // PoseSkeleton's working pose, kept to spare an allocation per frame
    LxMatrix4 m_world;
    bool m_bVisible = true;
    float m_fSpeed = 1.0f;
    float m_fAnimationTime = 0.0f;
    int m_nChunkBeingDrawn = -1;
    bool m_bReloading = false;

    LxString m_modelFile;
    LxString m_animationFile;
    long long m_nModelStamp = -1;
    long long m_nAnimationStamp = -1;
};
