// The Direct3D 12 window manager under Wine with lavapipe: the description handed to the render manager (formats,
// usage, buffer count, sample count, feature level, heap sizes), adapter enumeration with the fall-back for an index
// beyond the last, failures before and after the window, the GPU description, the support probe, and a real
// device whose frame loop renders through the render listener.
#include "WindowManager/D3D12/LxD3D12WindowManager.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
// Records the hand-off instead of making a device (or passes it on, when asked), and message boxes instead of
// showing them.
class CapturingWindowManager : public LxD3D12WindowManager
{
public:
    bool passOn = false;
    bool result = true;
    int handOffs = 0;
    bool hadFactory = false;
    bool hadAdapter = false;
    LxD3D12RenderManager::CreationDesc desc;
    mutable std::vector<std::pair<std::string, std::string>> boxes;

    void ShowMessageBox(const LxString& caption, const LxString& text) const override
    {
        boxes.emplace_back(caption.c_str(), text.c_str());
    }

protected:
    bool InitializeRenderManager(const LxD3D12RenderManager::CreationDesc& d) override
    {
        ++handOffs;
        desc = d;
        hadFactory = d.factory != nullptr;
        hadAdapter = d.adapter != nullptr;
        return passOn ? LxD3D12WindowManager::InitializeRenderManager(d) : result;
    }
};

LxDisplaySettings SmallWindow()
{
    LxDisplaySettings s;
    s.title = "Lumex D3D12 window manager test";
    s.width = 320;
    s.height = 240;
    return s;
}

