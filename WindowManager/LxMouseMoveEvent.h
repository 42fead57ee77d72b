// LxMouseMoveEvent: the cursor moved over the window; its position in client coordinates and the buttons held.
//
// Buttons come from the platform's key-state word by exact comparison (ButtonsFromKeyState): only the left button,
// only the right, exactly those two, or only the middle one are reported; any other combination, a button together
// with Shift or Ctrl for instance, reports no button at all. A listener that consumes the event calls SetHandled(),
// and no later listener sees it. Plain value type, used on the window's thread.
#pragma once

#include "Common/LxApi.h"

class LX_API LxMouseMoveEvent
{
public:
    enum Button : unsigned
    {
        BUTTON_LEFT = 1u << 0,
        BUTTON_RIGHT = 1u << 1,
        BUTTON_MIDDLE = 1u << 2,
    };

    // The button mask for a Win32 mouse key-state word (MK_LBUTTON 0x1, MK_RBUTTON 0x2, MK_SHIFT 0x4,
    // MK_CONTROL 0x8, MK_MBUTTON 0x10, ...), compared exactly as described above.
    static unsigned ButtonsFromKeyState(unsigned keyState);

    LxMouseMoveEvent() = default;
    LxMouseMoveEvent(int x, int y, unsigned buttons) : m_nX(x), m_nY(y), m_nButtons(buttons) {}

    int GetX() const { return m_nX; }
    int GetY() const { return m_nY; }
    unsigned GetButtons() const { return m_nButtons; }
    bool IsLeftButtonDown() const { return (m_nButtons & BUTTON_LEFT) != 0; }
    bool IsRightButtonDown() const { return (m_nButtons & BUTTON_RIGHT) != 0; }
    bool IsMiddleButtonDown() const { return (m_nButtons & BUTTON_MIDDLE) != 0; }

    bool IsHandled() const { return m_bHandled; }
    void SetHandled(bool handled = true) { m_bHandled = handled; }

private:
    int m_nX = 0;
    int m_nY = 0;
    unsigned m_nButtons = 0;
    bool m_bHandled = false;
};
