// LxKeyEvent: one key press or release (mouse buttons and wheel turns included) as the window manager hands it to
// the input listeners.
//
// The key code is an LxKeyCode (WindowManager/LxKeyCodes.h); the modifier mask holds bit 0 Shift, bit 1 Alt and
// bit 2 Ctrl. A listener that consumes the event calls SetHandled(), and no later listener sees it. Mouse-button
// events carry the cursor position in client coordinates; wheel events carry the signed wheel delta.
// Plain value type, used on the window's thread.
#pragma once

#include "Common/LxApi.h"

class LX_API LxKeyEvent
{
public:
    enum Modifier : unsigned
    {
        MODIFIER_SHIFT = 1u << 0,
        MODIFIER_ALT = 1u << 1,
        MODIFIER_CTRL = 1u << 2,
    };

    // The modifier mask of a keyboard state.
    static unsigned MakeModifiers(bool shift, bool alt, bool ctrl);

    LxKeyEvent() = default;
    LxKeyEvent(unsigned keyCode, char character, unsigned modifiers)
        : m_nKeyCode(keyCode), m_cCharacter(character), m_nModifiers(modifiers)
    {
    }

    unsigned GetKeyCode() const { return m_nKeyCode; }
    // The character the key types under the current modifiers (letters lower case without Shift); 0 for keys that
    // type none.
    char GetCharacter() const { return m_cCharacter; }
    unsigned GetModifiers() const { return m_nModifiers; }
    bool IsShiftPressed() const { return (m_nModifiers & MODIFIER_SHIFT) != 0; }
    bool IsAltPressed() const { return (m_nModifiers & MODIFIER_ALT) != 0; }
    bool IsCtrlPressed() const { return (m_nModifiers & MODIFIER_CTRL) != 0; }

    bool IsHandled() const { return m_bHandled; }
    void SetHandled(bool handled = true) { m_bHandled = handled; }

    // Mouse buttons: the cursor position in client coordinates when the button changed.
    void SetMousePosition(int x, int y)
    {
        m_nMouseX = x;
        m_nMouseY = y;
    }
    int GetMouseX() const { return m_nMouseX; }
    int GetMouseY() const { return m_nMouseY; }
    // Wheel turns: the signed delta (multiples of 120 per notch on most mice; positive away from the user).
    void SetWheelDelta(int delta) { m_nWheelDelta = delta; }
    int GetWheelDelta() const { return m_nWheelDelta; }

private:
    unsigned m_nKeyCode = 0;
    char m_cCharacter = 0;
    unsigned m_nModifiers = 0;
    bool m_bHandled = false;
    int m_nMouseX = 0;
    int m_nMouseY = 0;
    int m_nWheelDelta = 0;
};
