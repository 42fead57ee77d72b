#include "LxDemoApp.h"

#include <EffectManager/D3D12/LxD3D12EffectManager.h>
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
    {LX_FRAME_STAT_INDEXED_DRAWS, "indexed draws"},
    {LX_FRAME_STAT_NON_INDEXED_DRAWS, "non-indexed draws"},
    {LX_FRAME_STAT_INSTANCES, "instances"},
    {LX_FRAME_STAT_COMMAND_LISTS, "command lists"},
};

// Where the creatures stand (x, z), how fast each sways, and which ones the camera never sees (the culling proof).
struct Placement
{
    const char* name;
    float x, z, speed;
};
const Placement kCreatures[] = {
    {"creatureLeft", -1.6f, 0.4f, 0.8f},
    {"creatureMiddle", 0.0f, 1.2f, 1.0f},
    {"creatureRight", 1.6f, 0.2f, 1.3f},
    {"creatureBehindCamera", 0.0f, -30.0f, 1.0f},
};

float ScriptNumber(const char* name, float fallback)
{
    return LxScriptManager::GetRef().GetFloatVariable(LxString(name), fallback);
}

void SetVector(const LxCountedPtr<LxEffect>& effect, const char* parameter, float r, float g, float b)
{
    if (!effect)
        return;
    if (LxEffectParameter* p = effect->GetParameter(parameter))
    {
        const float value[4] = {r, g, b, 1.0f};
        p->SetFloatVector(value);
    }
}
} // namespace

LxDemoApp::LxDemoApp() : m_fixedTime(1.0 / 60.0) {}

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
    // The log is echoed to the console too: a first run shows each effect as it compiles (a cold shader cache).
    LxLogManager::Init(true, true, LxString(OutputPath("LumexLog.txt").c_str()));
    LX_MESSAGE("Lumex demo: %ux%u, %u frames, data in %s, output in %s", options.width, options.height, options.frames,
               options.dataFolder.c_str(), options.outputFolder.c_str());
    if (!StartManagers())
        return false;
    m_bStarted = true;
    LoadContent();
    return true;
}

bool LxDemoApp::StartManagers()
{
    LxDisplaySettings settings;
    settings.title = "Lumex demo";
    settings.width = m_options.width;
    settings.height = m_options.height;
    LxWindowManager& windows = LxWindowManager::GetRef();
    if (!windows.CreateMainWindow(settings))
    {
        LX_ERROR("The demo's window and device could not be created.");
        if (m_options.interactive)
            windows.ReportCreationFailure(settings, LxString("a Direct3D 12 graphics processor"));
        return false;
    }
    if (!LxGPUResourceManager::GetRef().Initialize(0, 0))
    {
        LX_ERROR("The resource manager could not be initialised.");
        return false;
    }
    windows.SetRenderListener(this);
    windows.AddInputListener(this);

    m_clock.reset(new LxClock(m_options.interactive ? static_cast<const LxTimeSource*>(&m_realTime) : &m_fixedTime));
    m_clock->SetSmoothTime(m_options.interactive); // a fixed clock steps exactly
    m_frame.reset(new LxFrameUpdate(m_clock.get()));
    LxRenderManager& render = LxRenderManager::GetRef();
    m_nFrameTimer = render.CreateGPUTimer(LxString("frame"));
    m_nSkyTimer = render.CreateGPUTimer(LxString("sky"));
    m_nObjectTimer = render.CreateGPUTimer(LxString("objects"));
    return true;
}

