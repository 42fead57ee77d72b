// LxWin32WindowManager: the window manager on Win32: one top-level window, its window procedure (input to the
// listeners, repaint to the render listener, the size limit, full-screen details) and the frame loop.
//
// The frame loop takes one message at a time with PeekMessageA; whenever none is waiting it sends WM_PAINT, whose
// handler calls the render listener and validates the window. There is no timer and no frame cap: pacing comes
// from the swap chain's presentation. The loop ends with WM_QUIT, which the window posts when it is destroyed.
//
// Owns its window (destroyed with the manager, without posting a quit message) and its window class. Everything
// runs on the thread that created the window. CreateMainWindow makes the window alone; LxD3D12WindowManager adds
// the device. Failures are logged and return false.
#pragma once

#include "WindowManager/LxWindowManager.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

class LX_API LxWin32WindowManager : public LxWindowManager
{
public:
    LxWin32WindowManager();
    ~LxWin32WindowManager() override;

    bool CreateMainWindow(const LxDisplaySettings& settings) override;
    int RunMessageLoop() override;
    unsigned GetDesktopWidth() const override;
    unsigned GetDesktopHeight() const override;
    bool IsFullScreen() const override { return m_bFullScreen; }
    // Windowed: the size fits the desktop; full screen: the display offers the mode (a refresh rate of 0 matches
    // any). In both cases the bits per channel must give a back buffer (8, 10 or 16).
    bool IsDisplayModeSupported(unsigned width, unsigned height, unsigned refreshRate, unsigned bitsPerChannel,
                                bool fullScreen) const override;
    void BlockMouseMovement(bool block) override;
    bool IsMouseMovementBlocked() const override { return m_bMouseBlocked; }
    bool GetCursorPosition(int* x, int* y) const override;
    void SetCursorPosition(int x, int y) override;
    void ShowMouseCursor(bool show) override;
    // In full screen the window first goes to the bottom of the z-order so that the box can be seen.
    void ShowMessageBox(const LxString& caption, const LxString& text) const override;

    // Null before creation and once the window is destroyed.
    HWND GetWindowHandle() const { return m_hWnd; }
    // The client size asked for at creation (after the defaults and the full-screen minimum were applied); the
    // window can never be made larger than this.
    unsigned GetClientWidth() const { return m_nWidth; }
    unsigned GetClientHeight() const { return m_nHeight; }

protected:
    // Registers the class and creates the window, shown but not yet painted. Logs "Window creation failed.
    // Resolution requested was %u x %u.\n" when the window cannot be made.
    bool CreateWin32Window(const LxDisplaySettings& settings);
    // Destroys the window without ending the frame loop (used when creation fails after the window was made).
    void DestroyWin32Window();
    // One message of the window; what it does not handle goes to DefWindowProcA.
    virtual LRESULT HandleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    // The modifier mask of the current keyboard state (GetKeyState of Shift, Alt and Ctrl).
    static unsigned CurrentModifiers();

    HWND m_hWnd = nullptr;
    unsigned m_nWidth = 0;
    unsigned m_nHeight = 0;
    bool m_bFullScreen = false;

private:
    static LRESULT CALLBACK WindowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    void OnActivated();
    void OnMouseButton(unsigned keyCode, KeyEventType type, LPARAM lParam);

    HINSTANCE m_hInstance = nullptr;
    bool m_bClassRegistered = false;
    bool m_bMouseBlocked = false;
    POINT m_blockedPosition = {0, 0}; // client coordinates
};
