// LxDemoFixedTimeSource: a clock source that advances by a fixed step each time the demo says a frame has passed,
// so that a run renders the same frames, at the same scene times, on any machine however fast it draws.
#pragma once

#include <LumexCore/Lumex.h>

class LxDemoFixedTimeSource : public LxTimeSource
{
public:
    explicit LxDemoFixedTimeSource(double step) : m_dStep(step) {}
    double GetTime() const override { return m_dTime; }
    void Advance() { m_dTime += m_dStep; }

private:
    double m_dStep;
    double m_dTime = 0.0;
};
