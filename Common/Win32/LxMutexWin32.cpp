#include "Common/LxMutex.h"

#include <windows.h>

struct LxMutex::Impl
{
    CRITICAL_SECTION section;
};

LxMutex::LxMutex() : m_pImpl(new Impl)
{
    InitializeCriticalSection(&m_pImpl->section);
}

LxMutex::~LxMutex()
{
    DeleteCriticalSection(&m_pImpl->section);
    delete m_pImpl;
}

void LxMutex::Take()
{
    EnterCriticalSection(&m_pImpl->section);
}

bool LxMutex::TryTake()
{
    return TryEnterCriticalSection(&m_pImpl->section) != 0;
}

void LxMutex::Release()
{
    LeaveCriticalSection(&m_pImpl->section);
}
