// LxLogManager: the process-wide log.
//
// Each message is stamped "[hh:mm:ss] " (hour blank-padded), prefixed by its type, preceded by "file(line) : " when
// a source file is given, written to the log file (flushed at once, so the log survives a crash), echoed to stdout
// and the debugger when echoing, and handed to every listener. An error (type 3) whose text was already reported
// is dropped until ResetLumexErrorLog. Continuation lines of a multi-line message are indented under its first
// character.
//
// The log file is opened "wt" at construction; when that fails it is tried in the TEMP (else TMP) directory under
// the same name; when that fails too, file logging stays off without a word. The log never reports its own
// failures.
//
// Threading: messages may come from any thread; one recursive lock serialises whole lines (a listener may log).
// Lifetime: the first GetPtr/GetRef (or Init) creates the singleton; ShutDown destroys it and logs
// "Normal application exit" on the way out. Create it before and shut it down after every other manager.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxHashMap.h"
#include "Common/LxLogMessageType.h"
#include "Common/LxString.h"

#include <mutex>

class LxFile;
class LxLogListener;

class LX_API LxLogManager
{
public:
    // Creates the singleton unless one exists (a second call does nothing).
    static void Init(bool logToFile, bool echoToConsole, const LxString& logFilePath);
    // The singleton, created on first use with file logging and echo on and the path "LumexLog.txt".
    static LxLogManager* GetPtr();
    static LxLogManager& GetRef() { return *GetPtr(); }
    static void ShutDown();
    // Empties the singleton's set of reported errors, so that each error is reported once more.
    static void ResetLumexErrorLog();

    // Formats with printf rules and logs through the singleton; the LX_ERROR family of macros calls this.
    static void Log(_LxLogMessageType type, const char* file, int line, const char* fmt, ...) LX_PRINTF_FORMAT(4, 5);

    LxLogManager(bool logToFile, bool echoToConsole, const LxString& logFilePath);
    virtual ~LxLogManager();
    LxLogManager(const LxLogManager&) = delete;
    LxLogManager& operator=(const LxLogManager&) = delete;

    // `file` may be null; `line` below 1 leaves the number out.
    void LogMessage(const LxString& message, _LxLogMessageType type, const char* file, int line);
    // Writes text exactly as given (no stamp, prefix or newline) to the file, the echo and the listeners.
    void WriteString(const LxString& text, _LxLogMessageType type);
    void AddLogListener(LxLogListener* listener);
    void RemoveLogListener(LxLogListener* listener);
    void ClearReportedErrors();

    // Closes the log file (later messages no longer reach it) and, if any warning, error or critical message was
    // logged, starts the text editor on the log, detached. Does nothing unless logging to a file was asked for.
    void ShowErrorLogInEditor();
    // The program ShowErrorLogInEditor starts (default: "notepad.exe" on Windows, "xdg-open" elsewhere).
    void SetEditorCommand(const LxString& program);

    // After construction: the path actually opened (or tried last).
    const LxString& GetLogFilePath() const { return m_logFilePath; }
    bool IsFileOpen() const { return m_pLogFile != nullptr; }
    bool ErrorsLogged() const { return m_bErrorsLogged; }

private:
    void OpenLogFile();
    void Emit(const LxString& text, _LxLogMessageType type);

    LxArray<LxLogListener*> m_listeners;
    LxString m_logFilePath;
    LxFile* m_pLogFile = nullptr;
    bool m_bErrorsLogged = false;
    bool m_bLogToFile;
    bool m_bEchoToConsole;
    LxHashSet<LxString, LxStringHasher> m_reportedErrors;
    LxString m_editor;
    std::recursive_mutex m_lock;

    static LxLogManager* ms_pInstance;
};

#define LX_LOG(type, ...) LxLogManager::Log((type), __FILE__, __LINE__, __VA_ARGS__)
#define LX_MESSAGE(...) LX_LOG(LX_LOG_MESSAGE, __VA_ARGS__)
#define LX_DEBUG(...) LX_LOG(LX_LOG_DEBUG, __VA_ARGS__)
#define LX_WARNING(...) LX_LOG(LX_LOG_WARNING, __VA_ARGS__)
#define LX_ERROR(...) LX_LOG(LX_LOG_ERROR, __VA_ARGS__)
#define LX_CRITICAL(...) LX_LOG(LX_LOG_CRITICAL, __VA_ARGS__)
