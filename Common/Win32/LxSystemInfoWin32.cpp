#include "Common/LxSystemInfo.h"

#include <windows.h>

unsigned int LxSystemInfo::GetProcessorCount()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors > 0 ? static_cast<unsigned int>(info.dwNumberOfProcessors) : 1u;
}
