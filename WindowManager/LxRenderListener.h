// LxRenderListener: the application's frame. The window manager calls Render() once per repaint of its window,
// which the frame loop requests whenever no message is waiting; the listener typically steps the clock, updates the
// scene and draws between LxRenderManager::BeginScene and EndScene.
//
// Set with LxWindowManager::SetRenderListener (one at a time, not owned). Called on the window's thread.
#pragma once

#include "Common/LxApi.h"

class LX_API LxRenderListener
{
public:
    virtual ~LxRenderListener() = default;
    virtual void Render() = 0;
};
