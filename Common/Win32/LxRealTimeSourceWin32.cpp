#include "Common/LxRealTimeSource.h"

#include <windows.h>

LxRealTimeSource::LxRealTimeSource() : m_dFrequency(1.0)
{
    LARGE_INTEGER frequency;
    // Never fails on Windows XP and later; the frequency is fixed at boot.
    QueryPerformanceFrequency(&frequency);
    m_dFrequency = static_cast<double>(frequency.QuadPart);
}

double LxRealTimeSource::GetTime() const
{
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    return static_cast<double>(counter.QuadPart) / m_dFrequency;
}
