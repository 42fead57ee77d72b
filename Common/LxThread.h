// LxThread: an operating-system thread. Its body is either a callable the thread owns (LxThread(body)), or the
// Run() of a derived class.
//
// Start fails (false) while the thread is active, or when the system cannot create it (logged). Once the body has
// returned the object may be started again. IsActive is true from a successful Start until the body returns.
// Join waits for the body to return (0 ms: forever) and releases the system thread.
//
// Lifetime: the destructor joins. That is safe for the callable form (the callable is the thread's own member and
// outlives the join). A derived Run() is the trap: by the time the base destructor runs, the derived members are
// gone while Run may still use them, so a derived class must make its body return and call Join() in its own
// destructor; the base logs an error when it finds a derived body still running. Prefer the callable form.
// Start, Join and SetAffinity belong to the owning thread; IsActive may be asked from any thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxSignal.h"

#include <atomic>
#include <functional>

// A thread body in callable form; its return value is the thread's exit code.
typedef std::function<unsigned int()> LxThreadBody;

class LX_API LxThread
{
public:
    explicit LxThread(LxThreadBody body);
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
    // For derived classes that override Run().
    LxThread();
    // The body, run on the new thread; its return value is the thread's exit code. By default the callable given at
    // construction.
    virtual unsigned int Run();

private:
    struct Impl;
    // Called first by the platform destructors: reports a derived body that is still running.
    void ReportDestroyedWhileRunning();
    // The code every platform entry point runs on the new thread.
    static unsigned int Execute(LxThread* thread);
    bool ApplyAffinity();

    Impl* m_pImpl;
    std::atomic<bool> m_bActive;
    LxSignal m_finished;
    unsigned int m_nAffinityMask = 0;
    LxThreadBody m_body;
};