void LxDemoApp::LoadContent()
{
    // Effects: the default effect first (models and particle groups fall back to it), then the sky. A second start
    // finds every shader in the cache and compiles nothing.
    LxEffectManager& effects = LxEffectManager::GetRef();
    effects.AddSearchPath(LxString(DataPath("effects").c_str()));
    effects.SetShaderCachePath(LxString(m_options.cacheFolder.c_str()));
    m_defaultEffect = effects.LoadEffect(LxString("default.fx"), LxEffectManager::LOAD_DEFAULT_EFFECT);
    if (m_defaultEffect)
        effects.SetDefaultEffect(m_defaultEffect);
    m_sky = effects.LoadEffect(LxString("backdrop.fx"));

    // Cameras and objects register the values their effects ask for by name ("ViewProjMatrix", "Bones", ...).
    LxCameraManager& cameras = LxCameraManager::GetRef();
    cameras.Initialize();
    m_pCamera = cameras.CreateCamera(LxString("main"));
    m_pCamera->SetFrustum(70.0f, float(m_options.width) / float(m_options.height), 0.1f, 100.0f);
    m_pCamera->SetPosition(LxPoint3(0.0f, 1.6f, -6.0f));
    m_pCamera->SetLookAt(LxPoint3(0.0f, 1.2f, 0.0f), LxVector3(0.0f, 1.0f, 0.0f));
    cameras.SetActiveCamera(m_pCamera);

    LxObjectManager& objects = LxObjectManager::GetRef();
    objects.Initialize();
    objects.AddSearchPath(LxString(m_options.dataFolder.c_str()));
    for (const Placement& p : kCreatures)
    {
        LxAnimatedModel* creature =
            objects.CreateAnimatedModel(LxString(p.name), LxString("creature.zip"), LxString("creature.anim.zip"));
        if (!creature)
            continue;
        LxMatrix4 world;
        world.MakeTranslation(p.x, 0.0f, p.z);
        creature->SetWorldTransform(world);
        creature->SetAnimationSpeed(p.speed);
        m_creatures.push_back(creature);
    }
    // The ground fades into the sky's lower colour; the sparks come last so that they blend over everything.
    m_pGround = objects.CreateAnimatedModel(LxString("ground"), LxString("ground.zip"));
    objects.CreateParticleGroup(LxString("sparks"), LxString("sparks"));

    // The camera's fly path lives in the creature's animation set; the first-person controller waits for input.
    LxString pathFile;
    if (objects.LookupObjectPath(LxString("creature.anim.zip"), &pathFile))
        m_cameraPath.reset(LxAnimationSet::CreateFromFile(pathFile));
    if (m_cameraPath)
        m_flypath.reset(LxFlypathCameraController::CreateFromSet(m_pCamera, *m_cameraPath, LxString("camera")));
    if (m_flypath)
        m_frame->AddCameraController(m_flypath.get());
    else
        LX_ERROR("The camera's fly path could not be loaded from creature.anim.zip: the camera stays put.");
    m_firstPerson.reset(new LxFPSCameraController(m_pCamera));

    LxScriptManager& scripts = LxScriptManager::GetRef();
    scripts.AddIncludeDirectory(LxString(m_options.dataFolder.c_str()));
    m_bScriptLoaded = scripts.LoadScript(LxString(DataPath("demo.lua").c_str()));
    m_frame->SetRunScripts(m_bScriptLoaded);
    objects.StartDrawTracking();
}

int LxDemoApp::Run()
{
    if (!m_bStarted)
        return 1;
    const int loopCode = LxWindowManager::GetRef().RunMessageLoop();
    if (m_options.frames == 0 && !WriteReport()) // an interactive run reports when the window closes
        return 1;
    return m_nExitCode != 0 ? m_nExitCode : loopCode;
}

void LxDemoApp::Quit(int code)
{
    m_nExitCode = code;
    PostQuitMessage(code);
}