bool QuitWasPosted()
{
    MSG msg;
    return PeekMessageA(&msg, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != 0;
}

TEST(D3D12WindowManager, HandsTheSwapChainDescriptionToTheRenderManager)
{
    LxTest::LogCapture log;
    CapturingWindowManager wm;
    LxDisplaySettings s = SmallWindow();
    s.sRGB = true;
    s.depthBits = 32;
    s.stencilBits = 0;
    s.backBufferCount = 3;
    s.unorderedAccessBackBuffer = true;
    s.multisampleCount = 4;
    s.featureLevel12_0 = true;
    s.refreshRateNumerator = 60;
    s.uploadHeapSizeMB = 16;
    s.shaderResourceDescriptors = 100;
    s.unorderedAccessDescriptors = 28;
    s.samplerDescriptors = 20;
    s.renderTargetDescriptors = 30;
    s.depthStencilDescriptors = 40;
    ASSERT_TRUE(wm.CreateMainWindow(s));
    ASSERT_EQ(wm.handOffs, 1);
    EXPECT_TRUE(wm.hadFactory);
    EXPECT_TRUE(wm.hadAdapter);
    EXPECT_EQ(wm.GetAdapterIndex(), 0);

    const DXGI_SWAP_CHAIN_DESC& sc = wm.desc.swapChainDesc;
    EXPECT_EQ(sc.BufferDesc.Width, 320u);
    EXPECT_EQ(sc.BufferDesc.Height, 240u);
    EXPECT_EQ(sc.BufferDesc.RefreshRate.Numerator, 60u);
    EXPECT_EQ(sc.BufferDesc.RefreshRate.Denominator, 1u);
    EXPECT_EQ(sc.BufferDesc.Format, DXGI_FORMAT_R8G8B8A8_UNORM);
    EXPECT_EQ(wm.desc.backBufferViewFormat, DXGI_FORMAT_R8G8B8A8_UNORM_SRGB);
    EXPECT_EQ(wm.desc.depthStencilFormat, DXGI_FORMAT_D32_FLOAT);
    EXPECT_EQ(sc.BufferUsage, DXGI_USAGE(DXGI_USAGE_RENDER_TARGET_OUTPUT | DXGI_USAGE_UNORDERED_ACCESS));
    EXPECT_EQ(sc.BufferCount, 3u);
    EXPECT_EQ(sc.OutputWindow, wm.GetWindowHandle());
    EXPECT_TRUE(sc.Windowed);
    EXPECT_EQ(sc.SwapEffect, DXGI_SWAP_EFFECT_FLIP_DISCARD);
    EXPECT_EQ(sc.Flags, UINT(DXGI_SWAP_CHAIN_FLAG_ALLOW_MODE_SWITCH));
    EXPECT_EQ(sc.SampleDesc.Count, 1u);
    EXPECT_EQ(log.Count("MSAA swap chain not supported in D3D12.  Application must create offscreen render target "
                        "and resolve.",
                        LX_LOG_WARNING),
              1);
    EXPECT_EQ(wm.desc.minFeatureLevel, D3D_FEATURE_LEVEL_12_0);
    EXPECT_EQ(wm.desc.driverType, D3D_DRIVER_TYPE_HARDWARE);
    EXPECT_FALSE(wm.desc.fullScreen);
    EXPECT_EQ(wm.desc.uploadHeapSize, 16ull << 20);
    EXPECT_EQ(wm.desc.shaderResourceDescriptors, 128u);
    EXPECT_EQ(wm.desc.samplerDescriptors, 20u);
    EXPECT_EQ(wm.desc.renderTargetDescriptors, 30u);
    EXPECT_EQ(wm.desc.depthStencilDescriptors, 40u);

    EXPECT_GE(log.Count("Found video adapter "), 1);
    EXPECT_EQ(log.Count("Using adapter "), 1);
    EXPECT_EQ(log.Count("Could not find video adapter"), 0);
}

TEST(D3D12WindowManager, FeatureLevelsBufferFormatsAndDriverFromTheSettings)
{
    struct Case
    {
        bool LxDisplaySettings::*flag; // null: none
        D3D_FEATURE_LEVEL level;
        unsigned bits;
        DXGI_FORMAT format;
    };
    // Each creation costs a DXGI factory (over a second under Wine): the remaining levels are a plain table, checked
    // with the settings natively.
    const Case cases[] = {
        {nullptr, D3D_FEATURE_LEVEL_11_0, 8, DXGI_FORMAT_R8G8B8A8_UNORM},
        {&LxDisplaySettings::featureLevel12_1, D3D_FEATURE_LEVEL_12_1, 10, DXGI_FORMAT_R10G10B10A2_UNORM},
        {&LxDisplaySettings::featureLevel10_1, D3D_FEATURE_LEVEL_10_1, 16, DXGI_FORMAT_R16G16B16A16_FLOAT},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.bits);
        CapturingWindowManager wm;
        LxDisplaySettings s = SmallWindow();
        if (c.flag)
            s.*c.flag = true;
        s.bitsPerChannel = c.bits;
        s.softwareDriver = c.bits == 16;
        s.fullScreen = c.bits == 10;
        ASSERT_TRUE(wm.CreateMainWindow(s));
        // Full screen is the render manager's to enter: the swap chain starts windowed, at the display's size.
        EXPECT_EQ(wm.desc.fullScreen, s.fullScreen);
        EXPECT_TRUE(wm.desc.swapChainDesc.Windowed);
        EXPECT_EQ(wm.desc.swapChainDesc.BufferDesc.Width, s.fullScreen ? wm.GetDesktopWidth() : 320u);
        EXPECT_EQ(wm.desc.minFeatureLevel, c.level);
        EXPECT_EQ(wm.desc.swapChainDesc.BufferDesc.Format, c.format);
        EXPECT_EQ(wm.desc.backBufferViewFormat, c.format);
        EXPECT_EQ(wm.desc.depthStencilFormat, DXGI_FORMAT_D24_UNORM_S8_UINT);
        EXPECT_EQ(wm.desc.driverType, s.softwareDriver ? D3D_DRIVER_TYPE_WARP : D3D_DRIVER_TYPE_HARDWARE);
        EXPECT_EQ(wm.hadAdapter, !s.softwareDriver);
        EXPECT_EQ(wm.desc.swapChainDesc.BufferUsage, DXGI_USAGE(DXGI_USAGE_RENDER_TARGET_OUTPUT));
        EXPECT_EQ(wm.desc.uploadHeapSize, 512ull << 20);
        EXPECT_EQ(wm.desc.shaderResourceDescriptors, 2048u);
    }
}

