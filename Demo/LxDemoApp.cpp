#include "LxDemoApp.h"

#include <GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h>
#include <RenderManager/D3D12/LxD3D12RenderManager.h>

#include <windows.h>

#include <cstdio>

namespace
{
// The statistics the report lists, with their names.
struct StatName
{
    LxFrameStatField field;
    const char* name;
};
const StatName kStats[] = {
    {LX_FRAME_STAT_TRIANGLES, "triangles"},
    {LX_FRAME_STAT_LINES, "lines"},
    {LX_FRAME_STAT_POINTS, "points"},
    {LX_FRAME_STAT_INDEXED_DRAWS, "indexed draws"},
    {LX_FRAME_STAT_NON_INDEXED_DRAWS, "non-indexed draws"},
    {LX_FRAME_STAT_INSTANCES, "instances"},
    {LX_FRAME_STAT_DISPATCHES, "dispatches"},
    {LX_FRAME_STAT_COMMAND_LISTS, "command lists"},
};
} // namespace

LxDemoApp::LxDemoApp() : m_fixedTime(1.0 / 60.0), m_clearColor(0.0f, 0.0f, 0.0f, 1.0f) {}

LxDemoApp::~LxDemoApp()
{
    Stop();
}

std::string LxDemoApp::OutputPath(const char* name) const
{
    return m_options.outputFolder + "/" + name;
}

std::string LxDemoApp::DataPath(const char* name) const
{
    return m_options.dataFolder + "/" + name;
}

bool LxDemoApp::Start(const LxDemoOptions& options)
{
    m_options = options;
    m_fixedTime = LxDemoFixedTimeSource(options.fixedStep);
    CreateDirectoryA(options.outputFolder.c_str(), nullptr); // an existing folder is fine
    LxLogManager::Init(true, false, LxString(OutputPath("LumexLog.txt").c_str()));
    LX_MESSAGE("Lumex demo: %ux%u, %u frames, output in %s", options.width, options.height, options.frames,
               options.outputFolder.c_str());

    LxDisplaySettings settings;
    settings.title = "Lumex demo";
    settings.width = options.width;
    settings.height = options.height;
    LxWindowManager& windows = LxWindowManager::GetRef();
    if (!windows.CreateMainWindow(settings))
    {
        LX_ERROR("The demo's window and device could not be created.");
        if (options.interactive)
            windows.ReportCreationFailure(settings, LxString("a Direct3D 12 graphics processor"));
        return false;
    }
    LxD3D12GPUResourceManager::RegisterCreateFunction(); // until the library registers it when it loads
    if (!LxGPUResourceManager::GetRef().Initialize(0, 0))
    {
        LX_ERROR("The resource manager could not be initialised.");
        return false;
    }
    windows.SetRenderListener(this);
    windows.AddInputListener(this);

    m_clock.reset(new LxClock(options.interactive ? static_cast<const LxTimeSource*>(&m_realTime) : &m_fixedTime));
    m_clock->SetSmoothTime(options.interactive); // a fixed clock steps exactly
    LxRenderManager& render = LxRenderManager::GetRef();
    m_nFrameTimer = render.CreateGPUTimer(LxString("frame"));
    m_nSceneTimer = render.CreateGPUTimer(LxString("scene"));
    m_bStarted = true;
    LoadContent();
    return true;
}

bool LxDemoApp::LoadContent()
{
    bool ok = true;
    LxScriptManager& scripts = LxScriptManager::GetRef();
    scripts.AddIncludeDirectory(LxString(m_options.dataFolder.c_str()));
    m_bScriptLoaded = scripts.LoadScript(LxString(DataPath("demo.lua").c_str()));
    ok = ok && m_bScriptLoaded;
    return ok;
}

int LxDemoApp::Run()
{
    if (!m_bStarted)
        return 1;
    const int loopCode = LxWindowManager::GetRef().RunMessageLoop();
    return m_nExitCode != 0 ? m_nExitCode : loopCode;
}

void LxDemoApp::Quit(int code)
{
    m_nExitCode = code;
    PostQuitMessage(code);
}

void LxDemoApp::UpdateScene()
{
    // Clock first: everything below sees this frame's time.
    if (!m_options.interactive)
        m_fixedTime.Advance();
    m_clock->FrameStep();
    ++m_nFrame;

    // Script messages: the script reacts to the frame and leaves its results in globals the scene reads.
    LxScriptManager& scripts = LxScriptManager::GetRef();
    if (m_bScriptLoaded)
    {
        LxString message;
        message.Format("frame(%u, %.6f)", m_nFrame, m_clock->GetTime());
        scripts.AddMessage(message);
        scripts.ProcessMessages();
        m_clearColor = LxVector4(scripts.GetFloatVariable(LxString("clearRed"), 0.0f),
                                 scripts.GetFloatVariable(LxString("clearGreen"), 0.0f),
                                 scripts.GetFloatVariable(LxString("clearBlue"), 0.0f), 1.0f);
    }
}

