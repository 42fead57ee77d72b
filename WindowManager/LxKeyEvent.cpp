#include "WindowManager/LxKeyEvent.h"

unsigned LxKeyEvent::MakeModifiers(bool shift, bool alt, bool ctrl)
{
    return (shift ? unsigned(MODIFIER_SHIFT) : 0u) | (alt ? unsigned(MODIFIER_ALT) : 0u) |
           (ctrl ? unsigned(MODIFIER_CTRL) : 0u);
}
