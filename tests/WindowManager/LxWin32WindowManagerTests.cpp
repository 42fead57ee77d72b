// The Win32 window manager with a real window under the session's display: posted messages reach the listeners
// with the codes and masks an application sees, the frame loop renders whenever the queue is empty, the window
// cannot grow beyond the requested client size, the mouse block, the cursor count.
#include "WindowManager/D3D12/LxWin32WindowManager.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace
{
// Counts the repaints it handles, so that tests see the loop spin without a render listener.
class TestWin32WindowManager : public LxWin32WindowManager
{
public:
    int paints = 0;

protected:
    void ProcessRenderEvent() override
    {
        ++paints;
        LxWin32WindowManager::ProcessRenderEvent();
    }
};

// Ends the frame loop at the first frame, i.e. as soon as every message posted before has been handled.
class QuitAtFirstFrame : public LxRenderListener
{
public:
    void Render() override { PostQuitMessage(0); }
};

struct Heard
{
    std::string what; // "pressed", "released", "moved"
    unsigned code;
    unsigned modifiers;
    char character;
    int x, y, delta;
    unsigned buttons;
};

class Win32Recorder : public LxInputListener
{
public:
    void KeyPressed(LxKeyEvent& e) override { Key("pressed", e); }
    void KeyReleased(LxKeyEvent& e) override { Key("released", e); }
    void MouseMoved(LxMouseMoveEvent& e) override
    {
        heard.push_back({"moved", 0, 0, 0, e.GetX(), e.GetY(), 0, e.GetButtons()});
        if (handles)
            e.SetHandled();
    }
    std::vector<Heard> heard;
    bool handles = false;

private:
    void Key(const char* what, LxKeyEvent& e)
    {
        heard.push_back({what, e.GetKeyCode(), e.GetModifiers(), e.GetCharacter(), e.GetMouseX(), e.GetMouseY(),
                         e.GetWheelDelta(), 0});
        if (handles)
            e.SetHandled();
    }
};

// Sets the thread's keyboard state that GetKeyState reads (posted key messages do not change it).
void SetModifierKeys(bool shift, bool alt, bool ctrl)
{
    BYTE keys[256] = {};
    GetKeyboardState(keys);
    keys[VK_SHIFT] = shift ? 0x80 : 0;
    keys[VK_MENU] = alt ? 0x80 : 0;
    keys[VK_CONTROL] = ctrl ? 0x80 : 0;
    SetKeyboardState(keys);
}

LPARAM Position(int x, int y)
{
    return MAKELPARAM(WORD(short(x)), WORD(short(y)));
}

class Win32WindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        LxDisplaySettings settings;
        settings.title = "Lumex window manager test";
        settings.width = 320;
        settings.height = 240;
        settings.x = 40;
        settings.y = 30;
        ASSERT_TRUE(wm.CreateMainWindow(settings));
        hwnd = wm.GetWindowHandle();
        ASSERT_NE(hwnd, nullptr);
        wm.AddInputListener(&recorder);
        // Drain what creation queued (activation, focus, size) so each test hears only its own messages.
        Pump();
        recorder.heard.clear();
    }

    void TearDown() override { SetModifierKeys(false, false, false); }

    // Runs the frame loop until every posted message has been handled.
    void Pump()
    {
        LxRenderListener* previous = wm.GetRenderListener();
        wm.SetRenderListener(&quit);
        EXPECT_EQ(wm.RunMessageLoop(), 0);
        wm.SetRenderListener(previous);
    }

    TestWin32WindowManager wm;
    HWND hwnd = nullptr;
    Win32Recorder recorder;
    QuitAtFirstFrame quit;
};

