#include "Common/LxObserver.h"

#include "Common/LxTimeSubject.h"

LxObserver::~LxObserver()
{
    // RemoveObserver also drops the subject from m_subjects: work on a copy.
    LxArray<LxTimeSubject*> subjects(m_subjects);
    for (LxTimeSubject* subject : subjects)
        subject->RemoveObserver(this);
}
