#include "Common/LxMutex.h"

#include <pthread.h>

struct LxMutex::Impl
{
    pthread_mutex_t mutex;
};

LxMutex::LxMutex() : m_pImpl(new Impl)
{
    // Recursive, as a Windows critical section is.
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&m_pImpl->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

LxMutex::~LxMutex()
{
    pthread_mutex_destroy(&m_pImpl->mutex);
    delete m_pImpl;
}

void LxMutex::Take()
{
    pthread_mutex_lock(&m_pImpl->mutex);
}

bool LxMutex::TryTake()
{
    return pthread_mutex_trylock(&m_pImpl->mutex) == 0;
}

void LxMutex::Release()
{
    pthread_mutex_unlock(&m_pImpl->mutex);
}
