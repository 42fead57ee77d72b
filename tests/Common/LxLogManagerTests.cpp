// LxLogManager: the line format, once-only errors, continuation indent, the file with its TEMP/TMP fallback,
// listeners, WriteString, the editor at the end and the exit line.
#include "Common/LxLogListener.h"
#include "Common/LxLogManager.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace
{
// A log without a file, with a listener recording its lines for as long as it lives.
struct Recorder : LxLogListener
{
    Recorder() { log.AddLogListener(this); }
    ~Recorder() override { log.RemoveLogListener(this); }
    void OnLogMessage(const LxString& text, _LxLogMessageType type) override
    {
        lines.emplace_back(text.c_str(), text.GetLength());
        types.push_back(type);
    }
    LxLogManager log{false, false, LxString("unused.txt")};
    std::vector<std::string> lines;
    std::vector<int> types;
};

// Appends its tag to a trace for every line it hears.
struct Tally : LxLogListener
{
    explicit Tally(char t = 'x', std::string* shared = nullptr) : tag(t), out(shared ? shared : &trace) {}
    void OnLogMessage(const LxString&, _LxLogMessageType) override { *out += tag; }
    char tag;
    std::string trace, *out;
};

// The time stamp: a bracket, the hour padded with a blank, minutes and seconds with zeros, a bracket and a blank.
const char* kStamp = R"(\[[ 12][0-9]:[0-5][0-9]:[0-5][0-9]\] )";

bool Matches(const std::string& text, const std::string& pattern)
{
    return std::regex_match(text, std::regex(pattern));
}

// Sets or clears an environment variable for the life of the object.
class ScopedEnv
{
public:
    ScopedEnv(const char* name, const char* value) : m_name(name)
    {
        const char* old = std::getenv(name);
        m_hadOld = old != nullptr;
        if (old)
            m_old = old;
        Set(value);
    }
    ~ScopedEnv() { Set(m_hadOld ? m_old.c_str() : nullptr); }

private:
    void Set(const char* value)
    {
#if defined(_WIN32)
        _putenv_s(m_name.c_str(), value ? value : "");
#else
        if (value)
            setenv(m_name.c_str(), value, 1);
        else
            unsetenv(m_name.c_str());
#endif
    }
    std::string m_name, m_old;
    bool m_hadOld = false;
};

bool WaitForFile(const std::string& path, int milliseconds)
{
    for (int waited = 0; waited < milliseconds; waited += 50)
    {
        if (LxTest::PathExists(path))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return LxTest::PathExists(path);
}
} // namespace

TEST(LxLogManager, LineFormatForEveryTypeAndFileForm)
{
    Recorder r;
    LxLogManager& log = r.log;
    log.LogMessage(LxString("plain"), LX_LOG_MESSAGE, nullptr, -1);
    log.LogMessage(LxString("traced"), LX_LOG_DEBUG, "src/a.cpp", 12);
    log.LogMessage(LxString("doubtful"), LX_LOG_WARNING, "C:\\dir\\b.cpp", 0);
    log.LogMessage(LxString("failed"), LX_LOG_ERROR, "c.cpp", 1);
    log.LogMessage(LxString("gave up"), LX_LOG_CRITICAL, "d.cpp", -5);
    ASSERT_EQ(r.lines.size(), 5u);
    EXPECT_TRUE(Matches(r.lines[0], std::string("^") + kStamp + "plain\n$")) << r.lines[0];
    EXPECT_TRUE(Matches(r.lines[1], std::string(R"(^src/a\.cpp\(12\) : )") + kStamp + "DEBUG: traced\n$"))
        << r.lines[1];
    EXPECT_TRUE(Matches(r.lines[2], std::string(R"(^C:\\dir\\b\.cpp : )") + kStamp + "WARNING: doubtful\n$"))
        << r.lines[2];
    EXPECT_TRUE(Matches(r.lines[3], std::string(R"(^c\.cpp\(1\) : )") + kStamp + "ERROR: failed\n$")) << r.lines[3];
    EXPECT_TRUE(Matches(r.lines[4], std::string(R"(^d\.cpp : )") + kStamp + "CRITICAL: gave up\n$")) << r.lines[4];
    EXPECT_EQ(r.types, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(LxLogManager, ErrorsAreReportedOnceUntilResetAndTheSingletonIsMadeOnce)
{
    Recorder r;
    LxLogManager& log = r.log;
    log.LogMessage(LxString("same error"), LX_LOG_ERROR, nullptr, -1);
    log.LogMessage(LxString("same error"), LX_LOG_ERROR, "elsewhere.cpp", 3); // same text: dropped
    log.LogMessage(LxString("same warning"), LX_LOG_WARNING, nullptr, -1);
    log.LogMessage(LxString("same warning"), LX_LOG_WARNING, nullptr, -1);
    log.LogMessage(LxString("same error"), LX_LOG_CRITICAL, nullptr, -1); // only errors are filtered
    EXPECT_EQ(r.lines.size(), 4u);
    log.ClearReportedErrors();
    log.LogMessage(LxString("same error"), LX_LOG_ERROR, nullptr, -1);
    EXPECT_EQ(r.lines.size(), 5u);

    // The static reset clears the singleton's set.
    LxTest::LogCapture capture;
    LX_ERROR("reported once %d", 1);
    LX_ERROR("reported once %d", 1);
    EXPECT_EQ(capture.Count("reported once 1"), 1);
    LxLogManager::ResetLumexErrorLog();
    LX_ERROR("reported once %d", 1);
    EXPECT_EQ(capture.Count("reported once 1"), 2);
    // The singleton is created on first use, once.
    LxLogManager* first = LxLogManager::GetPtr();
    LxLogManager::Init(false, true, LxString("ignored.txt")); // a second creation does nothing
    EXPECT_EQ(LxLogManager::GetPtr(), first);
}

TEST(LxLogManager, ContinuationLinesAreIndentedUnderTheMessage)
{
    Recorder r;
    r.log.LogMessage(LxString("first\nsecond\nthird"), LX_LOG_WARNING, "f.cpp", 7);
    ASSERT_EQ(r.lines.size(), 1u);
    const std::string& line = r.lines[0];
    const size_t start = line.find("first");
    ASSERT_NE(start, std::string::npos);
    const std::string indent(start, ' '); // file part + time stamp + "WARNING: "
    EXPECT_EQ(start, std::string("f.cpp(7) : [hh:mm:ss] WARNING: ").size());
    EXPECT_EQ(line.substr(start), "first\n" + indent + "second\n" + indent + "third\n");
}

TEST(LxLogManager, FileGetsEveryLineFlushedAndTheExitLine)
{
    const std::string path = LxTest::MakeTempDir("log") + "/run.txt";
    {
        LxLogManager log(true, false, LxString(path.c_str()));
        EXPECT_TRUE(log.IsFileOpen());
        EXPECT_STREQ(log.GetLogFilePath().c_str(), path.c_str());
        log.LogMessage(LxString("to the file"), LX_LOG_MESSAGE, nullptr, -1);
        // Flushed at once: readable while the log is still open.
        EXPECT_NE(LxTest::ReadBytes(path).find("to the file"), std::string::npos);
        log.WriteString(LxString("raw text, no stamp"), LX_LOG_MESSAGE);
        EXPECT_NE(LxTest::ReadBytes(path).find("\nraw text, no stamp"), std::string::npos);
    }
    const std::string text = LxTest::ReadBytes(path);
    EXPECT_TRUE(Matches(text.substr(text.rfind("raw text, no stamp") + 18),
                        std::string("^") + kStamp + "Normal application exit\r?\n$"))
        << text;
}

TEST(LxLogManager, UnwritablePathFallsBackToTempThenTmp)
{
    // A folder named like the log file cannot be opened as a file.
    std::filesystem::create_directories("LumexLog-blocked.txt");
    const std::string temp = LxTest::MakeTempDir("temp");
    {
        ScopedEnv t("TEMP", temp.c_str());
        {
            LxLogManager log(true, false, LxString("LumexLog-blocked.txt"));
            EXPECT_TRUE(log.IsFileOpen());
            EXPECT_STREQ(log.GetLogFilePath().c_str(), (temp + "/LumexLog-blocked.txt").c_str());
            log.LogMessage(LxString("fell back"), LX_LOG_MESSAGE, nullptr, -1);
        }
        EXPECT_NE(LxTest::ReadBytes(temp + "/LumexLog-blocked.txt").find("fell back"), std::string::npos);

        // The given path is appended whole, even when that cannot work; the stored path still changes.
        const std::string absolute = LxTest::MakeTempDir("abs") + "/LumexLog.txt";
        std::filesystem::create_directories(absolute);
        LxLogManager log(true, false, LxString(absolute.c_str()));
        EXPECT_FALSE(log.IsFileOpen());
        EXPECT_STREQ(log.GetLogFilePath().c_str(), (temp + "/" + absolute).c_str());
    }
    {
        // TEMP unset: TMP, with backslashes turned into slashes.
        ScopedEnv t("TEMP", nullptr);
        const std::string tmp = LxTest::MakeTempDir("tmp");
        std::string backslashed = tmp;
        for (char& c : backslashed)
            if (c == '/')
                c = '\\';
#if !defined(_WIN32)
        backslashed = tmp; // a POSIX path cannot be spelt with backslashes
#endif
        ScopedEnv m("TMP", backslashed.c_str());
        LxLogManager log(true, false, LxString("LumexLog-blocked.txt"));
        EXPECT_STREQ(log.GetLogFilePath().c_str(), (tmp + "/LumexLog-blocked.txt").c_str());
        EXPECT_TRUE(log.IsFileOpen());
    }
    {
        // Neither: no file, but listeners still hear every line.
        ScopedEnv t("TEMP", nullptr), m("TMP", nullptr);
        LxLogManager log(true, false, LxString("LumexLog-blocked.txt"));
        EXPECT_FALSE(log.IsFileOpen());
        Tally heard;
        log.AddLogListener(&heard);
        log.LogMessage(LxString("still heard"), LX_LOG_WARNING, nullptr, -1);
        log.RemoveLogListener(&heard);
        EXPECT_EQ(heard.trace, "x");
    }
    std::filesystem::remove("LumexLog-blocked.txt");
}

TEST(LxLogManager, ListenersInRegistrationOrderAndRemovable)
{
    LxLogManager log(false, false, LxString("unused.txt"));
    std::string trace;
    Tally a('a', &trace), b('b', &trace);
    log.AddLogListener(&a);
    log.AddLogListener(&b);
    log.AddLogListener(&a); // registered once
    log.LogMessage(LxString("x"), LX_LOG_MESSAGE, nullptr, -1);
    log.WriteString(LxString("y"), LX_LOG_DEBUG);
    log.RemoveLogListener(&a);
    log.LogMessage(LxString("z"), LX_LOG_MESSAGE, nullptr, -1);
    EXPECT_EQ(trace, "ababb");
    log.RemoveLogListener(&b);
}

TEST(LxLogManager, EditorOpensOnlyAfterWarningsOrWorse)
{
    const std::string dir = LxTest::MakeTempDir("editor");
    const std::string quiet = dir + "/quiet.txt";
    const std::string noisy = dir + "/noisy.txt";
    {
        LxLogManager log(true, false, LxString(quiet.c_str()));
        log.SetEditorCommand(LxString(LUMEX_FAKE_EDITOR));
        log.LogMessage(LxString("plain"), LX_LOG_MESSAGE, nullptr, -1);
        log.LogMessage(LxString("debug"), LX_LOG_DEBUG, nullptr, -1);
        EXPECT_FALSE(log.ErrorsLogged());
        log.ShowErrorLogInEditor();
        EXPECT_FALSE(log.IsFileOpen()); // closed all the same
    }
    {
        LxLogManager log(true, false, LxString(noisy.c_str()));
        log.SetEditorCommand(LxString(LUMEX_FAKE_EDITOR));
        log.LogMessage(LxString("careful"), LX_LOG_WARNING, nullptr, -1);
        EXPECT_TRUE(log.ErrorsLogged());
        log.ShowErrorLogInEditor();
        log.LogMessage(LxString("after the editor"), LX_LOG_MESSAGE, nullptr, -1);
    }
    EXPECT_TRUE(WaitForFile(noisy + ".opened", 10000)); // detached: it may finish after we return
    EXPECT_EQ(LxTest::ReadBytes(noisy + ".opened"), noisy);
    EXPECT_FALSE(LxTest::PathExists(quiet + ".opened"));
    EXPECT_EQ(LxTest::ReadBytes(noisy).find("after the editor"), std::string::npos);

    // Without file logging the call does nothing at all.
    LxLogManager off(false, false, LxString((dir + "/off.txt").c_str()));
    off.SetEditorCommand(LxString(LUMEX_FAKE_EDITOR));
    off.LogMessage(LxString("bad"), LX_LOG_ERROR, nullptr, -1);
    off.ShowErrorLogInEditor();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(LxTest::PathExists(dir + "/off.txt.opened"));
}
