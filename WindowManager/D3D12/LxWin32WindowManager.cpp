#include "WindowManager/D3D12/LxWin32WindowManager.h"

#include "Common/LxLogManager.h"

#include <windowsx.h>

namespace
{
const char kWindowClassName[] = "LumexWindowClass";

// A size derived through the aspect ratio, rounded; absurd ratios give a size that creation then refuses, never an
// out-of-range conversion.
unsigned ScaledSize(float size)
{
    return size >= 0.0f && size < 65536.0f ? unsigned(size + 0.5f) : 65536u;
}

bool IsAllZero(const RECT& r)
{
    return r.left == 0 && r.top == 0 && r.right == 0 && r.bottom == 0;
}
} // namespace

LxWin32WindowManager::LxWin32WindowManager() : m_hInstance(GetModuleHandleA(nullptr)) {}

LxWin32WindowManager::~LxWin32WindowManager()
{
    DestroyWin32Window();
    // Fails harmlessly while another manager's window still uses the class.
    if (m_bClassRegistered)
        UnregisterClassA(kWindowClassName, m_hInstance);
}

bool LxWin32WindowManager::CreateMainWindow(const LxDisplaySettings& settings)
{
    return CreateWin32Window(settings);
}

bool LxWin32WindowManager::CreateWin32Window(const LxDisplaySettings& settings)
{
    m_bWindowCreationFailed = false;
    if (m_hWnd != nullptr)
    {
        LX_ERROR("LxWin32WindowManager::CreateMainWindow.  The window already exists.");
        m_bWindowCreationFailed = true;
        return false;
    }

    // The requested client size; a missing dimension follows from the other and the aspect ratio, and with
    // neither given the window takes three quarters of the desktop height.
    const float aspect = settings.aspectRatio > 0.0f ? settings.aspectRatio : 4.0f / 3.0f;
    unsigned width = settings.width, height = settings.height;
    if (width == LxDisplaySettings::kNoSize && height == LxDisplaySettings::kNoSize)
        height = GetDesktopHeight() * 3 / 4;
    if (width == LxDisplaySettings::kNoSize)
        width = ScaledSize(float(height) * aspect);
    else if (height == LxDisplaySettings::kNoSize)
        height = ScaledSize(float(width) / aspect);

    DWORD style, exStyle;
    int x = settings.x, y = settings.y;
    if (settings.fullScreen || settings.borderless)
    {
        style = WS_POPUP | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
        exStyle = WS_EX_APPWINDOW;
    }
    else
    {
        style = WS_OVERLAPPEDWINDOW | WS_CLIPSIBLINGS | WS_CLIPCHILDREN;
        exStyle = WS_EX_APPWINDOW | WS_EX_WINDOWEDGE;
    }
    if (settings.fullScreen)
    {
        // A full-screen window covers at least the current display mode.
        DEVMODEA mode = {};
        mode.dmSize = sizeof(mode);
        if (EnumDisplaySettingsA(nullptr, ENUM_CURRENT_SETTINGS, &mode))
        {
            width = width > mode.dmPelsWidth ? width : unsigned(mode.dmPelsWidth);
            height = height > mode.dmPelsHeight ? height : unsigned(mode.dmPelsHeight);
        }
        // CW_USEDEFAULT means nothing to a popup window: full screen starts at the origin.
        if (x == LxDisplaySettings::kDefaultPosition)
            x = 0;
        if (y == LxDisplaySettings::kDefaultPosition)
            y = 0;
    }

    RECT rect = {0, 0, LONG(width), LONG(height)};
    bool ok = width > 0 && height > 0 && width <= 0x7FFF && height <= 0x7FFF &&
              AdjustWindowRectEx(&rect, style, FALSE, exStyle);
    if (ok && !m_bClassRegistered)
    {
        WNDCLASSEXA wc = {};
        wc.cbSize = sizeof(wc);
        wc.style = CS_HREDRAW | CS_VREDRAW;
        wc.lpfnWndProc = &LxWin32WindowManager::WindowProc;
        wc.hInstance = m_hInstance;
        wc.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512)); // IDC_ARROW
        wc.lpszClassName = kWindowClassName;
        if (RegisterClassExA(&wc))
            m_bClassRegistered = true;
        else
            ok = GetLastError() == ERROR_CLASS_ALREADY_EXISTS; // another manager registered it
    }
    if (ok)
    {
        m_nWidth = width;
        m_nHeight = height;
        m_bFullScreen = settings.fullScreen;
        const int left = x == LxDisplaySettings::kDefaultPosition ? CW_USEDEFAULT : x;
        const int top = y == LxDisplaySettings::kDefaultPosition ? CW_USEDEFAULT : y;
        // The window procedure picks `this` up from the creation parameter (WM_NCCREATE).
        CreateWindowExA(exStyle, kWindowClassName, settings.title.c_str(), style, left, top, rect.right - rect.left,
                        rect.bottom - rect.top, nullptr, nullptr, m_hInstance, this);
        ok = m_hWnd != nullptr;
    }
    if (!ok)
    {
        LX_ERROR("Window creation failed. Resolution requested was %u x %u.\n", width, height);
        m_bWindowCreationFailed = true;
        m_bFullScreen = false;
        return false;
    }
    // Shown without painting: the first frame belongs to the frame loop, once the device exists.
    ShowWindow(m_hWnd, SW_SHOWNORMAL);
    return true;
}

