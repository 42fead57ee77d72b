// LxFrameEndListener: told at every frame end which fence value marks the end of the frame's GPU work, so it can
// recycle what the frame used once the fence reaches that value (the upload heap, the descriptor heaps). Called on
// the main thread, between frames, before the value is signalled.
#pragma once

#include "Common/LxApi.h"

class LxFence;

class LX_API LxFrameEndListener
{
public:
    virtual ~LxFrameEndListener() = default;
    virtual void OnFrameEnd(LxFence* fence, unsigned long long fenceValue) = 0;
};
