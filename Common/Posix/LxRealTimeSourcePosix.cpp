#include "Common/LxRealTimeSource.h"

#include <time.h>

LxRealTimeSource::LxRealTimeSource() : m_dFrequency(1e9) {}

double LxRealTimeSource::GetTime() const
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / m_dFrequency;
}
