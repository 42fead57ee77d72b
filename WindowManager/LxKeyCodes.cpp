#include "WindowManager/LxKeyCodes.h"

namespace
{
// Win32 virtual-key numbers used below (kept here so that portable code needs no platform header).
enum : unsigned
{
    VKEY_LBUTTON = 0x01,
    VKEY_RBUTTON = 0x02,
    VKEY_MBUTTON = 0x04,
    VKEY_BACK = 0x08,
    VKEY_TAB = 0x09,
    VKEY_RETURN = 0x0D,
    VKEY_SHIFT = 0x10,
    VKEY_CONTROL = 0x11,
    VKEY_MENU = 0x12,
    VKEY_PAUSE = 0x13,
    VKEY_CAPITAL = 0x14,
    VKEY_ESCAPE = 0x1B,
    VKEY_SPACE = 0x20,
    VKEY_PRIOR = 0x21,
    VKEY_NEXT = 0x22,
    VKEY_END = 0x23,
    VKEY_HOME = 0x24,
    VKEY_LEFT = 0x25,
    VKEY_UP = 0x26,
    VKEY_RIGHT = 0x27,
    VKEY_DOWN = 0x28,
    VKEY_PRINT = 0x2A,
    VKEY_SNAPSHOT = 0x2C,
    VKEY_INSERT = 0x2D,
    VKEY_DELETE = 0x2E,
    VKEY_LWIN = 0x5B,
    VKEY_RWIN = 0x5C,
    VKEY_NUMPAD0 = 0x60,
    VKEY_NUMPAD9 = 0x69,
    VKEY_MULTIPLY = 0x6A,
    VKEY_ADD = 0x6B,
    VKEY_SUBTRACT = 0x6D,
    VKEY_DECIMAL = 0x6E,
    VKEY_DIVIDE = 0x6F,
    VKEY_F1 = 0x70,
    VKEY_F12 = 0x7B,
    VKEY_NUMLOCK = 0x90,
    VKEY_SCROLL = 0x91,
    VKEY_LSHIFT = 0xA0,
    VKEY_RSHIFT = 0xA1,
    VKEY_LCONTROL = 0xA2,
    VKEY_RCONTROL = 0xA3,
    VKEY_LMENU = 0xA4,
    VKEY_RMENU = 0xA5,
    VKEY_OEM_1 = 0xBA,      // ;:
    VKEY_OEM_PLUS = 0xBB,   // =+
    VKEY_OEM_COMMA = 0xBC,  // ,<
    VKEY_OEM_MINUS = 0xBD,  // -_
    VKEY_OEM_PERIOD = 0xBE, // .>
    VKEY_OEM_2 = 0xBF,      // /?
    VKEY_OEM_3 = 0xC0,      // `~
    VKEY_OEM_4 = 0xDB,      // [{
    VKEY_OEM_5 = 0xDC,      // \|
    VKEY_OEM_6 = 0xDD,      // ]}
    VKEY_OEM_7 = 0xDE,      // '"
};
} // namespace

