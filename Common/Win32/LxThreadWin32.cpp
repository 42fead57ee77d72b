#include "Common/LxLogManager.h"
#include "Common/LxThread.h"

#include <windows.h>

#include <process.h>

struct LxThread::Impl
{
    HANDLE handle = nullptr;

    static unsigned __stdcall Entry(void* argument) { return LxThread::Execute(static_cast<LxThread*>(argument)); }
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
    Join(0); // a previous run has ended: release its handle first
    m_finished.Reset();
    m_bActive.store(true);
    unsigned int id = 0;
    // Suspended, so that the affinity applies before the body runs its first instruction.
    const uintptr_t handle = _beginthreadex(nullptr, 0, &Impl::Entry, this, CREATE_SUSPENDED, &id);
    if (handle == 0)
    {
        m_bActive.store(false);
        LX_ERROR("LxThread::Start.  The thread could not be created.");
        return false;
    }
    m_pImpl->handle = reinterpret_cast<HANDLE>(handle);
    if (m_nAffinityMask)
        ApplyAffinity();
    ResumeThread(m_pImpl->handle);
    return true;
}

bool LxThread::Join(unsigned int milliseconds)
{
    if (!m_pImpl->handle)
        return true;
    if (WaitForSingleObject(m_pImpl->handle, milliseconds == 0 ? INFINITE : milliseconds) != WAIT_OBJECT_0)
        return false;
    CloseHandle(m_pImpl->handle);
    m_pImpl->handle = nullptr;
    return true;
}

void LxThread::SetAffinity(unsigned int mask)
{
    m_nAffinityMask = mask;
    if (m_pImpl->handle)
        ApplyAffinity();
}

bool LxThread::ApplyAffinity()
{
    if (SetThreadAffinityMask(m_pImpl->handle, static_cast<DWORD_PTR>(m_nAffinityMask)) == 0)
    {
        LX_WARNING("LxThread::SetAffinity.  The processor mask 0x%x was refused.", m_nAffinityMask);
        return false;
    }
    return true;
}

void LxThread::Sleep(unsigned int milliseconds)
{
    ::Sleep(milliseconds);
}
