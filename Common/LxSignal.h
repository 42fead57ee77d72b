// LxSignal: a manual-reset event, initially not signalled. Signal() sets it and releases every waiter, present and
// future, until Reset(). Thread-safe: any thread may signal, reset or wait.
//
// Timeouts are in milliseconds, and 0 means wait forever (not a mere test of the state); so does 0xFFFFFFFF.
// Wait returns true only when the event was signalled; WaitForSignals returns true once every signal of the list
// is set (null entries are skipped).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"

class LX_API LxSignal
{
public:
    LxSignal();
    ~LxSignal();
    LxSignal(const LxSignal&) = delete;
    LxSignal& operator=(const LxSignal&) = delete;

    void Signal();
    void Reset();
    bool Wait(unsigned int milliseconds);
    // The state now, without waiting.
    bool IsSignaled() const;

    static bool WaitForSignals(unsigned int milliseconds, LxArray<LxSignal*>& signals);

private:
    struct Impl;
    Impl* m_pImpl;
};
