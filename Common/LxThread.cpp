#include "Common/LxThread.h"

#include "Common/LxLogManager.h"

LxThread::LxThread(LxThreadBody body) : LxThread()
{
    m_body = std::move(body);
}

unsigned int LxThread::Run()
{
    return m_body ? m_body() : 0u;
}

void LxThread::ReportDestroyedWhileRunning()
{
    if (m_bActive.load() && !m_body)
        LX_ERROR("LxThread::~LxThread.  A derived thread was destroyed while its Run() was still executing: the "
                 "derived destructor must make it return and call Join() first.");
}

unsigned int LxThread::Execute(LxThread* thread)
{
    const unsigned int code = thread->Run();
    // Nothing may touch the object after the signal: the owner may destroy it as soon as Join returns.
    thread->m_bActive.store(false);
    thread->m_finished.Signal();
    return code;
}