void LxWin32WindowManager::DestroyWin32Window()
{
    if (m_hWnd == nullptr)
        return;
    // Detached first, so that its WM_DESTROY does not post the quit message that ends an application's loop.
    HWND hwnd = m_hWnd;
    SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
    m_hWnd = nullptr;
    if (m_bMouseBlocked)
        m_bMouseBlocked = false;
    DestroyWindow(hwnd);
}

int LxWin32WindowManager::RunMessageLoop()
{
    if (m_hWnd == nullptr)
    {
        LX_ERROR("LxWin32WindowManager::RunMessageLoop.  There is no window.");
        return -1;
    }
    MSG msg = {};
    BOOL got = PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE);
    while (!got || msg.message != WM_QUIT)
    {
        if (got)
        {
            TranslateMessage(&msg);
            DispatchMessageA(&msg);
        }
        else if (m_hWnd != nullptr)
        {
            SendMessageA(m_hWnd, WM_PAINT, 0, 0); // one frame, synchronously
        }
        else
        {
            WaitMessage(); // the window went away without a quit message: nothing to render, so do not spin
        }
        got = PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE);
    }
    return int(msg.wParam);
}

LRESULT CALLBACK LxWin32WindowManager::WindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_NCCREATE)
    {
        auto* self = static_cast<LxWin32WindowManager*>(reinterpret_cast<CREATESTRUCTA*>(lParam)->lpCreateParams);
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        self->m_hWnd = hwnd;
    }
    // Messages before WM_NCCREATE (WM_GETMINMAXINFO comes first) and after detaching have no manager.
    auto* self = reinterpret_cast<LxWin32WindowManager*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    if (self == nullptr)
        return DefWindowProcA(hwnd, message, wParam, lParam);
    if (message == WM_NCDESTROY)
    {
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        self->m_hWnd = nullptr;
        self->m_bMouseBlocked = false;
        return DefWindowProcA(hwnd, message, wParam, lParam);
    }
    return self->HandleMessage(message, wParam, lParam);
}

unsigned LxWin32WindowManager::CurrentModifiers()
{
    return LxKeyEvent::MakeModifiers((GetKeyState(VK_SHIFT) & 0x8000) != 0, (GetKeyState(VK_MENU) & 0x8000) != 0,
                                     (GetKeyState(VK_CONTROL) & 0x8000) != 0);
}

