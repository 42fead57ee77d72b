// LxGPUTimerResults: what the GPU timers measured, per timer: the last completed frame's time and the minimum,
// maximum and average over every frame measured since the timer was created (or the results were reset), in
// milliseconds. A timer started and stopped several times in one frame adds up its intervals for that frame.
// Filled by the render manager when a frame slot is reused (its timestamps have completed by then), so the figures
// trail the frame being recorded by the frames in flight. Read on the main thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"

struct LxGPUTimerResult
{
    LxString name;
    double lastMs = 0.0;
    double minMs = 0.0;
    double maxMs = 0.0;
    double averageMs = 0.0;
    unsigned frames = 0; // frames in which the timer ran and completed
};

class LX_API LxGPUTimerResults
{
public:
    // One entry per created timer, indexed by the timer's handle.
    LxArray<LxGPUTimerResult> timers;
    // Frames whose timestamps have been read back.
    unsigned framesMeasured = 0;

    unsigned GetCount() const { return timers.GetCount(); }
};
