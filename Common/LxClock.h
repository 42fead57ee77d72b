// LxClock: the frame clock. Once per frame the application calls FrameStep, which reads the time source, turns the
// raw difference into a frame duration (the mean of the last `window` raw durations when smooth time is on, the
// raw difference when off), advances the clock's own time by it and notifies the observers (the timers).
//
// The first step after construction or SetTimeSource has a raw duration of 0. The history of raw durations starts
// as {0.03, 0} after construction (so the first frames do not report an absurd rate), as {initial} after
// SetFiltering, and as {0} after ClearFrameHistory and SetTimeSource; it never holds more than `window` entries.
// Without a time source the clock reads 0, so every raw duration is 0.
//
// The time source is not owned and must outlive its use. Belongs to one thread (the main thread).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxList.h"
#include "Common/LxTimeSubject.h"

class LxTimeSource;

class LX_API LxClock : public LxTimeSubject
{
public:
    explicit LxClock(const LxTimeSource* source);

    void FrameStep();

    // The clock's own time: the sum of the frame durations handed out, from 0.
    double GetTime() const { return m_dCurrentTime; }
    double GetPreviousTime() const { return m_dPreviousTime; }
    double GetFrameDuration() const override { return m_dFrameDuration; }
    // The running mean of the history (updated by FrameStep; 0.03 before the first step).
    double GetFilteredFrameDuration() const { return m_dFilteredDuration; }
    unsigned int GetFrameCount() const { return m_nFrameCount; }
    // 1 / the filtered duration, whatever the smooth-time setting; 0 while that duration is not positive.
    double GetFrameRate() const;
    // The smallest and largest raw durations in the history (either pointer may be null).
    void GetMinMaxFrameDuration(double* min, double* max) const;
    unsigned int GetFrameHistoryCount() const { return m_history.GetCount(); }

    void ClearFrameHistory();
    // Window of `windowSize` frames (at least 1); restarts the history with `initialDuration`.
    void SetFiltering(int windowSize, double initialDuration);
    int GetFilterWindowSize() const { return m_nWindowSize; }
    double GetInitialDuration() const { return m_dInitialDuration; }
    void SetSmoothTime(bool enable) { m_bSmoothTime = enable; }
    bool IsSmoothTimeEnabled() const { return m_bSmoothTime; }

    // Switches sources: the next step's raw duration is 0 and the history restarts with {0}.
    void SetTimeSource(const LxTimeSource* source);
    const LxTimeSource* GetTimeSource() const { return m_pTimeSource; }
    // Source seconds since construction (or the last SetTimeSource); 0 without a source.
    double GetSourceTimeSinceStart() const;

private:
    double ReadSource() const;
    void RestartHistory(double value);

    const LxTimeSource* m_pTimeSource;
    double m_dCurrentTime = 0.0;
    double m_dPreviousTime = 0.0;
    double m_dFrameDuration = 0.0;
    double m_dFilteredDuration;
    unsigned int m_nFrameCount = 0;
    bool m_bStarted = false;
    double m_dLastSourceTime = 0.0;
    bool m_bSmoothTime = true;
    int m_nWindowSize = 10;
    double m_dInitialDuration = 0.03;
    LxList<double> m_history; // raw durations, oldest first
    double m_dStartSourceTime;
};
