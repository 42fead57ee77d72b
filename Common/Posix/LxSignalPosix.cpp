#include "Common/LxSignal.h"

#include <cerrno>
#include <ctime>
#include <pthread.h>

// A manual-reset event: a flag under a mutex, with a condition variable on the monotonic clock (so that setting the
// wall clock neither shortens nor stretches a timeout).
struct LxSignal::Impl
{
    pthread_mutex_t mutex;
    pthread_cond_t condition;
    bool signaled = false;

    // Waits until signalled or the deadline passes (null: no deadline); true when signalled.
    bool WaitUntil(const timespec* deadline)
    {
        pthread_mutex_lock(&mutex);
        while (!signaled)
        {
            if (!deadline)
                pthread_cond_wait(&condition, &mutex);
            else if (pthread_cond_timedwait(&condition, &mutex, deadline) == ETIMEDOUT)
                break;
        }
        const bool result = signaled;
        pthread_mutex_unlock(&mutex);
        return result;
    }
};

namespace
{
// The absolute monotonic time `milliseconds` from now, or null for "forever" (0 and 0xFFFFFFFF).
const timespec* Deadline(unsigned int milliseconds, timespec& storage)
{
    if (milliseconds == 0 || milliseconds == 0xFFFFFFFFu)
        return nullptr;
    clock_gettime(CLOCK_MONOTONIC, &storage);
    storage.tv_sec += milliseconds / 1000;
    storage.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000L;
    if (storage.tv_nsec >= 1000000000L)
    {
        storage.tv_nsec -= 1000000000L;
        ++storage.tv_sec;
    }
    return &storage;
}
} // namespace

LxSignal::LxSignal() : m_pImpl(new Impl)
{
    pthread_mutex_init(&m_pImpl->mutex, nullptr);
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&m_pImpl->condition, &attributes);
    pthread_condattr_destroy(&attributes);
}

LxSignal::~LxSignal()
{
    pthread_cond_destroy(&m_pImpl->condition);
    pthread_mutex_destroy(&m_pImpl->mutex);
    delete m_pImpl;
}

void LxSignal::Signal()
{
    pthread_mutex_lock(&m_pImpl->mutex);
    m_pImpl->signaled = true;
    pthread_cond_broadcast(&m_pImpl->condition);
    pthread_mutex_unlock(&m_pImpl->mutex);
}

void LxSignal::Reset()
{
    pthread_mutex_lock(&m_pImpl->mutex);
    m_pImpl->signaled = false;
    pthread_mutex_unlock(&m_pImpl->mutex);
}

bool LxSignal::Wait(unsigned int milliseconds)
{
    timespec storage;
    return m_pImpl->WaitUntil(Deadline(milliseconds, storage));
}

bool LxSignal::IsSignaled() const
{
    pthread_mutex_lock(&m_pImpl->mutex);
    const bool result = m_pImpl->signaled;
    pthread_mutex_unlock(&m_pImpl->mutex);
    return result;
}

bool LxSignal::WaitForSignals(unsigned int milliseconds, LxArray<LxSignal*>& signals)
{
    // One deadline for the whole list; a manual-reset event stays set once seen, so waiting in turn is waiting for
    // all.
    timespec storage;
    const timespec* deadline = Deadline(milliseconds, storage);
    for (LxSignal* signal : signals)
        if (signal && !signal->m_pImpl->WaitUntil(deadline))
            return false;
    return true;
}
