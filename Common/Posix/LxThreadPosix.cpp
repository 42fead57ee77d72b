#include "Common/LxLogManager.h"
#include "Common/LxThread.h"

#include <cerrno>
#include <pthread.h>
#include <sched.h>
#include <time.h>

struct LxThread::Impl
{
    pthread_t thread;
    bool joinable = false;

    static void* Entry(void* argument)
    {
        LxThread::Execute(static_cast<LxThread*>(argument));
        return nullptr;
    }
};

LxThread::LxThread() : m_pImpl(new Impl), m_bActive(false) {}

LxThread::~LxThread()
{
    ReportDestroyedWhileRunning();
    Join(0);
    delete m_pImpl;
}

bool LxThread::Start()
{
    if (m_bActive.load())
        return false;
    Join(0); // a previous run has ended: reap it first
    m_finished.Reset();
    m_bActive.store(true);
    if (pthread_create(&m_pImpl->thread, nullptr, &Impl::Entry, this) != 0)
    {
        m_bActive.store(false);
        LX_ERROR("LxThread::Start.  The thread could not be created.");
        return false;
    }
    m_pImpl->joinable = true;
    if (m_nAffinityMask)
        ApplyAffinity();
    return true;
}

bool LxThread::Join(unsigned int milliseconds)
{
    if (!m_pImpl->joinable)
        return true;
    // The body signals when it returns; pthread_join then only reaps a thread that is already leaving.
    if (!m_finished.Wait(milliseconds))
        return false;
    pthread_join(m_pImpl->thread, nullptr);
    m_pImpl->joinable = false;
    return true;
}

void LxThread::SetAffinity(unsigned int mask)
{
    m_nAffinityMask = mask;
    if (m_pImpl->joinable)
        ApplyAffinity();
}

bool LxThread::ApplyAffinity()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    for (unsigned int cpu = 0; cpu < 32; ++cpu)
        if (m_nAffinityMask & (1u << cpu))
            CPU_SET(cpu, &set);
    if (m_nAffinityMask == 0 || pthread_setaffinity_np(m_pImpl->thread, sizeof(set), &set) != 0)
    {
        LX_WARNING("LxThread::SetAffinity.  The processor mask 0x%x was refused.", m_nAffinityMask);
        return false;
    }
    return true;
}

void LxThread::Sleep(unsigned int milliseconds)
{
    timespec delay;
    delay.tv_sec = milliseconds / 1000;
    delay.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
    while (nanosleep(&delay, &delay) != 0 && errno == EINTR)
    {
    }
}
