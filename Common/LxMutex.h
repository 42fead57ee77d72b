// LxMutex: a recursive lock (a critical section on Windows, a recursive pthread mutex elsewhere), created in the
// constructor. The thread that holds it may take it again; each Take needs its Release, by the same thread.
// Not copyable. LxMutex::ScopedLock takes it for the lifetime of a scope.
#pragma once

#include "Common/LxApi.h"

class LX_API LxMutex
{
public:
    LxMutex();
    ~LxMutex();
    LxMutex(const LxMutex&) = delete;
    LxMutex& operator=(const LxMutex&) = delete;

    void Take();
    // Takes the lock only if that needs no waiting; true when taken.
    bool TryTake();
    void Release();

    class ScopedLock
    {
    public:
        explicit ScopedLock(LxMutex& mutex) : m_mutex(mutex) { m_mutex.Take(); }
        ~ScopedLock() { m_mutex.Release(); }
        ScopedLock(const ScopedLock&) = delete;
        ScopedLock& operator=(const ScopedLock&) = delete;

    private:
        LxMutex& m_mutex;
    };

private:
    struct Impl;
    Impl* m_pImpl;
};
