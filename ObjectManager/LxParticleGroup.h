// LxParticleGroup: a particle file made into a scene object: the group description (LxParticleGroupDesc), one CPU
// simulator per system (LxParticleSimulator), and the effect of each system, which draws the system's particles as
// camera-facing quads (six vertices each, a non-indexed triangle list fed to the effect's first vertex stream).
//
// Time: UpdateObject(time) steps every simulator by the time since the previous update (the first update only
// records the time, after simulating the system's WarmUp seconds in 1/30 s steps); steps are clamped to 0.25 s so a
// stall does not fling particles. A system's SimulationSkip frames are skipped between steps (their time is carried
// over), and its bounds are refreshed every BoundingBoxSkip + 1 steps. A group culled at its last draw does not
// step its systems, except those with UpdateWhenCulled. Before each update the simulators get the active camera's
// frame in the group's space (Camera and WorldRotCamPos transforms) and read animated transforms from the group's
// animation set (matrix curves as they are, vector curves as translations, quaternion curves as rotations); Sort
// systems are drawn back to front from the active camera. Particles live in the group's space; the
// world transform places the group, and the object's bounding volume is the union of the systems' bounds.
//
// Seeds: system i is seeded with seed + i (SetSeed, default 1), so a group replays exactly after Restart.
//
// Loading: the particle file goes through LxParticleGroupLoader with a builder whose effects come from the effect
// manager ("Unable to load particle shader: <file>" when one cannot be loaded) and whose curves go to the group's
// animation set (keyframed parameters are exported there; curves given to Create are added first).
//
// Textures: each file the systems' texture sets name ("Texture Diffuse { tDiffuse "flame.png" }", after the archive's
// "texturemapping.txt") is a PNG of the archive, made once per group into an RGBA8 2D texture through the resource
// manager (a file that cannot be read, decoded or created fails the load: "Could not create texture for particle
// system ..."), and bound at every draw to the effect's texture slot of the name the set gives (a slot the effect
// lacks is reported once, when the group is made, and skipped).
//
// Ownership: the group owns its description, simulators and animation set; effects and the vertex buffer are shared
// references. Create returns a new group (the caller registers or deletes it), or null after logging. Frame thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMatrix4.h"
#include "Common/LxString.h"
#include "EffectManager/LxEffect.h"
#include "GPUResourceManager/LxGPUTexture2DArray.h"
#include "GPUResourceManager/LxGPUVertexBuffer.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxObject.h"
#include "ParticleSystem/LxParticleSimulator.h"

class LxParticleGroupDesc;
class LxParticleSystemDesc;

class LX_API LxParticleGroup : public LxObject
{
public:
    // Loads the particle archive at `path`; `animations` (may be null) are copied into the group's set.
    static LxParticleGroup* Create(const LxString& name, const LxString& path, const LxAnimationSet* animations);
    ~LxParticleGroup() override;

    ObjectType GetObjectType() const override { return OBJECT_PARTICLE_GROUP; }
    const LxParticleGroupDesc& GetDesc() const { return *m_pDesc; }
    unsigned int GetSystemCount() const { return m_systems.GetCount(); }
    const LxParticleSimulator& GetSimulator(unsigned int index) const { return *m_systems[index].simulator; }
    const LxCountedPtr<LxEffect>& GetSystemEffect(unsigned int index) const { return m_systems[index].effect; }
    // The quads of the system's last draw.
    const LxArray<LxParticleSimulator::Vertex>& GetBillboards(unsigned int index) const
    {
        return m_systems[index].vertices;
    }
    const LxAnimationSet& GetAnimationSet() const { return m_animations; }

    void SetSeed(unsigned int seed) { m_nSeed = seed; }
    unsigned int GetSeed() const { return m_nSeed; }
    // Every system starts again from no particles with its seed; the next update only records the time.
    void Restart();

    void SetWorldTransform(const LxMatrix4& world)
    {
        m_world = world;
        WorldTransformChanged();
    }
    bool GetWorldTransform(LxMatrix4* out) const override;
    bool HasWorldTransform() const override { return true; }
    bool IsVisible() const override { return m_bVisible; }
    bool SetVisible(bool visible) override;

    void UpdateObject(double time) override;
    // Draws each system that has particles, facing the active camera (world axes without one).
    bool Draw(const LxFrustum* cullFrustum) override;

    // --- reloading (object manager) -----------------------------------------------------------------------------
    // Loads `path` again; on success the systems restart from the new description, on failure nothing changes.
    bool Reload(const LxString& path);
    void SetSourceFile(const LxString& file, long long stamp)
    {
        m_file = file;
        m_nStamp = stamp;
    }
    const LxString& GetParticleFile() const { return m_file; }
    long long GetTimeStamp() const { return m_nStamp; }

    // A texture file of the particle archive, made once for the whole group.
    struct TextureFile
    {
        LxString file;
        LxCountedPtr<LxGPUTexture2DArray> texture;
    };

private:
    struct TextureBinding
    {
        const LxTextureSlot* slot;
        LxCountedPtr<LxGPUTexture2DArray> texture;
    };
    struct System
    {
        LxParticleSimulator* simulator;
        LxCountedPtr<LxEffect> effect;
        LxArray<LxParticleSimulator::Vertex> vertices;
        LxCountedPtr<LxGPUVertexBuffer> buffer;
        unsigned int bufferCapacity;
        int framesSkipped;
        float pendingTime;
        unsigned int stepsSinceBounds;
        LxBoundingBox bounds;
        LxArray<TextureBinding> textures;
    };

    explicit LxParticleGroup(const LxString& name);
    // Builds the description and effects for `path` into the out-parameters; false after logging.
    bool Load(const LxString& path, LxAnimationSet& animations, LxParticleGroupDesc** desc,
              LxArray<LxCountedPtr<LxEffect>>& effects, LxArray<TextureFile>& textures) const;
    void Adopt(LxParticleGroupDesc* desc, const LxArray<LxCountedPtr<LxEffect>>& effects,
               const LxArray<TextureFile>& textures);
    // Views of the textures on the effect's slots named by the system's texture sets.
    void BindTextures(System& system, const LxParticleSystemDesc& desc, const LxArray<TextureFile>& textures);
    void DeleteSystems();
    void StepSystem(System& system, float dt);
    void RefreshBounds();
    // `eye` (null without a camera) orders the quads of systems that ask for sorting.
    bool DrawSystem(System& system, const LxVector3& right, const LxVector3& up, const LxVector3* eye);
    // The active camera's frame in the group's space (columns right, up, view, position) and its unit axes; false
    // without an active camera.
    bool GetCameraFrame(LxMatrix4* frame, LxVector3* right, LxVector3* up) const;
    // The system's effect parameters ("EffectParam" of the file) set on its effect: fixed values as given, keyframed
    // ones at the system's time, random ones at the middle of their range.
    void ApplyEffectParameters(System& system);

    LxParticleGroupDesc* m_pDesc = nullptr;
    LxArray<System> m_systems;
    LxAnimationSet m_animations;
    // Reads m_animations for the simulators' animated transforms (declared after it: built from it).
    LxParticleSimulator::CurveSource* m_pCurves;
    LxMatrix4 m_world;
    bool m_bVisible = true;
    bool m_bCulled = false; // outside the cull frustum at the last draw
    unsigned int m_nSeed = 1;
    bool m_bHaveTime = false;
    double m_lastTime = 0.0;
    LxString m_file;
    long long m_nStamp = -1;
};
