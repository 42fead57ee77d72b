// LxObserver: what an LxTimeSubject notifies. Update is called once per notification, in the order the observers
// were added; OnSubjectDestroyed tells an observer that a subject it is registered with is going away.
//
// The link is kept on both sides: an observer destroyed before its subjects unregisters itself from each, and a
// subject destroyed first unregisters itself from its observers, so neither side is ever left dangling. Observers
// are not copyable (a copy would not be registered anywhere). Single-threaded, like the subjects.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"

class LxTimeSubject;

class LX_API LxObserver
{
public:
    LxObserver() = default;
    virtual ~LxObserver();
    LxObserver(const LxObserver&) = delete;
    LxObserver& operator=(const LxObserver&) = delete;

    virtual void Update(LxTimeSubject& subject) = 0;
    virtual void OnSubjectDestroyed(LxTimeSubject&) {}

private:
    friend class LxTimeSubject;
    // The subjects this observer is registered with (maintained by LxTimeSubject).
    LxArray<LxTimeSubject*> m_subjects;
};
