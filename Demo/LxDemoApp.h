// LxDemoApp: the Lumex demo. It opens a window through the window manager, loads the demo's content through the
// library's managers and renders a fixed number of frames on a fixed clock (or, interactively, until the window is
// closed), saving screenshots of chosen frames and, at the end, a report of frame statistics, objects drawn and GPU
// timers.
//
// One frame, in the order every Lumex application keeps (Render):
//   1. clock step (fixed or real time);
//   2. script messages: "frame(n, t)" is queued and the queue processed; the script's globals drive the scene;
//   3. object and camera updates;
//   4. drawing between BeginScene and EndScene, timed by GPU timers; a screenshot when the frame is a chosen one.
// Keys: F5 reloads effects and scripts, Escape quits. Everything runs on the window's thread.
#pragma once

#include "LxDemoFixedTimeSource.h"
#include "LxDemoOptions.h"

#include <LumexCore/Lumex.h>

#include <memory>
#include <string>

class LxDemoApp : public LxRenderListener, public LxInputListener
{
public:
    LxDemoApp();
    ~LxDemoApp() override;

    // Log, window and device, content. False (after logging why) when the demo cannot run at all; content that
    // fails to load is logged and left out, the rest still runs.
    bool Start(const LxDemoOptions& options);
    // The frame loop; the process exit code (0: every frame rendered, the report written, no error logged).
    int Run();
    // Writes the report, releases the content and shuts the managers down. Safe to call twice.
    void Stop();

    void Render() override;
    void KeyPressed(LxKeyEvent& event) override;

    // The one-line summary printed at the end.
    const std::string& GetSummary() const { return m_summary; }

private:
    std::string OutputPath(const char* name) const;
    std::string DataPath(const char* name) const;
    bool LoadContent();
    void UpdateScene();
    void DrawScene();
    bool SaveScreenshot(unsigned frame);
    bool WriteReport();
    void Quit(int code);

    LxDemoOptions m_options;
    LxDemoFixedTimeSource m_fixedTime;
    LxRealTimeSource m_realTime;
    std::unique_ptr<LxClock> m_clock;
    unsigned m_nFrame = 0;
    int m_nFrameTimer = -1;
    int m_nSceneTimer = -1;
    int m_nExitCode = 0;
    bool m_bStarted = false;
    bool m_bScriptLoaded = false;
    unsigned m_nScreenshots = 0;
    double m_dLastWatch = 0.0;
    LxVector4 m_clearColor;
    LxFrameStats m_totals;
    std::string m_summary;
};