TEST(D3D12WindowManager, AdapterIndexBeyondTheLastFallsBackToTheDefault)
{
    LxTest::LogCapture log;
    CapturingWindowManager wm;
    LxDisplaySettings s = SmallWindow();
    s.adapterIndex = 99;
    ASSERT_TRUE(wm.CreateMainWindow(s));
    EXPECT_NE(wm.GetWindowHandle(), nullptr);
    EXPECT_FALSE(wm.hadAdapter);
    EXPECT_EQ(wm.GetAdapterIndex(), -1);
    EXPECT_EQ(log.Count("Could not find video adapter at index 99. Using default adapter.", LX_LOG_WARNING), 1);
    EXPECT_EQ(log.Count("Using adapter "), 0);
}

TEST(D3D12WindowManager, FormatFailuresComeBeforeAnyWindow)
{
    LxTest::LogCapture log;
    CapturingWindowManager wm;
    LxDisplaySettings s = SmallWindow();
    s.bitsPerChannel = 10;
    s.sRGB = true;
    s.featureLevel12_1 = true;
    const HWND before = FindWindowA("LumexWindowClass", nullptr);
    EXPECT_FALSE(wm.CreateMainWindow(s));
    EXPECT_EQ(wm.GetWindowHandle(), nullptr);
    EXPECT_EQ(FindWindowA("LumexWindowClass", nullptr), before);
    EXPECT_EQ(wm.handOffs, 0);
    EXPECT_EQ(
        log.Count("Cannot create a back buffer view with the requested number of bits per channel.", LX_LOG_ERROR), 1);

    s.sRGB = false;
    s.depthBits = 16;
    s.stencilBits = 8;
    EXPECT_FALSE(wm.CreateMainWindow(s));
    EXPECT_EQ(wm.handOffs, 0);
    EXPECT_EQ(log.Count("Cannot create a depth buffer with the requested depth/stencil bit depth.", LX_LOG_ERROR), 1);

    // The device report follows (the window itself was not the problem), with the title as caption.
    wm.ReportCreationFailure(s, "Direct3D 12 graphics processor");
    ASSERT_EQ(wm.boxes.size(), 1u);
    EXPECT_EQ(wm.boxes[0].first, "Lumex D3D12 window manager test");
    EXPECT_EQ(wm.boxes[0].second,
              "Window creation has failed. This demo requires support for the following features:\n"
              "  1. Microsoft Direct3D Feature Level 12.1\n"
              "  2. Windows 10 or newer\n"
              "  3. Direct3D 12 graphics processor\n"
              "Your system does not appear to meet these requirements.\n"
              "Please install the latest driver for your Direct3D 12 graphics processor from the maker of your "
              "graphics hardware, and install the latest updates for your operating system.\n"
              " This application will now exit.");
}

