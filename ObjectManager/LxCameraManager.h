// LxCameraManager: the process-wide registry of named cameras (owned here) with one active camera, and the source
// of the camera values effects read through "AppUpdate" parameters.
//
// Singleton: GetPtr/GetRef create the manager on first use; ShutDown deletes it with every camera it owns. Initialize
// registers the manager with the effect manager as the update-handler factory of every camera variable name
// (GetVariableNames); the manager deregisters itself when deleted, if the effect manager still exists.
//
// Update handlers: a parameter with a string annotation "CameraName" follows the camera of that name (looked up at
// each update, so destroying the camera never leaves a handler dangling); any other follows whichever camera is
// active when the update runs. The frustum planes are written as LxFrustum keeps them: (a, b, c, d) with an outward
// normal, a world point p outside when a p.x + b p.y + c p.z - d > 0, in the order left, right, bottom, top, near,
// far. "CameraProjParams" is (near, far, 1 / near, 1 / far).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxString.h"
#include "EffectManager/LxUpdateHandler.h"
#include "EffectManager/LxUpdateHandlerFactory.h"
#include "ObjectManager/LxCamera.h"

class LxAnnotationMap;

class LX_API LxCameraManager : public LxUpdateHandlerFactory
{
public:
    static LxCameraManager* GetPtr();
    static LxCameraManager& GetRef() { return *GetPtr(); }
    static LxCameraManager* GetExistingPtr() { return ms_pInstance; }
    static void ShutDown();

    // Registers the camera update handlers with the effect manager (once; later calls do nothing). False when the
    // effect manager refused a name (another factory holds it).
    bool Initialize();

    // A new camera under `name`; an existing name logs a warning and returns that camera.
    LxCamera* CreateCamera(const LxString& name);
    // Deletes a camera this manager owns (clearing it as the active camera); false, logged, for any other pointer.
    bool DestroyCamera(LxCamera* camera);
    LxCamera* GetCameraByName(const LxString& name) const;
    // The camera's name; empty, logged, for a camera not registered here.
    LxString GetCameraName(const LxCamera* camera) const;
    unsigned int GetCameraCount() const { return m_cameras.GetCount(); }
    // The active camera may be null; any camera may be made active, registered here or not.
    void SetActiveCamera(LxCamera* camera) { m_pActiveCamera = camera; }
    LxCamera* GetActiveCamera() const { return m_pActiveCamera; }

    // The handler filling an effect parameter named by `variableName` (see the list in GetVariableNames) of
    // `parameterType` (an LxEffectParameter::DataType) with `arraySize` elements. Null after a logged reason.
    LxCountedPtr<LxUpdateHandler> GetUpdateHandler(const LxString& variableName, int parameterType,
                                                   unsigned int arraySize, const LxAnnotationMap& annotations);
    LxCountedPtr<LxUpdateHandler> CreateUpdateHandler(const LxString& name, LxEffectParameter::DataType type,
                                                      unsigned int count, const LxAnnotationMap& annotations) override;
    // Null-terminated list of the variable names handled here.
    static const char* const* GetVariableNames();

private:
    LxCameraManager() = default;
    ~LxCameraManager() override;
    LxCameraManager(const LxCameraManager&) = delete;
    LxCameraManager& operator=(const LxCameraManager&) = delete;

    struct Entry
    {
        LxString name;
        LxCamera* camera;
    };
    LxArray<Entry> m_cameras;
    LxCamera* m_pActiveCamera = nullptr;
    bool m_bRegistered = false;

    static LxCameraManager* ms_pInstance;
};
