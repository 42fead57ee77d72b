#include "Common/LxSignal.h"

#include <windows.h>

struct LxSignal::Impl
{
    HANDLE event;
};

namespace
{
DWORD Timeout(unsigned int milliseconds)
{
    return milliseconds == 0 ? INFINITE : milliseconds;
}
} // namespace

LxSignal::LxSignal() : m_pImpl(new Impl)
{
    // Manual reset, initially not signalled.
    m_pImpl->event = CreateEventA(nullptr, TRUE, FALSE, nullptr);
}

LxSignal::~LxSignal()
{
    if (m_pImpl->event)
        CloseHandle(m_pImpl->event);
    delete m_pImpl;
}

void LxSignal::Signal()
{
    SetEvent(m_pImpl->event);
}

void LxSignal::Reset()
{
    ResetEvent(m_pImpl->event);
}

bool LxSignal::Wait(unsigned int milliseconds)
{
    return WaitForSingleObject(m_pImpl->event, Timeout(milliseconds)) == WAIT_OBJECT_0;
}

bool LxSignal::IsSignaled() const
{
    return WaitForSingleObject(m_pImpl->event, 0) == WAIT_OBJECT_0;
}

bool LxSignal::WaitForSignals(unsigned int milliseconds, LxArray<LxSignal*>& signals)
{
    HANDLE handles[MAXIMUM_WAIT_OBJECTS];
    const ULONGLONG start = GetTickCount64();
    unsigned int next = 0;
    while (next < signals.GetCount())
    {
        // WaitForMultipleObjects takes at most MAXIMUM_WAIT_OBJECTS handles: wait for the list in batches against
        // one deadline.
        DWORD count = 0;
        // The same handle twice makes the whole wait fail: list each event once.
        for (; next < signals.GetCount() && count < MAXIMUM_WAIT_OBJECTS; ++next)
        {
            if (!signals[next])
                continue;
            const HANDLE event = signals[next]->m_pImpl->event;
            bool listed = false;
            for (DWORD i = 0; i < count && !listed; ++i)
                listed = handles[i] == event;
            if (!listed)
                handles[count++] = event;
        }
        if (count == 0)
            break;
        DWORD timeout = Timeout(milliseconds);
        if (timeout != INFINITE)
        {
            const ULONGLONG elapsed = GetTickCount64() - start;
            timeout = elapsed >= milliseconds ? 0 : static_cast<DWORD>(milliseconds - elapsed);
        }
        const DWORD result = WaitForMultipleObjects(count, handles, TRUE, timeout);
        if (result >= WAIT_OBJECT_0 + count)
            return false;
    }
    return true;
}