void LxDemoApp::DrawScene()
{
    LxRenderManager& render = LxRenderManager::GetRef();
    render.SetClearColor(m_clearColor);
    render.StartGPUTimer(m_nSceneTimer);
    render.Clear(true, true, true);
    render.StopGPUTimer(m_nSceneTimer);
}

void LxDemoApp::Render()
{
    UpdateScene();

    LxRenderManager& render = LxRenderManager::GetRef();
    if (!render.BeginScene())
    {
        LX_ERROR("Frame %u could not begin.", m_nFrame);
        Quit(1);
        return;
    }
    render.StartGPUTimer(m_nFrameTimer);
    DrawScene();
    render.StopGPUTimer(m_nFrameTimer);
    for (unsigned shot : m_options.screenshotFrames)
    {
        if (shot == m_nFrame)
            SaveScreenshot(m_nFrame);
    }
    render.EndScene();
    // The frame's counters stay until the next BeginScene clears them.
    for (const StatName& stat : kStats)
        m_totals.IncrementValue(stat.field, render.GetFrameStats().GetValue(stat.field));

    if (m_options.frames != 0 && m_nFrame >= m_options.frames)
    {
        render.WaitOnExecution(); // the GPU timers of the last frames are read back before the report
        const bool reported = WriteReport();
        Quit(reported && !LxLogManager::GetRef().ErrorsLogged() ? 0 : 1);
    }
}

void LxDemoApp::KeyPressed(LxKeyEvent& event)
{
    if (event.GetKeyCode() == LX_KEY_ESCAPE)
    {
        Quit(0);
        event.SetHandled(true);
    }
    else if (event.GetKeyCode() == LX_KEY_F5)
    {
        LX_MESSAGE("Reloading scripts (F5).");
        LxScriptManager::GetRef().ReloadAllScripts();
        event.SetHandled(true);
    }
}

bool LxDemoApp::SaveScreenshot(unsigned frame)
{
    LxD3D12RenderManager* render = LxD3D12RenderManager::GetD3D12Ptr();
    LxImageData2D image;
    char name[64];
    std::snprintf(name, sizeof(name), "frame%04u.png", frame);
    if (render == nullptr || !render->CaptureBackBuffer(&image) ||
        !LxImageIO::SavePNG(LxString(OutputPath(name).c_str()), image))
    {
        LX_ERROR("Screenshot of frame %u could not be saved.", frame);
        return false;
    }
    ++m_nScreenshots;
    return true;
}

bool LxDemoApp::WriteReport()
{
    FILE* file = std::fopen(OutputPath("report.txt").c_str(), "wb");
    if (file == nullptr)
    {
        LX_ERROR("Cannot write %s", OutputPath("report.txt").c_str());
        return false;
    }
    std::fprintf(file, "Lumex demo report\n\nframes: %u\nscene time: %.3f s\nresolution: %ux%u\n\n", m_nFrame,
                 m_clock->GetTime(), m_options.width, m_options.height);
    std::fprintf(file, "frame statistics (total over all frames, per frame)\n");
    for (const StatName& stat : kStats)
    {
        const unsigned total = m_totals.GetValue(stat.field);
        std::fprintf(file, "  %-18s %10u %10.1f\n", stat.name, total, m_nFrame ? double(total) / m_nFrame : 0.0);
    }
    const LxGPUTimerResults& timers = LxRenderManager::GetRef().GetGPUTimerResults();
    std::fprintf(file, "\nGPU timers (ms; %u frames measured)\n", timers.framesMeasured);
    std::fprintf(file, "  %-10s %9s %9s %9s %9s\n", "timer", "last", "min", "max", "average");
    for (unsigned i = 0; i < timers.GetCount(); ++i)
    {
        const LxGPUTimerResult& t = timers.timers[i];
        std::fprintf(file, "  %-10s %9.3f %9.3f %9.3f %9.3f\n", t.name.c_str(), t.lastMs, t.minMs, t.maxMs,
                     t.averageMs);
    }
    std::fclose(file);

    char summary[256];
    std::snprintf(summary, sizeof(summary), "%u frames at %ux%u, %u screenshots, %u triangles, frame GPU time %.3f ms",
                  m_nFrame, m_options.width, m_options.height, m_nScreenshots,
                  m_totals.GetValue(LX_FRAME_STAT_TRIANGLES), timers.GetCount() > 0 ? timers.timers[0].averageMs : 0.0);
    m_summary = summary;
    return true;
}

void LxDemoApp::Stop()
{
    if (!m_bStarted)
        return;
    m_bStarted = false;
    LxWindowManager* windows = LxWindowManager::GetPtr();
    windows->RemoveInputListener(this);
    windows->RemoveRenderListener(this);
    LxScriptManager::ShutDown();
    LxGPUResourceManager::ShutDown();
    LxRenderManager::ShutDown();
    LxWindowManager::ShutDown();
    LxLogManager::ShutDown();
}
