#include "Common/LxClock.h"

#include "Common/LxTimeSource.h"

LxClock::LxClock(const LxTimeSource* source) : m_pTimeSource(source), m_dFilteredDuration(0.03)
{
    m_history.Add(m_dInitialDuration);
    m_history.Add(0.0);
    m_dStartSourceTime = ReadSource();
}

double LxClock::ReadSource() const
{
    return m_pTimeSource ? m_pTimeSource->GetTime() : 0.0;
}

void LxClock::FrameStep()
{
    const double t = ReadSource();
    if (!m_bStarted)
    {
        m_dLastSourceTime = t;
        m_bStarted = true;
    }
    const double raw = t - m_dLastSourceTime;
    m_dLastSourceTime = t;

    m_history.Add(raw);
    while (m_history.GetCount() > static_cast<unsigned int>(m_nWindowSize))
        m_history.RemoveFirst();
    double sum = 0.0;
    for (double d : m_history)
        sum += d;
    m_dFilteredDuration = sum / m_history.GetCount();

    m_dFrameDuration = m_bSmoothTime ? m_dFilteredDuration : raw;
    m_dPreviousTime = m_dCurrentTime;
    m_dCurrentTime += m_dFrameDuration;
    ++m_nFrameCount;
    NotifyObservers();
}

double LxClock::GetFrameRate() const
{
    return m_dFilteredDuration > 0.0 ? 1.0 / m_dFilteredDuration : 0.0;
}

void LxClock::GetMinMaxFrameDuration(double* min, double* max) const
{
    double lo = 0.0, hi = 0.0;
    bool first = true;
    for (double d : m_history)
    {
        if (first || d < lo)
            lo = d;
        if (first || d > hi)
            hi = d;
        first = false;
    }
    if (min)
        *min = lo;
    if (max)
        *max = hi;
}

void LxClock::RestartHistory(double value)
{
    m_history.Clear();
    m_history.Add(value);
}

void LxClock::ClearFrameHistory()
{
    RestartHistory(0.0);
}

void LxClock::SetFiltering(int windowSize, double initialDuration)
{
    m_nWindowSize = windowSize < 1 ? 1 : windowSize;
    m_dInitialDuration = initialDuration;
    RestartHistory(initialDuration);
}

void LxClock::SetTimeSource(const LxTimeSource* source)
{
    m_pTimeSource = source;
    m_bStarted = false;
    RestartHistory(0.0);
    m_dStartSourceTime = ReadSource();
}

double LxClock::GetSourceTimeSinceStart() const
{
    return ReadSource() - m_dStartSourceTime;
}