void LxDemoApp::ApplyScript()
{
    if (!m_bScriptLoaded)
        return;
    LxRenderManager::GetRef().SetClearColor(ScriptNumber("clearRed", 0.0f), ScriptNumber("clearGreen", 0.0f),
                                            ScriptNumber("clearBlue", 0.0f), 1.0f);
    SetVector(m_sky, "vTop", ScriptNumber("topRed", 0.05f), ScriptNumber("topGreen", 0.08f),
              ScriptNumber("topBlue", 0.2f));
    SetVector(m_sky, "vBottom", ScriptNumber("bottomRed", 0.2f), ScriptNumber("bottomGreen", 0.1f),
              ScriptNumber("bottomBlue", 0.15f));
    if (m_sky)
    {
        if (LxEffectParameter* pulse = m_sky->GetParameter("fPulse"))
            pulse->SetFloat(ScriptNumber("pulse", 0.0f));
    }
    if (m_pGround && m_pGround->GetModel().GetChunkCount() > 0)
        SetVector(m_pGround->GetModel().GetChunkEffect(0), "vFar", ScriptNumber("bottomRed", 0.2f),
                  ScriptNumber("bottomGreen", 0.1f), ScriptNumber("bottomBlue", 0.15f));
    // The creatures share one effect (one shared reference per file): tinting one tints them all.
    if (!m_creatures.empty() && m_creatures[0]->GetModel().GetChunkCount() > 0)
        SetVector(m_creatures[0]->GetModel().GetChunkEffect(0), "vTint", ScriptNumber("tintRed", 0.35f),
                  ScriptNumber("tintGreen", 0.8f), ScriptNumber("tintBlue", 0.65f));
}

void LxDemoApp::DrawSky()
{
    if (!m_sky)
        return;
    unsigned passes = 0;
    if (!m_sky->Begin(m_sky->FindTechnique(0), &passes))
        return;
    for (unsigned p = 0; p < passes; ++p)
    {
        if (m_sky->BeginPass(p))
        {
            LxRenderManager::GetRef().DrawNonIndexed(LxRenderManager::PRIM_TRIANGLE_LIST, 3, 0);
            m_sky->EndPass();
        }
    }
    m_sky->End();
}

void LxDemoApp::Reload(const char* why)
{
    LX_MESSAGE("Reloading effects, objects and scripts (%s).", why);
    LxEffectManager::GetRef().ReloadEffects(false);
    LxObjectManager::GetRef().ReloadObjects(false);
    LxScriptManager::GetRef().ReloadAllScripts();
}

