// The platform-free half of the window manager: key-code translation, modifier and mouse-button masks, listener
// dispatch, display-settings defaults and the format and feature-level rules, the failure report texts and the
// base class's "implement me" answers.
#include "WindowManager/LxWindowManager.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace
{
// ---------------------------------------------------------------------------------------------------------------
// Key codes

struct KeyCase
{
    unsigned virtualKey;
    unsigned expected;
};

unsigned Special(unsigned n)
{
    return n << 16;
}

TEST(LxKeyCodes, TranslatesEveryVirtualKeyOfTheTable)
{
    const KeyCase cases[] = {
        // characters
        {'A', 'A'},
        {'Z', 'Z'},
        {'0', '0'},
        {'9', '9'},
        {0x20, ' '},
        {0xBA, ';'},
        {0xBB, '+'},
        {0xBC, ','},
        {0xBD, '-'},
        {0xBE, '.'},
        {0xBF, '/'},
        {0xC0, '~'},
        {0xDB, '['},
        {0xDC, '\\'},
        {0xDD, ']'},
        {0xDE, '"'},
        // special keys, numbered in alphabetical order of their names
        {0x6B, Special(1)},
        {0x12, Special(2)},
        {0xA4, Special(2)},
        {0xA5, Special(2)},
        {0x08, Special(3)},
        {0x14, Special(4)},
        {0x11, Special(5)},
        {0xA2, Special(5)},
        {0xA3, Special(5)},
        {0x6E, Special(6)},
        {0x2E, Special(7)},
        {0x6F, Special(8)},
        {0x28, Special(9)},
        {0x23, Special(10)},
        {0x0D, Special(11)},
        {0x1B, Special(12)},
        {0x70, Special(13)},
        {0x74, Special(17)},
        {0x7B, Special(24)},
        {0x24, Special(25)},
        {0x2D, Special(26)},
        {0x25, Special(27)},
        {0x5B, Special(28)},
        {0x5C, Special(28)},
        {0x6A, Special(29)},
        {0x90, Special(30)},
        {0x60, Special(31)},
        {0x65, Special(36)},
        {0x69, Special(40)},
        {0x22, Special(41)},
        {0x21, Special(42)},
        {0x13, Special(43)},
        {0x2A, Special(44)},
        {0x2C, Special(44)},
        {0x27, Special(45)},
        {0x91, Special(46)},
        {0x10, Special(47)},
        {0xA0, Special(47)},
        {0xA1, Special(47)},
        {0x6D, Special(48)},
        {0x09, Special(49)},
        {0x26, Special(50)},
        // mouse buttons as virtual keys
        {0x01, Special(51)},
        {0x02, Special(52)},
        {0x04, Special(53)},
        // outside 8..222 without a code: unchanged
        {0x00, 0x00},
        {0x03, 0x03},
        {0x05, 0x05},
        {0x07, 0x07},
        {0xDF, 0xDF},
        {0xE2, 0xE2},
        {0xFE, 0xFE},
        {0x1234, 0x1234},
        // inside 8..222 without a code: unknown
        {0x0C, LX_KEY_UNKNOWN},
        {0x5D, LX_KEY_UNKNOWN},
        {0x6C, LX_KEY_UNKNOWN},
        {0x7C, LX_KEY_UNKNOWN},
        {0xA6, LX_KEY_UNKNOWN},
        {0x3A, LX_KEY_UNKNOWN},
    };
    for (const KeyCase& c : cases)
        EXPECT_EQ(LxTranslateVirtualKey(c.virtualKey), c.expected) << "virtual key 0x" << std::hex << c.virtualKey;
}

TEST(LxKeyCodes, CharactersOfKeyCodes)
{
    EXPECT_EQ(LxKeyCharacter('A', 0), 'a');
    EXPECT_EQ(LxKeyCharacter('A', LxKeyEvent::MODIFIER_SHIFT), 'A');
    EXPECT_EQ(LxKeyCharacter('Z', LxKeyEvent::MODIFIER_CTRL), 'z');
    EXPECT_EQ(LxKeyCharacter('7', LxKeyEvent::MODIFIER_SHIFT), '7');
    EXPECT_EQ(LxKeyCharacter(' ', 0), ' ');
    EXPECT_EQ(LxKeyCharacter('"', 0), '"');
    EXPECT_EQ(LxKeyCharacter(LX_KEY_F5, 0), '\0');
    EXPECT_EQ(LxKeyCharacter(0xDF, 0), '\0'); // passed-through virtual keys type nothing
    EXPECT_EQ(LxKeyCharacter(0x03, 0), '\0');
}

TEST(LxKeyCodes, WheelDirectionFromTheDeltaSign)
{
    EXPECT_EQ(LxWheelKeyCode(120), Special(54));
    EXPECT_EQ(LxWheelKeyCode(1), Special(54));
    EXPECT_EQ(LxWheelKeyCode(0), Special(55));
    EXPECT_EQ(LxWheelKeyCode(-120), Special(55));
}

// ---------------------------------------------------------------------------------------------------------------
// Modifier and button masks

TEST(LxKeyEvent, ModifierMasksAndTheirQueries)
{
    struct Case
    {
        bool shift, alt, ctrl;
        unsigned mask;
    };
    const Case cases[] = {{false, false, false, 0}, {true, false, false, 1}, {false, true, false, 2},
                          {false, false, true, 4},  {true, true, false, 3},  {true, true, true, 7}};
    for (const Case& c : cases)
    {
        LxKeyEvent event('A', 'a', LxKeyEvent::MakeModifiers(c.shift, c.alt, c.ctrl));
        EXPECT_EQ(event.GetModifiers(), c.mask);
        EXPECT_EQ(event.IsShiftPressed(), c.shift);
        EXPECT_EQ(event.IsAltPressed(), c.alt);
        EXPECT_EQ(event.IsCtrlPressed(), c.ctrl);
        EXPECT_FALSE(event.IsHandled());
    }
    // The queries test exactly their own bit.
    LxKeyEvent other(0, 0, 8u);
    EXPECT_FALSE(other.IsShiftPressed() || other.IsAltPressed() || other.IsCtrlPressed());
}

TEST(LxMouseMoveEvent, ButtonsOnlyForExactKeyStates)
{
    const unsigned L = LxMouseMoveEvent::BUTTON_LEFT, R = LxMouseMoveEvent::BUTTON_RIGHT,
                   M = LxMouseMoveEvent::BUTTON_MIDDLE;
    const std::pair<unsigned, unsigned> cases[] = {
        {0x0, 0},        {0x1, L}, {0x2, R}, {0x3, L | R}, {0x10, M}, {0x1 | 0x4, 0}, // left with Shift
        {0x1 | 0x8, 0},                                                               // left with Ctrl
        {0x2 | 0x10, 0},                                                              // right with middle
        {0x13, 0},                                                                    // all three
        {0x20, 0},                                                                    // an extra button alone
    };
    for (const auto& c : cases)
        EXPECT_EQ(LxMouseMoveEvent::ButtonsFromKeyState(c.first), c.second) << "key state 0x" << std::hex << c.first;

    LxMouseMoveEvent leftAndRight(3, -4, L | R);
    EXPECT_TRUE(leftAndRight.IsLeftButtonDown());
    EXPECT_TRUE(leftAndRight.IsRightButtonDown());
    EXPECT_FALSE(leftAndRight.IsMiddleButtonDown());
}

// ---------------------------------------------------------------------------------------------------------------
// Dispatch

// Opens the protected dispatch to the tests and records message boxes instead of showing them.
class TestWindowManager : public LxWindowManager
{
public:
    using LxWindowManager::m_bWindowCreationFailed;
    using LxWindowManager::ProcessKeyEvent;
    using LxWindowManager::ProcessMouseMoveEvent;
    using LxWindowManager::ProcessRenderEvent;
    void ShowMessageBox(const LxString& caption, const LxString& text) const override
    {
        boxes.emplace_back(caption.c_str(), text.c_str());
    }
    mutable std::vector<std::pair<std::string, std::string>> boxes;
};

// Records every call as "<name>:<what>" in a shared trace; optionally marks events handled or runs an action.
class Recorder : public LxInputListener
{
public:
    Recorder(const char* name, std::vector<std::string>& trace) : m_name(name), m_trace(trace) {}
    void KeyPressed(LxKeyEvent& event) override { Hear("pressed", event); }
    void KeyReleased(LxKeyEvent& event) override { Hear("released", event); }
    void MouseMoved(LxMouseMoveEvent& event) override
    {
        m_trace.push_back(m_name + ":moved");
        if (handles)
            event.SetHandled();
        if (action)
            action();
    }
    bool handles = false;
    std::function<void()> action;

private:
    void Hear(const char* what, LxKeyEvent& event)
    {
        m_trace.push_back(m_name + ":" + what);
        if (handles)
            event.SetHandled();
        if (action)
            action();
    }
    std::string m_name;
    std::vector<std::string>& m_trace;
};

TEST(LxWindowManagerDispatch, RegistrationOrderUntilHandled)
{
    TestWindowManager wm;
    std::vector<std::string> trace;
    Recorder a("a", trace), b("b", trace), c("c", trace);
    wm.AddInputListener(&a);
    wm.AddInputListener(&b);
    wm.AddInputListener(&c);

    LxKeyEvent press(LX_KEY_F5, 0, 0);
    wm.ProcessKeyEvent(press, LxWindowManager::KEY_PRESSED);
    LxKeyEvent release(LX_KEY_F5, 0, 0);
    wm.ProcessKeyEvent(release, LxWindowManager::KEY_RELEASED);
    EXPECT_EQ(trace, (std::vector<std::string>{"a:pressed", "b:pressed", "c:pressed", "a:released", "b:released",
                                               "c:released"}));

    trace.clear();
    b.handles = true;
    LxKeyEvent handled('A', 'a', 0);
    wm.ProcessKeyEvent(handled, LxWindowManager::KEY_PRESSED);
    EXPECT_TRUE(handled.IsHandled());
    LxMouseMoveEvent move(1, 2, 0);
    wm.ProcessMouseMoveEvent(move);
    EXPECT_EQ(trace, (std::vector<std::string>{"a:pressed", "b:pressed", "a:moved", "b:moved"}));
}

TEST(LxWindowManagerDispatch, DuplicateAddHearsOnceAndRemoveStops)
{
    TestWindowManager wm;
    std::vector<std::string> trace;
    Recorder a("a", trace), b("b", trace);
    wm.AddInputListener(&a);
    wm.AddInputListener(&b);
    wm.AddInputListener(&a);
    wm.AddInputListener(nullptr);
    EXPECT_EQ(wm.GetInputListenerCount(), 2u);

    LxKeyEvent event(' ', ' ', 0);
    wm.ProcessKeyEvent(event, LxWindowManager::KEY_PRESSED);
    EXPECT_EQ(trace, (std::vector<std::string>{"a:pressed", "b:pressed"}));

    trace.clear();
    wm.RemoveInputListener(&a);
    wm.RemoveInputListener(&a); // not registered any more: nothing happens
    LxKeyEvent again(' ', ' ', 0);
    wm.ProcessKeyEvent(again, LxWindowManager::KEY_RELEASED);
    EXPECT_EQ(trace, (std::vector<std::string>{"b:released"}));
}

TEST(LxWindowManagerDispatch, ListenersChangedDuringDispatch)
{
    TestWindowManager wm;
    std::vector<std::string> trace;
    Recorder a("a", trace), b("b", trace), late("late", trace);
    // a removes b (which is not called any more) and adds a new listener (which hears the next event only).
    a.action = [&]
    {
        wm.RemoveInputListener(&b);
        wm.AddInputListener(&late);
    };
    wm.AddInputListener(&a);
    wm.AddInputListener(&b);

    LxKeyEvent first('Q', 'q', 0);
    wm.ProcessKeyEvent(first, LxWindowManager::KEY_PRESSED);
    EXPECT_EQ(trace, (std::vector<std::string>{"a:pressed"}));

    trace.clear();
    a.action = [&] { wm.RemoveInputListener(&a); }; // removing oneself is safe
    LxMouseMoveEvent move(0, 0, 0);
    wm.ProcessMouseMoveEvent(move);
    EXPECT_EQ(trace, (std::vector<std::string>{"a:moved", "late:moved"}));
    EXPECT_EQ(wm.GetInputListenerCount(), 1u);
}

class CountingRenderListener : public LxRenderListener
{
public:
    void Render() override { ++frames; }
    int frames = 0;
};

TEST(LxWindowManagerDispatch, OneRenderListenerRemovedOnlyByItself)
{
    TestWindowManager wm;
    wm.ProcessRenderEvent(); // none set: nothing to call
    CountingRenderListener first, second;
    wm.SetRenderListener(&first);
    wm.SetRenderListener(&second);
    wm.ProcessRenderEvent();
    EXPECT_EQ(first.frames, 0);
    EXPECT_EQ(second.frames, 1);

    wm.RemoveRenderListener(&first); // not the current one
    EXPECT_EQ(wm.GetRenderListener(), &second);
    wm.RemoveRenderListener(&second);
    EXPECT_EQ(wm.GetRenderListener(), nullptr);
    wm.ProcessRenderEvent();
    EXPECT_EQ(second.frames, 1);
}

// ---------------------------------------------------------------------------------------------------------------
// Base class without a platform

TEST(LxWindowManagerBase, UnimplementedOperationsLogAndFail)
{
    LxTest::LogCapture log;
    LxWindowManager wm;
    EXPECT_FALSE(wm.IsFullScreen());
    wm.BlockMouseMovement(true);
    wm.ShowMessageBox("caption", "text");
    EXPECT_FALSE(wm.CreateMainWindow(LxDisplaySettings()));
    int x = 7, y = 8;
    EXPECT_FALSE(wm.GetCursorPosition(&x, &y));
    EXPECT_EQ(x, 7);
    EXPECT_EQ(wm.GetDesktopAspectRatio(), 0.0f);
    EXPECT_EQ(log.Count("LxWindowManager::IsFullScreen().  Implement me for this platform!!", LX_LOG_ERROR), 1);
    EXPECT_EQ(log.Count("LxWindowManager::BlockMouseMOvement().  Implement me for this platform!!", LX_LOG_ERROR), 1);
    EXPECT_EQ(log.Count("ShowMessageBox not implemented on this platform!!!", LX_LOG_ERROR), 1);
    EXPECT_EQ(log.Count("LxWindowManager::CreateMainWindow().  Implement me for this platform!!", LX_LOG_ERROR), 1);
}

LxWindowManager* CreateTestManager()
{
    return new TestWindowManager();
}

TEST(LxWindowManagerBase, SingletonUsesTheRegisteredFactory)
{
    const LxWindowManager::CreateFunction platform = LxWindowManager::GetCreateFunction();
    LxWindowManager::ShutDown();
    LxWindowManager::SetCreateFunction(&CreateTestManager);
    LxWindowManager* wm = LxWindowManager::GetPtr();
    EXPECT_NE(dynamic_cast<TestWindowManager*>(wm), nullptr);
    EXPECT_EQ(&LxWindowManager::GetRef(), wm);
    LxWindowManager::ShutDown();
    LxWindowManager::SetCreateFunction(platform);
#ifndef _WIN32
    // Natively there is no platform window manager: the base class stands in.
    LxWindowManager& standIn = LxWindowManager::GetRef();
    EXPECT_EQ(typeid(standIn), typeid(LxWindowManager));
    LxWindowManager::ShutDown();
#endif
}

// ---------------------------------------------------------------------------------------------------------------
// Display settings

TEST(LxDisplaySettings, Defaults)
{
    const LxDisplaySettings s;
    EXPECT_STREQ(s.title.c_str(), "Lumex 5");
    EXPECT_FALSE(s.fullScreen || s.borderless || s.sRGB || s.softwareDriver || s.unorderedAccessBackBuffer);
    EXPECT_FALSE(s.HasFeatureLevelRequest());
    EXPECT_EQ(s.adapterIndex, 0u);
    EXPECT_EQ(s.width, 0xFFFFFFFFu);
    EXPECT_EQ(s.height, 0xFFFFFFFFu);
    EXPECT_EQ(s.x, 0x7FFFFFFF);
    EXPECT_EQ(s.y, 0x7FFFFFFF);
    EXPECT_EQ(s.multisampleCount, 1u);
    EXPECT_EQ(s.bitsPerChannel, 8u);
    EXPECT_EQ(s.depthBits, 24u);
    EXPECT_EQ(s.stencilBits, 8u);
    EXPECT_EQ(s.aspectRatio, 1.3333334f);
    EXPECT_EQ(s.backBufferCount, 2u);
    EXPECT_EQ(s.refreshRateNumerator, 0u);
    EXPECT_EQ(s.resolutionScaleX, 1.0f);
    EXPECT_EQ(s.resolutionScaleY, 1.0f);
    EXPECT_EQ(s.uploadHeapSizeMB, 512u);
    for (unsigned count : {s.shaderResourceDescriptors, s.unorderedAccessDescriptors, s.samplerDescriptors,
                           s.renderTargetDescriptors, s.depthStencilDescriptors})
        EXPECT_EQ(count, 1024u);
}

TEST(LxDisplaySettings, BackBufferFormatsFromBitsPerChannel)
{
    const char* kNoBuffer = "Cannot create a back buffer with the requested number of bits per channel.";
    const char* kNoView = "Cannot create a back buffer view with the requested number of bits per channel.";
    struct Case
    {
        unsigned bits;
        bool sRGB;
        LxGPUResourceFormat resource, view; // UNKNOWN: fails
        const char* error;
    };
    const Case cases[] = {
        {8, false, LX_FORMAT_R8G8B8A8_UNORM, LX_FORMAT_R8G8B8A8_UNORM, nullptr},
        {8, true, LX_FORMAT_R8G8B8A8_UNORM, LX_FORMAT_R8G8B8A8_UNORM_SRGB, nullptr},
        {10, false, LX_FORMAT_R10G10B10A2_UNORM, LX_FORMAT_R10G10B10A2_UNORM, nullptr},
        {16, false, LX_FORMAT_R16G16B16A16_FLOAT, LX_FORMAT_R16G16B16A16_FLOAT, nullptr},
        {10, true, LX_FORMAT_UNKNOWN, LX_FORMAT_UNKNOWN, kNoView},
        {16, true, LX_FORMAT_UNKNOWN, LX_FORMAT_UNKNOWN, kNoView},
        {0, false, LX_FORMAT_UNKNOWN, LX_FORMAT_UNKNOWN, kNoBuffer},
        {32, true, LX_FORMAT_UNKNOWN, LX_FORMAT_UNKNOWN, kNoBuffer},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.bits << " bits, sRGB " << c.sRGB);
        LxTest::LogCapture log;
        LxDisplaySettings s;
        s.bitsPerChannel = c.bits;
        s.sRGB = c.sRGB;
        LxGPUResourceFormat resource = LX_FORMAT_R32_UINT, view = LX_FORMAT_R32_UINT;
        const bool ok = s.GetBackBufferFormats(&resource, &view);
        EXPECT_EQ(ok, c.error == nullptr);
        if (ok)
        {
            EXPECT_EQ(resource, c.resource);
            EXPECT_EQ(view, c.view);
            EXPECT_EQ(log.ErrorCount(), 0);
        }
        else
        {
            EXPECT_EQ(resource, LX_FORMAT_R32_UINT); // untouched
            EXPECT_EQ(log.Count(c.error, LX_LOG_ERROR), 1);
        }
    }
}