void LxWin32WindowManager::OnActivated()
{
    ShowWindow(m_hWnd, SW_SHOW);
    if (m_bFullScreen)
        BlockMouseMovement(false);
}

void LxWin32WindowManager::OnMouseButton(unsigned keyCode, KeyEventType type, LPARAM lParam)
{
    LxKeyEvent event(keyCode, 0, CurrentModifiers());
    event.SetMousePosition(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
    // Captured while held, so that the release arrives even outside the window.
    if (type == KEY_PRESSED)
        SetCapture(m_hWnd);
    else
        ReleaseCapture();
    ProcessKeyEvent(event, type);
}

LRESULT LxWin32WindowManager::HandleMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    HWND hwnd = m_hWnd;
    switch (message)
    {
    case WM_PAINT:
        ProcessRenderEvent();
        ValidateRect(hwnd, nullptr);
        return 0;

    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;

    case WM_ACTIVATE:
        if (LOWORD(wParam) != WA_INACTIVE)
            OnActivated();
        break;

    case WM_SETFOCUS:
        OnActivated();
        break;

    case WM_GETMINMAXINFO:
    {
        RECT window = {}, client = {};
        GetWindowRect(hwnd, &window);
        GetClientRect(hwnd, &client);
        if (IsAllZero(window) || IsAllZero(client))
            break;
        const LONG frameX = (window.right - window.left) - (client.right - client.left);
        const LONG frameY = (window.bottom - window.top) - (client.bottom - client.top);
        auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
        info->ptMaxSize.x = info->ptMaxTrackSize.x = LONG(m_nWidth) + frameX;
        info->ptMaxSize.y = info->ptMaxTrackSize.y = LONG(m_nHeight) + frameY;
        return 0;
    }

    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
    case WM_KEYUP:
    case WM_SYSKEYUP:
    {
        const unsigned modifiers = CurrentModifiers();
        const unsigned code = LxTranslateVirtualKey(unsigned(wParam));
        LxKeyEvent event(code, LxKeyCharacter(code, modifiers), modifiers);
        ProcessKeyEvent(event, (message == WM_KEYDOWN || message == WM_SYSKEYDOWN) ? KEY_PRESSED : KEY_RELEASED);
        // System keys stay out of DefWindowProc (Alt or F10 alone would enter the menu loop and stall the frames),
        // except Alt+F4, which closes the window as users expect.
        if ((message == WM_SYSKEYDOWN || message == WM_SYSKEYUP) && wParam == VK_F4)
            break;
        return 0;
    }

    case WM_LBUTTONDOWN:
        OnMouseButton(LX_KEY_MOUSE_LEFT, KEY_PRESSED, lParam);
        return 0;
    case WM_RBUTTONDOWN:
        OnMouseButton(LX_KEY_MOUSE_RIGHT, KEY_PRESSED, lParam);
        return 0;
    case WM_MBUTTONDOWN:
        OnMouseButton(LX_KEY_MOUSE_MIDDLE, KEY_PRESSED, lParam);
        return 0;
    case WM_LBUTTONUP:
        OnMouseButton(LX_KEY_MOUSE_LEFT, KEY_RELEASED, lParam);
        return 0;
    case WM_RBUTTONUP:
        OnMouseButton(LX_KEY_MOUSE_RIGHT, KEY_RELEASED, lParam);
        return 0;
    case WM_MBUTTONUP:
        OnMouseButton(LX_KEY_MOUSE_MIDDLE, KEY_RELEASED, lParam);
        return 0;

    case WM_MOUSEWHEEL:
    {
        if (wParam == 0)
            return 0;
        const int delta = GET_WHEEL_DELTA_WPARAM(wParam);
        LxKeyEvent event(LxWheelKeyCode(delta), 0, CurrentModifiers());
        event.SetWheelDelta(delta);
        // The message carries screen coordinates; listeners get client ones, as for the buttons.
        POINT p = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        ScreenToClient(hwnd, &p);
        event.SetMousePosition(p.x, p.y);
        ProcessKeyEvent(event, KEY_PRESSED); // a turn has no release
        return 0;
    }

    case WM_MOUSEMOVE:
    {
        if (m_bMouseBlocked)
            return 0;
        LxMouseMoveEvent event(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam),
                               LxMouseMoveEvent::ButtonsFromKeyState(unsigned(GET_KEYSTATE_WPARAM(wParam))));
        ProcessMouseMoveEvent(event);
        return 0;
    }

    case WM_SYSCOMMAND:
    {
        const WPARAM command = wParam & 0xFFF0;
        if (m_bFullScreen && (command == SC_SCREENSAVE || command == SC_MONITORPOWER))
            return 0;
        break;
    }

    default:
        break;
    }
    return DefWindowProcA(hwnd, message, wParam, lParam);
}

