// LxFence: a GPU timeline value the queue raises as submitted work completes, and the CPU reads or waits on.
//
// The platform class (LxD3D12Fence) implements the three primitive operations: Signal (queue the raise), the read
// of the completed value, and arming a wake-up for a value plus blocking on it. Wait is built from them here and is
// the same everywhere: at once when the value is already reached, otherwise arm and block without a time-out; when
// arming fails (the platform logs why) it returns false without waiting.
// Threading: GetCompletedValue and Wait may be called from any thread; Signal from the thread that submits.
#pragma once

#include "Common/LxApi.h"

class LX_API LxFence
{
public:
    virtual ~LxFence() = default;

    // Makes the queue set the fence to `value` once the work submitted before this call completes. False (logged)
    // when the platform refuses.
    virtual bool Signal(unsigned long long value) = 0;
    // The highest value the GPU has reached.
    virtual unsigned long long GetCompletedValue() const = 0;
    // Blocks until the fence reaches `value`. True when reached, false when the wait could not be armed.
    bool Wait(unsigned long long value);

protected:
    // Arranges for WaitForArmedValue to return once the fence reaches `value`; false (logged) on failure.
    virtual bool ArmWait(unsigned long long value) = 0;
    // Blocks until the value armed by ArmWait is reached.
    virtual void WaitForArmedValue() = 0;
};
