#include "Common/LxTimer.h"

#include <cmath>

LxTimer::LxTimer(LxTimeSubject& parent) : m_pParent(&parent)
{
    m_pParent->AddObserver(this);
}

// The observer base unregisters from the parent.
LxTimer::~LxTimer() = default;

// Only the flag: the last frame duration stays readable while paused (an update or SetTime changes it).
void LxTimer::Pause(bool pause)
{
    m_bPaused = pause;
}

void LxTimer::SetTime(double t)
{
    m_dPreviousTime = m_dCurrentTime;
    m_dFrameDuration = t - m_dPreviousTime;
    m_dCurrentTime = t;
    // Single precision on purpose: a jump that rounds to exactly one second is not clamped.
    if (std::fabs(static_cast<float>(m_dFrameDuration)) > 1.0f)
    {
        m_dFrameDuration = m_dFrameDuration > 0.0 ? 1.0 : -1.0;
        m_dPreviousTime = t - m_dFrameDuration;
    }
}

void LxTimer::SetTimeRelative(double delta)
{
    SetTime(m_dCurrentTime + delta);
}

void LxTimer::Update(LxTimeSubject& parent)
{
    if (m_bPaused)
        return;
    const double d = parent.GetFrameDuration() * m_fScale;
    m_dPreviousTime = m_dCurrentTime;
    m_dFrameDuration = d;
    m_dCurrentTime += d;
    NotifyObservers();
}

void LxTimer::OnSubjectDestroyed(LxTimeSubject& parent)
{
    if (m_pParent == &parent)
        m_pParent = nullptr;
}
