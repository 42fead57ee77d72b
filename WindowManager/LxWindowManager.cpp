#include "WindowManager/LxWindowManager.h"

#include "Common/LxLogManager.h"

LxWindowManager* LxWindowManager::ms_pInstance = nullptr;
LxWindowManager::CreateFunction LxWindowManager::ms_pfnCreate = nullptr;

LxWindowManager* LxWindowManager::GetPtr()
{
    if (ms_pInstance == nullptr)
        ms_pInstance = ms_pfnCreate ? ms_pfnCreate() : new LxWindowManager();
    return ms_pInstance;
}

void LxWindowManager::ShutDown()
{
    delete ms_pInstance;
    ms_pInstance = nullptr;
}

void LxWindowManager::SetCreateFunction(CreateFunction create)
{
    ms_pfnCreate = create;
}

LxWindowManager::LxWindowManager() = default;

LxWindowManager::~LxWindowManager() = default;

void LxWindowManager::RemoveRenderListener(LxRenderListener* listener)
{
    if (m_pRenderListener == listener)
        m_pRenderListener = nullptr;
}

void LxWindowManager::AddInputListener(LxInputListener* listener)
{
    if (listener != nullptr && !m_inputListeners.Contains(listener))
        m_inputListeners.Add(listener);
}

void LxWindowManager::RemoveInputListener(LxInputListener* listener)
{
    m_inputListeners.Remove(listener);
}

void LxWindowManager::ProcessKeyEvent(LxKeyEvent& event, KeyEventType type)
{
    DispatchInput(&event, type, nullptr);
}

void LxWindowManager::ProcessMouseMoveEvent(LxMouseMoveEvent& event)
{
    DispatchInput(nullptr, KEY_PRESSED, &event);
}

void LxWindowManager::DispatchInput(LxKeyEvent* key, KeyEventType type, LxMouseMoveEvent* move)
{
    // Walk a snapshot: a listener may add or remove listeners (itself included) from inside its callback. One that
    // was removed meanwhile is skipped, since the application may already have deleted it.
    const LxArray<LxInputListener*> listeners(m_inputListeners);
    for (LxInputListener* listener : listeners)
    {
        if (!m_inputListeners.Contains(listener))
            continue;
        if (key != nullptr)
        {
            if (type == KEY_PRESSED)
                listener->KeyPressed(*key);
            else
                listener->KeyReleased(*key);
            if (key->IsHandled())
                return;
        }
        else
        {
            listener->MouseMoved(*move);
            if (move->IsHandled())
                return;
        }
    }
}

void LxWindowManager::ProcessRenderEvent()
{
    if (m_pRenderListener != nullptr)
        m_pRenderListener->Render();
}

bool LxWindowManager::CreateMainWindow(const LxDisplaySettings& settings)
{
    (void)settings;
    LX_ERROR("LxWindowManager::CreateMainWindow().  Implement me for this platform!!");
    m_bWindowCreationFailed = true;
    return false;
}

int LxWindowManager::RunMessageLoop()
{
    LX_ERROR("LxWindowManager::RunMessageLoop().  Implement me for this platform!!");
    return -1;
}

unsigned LxWindowManager::GetDesktopWidth() const
{
    LX_ERROR("LxWindowManager::GetDesktopWidth().  Implement me for this platform!!");
    return 0;
}

unsigned LxWindowManager::GetDesktopHeight() const
{
    LX_ERROR("LxWindowManager::GetDesktopHeight().  Implement me for this platform!!");
    return 0;
}

float LxWindowManager::GetDesktopAspectRatio() const
{
    const unsigned height = GetDesktopHeight();
    return height == 0 ? 0.0f : float(GetDesktopWidth()) / float(height);
}

bool LxWindowManager::IsFullScreen() const
{
    LX_ERROR("LxWindowManager::IsFullScreen().  Implement me for this platform!!");
    return false;
}

bool LxWindowManager::IsDisplayModeSupported(unsigned width, unsigned height, unsigned refreshRate,
                                             unsigned bitsPerChannel, bool fullScreen) const
{
    (void)width, (void)height, (void)refreshRate, (void)bitsPerChannel, (void)fullScreen;
    LX_ERROR("LxWindowManager::IsDisplayModeSupported().  Implement me for this platform!!");
    return false;
}

void LxWindowManager::BlockMouseMovement(bool block)
{
    (void)block;
    // The capital O is part of the message as applications and tools have always seen it.
    LX_ERROR("LxWindowManager::BlockMouseMOvement().  Implement me for this platform!!");
}

bool LxWindowManager::GetCursorPosition(int* x, int* y) const
{
    (void)x, (void)y;
    LX_ERROR("LxWindowManager::GetCursorPosition().  Implement me for this platform!!");
    return false;
}

void LxWindowManager::SetCursorPosition(int x, int y)
{
    (void)x, (void)y;
    LX_ERROR("LxWindowManager::SetCursorPosition().  Implement me for this platform!!");
}

void LxWindowManager::ShowMouseCursor(bool show)
{
    (void)show;
    LX_ERROR("LxWindowManager::ShowMouseCursor().  Implement me for this platform!!");
}

void LxWindowManager::ShowMessageBox(const LxString& caption, const LxString& text) const
{
    (void)caption, (void)text;
    LX_ERROR("ShowMessageBox not implemented on this platform!!!");
}

namespace
{
struct LevelRequirements
{
    const char* direct3D;
    const char* system;
    bool runtimeAdvice; // Direct3D 10 and 11 runtimes were separate downloads on the systems they name
};

const char kExitLine[] = "\n This application will now exit.";
} // namespace

LxString LxWindowManager::GetCreationFailureReport(const LxDisplaySettings& settings, const LxString& gpuName)
{
    LevelRequirements req;
    if (settings.featureLevel12_1)
        req = {"Microsoft Direct3D Feature Level 12.1", "Windows 10 or newer", false};
    else if (settings.featureLevel12_0)
        req = {"Microsoft Direct3D Feature Level 12.0", "Windows 10 or newer", false};
    else if (settings.featureLevel11)
        req = {"Microsoft Direct3D 11", "Windows 7 or newer", true};
    else if (settings.featureLevel10_1)
        req = {"Microsoft Direct3D 10.1", "Windows Vista SP1 or newer", true};
    else if (settings.featureLevel10_0)
        req = {"Microsoft Direct3D 10", "Windows Vista or newer", true};
    else
        return LxString("Window creation failed!") + kExitLine;

    // The processor name is inserted as an argument, never used as a format: it may contain '%'.
    LxString report =
        LxString::Formatted("Window creation has failed. This demo requires support for the following features:\n"
                            "  1. %s\n"
                            "  2. %s\n"
                            "  3. %s\n"
                            "Your system does not appear to meet these requirements.\n"
                            "Please install the latest driver for your %s from the maker of your graphics hardware, "
                            "and install the latest updates for your operating system.",
                            req.direct3D, req.system, gpuName.c_str(), gpuName.c_str());
    if (req.runtimeAdvice)
        report += "\nAlso install the latest Direct3D runtime for your version of Windows.";
    report += kExitLine;
    return report;
}

LxString LxWindowManager::GetWindowFailureReport()
{
    return "There was a problem during window creation and initialization for this application. This application "
           "will now exit.";
}

void LxWindowManager::ReportCreationFailure(const LxDisplaySettings& settings, const LxString& gpuName) const
{
    ShowMessageBox(settings.title,
                   m_bWindowCreationFailed ? GetWindowFailureReport() : GetCreationFailureReport(settings, gpuName));
}
