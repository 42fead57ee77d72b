// LxInputListener: receives the window's key, mouse-button, wheel and mouse-move events.
//
// Registered with LxWindowManager::AddInputListener (not owned; remove it before deleting it). Called on the
// window's thread in registration order; setting the event's handled flag stops the dispatch to later listeners.
// Mouse buttons and wheel turns arrive as key events (LX_KEY_MOUSE_LEFT ... LX_KEY_WHEEL_DOWN).
#pragma once

#include "Common/LxApi.h"
#include "WindowManager/LxKeyEvent.h"
#include "WindowManager/LxMouseMoveEvent.h"

class LX_API LxInputListener
{
public:
    virtual ~LxInputListener() = default;
    virtual void KeyPressed(LxKeyEvent& event) { (void)event; }
    virtual void KeyReleased(LxKeyEvent& event) { (void)event; }
    virtual void MouseMoved(LxMouseMoveEvent& event) { (void)event; }
};