TEST(LxDisplaySettings, DepthFormatsFromDepthAndStencilBits)
{
    struct Case
    {
        unsigned depth, stencil;
        bool ok;
        LxGPUResourceFormat format;
    };
    const Case cases[] = {
        {24, 8, true, LX_FORMAT_D24_UNORM_S8_UINT},
        {24, 0, true, LX_FORMAT_D24_UNORM_S8_UINT},
        {16, 0, true, LX_FORMAT_D16_UNORM},
        {32, 0, true, LX_FORMAT_D32_FLOAT},
        {32, 8, true, LX_FORMAT_D32_FLOAT_S8X24_UINT},
        {0, 0, true, LX_FORMAT_UNKNOWN},
        {16, 8, false, LX_FORMAT_UNKNOWN},
        {0, 8, false, LX_FORMAT_UNKNOWN},
        {24, 16, false, LX_FORMAT_UNKNOWN},
        {8, 0, false, LX_FORMAT_UNKNOWN},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.depth << "/" << c.stencil);
        LxTest::LogCapture log;
        LxDisplaySettings s;
        s.depthBits = c.depth;
        s.stencilBits = c.stencil;
        LxGPUResourceFormat format = LX_FORMAT_R32_UINT;
        EXPECT_EQ(s.GetDepthStencilFormat(&format), c.ok);
        EXPECT_EQ(format, c.ok ? c.format : LX_FORMAT_R32_UINT);
        EXPECT_EQ(log.Count("Cannot create a depth buffer with the requested depth/stencil bit depth.", LX_LOG_ERROR),
                  c.ok ? 0 : 1);
    }
}

