// LxRealTimeSource: the machine's high-resolution monotonic clock (QueryPerformanceCounter divided by its frequency
// on Windows, CLOCK_MONOTONIC elsewhere), in seconds from an arbitrary origin. Never goes backwards; unaffected by
// changes of the wall clock. Thread-safe.
#pragma once

#include "Common/LxTimeSource.h"

class LX_API LxRealTimeSource : public LxTimeSource
{
public:
    LxRealTimeSource();
    double GetTime() const override;

private:
    // Counter ticks per second.
    double m_dFrequency;
};