TEST(D3D12WindowManager, FailedHandOffTakesTheWindowAwayQuietly)
{
    CapturingWindowManager wm;
    wm.result = false;
    LxDisplaySettings s = SmallWindow();
    s.featureLevel10_0 = true;
    EXPECT_FALSE(wm.CreateMainWindow(s));
    EXPECT_EQ(wm.handOffs, 1);
    EXPECT_EQ(wm.GetWindowHandle(), nullptr);
    EXPECT_FALSE(QuitWasPosted()); // an application's loop is not ended by the clean-up

    wm.ReportCreationFailure(s, "GPU");
    ASSERT_EQ(wm.boxes.size(), 1u);
    EXPECT_EQ(wm.boxes[0].second.rfind("Window creation has failed.", 0), 0u);
    EXPECT_NE(wm.boxes[0].second.find("  1. Microsoft Direct3D 10\n  2. Windows Vista or newer\n"), std::string::npos);
    EXPECT_NE(wm.boxes[0].second.find("Direct3D runtime"), std::string::npos);

    // A window that cannot be made gives the window report instead.
    LxTest::LogCapture log;
    s.width = 0;
    EXPECT_FALSE(wm.CreateMainWindow(s));
    EXPECT_TRUE(log.Contains("Window creation failed. Resolution requested was 0 x 240.\n", LX_LOG_ERROR));
    wm.ReportCreationFailure(s, "GPU");
    ASSERT_EQ(wm.boxes.size(), 2u);
    EXPECT_EQ(wm.boxes[1].second, "There was a problem during window creation and initialization for this "
                                  "application. This application will now exit.");
}

TEST(D3D12WindowManager, GPUDescriptionSupportProbeAndSingleton)
{
    EXPECT_TRUE(LxD3D12WindowManager::IsD3D12Supported());

    LxTest::LogCapture log;
    ASSERT_TRUE(LxD3D12WindowManager::LogGPUDescription());
    const std::string all = log.All();
    for (const char* prefix : {"GPU Description: ", "VendorId: 0x", "DeviceId: 0x", "SubSysID: 0x"})
        EXPECT_EQ(log.Count(prefix), 1) << prefix;
    // The name itself is the platform's (not tested), but it arrives trimmed.
    const size_t at = all.find("GPU Description: ") + std::string("GPU Description: ").size();
    const size_t end = all.find('\n', at);
    ASSERT_NE(end, std::string::npos);
    ASSERT_GT(end, at);
    EXPECT_NE(all[at], ' ');
    EXPECT_NE(all[end - 1], ' ');

    LxWindowManager::ShutDown();
    EXPECT_NE(dynamic_cast<LxD3D12WindowManager*>(LxWindowManager::GetPtr()), nullptr);
    LxWindowManager::ShutDown();
}

// A real device through the render manager: the frame loop calls the render listener, which draws frames.
TEST(D3D12WindowManager, RealDeviceRendersFramesThroughTheListener)
{
    struct Frames : LxRenderListener
    {
        void Render() override
        {
            LxRenderManager& rm = LxRenderManager::GetRef();
            ok = ok && rm.BeginScene();
            rm.SetClearColor(0.2f, 0.4f, 0.6f, 1.0f);
            rm.Clear(true, true, true);
            ok = ok && rm.EndScene();
            if (++count == 6)
                PostQuitMessage(0);
        }
        int count = 0;
        bool ok = true;
    } frames;

    {
        CapturingWindowManager wm;
        wm.passOn = true;
        LxDisplaySettings s = SmallWindow();
        s.adapterIndex = 1000; // the default adapter does the work
        // Small heaps: under Wine and lavapipe the default capacities take seconds to create.
        s.uploadHeapSizeMB = 16;
        s.shaderResourceDescriptors = s.unorderedAccessDescriptors = s.samplerDescriptors = 64;
        s.renderTargetDescriptors = s.depthStencilDescriptors = 64;
        ASSERT_TRUE(wm.CreateMainWindow(s));
        LxD3D12RenderManager* rm = LxD3D12RenderManager::GetD3D12Ptr();
        ASSERT_NE(rm, nullptr);
        EXPECT_TRUE(rm->IsInitialized());
        EXPECT_EQ(rm->GetBackBufferWidth(), 320u);
        wm.SetRenderListener(&frames);
        EXPECT_EQ(wm.RunMessageLoop(), 0);
        EXPECT_EQ(frames.count, 6);
        EXPECT_TRUE(frames.ok);
        // The swap chain goes before its window.
        LxRenderManager::ShutDown();
    }
}
} // namespace
