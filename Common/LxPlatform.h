// LxPlatform: the few operating-system services the portable core needs, implemented once per platform
// (Win32/LxPlatformWin32.cpp with the CRT and Win32 calls the library is specified with, Posix/LxPlatformPosix.cpp
// with their honest POSIX counterparts). Stateless and thread-safe.
#pragma once

#include "Common/LxApi.h"

class LX_API LxPlatform
{
public:
    // Sends text to the debugger (OutputDebugStringA); nothing natively.
    static void DebugOutput(const char* text);
    // Whether a path exists (_access(path, 0)).
    static bool PathExists(const char* path);
    // Last-write time of a file in 100-nanosecond ticks since 1601-01-01 UTC (the FILETIME scale).
    static bool GetFileWriteTime(const char* path, long long& time);
    // Starts `program` with one argument, detached: the caller neither waits nor reaps it.
    static bool SpawnDetached(const char* program, const char* argument);
    // The local wall-clock date and time (month 1..12).
    static void GetLocalDateTime(int& year, int& month, int& day, int& hour, int& minute, int& second);
    // The text editor ShowErrorLogInEditor starts by default ("notepad.exe" on Windows).
    static const char* DefaultTextEditor();
    // The system's text for the current errno.
    static const char* LastErrorText();
};
