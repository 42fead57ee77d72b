#include "Common/LxPlatform.h"

#include <windows.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <io.h>
#include <process.h>

void LxPlatform::DebugOutput(const char* text)
{
    OutputDebugStringA(text);
}

bool LxPlatform::PathExists(const char* path)
{
    return _access(path, 0) == 0;
}

bool LxPlatform::GetFileWriteTime(const char* path, long long& time)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExA(path, GetFileExInfoStandard, &data))
        return false;
    time = (static_cast<long long>(data.ftLastWriteTime.dwHighDateTime) << 32) | data.ftLastWriteTime.dwLowDateTime;
    return true;
}

bool LxPlatform::SpawnDetached(const char* program, const char* argument)
{
    // The CRT joins the arguments with blanks and does not quote them: a path with blanks must be quoted here.
    const bool quote = std::strchr(argument, ' ') != nullptr && argument[0] != '"';
    char quoted[1024];
    if (quote && std::strlen(argument) + 3 <= sizeof(quoted))
    {
        quoted[0] = '"';
        std::strcpy(quoted + 1, argument);
        std::strcat(quoted, "\"");
        argument = quoted;
    }
    return _spawnlp(_P_DETACH, program, program, argument, static_cast<const char*>(nullptr)) != -1;
}

void LxPlatform::GetLocalDateTime(int& year, int& month, int& day, int& hour, int& minute, int& second)
{
    SYSTEMTIME t;
    GetLocalTime(&t);
    year = t.wYear;
    month = t.wMonth;
    day = t.wDay;
    hour = t.wHour;
    minute = t.wMinute;
    second = t.wSecond;
}

const char* LxPlatform::DefaultTextEditor()
{
    return "notepad.exe";
}

const char* LxPlatform::LastErrorText()
{
    return std::strerror(errno);
}
