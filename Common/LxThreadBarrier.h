// LxThreadBarrier: a reusable meeting point for `count` threads. Each calls Wait once per round; the call returns
// when all `count` have arrived. The last to arrive calls its listener (if not null) before releasing the others,
// so the listener runs exactly once per round while every other party is held, and may prepare the next round's
// shared data.
//
// Rounds alternate between two counters and two signals: a party that races ahead into the next round cannot be
// confused with the stragglers of the round before. A count of 0 is taken as 1.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxMutex.h"
#include "Common/LxSignal.h"

class LxThreadBarrierListener;

class LX_API LxThreadBarrier
{
public:
    explicit LxThreadBarrier(unsigned int count);
    LxThreadBarrier(const LxThreadBarrier&) = delete;
    LxThreadBarrier& operator=(const LxThreadBarrier&) = delete;

    void Wait(LxThreadBarrierListener* listener = nullptr);
    unsigned int GetCount() const { return m_nCount; }

private:
    unsigned int m_nCount;
    LxMutex m_lock;
    LxSignal m_released[2];
    unsigned int m_nArrived[2] = {0, 0};
    unsigned int m_nPhase = 0;
};