TEST_F(Win32WindowTest, KeysArriveWithTheirCodesAndModifiers)
{
    PostMessageA(hwnd, WM_KEYDOWN, VK_F5, 0);
    Pump();
    SetModifierKeys(true, false, false);
    PostMessageA(hwnd, WM_KEYDOWN, 'A', 0);
    PostMessageA(hwnd, WM_KEYUP, 'A', 0);
    Pump();
    SetModifierKeys(false, false, false);
    PostMessageA(hwnd, WM_KEYDOWN, 'A', 0);
    Pump();
    SetModifierKeys(false, false, true);
    PostMessageA(hwnd, WM_KEYDOWN, VK_CONTROL, 0);
    Pump();
    SetModifierKeys(true, true, false);
    PostMessageA(hwnd, WM_SYSKEYDOWN, VK_OEM_7, 0);
    PostMessageA(hwnd, WM_SYSKEYUP, VK_OEM_7, 0);
    Pump();

    ASSERT_EQ(recorder.heard.size(), 7u);
    const struct
    {
        const char* what;
        unsigned code, modifiers;
        char character;
    } expected[] = {
        {"pressed", 17u << 16, 0, 0}, {"pressed", 65, 1, 'A'},  {"released", 65, 1, 'A'},  {"pressed", 65, 0, 'a'},
        {"pressed", 5u << 16, 4, 0},  {"pressed", '"', 3, '"'}, {"released", '"', 3, '"'},
    };
    for (size_t i = 0; i < recorder.heard.size(); ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(recorder.heard[i].what, expected[i].what);
        EXPECT_EQ(recorder.heard[i].code, expected[i].code);
        EXPECT_EQ(recorder.heard[i].modifiers, expected[i].modifiers);
        EXPECT_EQ(recorder.heard[i].character, expected[i].character);
    }
}

TEST_F(Win32WindowTest, MouseButtonsCaptureAndCarryThePosition)
{
    SetModifierKeys(false, false, true);
    PostMessageA(hwnd, WM_LBUTTONDOWN, MK_LBUTTON | MK_CONTROL, Position(-5, 7));
    Pump();
    EXPECT_EQ(GetCapture(), hwnd);
    SetModifierKeys(false, false, false);
    PostMessageA(hwnd, WM_LBUTTONUP, 0, Position(300, 200));
    PostMessageA(hwnd, WM_RBUTTONDOWN, MK_RBUTTON, Position(1, 2));
    PostMessageA(hwnd, WM_RBUTTONUP, 0, Position(1, 2));
    PostMessageA(hwnd, WM_MBUTTONDOWN, MK_MBUTTON, Position(3, 4));
    PostMessageA(hwnd, WM_MBUTTONUP, 0, Position(3, 4));
    Pump();
    EXPECT_NE(GetCapture(), hwnd);

    const struct
    {
        const char* what;
        unsigned n;
        unsigned modifiers;
        int x, y;
    } expected[] = {{"pressed", 51, 4, -5, 7}, {"released", 51, 0, 300, 200}, {"pressed", 52, 0, 1, 2},
                    {"released", 52, 0, 1, 2}, {"pressed", 53, 0, 3, 4},      {"released", 53, 0, 3, 4}};
    ASSERT_EQ(recorder.heard.size(), 6u);
    for (size_t i = 0; i < 6; ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(recorder.heard[i].what, expected[i].what);
        EXPECT_EQ(recorder.heard[i].code, expected[i].n << 16);
        EXPECT_EQ(recorder.heard[i].modifiers, expected[i].modifiers);
        EXPECT_EQ(recorder.heard[i].x, expected[i].x);
        EXPECT_EQ(recorder.heard[i].y, expected[i].y);
    }
}

