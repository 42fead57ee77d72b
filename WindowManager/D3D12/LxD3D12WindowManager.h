// LxD3D12WindowManager: the window manager of a Direct3D 12 application, and so the singleton on Windows. It adds
// to the Win32 window the device hand-off: CreateMainWindow checks the back-buffer and depth formats, creates the
// window, picks the DXGI adapter, fills the swap-chain description and hands everything to the render manager
// (LxD3D12RenderManager::Init), whose result is the result of window creation.
//
// Adapters: every adapter is logged ("Found video adapter %s (Device ID: %d)"); the one at the settings' index is
// used ("Using adapter ..."), and an index beyond the last falls back to the default adapter with a warning.
// A multisampled swap chain is not possible with flip-model presentation: the request warns and one sample is used
// (the application renders multisampled off-screen and resolves).
//
// The window manager does not own the render manager: shut the render manager down before this one, so that the
// swap chain goes away before its window. Failures are logged and return false (the window made on the way is
// destroyed again); the application then shows ReportCreationFailure. Main thread only.
#pragma once

#include "RenderManager/D3D12/LxD3D12RenderManager.h"
#include "WindowManager/D3D12/LxWin32WindowManager.h"

class LX_API LxD3D12WindowManager : public LxWin32WindowManager
{
public:
    LxD3D12WindowManager();
    ~LxD3D12WindowManager() override;

    bool CreateMainWindow(const LxDisplaySettings& settings) override;

    // Whether a Direct3D 12 device at feature level 11.0 can be made on the default adapter (the probe device is
    // released at once).
    static bool IsD3D12Supported();
    // Logs the first adapter's description (trimmed), vendor, device and subsystem ids; false when there is none.
    // CreateMainWindow calls it once per process.
    static bool LogGPUDescription();

    // The description handed to the render manager by the last creation that got that far.
    const LxD3D12RenderManager::CreationDesc& GetCreationDesc() const { return m_creationDesc; }
    // The index of the adapter the last creation used; -1 for the default adapter.
    int GetAdapterIndex() const { return m_nAdapterIndex; }

protected:
    // The hand-off itself (LxD3D12RenderManager::Init); the factory and adapter are valid during the call only.
    virtual bool InitializeRenderManager(const LxD3D12RenderManager::CreationDesc& desc);

private:
    LxD3D12RenderManager::CreationDesc m_creationDesc;
    int m_nAdapterIndex = -1;
};