TEST(LxDisplaySettings, MinimumFeatureLevelFirstFlagWins)
{
    LxDisplaySettings s;
    EXPECT_EQ(s.GetMinimumFeatureLevel(), LxDisplaySettings::FEATURE_LEVEL_11_0);
    s.featureLevel10_0 = true;
    EXPECT_EQ(s.GetMinimumFeatureLevel(), LxDisplaySettings::FEATURE_LEVEL_10_0);
    s.featureLevel10_1 = true;
    EXPECT_EQ(s.GetMinimumFeatureLevel(), LxDisplaySettings::FEATURE_LEVEL_10_1);
    s.featureLevel11 = true;
    EXPECT_EQ(s.GetMinimumFeatureLevel(), LxDisplaySettings::FEATURE_LEVEL_11_0);
    s.featureLevel12_0 = true;
    EXPECT_EQ(s.GetMinimumFeatureLevel(), LxDisplaySettings::FEATURE_LEVEL_12_0);
    s.featureLevel12_1 = true;
    EXPECT_EQ(s.GetMinimumFeatureLevel(), LxDisplaySettings::FEATURE_LEVEL_12_1);
    EXPECT_TRUE(s.HasFeatureLevelRequest());
}

// ---------------------------------------------------------------------------------------------------------------
// Failure report

