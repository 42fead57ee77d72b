#include "WindowManager/LxMouseMoveEvent.h"

unsigned LxMouseMoveEvent::ButtonsFromKeyState(unsigned keyState)
{
    // Win32 key-state bits; kept numeric so that this stays portable.
    const unsigned kLeft = 0x0001, kRight = 0x0002, kMiddle = 0x0010;
    // Exact comparison on purpose: a drag with a modifier held is not a plain button drag, and camera controllers
    // rely on seeing no button then.
    switch (keyState)
    {
    case kLeft:
        return BUTTON_LEFT;
    case kRight:
        return BUTTON_RIGHT;
    case kLeft | kRight:
        return BUTTON_LEFT | BUTTON_RIGHT;
    case kMiddle:
        return BUTTON_MIDDLE;
    default:
        return 0;
    }
}
