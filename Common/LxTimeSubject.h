// LxTimeSubject: something that advances in frames (a clock or a timer) and tells its observers after each step.
//
// Observers are held, not owned; each is notified once per step in the order of addition. An observer may remove
// itself, or others, during a notification (removed ones are skipped); observers added during a notification are
// first notified at the next one. An observer that is destroyed unregisters itself; the subject's destructor
// unregisters and tells every observer still registered (OnSubjectDestroyed).
// Belongs to one thread (the main thread in practice).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"

class LxObserver;

class LX_API LxTimeSubject
{
public:
    LxTimeSubject() = default;
    virtual ~LxTimeSubject();
    LxTimeSubject(const LxTimeSubject&) = delete;
    LxTimeSubject& operator=(const LxTimeSubject&) = delete;

    // A null or already registered observer is ignored.
    void AddObserver(LxObserver* observer);
    void RemoveObserver(LxObserver* observer);
    unsigned int GetObserverCount() const;

    // Seconds covered by the last step.
    virtual double GetFrameDuration() const = 0;

protected:
    void NotifyObservers();

private:
    LxArray<LxObserver*> m_observers;
    unsigned int m_nNotifyDepth = 0;
    bool m_bHasRemovedEntries = false;
};