const char kExit[] = "\n This application will now exit.";

TEST(LxWindowManagerReport, FeatureLevel12_1TextVerbatim)
{
    LxDisplaySettings s;
    s.featureLevel12_1 = true;
    s.featureLevel11 = true; // the highest request decides
    EXPECT_STREQ(LxWindowManager::GetCreationFailureReport(s, "Direct3D 12 graphics processor").c_str(),
                 "Window creation has failed. This demo requires support for the following features:\n"
                 "  1. Microsoft Direct3D Feature Level 12.1\n"
                 "  2. Windows 10 or newer\n"
                 "  3. Direct3D 12 graphics processor\n"
                 "Your system does not appear to meet these requirements.\n"
                 "Please install the latest driver for your Direct3D 12 graphics processor from the maker of your "
                 "graphics hardware, and install the latest updates for your operating system.\n"
                 " This application will now exit.");
}

TEST(LxWindowManagerReport, EveryLevelNamesItsRequirements)
{
    struct Case
    {
        bool LxDisplaySettings::*flag;
        const char* direct3D;
        const char* system;
        bool runtimeAdvice;
    };
    const Case cases[] = {
        {&LxDisplaySettings::featureLevel12_1, "Microsoft Direct3D Feature Level 12.1", "Windows 10 or newer", false},
        {&LxDisplaySettings::featureLevel12_0, "Microsoft Direct3D Feature Level 12.0", "Windows 10 or newer", false},
        {&LxDisplaySettings::featureLevel11, "Microsoft Direct3D 11", "Windows 7 or newer", true},
        {&LxDisplaySettings::featureLevel10_1, "Microsoft Direct3D 10.1", "Windows Vista SP1 or newer", true},
        {&LxDisplaySettings::featureLevel10_0, "Microsoft Direct3D 10", "Windows Vista or newer", true},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.direct3D);
        LxDisplaySettings s;
        s.*c.flag = true;
        // A name with '%' in it is text, not a format.
        const std::string report = LxWindowManager::GetCreationFailureReport(s, "GPU 100%s").c_str();
        EXPECT_EQ(report.find("Window creation has failed. This demo requires support for the following features:\n"
                              "  1. " +
                              std::string(c.direct3D) + "\n  2. " + c.system + "\n  3. GPU 100%s\n"),
                  0u);
        EXPECT_NE(report.find("latest driver for your GPU 100%s"), std::string::npos);
        EXPECT_EQ(report.find("Direct3D runtime") != std::string::npos, c.runtimeAdvice);
        EXPECT_EQ(report.substr(report.size() - (sizeof(kExit) - 1)), kExit);
        for (const char* unwanted : {"http", "www.", ".com", "NVIDIA", "AMD", "Intel", "ATI "})
            EXPECT_EQ(report.find(unwanted), std::string::npos) << unwanted;
    }
    EXPECT_STREQ(LxWindowManager::GetCreationFailureReport(LxDisplaySettings(), "GPU").c_str(),
                 "Window creation failed!\n This application will now exit.");
}

TEST(LxWindowManagerReport, ShownWithTheTitleAsCaption)
{
    TestWindowManager wm;
    LxDisplaySettings s;
    s.title = "My demo";
    s.featureLevel12_0 = true;
    wm.ReportCreationFailure(s, "GPU");
    wm.m_bWindowCreationFailed = true;
    wm.ReportCreationFailure(s, "GPU");
    ASSERT_EQ(wm.boxes.size(), 2u);
    EXPECT_EQ(wm.boxes[0].first, "My demo");
    EXPECT_EQ(wm.boxes[0].second, LxWindowManager::GetCreationFailureReport(s, "GPU").c_str());
    EXPECT_EQ(wm.boxes[1].second, "There was a problem during window creation and initialization for this "
                                  "application. This application will now exit.");
}
} // namespace
