#include "Common/LxPlatform.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

void LxPlatform::DebugOutput(const char*) {}

bool LxPlatform::PathExists(const char* path)
{
    return ::access(path, F_OK) == 0;
}

bool LxPlatform::GetFileWriteTime(const char* path, long long& time)
{
    struct stat st;
    if (::stat(path, &st) != 0)
        return false;
    // Seconds between 1601-01-01 and 1970-01-01.
    const long long epochDelta = 11644473600LL;
    time = (static_cast<long long>(st.st_mtim.tv_sec) + epochDelta) * 10000000LL + st.st_mtim.tv_nsec / 100;
    return true;
}

bool LxPlatform::SpawnDetached(const char* program, const char* argument)
{
    // Double fork: the grandchild is adopted by init, so it is never left as our zombie and outlives us.
    const pid_t child = ::fork();
    if (child < 0)
        return false;
    if (child == 0)
    {
        if (::fork() == 0)
        {
            ::setsid();
            ::execlp(program, program, argument, static_cast<char*>(nullptr));
        }
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR)
    {
    }
    return true;
}

void LxPlatform::GetLocalDateTime(int& year, int& month, int& day, int& hour, int& minute, int& second)
{
    const std::time_t now = std::time(nullptr);
    struct tm local;
    ::localtime_r(&now, &local);
    year = local.tm_year + 1900;
    month = local.tm_mon + 1;
    day = local.tm_mday;
    hour = local.tm_hour;
    minute = local.tm_min;
    second = local.tm_sec;
}

const char* LxPlatform::DefaultTextEditor()
{
    return "xdg-open";
}

const char* LxPlatform::LastErrorText()
{
    return std::strerror(errno);
}
