// LxObjectManager: the process-wide registry of named scene objects (animated models, particle groups, objects made
// by plug-ins), the files they come from, the effect update handlers that feed per-object values to shaders, reloads
// of changed files, and draw tracking.
//
// A frame, in the order a demo runs it (LxFrameUpdate does exactly this):
//   1. LxClock::FrameStep                        - the demo time advances;
//   2. LxScriptManager::ProcessMessages          - scripts move things;
//   3. UpdateObjects(time), then each camera controller's Update(time)
//                                                - poses, particle steps, camera motion;
//   4. LxRenderManager::BeginScene, DrawObjects(frustum of the active camera), the application's own draws,
//      LxRenderManager::EndScene.
// Drawing an object sets it as the object being drawn, so that the update handlers its effects run while a pass
// binds read that object's values.
//
// Update handlers ("AppUpdate" names registered with the effect manager by Initialize):
//   "Bones", "LastFrameBones", "BonesInverseTranspose", "LastFrameBonesInverseTranspose" (matrix arrays),
//   "Bones4x3", "LastFrameBones4x3" (vec4 arrays of a size that is a multiple of 3), "BoundingBoxMin",
//   "BoundingBoxMax", "StaticBoundingBoxMin", "StaticBoundingBoxMax", "BoundingSphere", "StaticBoundingSphere"
//   (vectors: a corner with w = 1, or centre and radius), "WorldTransform", "WorldTransformInverse" (matrices).
// A name outside the list may be served by a factory registered here (RegisterUpdateHandlerFactory), which is how a
// plug-in object type adds values of its own; any other name is refused.
//
// Models: every animated model made from one model file shares one LxModel (its buffers, effects and skeleton); a
// reload loads a changed file once and hands the new model to every object made from it.
//
// File time stamps (reload): a zip archive's own time; for a folder, the newer of the folder's and its key file's
// ("manifest.txt" for models and animation sets, "particleFile.txt" for particle groups). `force` reloads every file
// that exists, changed or not.
//
// Draw tracking report, after its heading: one line per object drawn, in the order first drawn:
//   "<name>\t( <indexed>:<non-indexed>\t<points>:<lines>:<triangles> )\n", counting draws; patch lists count as
// triangles.
//
// Singleton: GetPtr/GetRef create it; ShutDown deletes it with every object it owns. Objects hold effects, so the
// object manager is shut down before the effect manager. Frame thread only.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"
#include "EffectManager/LxUpdateHandler.h"
#include "EffectManager/LxUpdateHandlerFactory.h"
#include "ObjectManager/LxObject.h"
#include "RenderManager/include/LxRenderManager.h"

class LxAnimatedModel;
class LxAnnotationMap;
class LxModel;
class LxParticleGroup;

class LX_API LxObjectManager : public LxUpdateHandlerFactory
{
public:
    static LxObjectManager* GetPtr();
    static LxObjectManager& GetRef() { return *GetPtr(); }
    static LxObjectManager* GetExistingPtr() { return ms_pInstance; }
    static void ShutDown();

    // Registers the object update handlers with the effect manager (once). False when a name is held by another
    // factory.
    bool Initialize();

    // --- objects ------------------------------------------------------------------------------------------------
    LxAnimatedModel* CreateAnimatedModel(const LxString& name, const LxString& modelFile,
                                         const LxString& animationFile = LxString());
    LxParticleGroup* CreateParticleGroup(const LxString& name, const LxString& particleFile,
                                         const LxString& animationFile = LxString());
    LxObject* GetObjectByName(const LxString& name) const;
    // Takes ownership; refused (false, the object deleted) when the name is taken or the object is null.
    bool RegisterPluginObject(LxObject* object);
    // Deletes a registered object; false when it is not registered here.
    bool DestroyObject(LxObject* object);
    unsigned int GetObjectCount() const { return m_objects.GetCount(); }
    LxObject* GetObjectByIndex(unsigned int index) const { return m_objects[index]; }

    // --- files --------------------------------------------------------------------------------------------------
    void AddSearchPath(const LxString& path);
    void ClearSearchPaths() { m_searchPaths.Clear(); }
    // The path of `name`: as given when it exists, else under the first search path that holds it.
    bool LookupObjectPath(const LxString& name, LxString* path) const;
    // The time stamp reloads compare (see the header comment); -1 when the file cannot be found.
    static long long GetFileStamp(const LxString& path, const LxString& keyFile);
    void ReloadObjects(bool force);
    void WarmGPUCaches();

    // --- per frame ----------------------------------------------------------------------------------------------
    void UpdateObjects(double time);
    // Draws every object, skipping hidden ones and (with a frustum) those wholly outside it. Returns the number
    // drawn; GetCulledCount tells how many the frustum dropped.
    unsigned int DrawObjects(const LxFrustum* cullFrustum);
    unsigned int GetCulledCount() const { return m_nCulled; }
    void SetObjectBeingDrawn(LxObject* object) { m_pObjectBeingDrawn = object; }
    LxObject* GetObjectBeingDrawn() const { return m_pObjectBeingDrawn; }

    // --- draw tracking ------------------------------------------------------------------------------------------
    void StartDrawTracking();
    bool IsDrawTracking() const { return m_bTracking; }
    // Counts one draw of `object` (called by the objects' draw code).
    void TrackDraw(const LxObject& object, bool indexed, LxRenderManager::PrimType type);
    LxString EndDrawTracking();

    // --- update handlers ----------------------------------------------------------------------------------------
    LxCountedPtr<LxUpdateHandler> GetUpdateHandler(const LxString& variableName, int dataType, unsigned int arraySize,
                                                   const LxAnnotationMap& annotations);
    LxCountedPtr<LxUpdateHandler> CreateUpdateHandler(const LxString& name, LxEffectParameter::DataType type,
                                                      unsigned int count, const LxAnnotationMap& annotations) override;
    // A factory (not owned) for a name outside the built-in list; registered with the effect manager too when the
    // object manager is initialized. False when the name is taken.
    bool RegisterUpdateHandlerFactory(const LxString& name, LxUpdateHandlerFactory* factory);
    // Null-terminated list of the built-in variable names.
    static const char* const* GetVariableNames();

private:
    LxObjectManager() = default;
    ~LxObjectManager() override;
    LxObjectManager(const LxObjectManager&) = delete;
    LxObjectManager& operator=(const LxObjectManager&) = delete;

    void ReloadModel(LxAnimatedModel& model, bool force, LxArray<LxString>& reloadedPaths);
    // The shared model of `path`, loaded when it is not known or its file changed; empty after logging.
    LxCountedPtr<LxModel> GetModel(const LxString& path);
    void ReloadParticleGroup(LxParticleGroup& group, bool force);

    struct TrackedObject
    {
        LxString name;
        unsigned int indexed, nonIndexed, points, lines, triangles;
    };
    struct PluginFactory
    {
        LxString name;
        LxUpdateHandlerFactory* factory;
    };

    struct ModelRecord
    {
        LxString path;
        LxCountedPtr<LxModel> model;
        long long stamp;
    };

    LxArray<LxObject*> m_objects;
    LxHashMap<LxString, LxObject*, LxStringHasher> m_objectsByName;
    LxArray<ModelRecord> m_models;
    LxArray<LxString> m_searchPaths;
    LxObject* m_pObjectBeingDrawn = nullptr;
    unsigned int m_nCulled = 0;
    bool m_bTracking = false;
    LxArray<TrackedObject> m_tracked;
    LxArray<PluginFactory> m_pluginFactories;
    bool m_bRegistered = false;

    static LxObjectManager* ms_pInstance;
};
