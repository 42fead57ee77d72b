#include "Common/LxSystemInfo.h"

#include <unistd.h>

unsigned int LxSystemInfo::GetProcessorCount()
{
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    return count > 0 ? static_cast<unsigned int>(count) : 1u;
}