unsigned LxTranslateVirtualKey(unsigned vk)
{
    if ((vk >= 'A' && vk <= 'Z') || (vk >= '0' && vk <= '9') || vk == VKEY_SPACE)
        return vk;
    if (vk >= VKEY_F1 && vk <= VKEY_F12)
        return LX_KEY_F1 + (vk - VKEY_F1) * LX_KEY_STEP;
    if (vk >= VKEY_NUMPAD0 && vk <= VKEY_NUMPAD9)
        return LX_KEY_NUMPAD0 + (vk - VKEY_NUMPAD0) * LX_KEY_STEP;
    switch (vk)
    {
    case VKEY_OEM_1:
        return ';';
    case VKEY_OEM_PLUS:
        return '+';
    case VKEY_OEM_COMMA:
        return ',';
    case VKEY_OEM_MINUS:
        return '-';
    case VKEY_OEM_PERIOD:
        return '.';
    case VKEY_OEM_2:
        return '/';
    case VKEY_OEM_3:
        return '~';
    case VKEY_OEM_4:
        return '[';
    case VKEY_OEM_5:
        return '\\';
    case VKEY_OEM_6:
        return ']';
    case VKEY_OEM_7:
        return '"';
    case VKEY_ADD:
        return LX_KEY_NUMPAD_ADD;
    case VKEY_MENU:
    case VKEY_LMENU:
    case VKEY_RMENU:
        return LX_KEY_ALT;
    case VKEY_BACK:
        return LX_KEY_BACKSPACE;
    case VKEY_CAPITAL:
        return LX_KEY_CAPS_LOCK;
    case VKEY_CONTROL:
    case VKEY_LCONTROL:
    case VKEY_RCONTROL:
        return LX_KEY_CTRL;
    case VKEY_DECIMAL:
        return LX_KEY_NUMPAD_DECIMAL;
    case VKEY_DELETE:
        return LX_KEY_DELETE;
    case VKEY_DIVIDE:
        return LX_KEY_NUMPAD_DIVIDE;
    case VKEY_DOWN:
        return LX_KEY_DOWN;
    case VKEY_END:
        return LX_KEY_END;
    case VKEY_RETURN:
        return LX_KEY_ENTER;
    case VKEY_ESCAPE:
        return LX_KEY_ESCAPE;
    case VKEY_HOME:
        return LX_KEY_HOME;
    case VKEY_INSERT:
        return LX_KEY_INSERT;
    case VKEY_LEFT:
        return LX_KEY_LEFT;
    case VKEY_LWIN:
    case VKEY_RWIN:
        return LX_KEY_WINDOWS;
    case VKEY_MULTIPLY:
        return LX_KEY_NUMPAD_MULTIPLY;
    case VKEY_NUMLOCK:
        return LX_KEY_NUM_LOCK;
    case VKEY_NEXT:
        return LX_KEY_PAGE_DOWN;
    case VKEY_PRIOR:
        return LX_KEY_PAGE_UP;
    case VKEY_PAUSE:
        return LX_KEY_PAUSE;
    case VKEY_PRINT:
    case VKEY_SNAPSHOT:
        return LX_KEY_PRINT_SCREEN;
    case VKEY_RIGHT:
        return LX_KEY_RIGHT;
    case VKEY_SCROLL:
        return LX_KEY_SCROLL_LOCK;
    case VKEY_SHIFT:
    case VKEY_LSHIFT:
    case VKEY_RSHIFT:
        return LX_KEY_SHIFT;
    case VKEY_SUBTRACT:
        return LX_KEY_NUMPAD_SUBTRACT;
    case VKEY_TAB:
        return LX_KEY_TAB;
    case VKEY_UP:
        return LX_KEY_UP;
    case VKEY_LBUTTON:
        return LX_KEY_MOUSE_LEFT;
    case VKEY_RBUTTON:
        return LX_KEY_MOUSE_RIGHT;
    case VKEY_MBUTTON:
        return LX_KEY_MOUSE_MIDDLE;
    default:
        break;
    }
    // Below 8 (the remaining mouse and cancel keys) and above 222 (OEM and IME keys) the number is kept, so an
    // application can still tell such keys apart; unassigned keys in between have no useful identity.
    return (vk < VKEY_BACK || vk > VKEY_OEM_7) ? vk : unsigned(LX_KEY_UNKNOWN);
}

char LxKeyCharacter(unsigned keyCode, unsigned modifiers)
{
    if (keyCode >= 'A' && keyCode <= 'Z')
        return char((modifiers & 1u) ? keyCode : keyCode - 'A' + 'a'); // bit 0: Shift
    return (keyCode >= ' ' && keyCode < 0x7F) ? char(keyCode) : '\0';
}

unsigned LxWheelKeyCode(int delta)
{
    return delta >= 1 ? LX_KEY_WHEEL_UP : LX_KEY_WHEEL_DOWN;
}
