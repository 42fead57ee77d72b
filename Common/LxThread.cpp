#include "Common/LxThread.h"

unsigned int LxThread::Execute(LxThread* thread)
{
    const unsigned int code = thread->Run();
    // Nothing may touch the object after the signal: the owner may destroy it as soon as Join returns.
    thread->m_bActive.store(false);
    thread->m_finished.Signal();
    return code;
}
