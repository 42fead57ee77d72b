// LxWorkItem: one unit of work for LxThreadPool::ExecuteWorkItems. Execute runs on a worker thread or on the
// calling thread; items of one batch run concurrently, so they must not share unguarded data, nor use the log or
// counted pointers (neither is safe across threads).
#pragma once

#include "Common/LxApi.h"

class LX_API LxWorkItem
{
public:
    virtual ~LxWorkItem() = default;
    virtual void Execute() = 0;
};
