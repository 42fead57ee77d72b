#include "Common/LxLogManager.h"

#include "Common/LxFile.h"
#include "Common/LxLogListener.h"
#include "Common/LxPlatform.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

LxLogManager* LxLogManager::ms_pInstance = nullptr;

namespace
{
std::mutex& SingletonLock()
{
    static std::mutex lock;
    return lock;
}

const char* PrefixOf(_LxLogMessageType type)
{
    switch (type)
    {
    case LX_LOG_DEBUG:
        return "DEBUG: ";
    case LX_LOG_WARNING:
        return "WARNING: ";
    case LX_LOG_ERROR:
        return "ERROR: ";
    case LX_LOG_CRITICAL:
        return "CRITICAL: ";
    default:
        return "";
    }
}
} // namespace

void LxLogManager::Init(bool logToFile, bool echoToConsole, const LxString& logFilePath)
{
    std::lock_guard<std::mutex> guard(SingletonLock());
    if (!ms_pInstance)
        ms_pInstance = new LxLogManager(logToFile, echoToConsole, logFilePath);
}

LxLogManager* LxLogManager::GetPtr()
{
    std::lock_guard<std::mutex> guard(SingletonLock());
    if (!ms_pInstance)
        ms_pInstance = new LxLogManager(true, true, LxString("LumexLog.txt"));
    return ms_pInstance;
}

void LxLogManager::ShutDown()
{
    LxLogManager* instance;
    {
        std::lock_guard<std::mutex> guard(SingletonLock());
        instance = ms_pInstance;
        ms_pInstance = nullptr;
    }
    delete instance;
}

void LxLogManager::ResetLumexErrorLog()
{
    std::lock_guard<std::mutex> guard(SingletonLock());
    if (ms_pInstance)
        ms_pInstance->ClearReportedErrors();
}

void LxLogManager::Log(_LxLogMessageType type, const char* file, int line, const char* fmt, ...)
{
    LxString text;
    va_list args;
    va_start(args, fmt);
    text.FormatV(fmt, args);
    va_end(args);
    GetRef().LogMessage(text, type, file, line);
}

LxLogManager::LxLogManager(bool logToFile, bool echoToConsole, const LxString& logFilePath)
    : m_logFilePath(logFilePath), m_bLogToFile(logToFile), m_bEchoToConsole(echoToConsole), m_reportedErrors(8, 0.5f),
      m_editor(LxPlatform::DefaultTextEditor())
{
    if (m_bLogToFile)
        OpenLogFile();
}

void LxLogManager::OpenLogFile()
{
    LxFile* file = LxFile::Open(m_logFilePath, LxString("wt"));
    if (file && file->IsOpen())
    {
        m_pLogFile = file;
        return;
    }
    delete file;

    const char* dir = std::getenv("TEMP");
    if (!dir)
        dir = std::getenv("TMP");
    if (!dir)
        return;
    LxString path(dir);
    path.Replace('\\', '/');
    path.Append('/');
    path.Append(m_logFilePath);
    m_logFilePath = path;
    file = LxFile::Open(m_logFilePath, LxString("wt"));
    if (file && file->IsOpen())
        m_pLogFile = file;
    else
        delete file;
}

LxLogManager::~LxLogManager()
{
    LogMessage(LxString("Normal application exit"), LX_LOG_MESSAGE, nullptr, -1);
    delete m_pLogFile;
    m_pLogFile = nullptr;
}

void LxLogManager::LogMessage(const LxString& message, _LxLogMessageType type, const char* file, int line)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (type == LX_LOG_ERROR && !m_reportedErrors.Insert(message))
        return;

    LxString text;
    if (file)
    {
        if (line >= 1)
            text.Format("%s(%d) : ", file, line);
        else
            text.Format("%s : ", file);
    }
    int year, month, day, hour, minute, second;
    LxPlatform::GetLocalDateTime(year, month, day, hour, minute, second);
    text.AppendFormat("[%2d:%02d:%02d] ", hour, minute, second);
    text.Append(PrefixOf(type));

    if (message.Find('\n') < 0)
        text.Append(message);
    else
    {
        // Continuation lines start under the first character of the message.
        LxString indent(text);
        for (unsigned int i = 0; i < indent.GetLength(); ++i)
            indent[i] = ' ';
        for (unsigned int i = 0; i < message.GetLength(); ++i)
        {
            text.Append(message[i]);
            if (message[i] == '\n')
                text.Append(indent);
        }
    }
    text.Append('\n');

    Emit(text, type);
    if (type == LX_LOG_WARNING || type == LX_LOG_ERROR || type == LX_LOG_CRITICAL)
        m_bErrorsLogged = true;
}

void LxLogManager::WriteString(const LxString& text, _LxLogMessageType type)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    Emit(text, type);
}

void LxLogManager::Emit(const LxString& text, _LxLogMessageType type)
{
    if (m_pLogFile)
    {
        m_pLogFile->Write(text);
        m_pLogFile->Flush();
    }
    if (m_bEchoToConsole)
    {
        std::printf("%s", text.c_str());
        std::fflush(stdout);
        LxPlatform::DebugOutput(text.c_str());
    }
    // A listener may remove itself while being called: walk a copy.
    const LxArray<LxLogListener*> listeners(m_listeners);
    for (LxLogListener* listener : listeners)
        listener->OnLogMessage(text, type);
}

void LxLogManager::AddLogListener(LxLogListener* listener)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (listener && !m_listeners.Contains(listener))
        m_listeners.Add(listener);
}

void LxLogManager::RemoveLogListener(LxLogListener* listener)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    m_listeners.Remove(listener);
}

void LxLogManager::ClearReportedErrors()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    m_reportedErrors.Clear();
}

void LxLogManager::SetEditorCommand(const LxString& program)
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    m_editor = program;
}

void LxLogManager::ShowErrorLogInEditor()
{
    std::lock_guard<std::recursive_mutex> guard(m_lock);
    if (!m_bLogToFile)
        return;
    delete m_pLogFile;
    m_pLogFile = nullptr;
    if (m_bErrorsLogged)
        LxPlatform::SpawnDetached(m_editor.c_str(), m_logFilePath.c_str());
}
