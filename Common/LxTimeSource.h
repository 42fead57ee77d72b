// LxTimeSource: where a clock reads absolute time, in seconds from an arbitrary origin. The library's source is
// LxRealTimeSource; tests, replays and video capture derive their own (a fixed step per frame, say).
#pragma once

#include "Common/LxApi.h"

class LX_API LxTimeSource
{
public:
    virtual ~LxTimeSource() = default;
    virtual double GetTime() const = 0;
};
