// LxKeyCodes: the key codes of LxKeyEvent and the translation from the platform's virtual keys to them.
//
// Letters, digits, the space bar and the US-layout punctuation keys are reported as their character codes ('A' is
// 65 with or without Shift; the punctuation keys as ';', '+', ',', '-', '.', '/', '~', '[', '\\', ']' and '"').
// Every other key is a number n shifted left by 16 bits, n numbering the special keys in alphabetical order of
// their names (keypad add 1 ... Up arrow 50), followed by the mouse buttons 51 to 53 and the wheel 54 and 55.
// The numbers are part of the interface: applications store and compare them, so they never change.
//
// The translation is written against the Win32 virtual-key numbers but needs no platform header, so it is the same
// code on every platform. Stateless and thread-safe.
#pragma once

#include "Common/LxApi.h"

enum LxKeyCode : unsigned
{
    LX_KEY_UNKNOWN = 0, // a virtual key in the range 8..222 that has no code of its own

    LX_KEY_NUMPAD_ADD = 1u << 16,
    LX_KEY_ALT = 2u << 16,
    LX_KEY_BACKSPACE = 3u << 16,
    LX_KEY_CAPS_LOCK = 4u << 16,
    LX_KEY_CTRL = 5u << 16,
    LX_KEY_NUMPAD_DECIMAL = 6u << 16,
    LX_KEY_DELETE = 7u << 16,
    LX_KEY_NUMPAD_DIVIDE = 8u << 16,
    LX_KEY_DOWN = 9u << 16,
    LX_KEY_END = 10u << 16,
    LX_KEY_ENTER = 11u << 16,
    LX_KEY_ESCAPE = 12u << 16,
    LX_KEY_F1 = 13u << 16, // F1 to F12 follow one apart: LX_KEY_F1 + (i - 1) * LX_KEY_STEP
    LX_KEY_F2 = 14u << 16,
    LX_KEY_F3 = 15u << 16,
    LX_KEY_F4 = 16u << 16,
    LX_KEY_F5 = 17u << 16,
    LX_KEY_F6 = 18u << 16,
    LX_KEY_F7 = 19u << 16,
    LX_KEY_F8 = 20u << 16,
    LX_KEY_F9 = 21u << 16,
    LX_KEY_F10 = 22u << 16,
    LX_KEY_F11 = 23u << 16,
    LX_KEY_F12 = 24u << 16,
    LX_KEY_HOME = 25u << 16,
    LX_KEY_INSERT = 26u << 16,
    LX_KEY_LEFT = 27u << 16,
    LX_KEY_WINDOWS = 28u << 16, // left or right
    LX_KEY_NUMPAD_MULTIPLY = 29u << 16,
    LX_KEY_NUM_LOCK = 30u << 16,
    LX_KEY_NUMPAD0 = 31u << 16, // keypad 0 to 9 follow one apart
    LX_KEY_NUMPAD9 = 40u << 16,
    LX_KEY_PAGE_DOWN = 41u << 16,
    LX_KEY_PAGE_UP = 42u << 16,
    LX_KEY_PAUSE = 43u << 16,
    LX_KEY_PRINT_SCREEN = 44u << 16, // the Print and the Snapshot keys
    LX_KEY_RIGHT = 45u << 16,
    LX_KEY_SCROLL_LOCK = 46u << 16,
    LX_KEY_SHIFT = 47u << 16, // left, right or either
    LX_KEY_NUMPAD_SUBTRACT = 48u << 16,
    LX_KEY_TAB = 49u << 16,
    LX_KEY_UP = 50u << 16,
    LX_KEY_MOUSE_LEFT = 51u << 16,
    LX_KEY_MOUSE_RIGHT = 52u << 16,
    LX_KEY_MOUSE_MIDDLE = 53u << 16,
    LX_KEY_WHEEL_UP = 54u << 16,   // turned away from the user
    LX_KEY_WHEEL_DOWN = 55u << 16, // turned towards the user

    LX_KEY_STEP = 1u << 16 // distance between neighbouring special keys
};

// The key code of a virtual key. Virtual keys below 8 or above 222 that have no code pass through unchanged;
// those in between without a code give LX_KEY_UNKNOWN.
LX_API unsigned LxTranslateVirtualKey(unsigned virtualKey);

// The character a key code types on a US layout under `modifiers` (an LxKeyEvent modifier mask): letters in lower
// case unless Shift is held, digits, space and punctuation as their code; 0 for the special keys.
LX_API char LxKeyCharacter(unsigned keyCode, unsigned modifiers);

// The code of a wheel turn: LX_KEY_WHEEL_UP for a delta of 1 or more, LX_KEY_WHEEL_DOWN otherwise.
LX_API unsigned LxWheelKeyCode(int delta);
