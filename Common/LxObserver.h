// LxObserver: what an LxTimeSubject notifies. Update is called once per notification, in the order the observers
// were added; OnSubjectDestroyed tells an observer that a subject it is still registered with is going away.
#pragma once

#include "Common/LxApi.h"

class LxTimeSubject;

class LX_API LxObserver
{
public:
    virtual ~LxObserver() = default;
    virtual void Update(LxTimeSubject& subject) = 0;
    virtual void OnSubjectDestroyed(LxTimeSubject&) {}
};
