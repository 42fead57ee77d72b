// LxTimer: a time line that follows a parent subject (the clock or another timer) with its own scale and pause.
//
// Each time the parent steps, a running timer advances by the parent's frame duration times its scale and then
// notifies its own observers; a paused timer stands still and tells nobody, so timers chained below it stop too and
// resume without a jump. SetTime jumps to a time but never reports more than one second of elapsed time.
//
// The timer registers with its parent on construction and unregisters on destruction; if the parent goes first,
// the timer simply stops following it. Belongs to the parent's thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxObserver.h"
#include "Common/LxTimeSubject.h"

class LX_API LxTimer : public LxTimeSubject, public LxObserver
{
public:
    explicit LxTimer(LxTimeSubject& parent);
    // Follows another timer (the same as the form above: without it, LxTimer t(otherTimer) would name the deleted
    // copy constructor). Timers are never copied.
    explicit LxTimer(LxTimer& parent) : LxTimer(static_cast<LxTimeSubject&>(parent)) {}
    LxTimer(const LxTimer&) = delete;
    LxTimer& operator=(const LxTimer&) = delete;
    ~LxTimer() override;

    double GetTime() const { return m_dCurrentTime; }
    double GetPreviousTime() const { return m_dPreviousTime; }
    // Seconds covered by the last advance (or jump). Pausing does not change it.
    double GetFrameDuration() const override { return m_dFrameDuration; }
    float GetScale() const { return m_fScale; }
    void SetScale(float scale) { m_fScale = scale; }
    bool IsPaused() const { return m_bPaused; }
    // Sets the paused flag only: a paused timer ignores its parent's updates (and so stops the timers below it),
    // but keeps its times and its last frame duration; only an update or SetTime changes those.
    void Pause(bool pause);
    // Null once the parent was destroyed.
    LxTimeSubject* GetParent() const { return m_pParent; }

    // previous = current, current = t, frame duration = t - previous; a duration beyond one second in magnitude
    // (compared in single precision) is clamped to +1 or -1 and previous becomes t minus it.
    virtual void SetTime(double t);
    // SetTime(current + delta).
    virtual void SetTimeRelative(double delta);

    void Update(LxTimeSubject& parent) override;
    void OnSubjectDestroyed(LxTimeSubject& parent) override;

private:
    double m_dCurrentTime = 0.0;
    double m_dPreviousTime = 0.0;
    double m_dFrameDuration = 0.0;
    bool m_bPaused = false;
    float m_fScale = 1.0f;
    LxTimeSubject* m_pParent;
};
