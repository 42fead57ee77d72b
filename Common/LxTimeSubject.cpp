#include "Common/LxTimeSubject.h"

#include "Common/LxObserver.h"

LxTimeSubject::~LxTimeSubject()
{
    // Copy first: an observer may unregister from inside the callback.
    LxArray<LxObserver*> observers(m_observers);
    m_observers.Clear();
    for (LxObserver* observer : observers)
        if (observer)
            observer->m_subjects.Remove(this);
    for (LxObserver* observer : observers)
        if (observer)
            observer->OnSubjectDestroyed(*this);
}

void LxTimeSubject::AddObserver(LxObserver* observer)
{
    if (observer && !m_observers.Contains(observer))
    {
        m_observers.Add(observer);
        observer->m_subjects.Add(this);
    }
}

void LxTimeSubject::RemoveObserver(LxObserver* observer)
{
    const int index = observer ? m_observers.Find(observer) : -1;
    if (index < 0)
        return;
    observer->m_subjects.Remove(this);
    if (m_nNotifyDepth > 0)
    {
        // Keep the indices of the running notification valid; compact when it ends.
        m_observers[static_cast<unsigned int>(index)] = nullptr;
        m_bHasRemovedEntries = true;
    }
    else
        m_observers.RemoveAt(static_cast<unsigned int>(index));
}

unsigned int LxTimeSubject::GetObserverCount() const
{
    unsigned int count = 0;
    for (LxObserver* observer : m_observers)
        count += observer ? 1 : 0;
    return count;
}

void LxTimeSubject::NotifyObservers()
{
    ++m_nNotifyDepth;
    const unsigned int count = m_observers.GetCount();
    for (unsigned int i = 0; i < count; ++i)
        if (LxObserver* observer = m_observers[i])
            observer->Update(*this);
    if (--m_nNotifyDepth == 0 && m_bHasRemovedEntries)
    {
        m_bHasRemovedEntries = false;
        while (m_observers.Remove(nullptr))
        {
        }
    }
}
