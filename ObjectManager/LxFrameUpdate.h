// LxFrameUpdate: the per-frame order a demo's render listener follows, in one place:
//   Step():   1. the clock advances (LxClock::FrameStep)               - everything below sees one time;
//             2. the script manager runs its queued messages           - scripts may move objects and cameras;
//             3. every scene object updates (LxObjectManager::UpdateObjects: poses, particle steps);
//             4. every camera controller added here updates            - cameras follow input and fly paths;
//   Draw():   5. LxRenderManager::BeginScene, the objects drawn (culled against the active camera's frustum when
//                culling is on), the application's own drawing (the callback), LxRenderManager::EndScene.
// Cameras update after objects so that a camera following an object sees where it is this frame; drawing comes last
// so that update handlers read this frame's values.
//
// Neither the clock nor the controllers are owned. Frame thread only.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"

class LxCameraController;
class LxClock;

class LX_API LxFrameUpdate
{
public:
    typedef void (*DrawCallback)(void* context);

    explicit LxFrameUpdate(LxClock* clock) : m_pClock(clock) {}

    void AddCameraController(LxCameraController* controller);
    bool RemoveCameraController(LxCameraController* controller) { return m_controllers.Remove(controller); }
    // Scripts run in step 2 unless switched off (a demo without scripts need not create the script manager).
    void SetRunScripts(bool run) { m_bRunScripts = run; }
    void SetCulling(bool cull) { m_bCull = cull; }
    // Called between the objects and EndScene.
    void SetDrawCallback(DrawCallback callback, void* context)
    {
        m_pfnDraw = callback;
        m_pDrawContext = context;
    }

    // Steps 1 to 4; returns the frame's time.
    double Step();
    // Step 5 without the scene brackets: the objects (and the callback). Returns the number of objects drawn.
    unsigned int DrawObjects();
    // Step 5. False when the scene could not begin or end.
    bool Draw();
    // Step() then Draw().
    bool RunFrame();

private:
    LxClock* m_pClock;
    LxArray<LxCameraController*> m_controllers;
    bool m_bRunScripts = true;
    bool m_bCull = true;
    DrawCallback m_pfnDraw = nullptr;
    void* m_pDrawContext = nullptr;
};