void LxDemoApp::Render()
{
    // 1-3: clock, script messages, objects and the camera. The script hears the time the clock is about to read.
    if (!m_options.interactive)
        m_fixedTime.Advance();
    ++m_nFrame;
    if (m_bScriptLoaded)
    {
        LxString message;
        message.Format("frame(%u, %.6f)", m_nFrame,
                       m_options.interactive ? m_clock->GetTime() : m_fixedTime.GetTime() - m_options.fixedStep);
        LxScriptManager::GetRef().AddMessage(message);
    }
    const double time = m_frame->Step();
    ApplyScript();
    if (m_options.watchFiles && time - m_dLastWatch >= 1.0)
    {
        m_dLastWatch = time;
        Reload("files watched");
    }

    // 4: drawing.
    LxRenderManager& render = LxRenderManager::GetRef();
    if (!render.BeginScene())
    {
        LX_ERROR("Frame %u could not begin.", m_nFrame);
        Quit(1);
        return;
    }
    render.StartGPUTimer(m_nFrameTimer);
    render.Clear(true, true, true);
    render.StartGPUTimer(m_nSkyTimer);
    DrawSky();
    render.StopGPUTimer(m_nSkyTimer);
    render.StartGPUTimer(m_nObjectTimer);
    m_frame->DrawObjects();
    m_nCulled += LxObjectManager::GetRef().GetCulledCount();
    render.StopGPUTimer(m_nObjectTimer);
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

void LxDemoApp::TakeOverCamera()
{
    // A recorded run (a fixed clock) stays on its fly path whatever the window hears (the pointer resting over a new
    // window sends moves), so that it renders the same frames every time.
    if (m_bFirstPersonActive || !m_firstPerson || !m_options.interactive)
        return;
    if (m_flypath)
        m_frame->RemoveCameraController(m_flypath.get());
    m_firstPerson->SetCamera(m_pCamera); // starts from where the fly path left the camera
    m_frame->AddCameraController(m_firstPerson.get());
    m_bFirstPersonActive = true;
    LX_MESSAGE("The first-person camera takes over.");
}

void LxDemoApp::KeyPressed(LxKeyEvent& event)
{
    if (event.GetKeyCode() == LX_KEY_ESCAPE)
    {
        Quit(0);
        event.SetHandled(true);
        return;
    }
    if (event.GetKeyCode() == LX_KEY_F5)
    {
        Reload("F5");
        event.SetHandled(true);
        return;
    }
    TakeOverCamera();
    if (m_bFirstPersonActive)
        m_firstPerson->KeyPressed(event);
}

void LxDemoApp::MouseMoved(LxMouseMoveEvent& event)
{
    // Moves alone do not take the camera over (a button press does, as a key): they only turn it once it is taken.
    if (m_bFirstPersonActive)
        m_firstPerson->MouseMoved(event);
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
    LxObjectManager& objects = LxObjectManager::GetRef();
    std::fprintf(file, "Lumex demo report\n\nframes: %u\nscene time: %.3f s\nresolution: %ux%u\nobjects: %u\n",
                 m_nFrame, m_clock->GetTime(), m_options.width, m_options.height, objects.GetObjectCount());
    std::fprintf(file, "objects culled (sum over frames): %u\n", m_nCulled);
    LxD3D12EffectManager* d3d12Effects = LxD3D12EffectManager::GetD3D12Ptr();
    const unsigned compiled = d3d12Effects ? d3d12Effects->GetCompiler().GetCompileCount() : 0;
    std::fprintf(file, "shaders compiled: %u (0 when every shader came from the shader cache)\n\n", compiled);
    std::fprintf(file, "frame statistics (total over all frames, per frame)\n");
    for (const StatName& stat : kStats)
    {
        const unsigned total = m_totals.GetValue(stat.field);
        std::fprintf(file, "  %-18s %10u %10.1f\n", stat.name, total, m_nFrame ? double(total) / m_nFrame : 0.0);
    }
    // The object manager's report: per object, indexed:non-indexed draws and points:lines:triangles draws.
    const LxString drawn = objects.EndDrawTracking();
    std::fprintf(file, "\nobjects drawn\n");
    LxList<LxString> lines;
    LxFile::SplitTextLines(drawn.c_str(), drawn.GetLength(), lines);
    for (const LxString& line : lines)
        std::fprintf(file, "  %s\n", line.c_str());

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
    std::snprintf(summary, sizeof(summary),
                  "%u frames at %ux%u, %u objects, %u shaders compiled, %u screenshots, %.0f triangles a frame, "
                  "frame GPU time %.3f ms",
                  m_nFrame, m_options.width, m_options.height, objects.GetObjectCount(), compiled, m_nScreenshots,
                  m_nFrame ? double(m_totals.GetValue(LX_FRAME_STAT_TRIANGLES)) / m_nFrame : 0.0,
                  timers.GetCount() > 0 ? timers.timers[0].averageMs : 0.0);
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
    LxRenderManager::GetRef().WaitOnExecution();
    m_frame.reset();
    m_flypath.reset();
    m_firstPerson.reset();
    m_cameraPath.reset();
    m_creatures.clear();
    m_pGround = nullptr;
    m_sky = LxCountedPtr<LxEffect>();
    m_defaultEffect = LxCountedPtr<LxEffect>();
    LxScriptManager::ShutDown();
    LxObjectManager::ShutDown();
    LxCameraManager::ShutDown();
    LxEffectManager::ShutDown();
    LxGPUResourceManager::ShutDown();
    LxRenderManager::ShutDown();
    LxWindowManager::ShutDown();
    LxLogManager::ShutDown();
}
