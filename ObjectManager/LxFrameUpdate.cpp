#include "ObjectManager/LxFrameUpdate.h"

#include "Common/LxClock.h"
#include "ObjectManager/LxCameraController.h"
#include "ObjectManager/LxCameraManager.h"
#include "ObjectManager/LxObjectManager.h"
#include "RenderManager/include/LxRenderManager.h"
#include "ScriptManager/LxScriptManager.h"

void LxFrameUpdate::AddCameraController(LxCameraController* controller)
{
    if (controller && !m_controllers.Contains(controller))
        m_controllers.Add(controller);
}

double LxFrameUpdate::Step()
{
    double time = 0.0;
    if (m_pClock)
    {
        m_pClock->FrameStep();
        time = m_pClock->GetTime();
    }
    if (m_bRunScripts)
        LxScriptManager::GetRef().ProcessMessages();
    LxObjectManager::GetRef().UpdateObjects(time);
    for (LxCameraController* c : m_controllers)
        c->Update(time);
    return time;
}

unsigned int LxFrameUpdate::DrawObjects()
{
    LxFrustum frustum;
    const LxFrustum* cull = nullptr;
    if (m_bCull)
        if (LxCameraManager* cameras = LxCameraManager::GetExistingPtr())
            if (const LxCamera* camera = cameras->GetActiveCamera())
            {
                frustum = camera->GetWorldFrustum();
                cull = &frustum;
            }
    const unsigned int drawn = LxObjectManager::GetRef().DrawObjects(cull);
    if (m_pfnDraw)
        m_pfnDraw(m_pDrawContext);
    return drawn;
}

bool LxFrameUpdate::Draw()
{
    LxRenderManager& renderer = LxRenderManager::GetRef();
    if (!renderer.BeginScene())
        return false;
    DrawObjects();
    return renderer.EndScene();
}

bool LxFrameUpdate::RunFrame()
{
    Step();
    return Draw();
}