TEST_F(Win32WindowTest, WheelTurnsArePressesWithTheirDelta)
{
    POINT origin = {0, 0};
    ClientToScreen(hwnd, &origin);
    PostMessageA(hwnd, WM_MOUSEWHEEL, MAKEWPARAM(0, WORD(short(-120))), Position(origin.x + 10, origin.y + 20));
    PostMessageA(hwnd, WM_MOUSEWHEEL, 0, Position(origin.x, origin.y)); // no word parameter: ignored
    PostMessageA(hwnd, WM_MOUSEWHEEL, MAKEWPARAM(0, 240), Position(origin.x, origin.y));
    Pump();
    ASSERT_EQ(recorder.heard.size(), 2u); // and no release after either
    EXPECT_EQ(recorder.heard[0].what, "pressed");
    EXPECT_EQ(recorder.heard[0].code, 55u << 16);
    EXPECT_EQ(recorder.heard[0].delta, -120);
    EXPECT_EQ(recorder.heard[0].x, 10);
    EXPECT_EQ(recorder.heard[0].y, 20);
    EXPECT_EQ(recorder.heard[1].what, "pressed");
    EXPECT_EQ(recorder.heard[1].code, 54u << 16);
    EXPECT_EQ(recorder.heard[1].delta, 240);
}

TEST_F(Win32WindowTest, MouseMovesReportOnlyExactButtonStates)
{
    const std::pair<WPARAM, unsigned> cases[] = {
        {MK_LBUTTON, LxMouseMoveEvent::BUTTON_LEFT},
        {MK_LBUTTON | MK_SHIFT, 0},
        {MK_LBUTTON | MK_RBUTTON, LxMouseMoveEvent::BUTTON_LEFT | LxMouseMoveEvent::BUTTON_RIGHT},
        {MK_MBUTTON, LxMouseMoveEvent::BUTTON_MIDDLE},
    };
    for (const auto& c : cases)
        PostMessageA(hwnd, WM_MOUSEMOVE, c.first, Position(12, -3));
    Pump();
    ASSERT_EQ(recorder.heard.size(), 4u);
    for (size_t i = 0; i < 4; ++i)
    {
        EXPECT_EQ(recorder.heard[i].what, "moved");
        EXPECT_EQ(recorder.heard[i].buttons, cases[i].second) << i;
        EXPECT_EQ(recorder.heard[i].x, 12);
        EXPECT_EQ(recorder.heard[i].y, -3);
    }
}

TEST_F(Win32WindowTest, HandledEventsStopAndDuplicateListenersHearOnce)
{
    Win32Recorder second;
    wm.AddInputListener(&second);
    wm.AddInputListener(&recorder); // already there
    PostMessageA(hwnd, WM_KEYDOWN, VK_SPACE, 0);
    Pump();
    EXPECT_EQ(recorder.heard.size(), 1u);
    EXPECT_EQ(second.heard.size(), 1u);

    recorder.handles = true;
    PostMessageA(hwnd, WM_KEYUP, VK_SPACE, 0);
    PostMessageA(hwnd, WM_MOUSEMOVE, 0, Position(1, 1));
    Pump();
    EXPECT_EQ(recorder.heard.size(), 3u);
    EXPECT_EQ(second.heard.size(), 1u);
    wm.RemoveInputListener(&second);
}

TEST_F(Win32WindowTest, FrameLoopRendersWhenTheQueueIsEmpty)
{
    // The render listener sees every earlier message handled, and the loop keeps rendering until it quits.
    struct Frames : LxRenderListener
    {
        void Render() override
        {
            seenKeys.push_back(recorder->heard.size());
            if (seenKeys.size() == 5)
                PostQuitMessage(7);
        }
        Win32Recorder* recorder = nullptr;
        std::vector<size_t> seenKeys;
    } frames;
    frames.recorder = &recorder;
    wm.SetRenderListener(&frames);
    PostMessageA(hwnd, WM_KEYDOWN, 'X', 0);
    PostMessageA(hwnd, WM_KEYUP, 'X', 0);
    EXPECT_EQ(wm.RunMessageLoop(), 7);
    EXPECT_EQ(frames.seenKeys, (std::vector<size_t>{2, 2, 2, 2, 2}));

    // Without a render listener the repaints continue (the window is only validated): a timer ends the loop.
    wm.SetRenderListener(nullptr);
    const int paintsBefore = wm.paints;
    UINT_PTR timer = SetTimer(nullptr, 0, 30, [](HWND, UINT, UINT_PTR, DWORD) { PostQuitMessage(3); });
    EXPECT_EQ(wm.RunMessageLoop(), 3);
    KillTimer(nullptr, timer);
    EXPECT_GT(wm.paints - paintsBefore, 10);
    RECT update = {};
    EXPECT_FALSE(GetUpdateRect(hwnd, &update, FALSE));
}

