// LxDemoApp: the Lumex demo. It opens a window through the window manager, loads the demo's content through the
// library's managers (effects, a skinned and animated model archive placed four times, a ground model, a particle
// group, a Lua script, a camera on a fly path) and renders a fixed number of frames on a fixed clock (or,
// interactively, until the window is closed), saving screenshots of chosen frames and, at the end, a report of frame
// statistics, objects drawn and GPU timers.
//
// One frame, in the order every Lumex application keeps (LxFrameUpdate):
//   1. clock step (fixed or real time);
//   2. script messages: "frame(n, t)" is queued and the queue processed; the script's globals then drive the sky
//      colours, the creatures' tint and the clear colour;
//   3. object updates (poses, particle steps), then the active camera controller (the fly path, or the first-person
//      controller once the user presses a key or a mouse button in an interactive run);
//   4. drawing between BeginScene and EndScene: the sky, then the objects culled against the camera's frustum,
//      timed by GPU timers; a screenshot when the frame is a chosen one.
// Keys: F5 reloads effects, objects and scripts; Escape quits; in an interactive run any other key or mouse button
// hands the camera to the first-person controller (W/A/S/D/Q/E, mouse with a button held). Content that fails to load
// is logged by file and left out; the rest still runs. Everything runs on the window's thread.
#pragma once

#include "LxDemoFixedTimeSource.h"
#include "LxDemoOptions.h"

#include <LumexCore/Lumex.h>

#include <memory>
#include <string>
#include <vector>

class LxDemoApp : public LxRenderListener, public LxInputListener
{
public:
    LxDemoApp();
    ~LxDemoApp() override;

    // Log, window and device, content. False (after logging why) when the demo cannot run at all.
    bool Start(const LxDemoOptions& options);
    // The frame loop; the process exit code (0: every frame rendered, the report written, no error logged).
    int Run();
    // Releases the content and shuts the managers down. Safe to call twice.
    void Stop();

    void Render() override;
    void KeyPressed(LxKeyEvent& event) override;
    void MouseMoved(LxMouseMoveEvent& event) override;

    // The one-line summary printed at the end.
    const std::string& GetSummary() const { return m_summary; }

private:
    std::string OutputPath(const char* name) const;
    std::string DataPath(const char* name) const;
    bool StartManagers();
    void LoadContent();
    void ApplyScript();
    void DrawSky();
    void Reload(const char* why);
    void TakeOverCamera();
    bool SaveScreenshot(unsigned frame);
    bool WriteReport();
    void Quit(int code);

    LxDemoOptions m_options;
    LxDemoFixedTimeSource m_fixedTime;
    LxRealTimeSource m_realTime;
    std::unique_ptr<LxClock> m_clock;
    std::unique_ptr<LxFrameUpdate> m_frame;
    LxCountedPtr<LxEffect> m_defaultEffect;
    LxCountedPtr<LxEffect> m_sky;
    std::vector<LxAnimatedModel*> m_creatures; // owned by the object manager
    LxAnimatedModel* m_pGround = nullptr;      // owned by the object manager
    LxCamera* m_pCamera = nullptr;             // owned by the camera manager
    std::unique_ptr<LxAnimationSet> m_cameraPath;
    std::unique_ptr<LxFlypathCameraController> m_flypath;
    std::unique_ptr<LxFPSCameraController> m_firstPerson;
    bool m_bFirstPersonActive = false;
    unsigned m_nFrame = 0;
    int m_nFrameTimer = -1;
    int m_nSkyTimer = -1;
    int m_nObjectTimer = -1;
    int m_nExitCode = 0;
    bool m_bStarted = false;
    bool m_bScriptLoaded = false;
    unsigned m_nScreenshots = 0;
    unsigned m_nCulled = 0;
    double m_dLastWatch = 0.0;
    LxFrameStats m_totals;
    std::string m_summary;
};