unsigned LxWin32WindowManager::GetDesktopWidth() const
{
    return unsigned(GetSystemMetrics(SM_CXSCREEN));
}

unsigned LxWin32WindowManager::GetDesktopHeight() const
{
    return unsigned(GetSystemMetrics(SM_CYSCREEN));
}

bool LxWin32WindowManager::IsDisplayModeSupported(unsigned width, unsigned height, unsigned refreshRate,
                                                  unsigned bitsPerChannel, bool fullScreen) const
{
    if (bitsPerChannel != 8 && bitsPerChannel != 10 && bitsPerChannel != 16)
        return false;
    if (!fullScreen)
        return width > 0 && height > 0 && width <= GetDesktopWidth() && height <= GetDesktopHeight();
    DEVMODEA mode = {};
    mode.dmSize = sizeof(mode);
    for (DWORD i = 0; EnumDisplaySettingsA(nullptr, i, &mode); ++i)
    {
        if (mode.dmPelsWidth == width && mode.dmPelsHeight == height &&
            (refreshRate == 0 || mode.dmDisplayFrequency == refreshRate))
            return true;
    }
    return false;
}

void LxWin32WindowManager::BlockMouseMovement(bool block)
{
    if (block == m_bMouseBlocked)
        return;
    if (block)
    {
        POINT p = {0, 0};
        GetCursorPos(&p);
        ScreenToClient(m_hWnd, &p);
        m_blockedPosition = p;
        m_bMouseBlocked = true;
    }
    else
    {
        POINT p = m_blockedPosition;
        ClientToScreen(m_hWnd, &p);
        SetCursorPos(p.x, p.y);
        m_bMouseBlocked = false;
    }
}

bool LxWin32WindowManager::GetCursorPosition(int* x, int* y) const
{
    POINT p = m_blockedPosition;
    if (!m_bMouseBlocked)
    {
        if (!GetCursorPos(&p))
            return false;
        ScreenToClient(m_hWnd, &p);
    }
    *x = p.x;
    *y = p.y;
    return true;
}

void LxWin32WindowManager::SetCursorPosition(int x, int y)
{
    if (m_bMouseBlocked)
    {
        m_blockedPosition.x = x;
        m_blockedPosition.y = y;
        return;
    }
    POINT p = {x, y};
    ClientToScreen(m_hWnd, &p);
    SetCursorPos(p.x, p.y);
}

void LxWin32WindowManager::ShowMouseCursor(bool show)
{
    // ShowCursor keeps a display count: the cursor shows while it is non-negative.
    if (show)
    {
        while (ShowCursor(TRUE) < 0)
        {
        }
    }
    else
    {
        while (ShowCursor(FALSE) >= 0)
        {
        }
    }
}

void LxWin32WindowManager::ShowMessageBox(const LxString& caption, const LxString& text) const
{
    if (m_bFullScreen && m_hWnd != nullptr)
        SetWindowPos(m_hWnd, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    MessageBoxA(nullptr, text.c_str(), caption.c_str(), MB_OK);
}
