#include "Common/LxThreadBarrier.h"

#include "Common/LxThreadBarrierListener.h"

LxThreadBarrier::LxThreadBarrier(unsigned int count) : m_nCount(count ? count : 1) {}

void LxThreadBarrier::Wait(LxThreadBarrierListener* listener)
{
    m_lock.Take();
    const unsigned int phase = m_nPhase;
    if (++m_nArrived[phase] < m_nCount)
    {
        m_lock.Release();
        m_released[phase].Wait(0);
        return;
    }
    if (listener)
        listener->OnAllThreadsArrived();
    // Every party of the previous round has left its signal (they all arrived here since), so it can be re-armed
    // for the next round before this one is released.
    m_nArrived[phase] = 0;
    m_nPhase = phase ^ 1;
    m_released[phase ^ 1].Reset();
    m_released[phase].Signal();
    m_lock.Release();
}