TEST_F(Win32WindowTest, DestroyingTheWindowEndsTheLoop)
{
    struct Closer : LxRenderListener
    {
        void Render() override { DestroyWindow(hwnd); }
        HWND hwnd;
    } closer;
    closer.hwnd = hwnd;
    wm.SetRenderListener(&closer);
    EXPECT_EQ(wm.RunMessageLoop(), 0);
    EXPECT_EQ(wm.GetWindowHandle(), nullptr);
    EXPECT_FALSE(IsWindow(hwnd));
    LxTest::LogCapture log;
    EXPECT_EQ(wm.RunMessageLoop(), -1);
    EXPECT_TRUE(log.Contains("LxWin32WindowManager::RunMessageLoop.  There is no window.", LX_LOG_ERROR));
}

TEST_F(Win32WindowTest, WindowCannotGrowBeyondTheRequestedClientSize)
{
    RECT client = {};
    GetClientRect(hwnd, &client);
    EXPECT_EQ(client.right, 320);
    EXPECT_EQ(client.bottom, 240);
    RECT window = {};
    GetWindowRect(hwnd, &window);
    const LONG frameX = (window.right - window.left) - client.right;
    const LONG frameY = (window.bottom - window.top) - client.bottom;

    MINMAXINFO info = {};
    SendMessageA(hwnd, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&info));
    EXPECT_EQ(info.ptMaxTrackSize.x, 320 + frameX);
    EXPECT_EQ(info.ptMaxTrackSize.y, 240 + frameY);
    EXPECT_EQ(info.ptMaxSize.x, 320 + frameX);
    EXPECT_EQ(info.ptMaxSize.y, 240 + frameY);

    // Asking the window to grow goes through the same limit.
    SetWindowPos(hwnd, nullptr, 0, 0, 900, 700, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    GetClientRect(hwnd, &client);
    EXPECT_LE(client.right, 320);
    EXPECT_LE(client.bottom, 240);
    // Shrinking is allowed.
    SetWindowPos(hwnd, nullptr, 0, 0, 200 + frameX, 100 + frameY, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    GetClientRect(hwnd, &client);
    EXPECT_EQ(client.right, 200);
    EXPECT_EQ(client.bottom, 100);
}

TEST_F(Win32WindowTest, BlockedMouseKeepsItsPositionForTheApplication)
{
    wm.SetCursorPosition(50, 60);
    int x = 0, y = 0;
    ASSERT_TRUE(wm.GetCursorPosition(&x, &y));
    EXPECT_EQ(x, 50);
    EXPECT_EQ(y, 60);

    wm.BlockMouseMovement(true);
    EXPECT_TRUE(wm.IsMouseMovementBlocked());
    POINT before = {};
    GetCursorPos(&before);
    wm.SetCursorPosition(100, 110); // only the remembered position changes
    POINT after = {};
    GetCursorPos(&after);
    EXPECT_EQ(after.x, before.x);
    EXPECT_EQ(after.y, before.y);
    ASSERT_TRUE(wm.GetCursorPosition(&x, &y));
    EXPECT_EQ(x, 100);
    EXPECT_EQ(y, 110);
    PostMessageA(hwnd, WM_MOUSEMOVE, 0, Position(5, 5));
    Pump();
    EXPECT_TRUE(recorder.heard.empty()); // moves are dropped while blocked
    wm.BlockMouseMovement(true);         // no change: the remembered position stays
    ASSERT_TRUE(wm.GetCursorPosition(&x, &y));
    EXPECT_EQ(x, 100);

    // Unblocking puts the real cursor at the remembered position.
    wm.BlockMouseMovement(false);
    EXPECT_FALSE(wm.IsMouseMovementBlocked());
    POINT expected = {100, 110};
    ClientToScreen(hwnd, &expected);
    GetCursorPos(&after);
    EXPECT_EQ(after.x, expected.x);
    EXPECT_EQ(after.y, expected.y);
    Pump(); // the move of the real cursor itself, if the system reports one
    recorder.heard.clear();
    PostMessageA(hwnd, WM_MOUSEMOVE, 0, Position(5, 5));
    Pump();
    ASSERT_EQ(recorder.heard.size(), 1u);
    EXPECT_EQ(recorder.heard[0].x, 5);
}

TEST_F(Win32WindowTest, CursorVisibilityAndDisplayQueries)
{
    wm.ShowMouseCursor(false);
    const int hidden = ShowCursor(FALSE) + 1; // the count before this probe
    ShowCursor(TRUE);
    EXPECT_LT(hidden, 0);
    wm.ShowMouseCursor(true);
    const int shown = ShowCursor(FALSE) + 1;
    ShowCursor(TRUE);
    EXPECT_GE(shown, 0);

    EXPECT_FALSE(wm.IsFullScreen());
    const unsigned w = wm.GetDesktopWidth(), h = wm.GetDesktopHeight();
    ASSERT_GT(h, 0u);
    EXPECT_FLOAT_EQ(wm.GetDesktopAspectRatio(), float(w) / float(h));
    EXPECT_TRUE(wm.IsDisplayModeSupported(w, h, 0, 8, false));
    EXPECT_TRUE(wm.IsDisplayModeSupported(w, h, 0, 8, true)); // the current mode is on the list
    EXPECT_FALSE(wm.IsDisplayModeSupported(w + 1, h, 0, 8, false));
    EXPECT_FALSE(wm.IsDisplayModeSupported(w, h, 0, 12, false));
}

TEST(Win32WindowCreation, DefaultsFullScreenAndRefusals)
{
    {
        // No size: three quarters of the desktop height at the settings' aspect ratio.
        TestWin32WindowManager wm;
        ASSERT_TRUE(wm.CreateMainWindow(LxDisplaySettings()));
        EXPECT_EQ(wm.GetClientHeight(), wm.GetDesktopHeight() * 3 / 4);
        EXPECT_EQ(wm.GetClientWidth(), unsigned(float(wm.GetClientHeight()) * (4.0f / 3.0f) + 0.5f));
        LxTest::LogCapture log;
        EXPECT_FALSE(wm.CreateMainWindow(LxDisplaySettings())); // one window per manager
        EXPECT_TRUE(log.Contains("The window already exists.", LX_LOG_ERROR));
    }
    {
        // Full screen: a popup at least as large as the display mode.
        TestWin32WindowManager wm;
        LxDisplaySettings s;
        s.fullScreen = true;
        s.width = 64;
        s.height = 48;
        ASSERT_TRUE(wm.CreateMainWindow(s));
        EXPECT_TRUE(wm.IsFullScreen());
        EXPECT_EQ(wm.GetClientWidth(), wm.GetDesktopWidth());
        EXPECT_EQ(wm.GetClientHeight(), wm.GetDesktopHeight());
        const LONG style = GetWindowLongA(wm.GetWindowHandle(), GWL_STYLE);
        EXPECT_TRUE(style & WS_POPUP);
        EXPECT_FALSE(style & WS_CAPTION);
        // The screen saver and monitor power-off are swallowed in full screen.
        EXPECT_EQ(SendMessageA(wm.GetWindowHandle(), WM_SYSCOMMAND, SC_SCREENSAVE, 0), 0);
        // Activation in full screen frees a blocked mouse.
        wm.BlockMouseMovement(true);
        SendMessageA(wm.GetWindowHandle(), WM_ACTIVATE, WA_CLICKACTIVE, 0);
        EXPECT_FALSE(wm.IsMouseMovementBlocked());
    }
    {
        // Windowed, activation leaves the block alone.
        TestWin32WindowManager wm;
        LxDisplaySettings s;
        s.width = 200;
        s.borderless = true;
        ASSERT_TRUE(wm.CreateMainWindow(s));
        EXPECT_EQ(wm.GetClientHeight(), 150u); // from the 4:3 aspect ratio
        EXPECT_TRUE(GetWindowLongA(wm.GetWindowHandle(), GWL_STYLE) & WS_POPUP);
        wm.BlockMouseMovement(true);
        SendMessageA(wm.GetWindowHandle(), WM_ACTIVATE, WA_ACTIVE, 0);
        EXPECT_TRUE(wm.IsMouseMovementBlocked());
    }
    {
        LxTest::LogCapture log;
        TestWin32WindowManager wm;
        LxDisplaySettings s;
        s.width = 0;
        s.height = 100;
        EXPECT_FALSE(wm.CreateMainWindow(s));
        EXPECT_TRUE(log.Contains("Window creation failed. Resolution requested was 0 x 100.\n", LX_LOG_ERROR));
        EXPECT_EQ(wm.GetWindowHandle(), nullptr);
        s.width = LxDisplaySettings::kNoSize;
        s.aspectRatio = 1e30f; // absurd sizes are refused, not converted
        EXPECT_FALSE(wm.CreateMainWindow(s));
        EXPECT_TRUE(log.Contains("Window creation failed. Resolution requested was 65536 x 100.\n", LX_LOG_ERROR));
    }
}

// Finds the message box with `caption` on another thread, reads its text and presses OK.
class MessageBoxCloser
{
public:
    explicit MessageBoxCloser(const char* caption) : m_caption(caption), m_thread(&MessageBoxCloser::Run, this) {}
    ~MessageBoxCloser() { m_thread.join(); }
    std::atomic<bool> found{false};
    std::string text;

private:
    void Run()
    {
        for (int i = 0; i < 500 && !found; ++i)
        {
            HWND box = FindWindowA("#32770", m_caption.c_str());
            if (box == nullptr)
            {
                Sleep(20);
                continue;
            }
            char buffer[256] = {};
            GetDlgItemTextA(box, 0xFFFF, buffer, sizeof(buffer)); // the box's text control
            text = buffer;
            found = true;
            PostMessageA(box, WM_COMMAND, IDOK, 0);
        }
    }

    std::string m_caption;
    std::thread m_thread; // last: starts once the members it reads exist
};

TEST(Win32WindowCreation, MessageBoxShowsCaptionAndTextWindowedAndFullScreen)
{
    TestWin32WindowManager windowed;
    LxDisplaySettings s;
    s.width = 160;
    s.height = 120;
    ASSERT_TRUE(windowed.CreateMainWindow(s));
    {
        MessageBoxCloser closer("Lumex message box test");
        windowed.ShowMessageBox("Lumex message box test", "Something to read");
        EXPECT_TRUE(closer.found);
        EXPECT_EQ(closer.text, "Something to read");
    }

    TestWin32WindowManager full;
    s.fullScreen = true;
    ASSERT_TRUE(full.CreateMainWindow(s));
    // (Where the window lands in the z-order is not checked: Wine without a window manager keeps the active
    // full-screen window on top even after HWND_BOTTOM.)
    MessageBoxCloser closer("Lumex full-screen box");
    full.ShowMessageBox("Lumex full-screen box", "Seen above the full-screen window");
    EXPECT_TRUE(closer.found);
    EXPECT_EQ(closer.text, "Seen above the full-screen window");
}
} // namespace
