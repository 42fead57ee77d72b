// LxThreadBarrierListener: called by LxThreadBarrier::Wait when the last party of a round arrives, on that party's
// thread, before any party is released.
#pragma once

#include "Common/LxApi.h"

class LX_API LxThreadBarrierListener
{
public:
    virtual ~LxThreadBarrierListener() = default;
    virtual void OnAllThreadsArrived() = 0;
};
