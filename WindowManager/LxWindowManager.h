// LxWindowManager: owns the application window, turns the platform's window messages into key, mouse and render
// events for the registered listeners, and runs the frame loop (a repaint, and so one call of the render listener,
// whenever no message is waiting).
//
// This base class is platform-neutral: it keeps the listeners and dispatches events to them, builds the failure
// report, and logs "... Implement me for this platform!!" for everything that needs a window. LxWin32WindowManager
// adds the window and message loop, LxD3D12WindowManager the Direct3D 12 device creation; on Windows the singleton
// is an LxD3D12WindowManager (it registers its create function when the library loads), elsewhere this base.
//
// Listeners are not owned: an application removes a listener before deleting it. Listeners may add or remove
// listeners while an event is dispatched; a listener removed during a dispatch is not called afterwards.
// Threading: everything runs on the thread that created the window; rendering happens inside its repaint.
// Lifetime: GetPtr()/GetRef() create the singleton on first use, ShutDown() destroys it (and with it the window).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "WindowManager/LxDisplaySettings.h"
#include "WindowManager/LxInputListener.h"
#include "WindowManager/LxKeyCodes.h"
#include "WindowManager/LxKeyEvent.h"
#include "WindowManager/LxMouseMoveEvent.h"
#include "WindowManager/LxRenderListener.h"

class LX_API LxWindowManager
{
public:
    enum KeyEventType
    {
        KEY_PRESSED,
        KEY_RELEASED,
    };

    typedef LxWindowManager* (*CreateFunction)();
    static LxWindowManager* GetPtr();
    static LxWindowManager& GetRef() { return *GetPtr(); }
    static void ShutDown();
    // The factory GetPtr uses (the platform library registers its window manager); null restores this base class.
    static void SetCreateFunction(CreateFunction create);
    static CreateFunction GetCreateFunction() { return ms_pfnCreate; }

    LxWindowManager();
    virtual ~LxWindowManager();
    LxWindowManager(const LxWindowManager&) = delete;
    LxWindowManager& operator=(const LxWindowManager&) = delete;

    // --- listeners ------------------------------------------------------------------------------------------------
    // Replaces any earlier render listener (null: frames only repaint the window).
    void SetRenderListener(LxRenderListener* listener) { m_pRenderListener = listener; }
    // Clears the render listener only if it is `listener`.
    void RemoveRenderListener(LxRenderListener* listener);
    LxRenderListener* GetRenderListener() const { return m_pRenderListener; }
    // Appends `listener`; a listener already registered stays where it is and hears each event once.
    void AddInputListener(LxInputListener* listener);
    void RemoveInputListener(LxInputListener* listener);
    unsigned GetInputListenerCount() const { return m_inputListeners.GetCount(); }

    // --- window and display ---------------------------------------------------------------------------------------
    // Creates the window (and, for the Direct3D 12 manager, the device and swap chain) from `settings`. False after
    // logging why; the application then shows ReportCreationFailure and exits.
    virtual bool CreateMainWindow(const LxDisplaySettings& settings);
    // Runs the frame loop until the window is destroyed; returns the exit code of the quit message.
    virtual int RunMessageLoop();
    virtual unsigned GetDesktopWidth() const;
    virtual unsigned GetDesktopHeight() const;
    // Desktop width over height; 0 when the height is unknown.
    virtual float GetDesktopAspectRatio() const;
    virtual bool IsFullScreen() const;
    virtual bool IsDisplayModeSupported(unsigned width, unsigned height, unsigned refreshRate, unsigned bitsPerChannel,
                                        bool fullScreen) const;
    // Blocking keeps the cursor where it is for the application: position queries return the remembered position,
    // setting the position only changes the remembered one, mouse-move events are dropped. Unblocking puts the
    // real cursor back at the remembered position.
    virtual void BlockMouseMovement(bool block);
    virtual bool IsMouseMovementBlocked() const { return false; }
    // The cursor position in client coordinates.
    virtual bool GetCursorPosition(int* x, int* y) const;
    virtual void SetCursorPosition(int x, int y);
    virtual void ShowMouseCursor(bool show);
    // A modal box with an OK button.
    virtual void ShowMessageBox(const LxString& caption, const LxString& text) const;

    // --- failure report -------------------------------------------------------------------------------------------
    // The text shown when device creation fails for `settings`: the requirements of the requested feature level
    // (the operating system and `gpuName`, the graphics processor the demo needs), or "Window creation failed!"
    // when no level was requested; always ending in "\n This application will now exit.".
    static LxString GetCreationFailureReport(const LxDisplaySettings& settings, const LxString& gpuName);
    // The text shown when the window itself could not be made.
    static LxString GetWindowFailureReport();
    // Shows the report that fits the last CreateMainWindow failure, with the settings' title as caption.
    void ReportCreationFailure(const LxDisplaySettings& settings, const LxString& gpuName) const;

protected:
    // Dispatches to the input listeners in registration order until one marks the event handled.
    void ProcessKeyEvent(LxKeyEvent& event, KeyEventType type);
    void ProcessMouseMoveEvent(LxMouseMoveEvent& event);
    // Calls the render listener, if any.
    virtual void ProcessRenderEvent();

    // Set by platform classes when the window (not the device) could not be created.
    bool m_bWindowCreationFailed = false;

private:
    // One dispatch walk: a key event (of `type`) when `key` is set, else the mouse-move event.
    void DispatchInput(LxKeyEvent* key, KeyEventType type, LxMouseMoveEvent* move);

    LxArray<LxInputListener*> m_inputListeners;
    LxRenderListener* m_pRenderListener = nullptr;

    static LxWindowManager* ms_pInstance;
    static CreateFunction ms_pfnCreate;
};
