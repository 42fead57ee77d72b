// LxThread: an operating-system thread whose body is the derived class's Run().
//
// Start fails (false) while the thread is active, or when the system cannot create it (logged). Once Run has
// returned the object may be started again. IsActive is true from a successful Start until Run returns.
// Join waits for Run to return (0 ms: forever) and releases the system thread.
//
// Lifetime: the destructor joins, but by then the derived part is already destroyed, so a derived class whose body
// may still run must make it return and call Join() in its own destructor. Start, Join and SetAffinity belong to the
// owning thread; IsActive may be asked from any thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxSignal.h"

#include <atomic>

class LX_API LxThread
{
public:
    LxThread();
    virtual ~LxThread();
    LxThread(const LxThread&) = delete;
    LxThread& operator=(const LxThread&) = delete;

    bool Start();
    bool IsActive() const { return m_bActive.load(); }
    // True when the body has returned (and the system thread is released); false on timeout.
    bool Join(unsigned int milliseconds = 0);
    // Restricts the thread to the processors whose bits are set in `mask` (SetThreadAffinityMask). Before Start the
    // mask is kept and applied when the thread starts. A mask the system refuses is reported as a warning.
    void SetAffinity(unsigned int mask);

    static void Sleep(unsigned int milliseconds);

protected:
    // The body, run on the new thread; its return value is the thread's exit code.
    virtual unsigned int Run() = 0;

private:
    struct Impl;
    // The code every platform entry point runs on the new thread.
    static unsigned int Execute(LxThread* thread);
    bool ApplyAffinity();

    Impl* m_pImpl;
    std::atomic<bool> m_bActive;
    LxSignal m_finished;
    unsigned int m_nAffinityMask = 0;
};
