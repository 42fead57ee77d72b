// LxThreadPool: N worker threads that, together with the calling thread, run a batch of work items.
//
// ExecuteWorkItems(items) splits the batch by a fixed stride of N + 1: worker i runs the items at i, i + N + 1,
// i + 2 (N + 1), ...; the calling thread takes part as participant N (items N, 2N + 1, ...). It returns when every
// item has run, so items may use data the caller owns. With no workers the caller runs every item in order. Null
// items are skipped. The split is static (no stealing): give items of similar cost.
//
// Workers sleep between batches and only run inside ExecuteWorkItems. One batch at a time: the pool belongs to one
// calling thread. Destroying the pool stops and joins its workers.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxInterlockedCounter.h"
#include "Common/LxSignal.h"

#include <atomic>

class LxWorkItem;

class LX_API LxThreadPool
{
public:
    // The largest worker count Create accepts.
    static const unsigned int MAX_THREADS = 256;

    // A pool with `threadCount` workers (0 is allowed); null after "Error occurred creating thread pool!" when a
    // thread cannot be started or the count exceeds MAX_THREADS.
    static LxThreadPool* Create(unsigned int threadCount);
    ~LxThreadPool();
    LxThreadPool(const LxThreadPool&) = delete;
    LxThreadPool& operator=(const LxThreadPool&) = delete;

    void ExecuteWorkItems(const LxArray<LxWorkItem*>& items);
    unsigned int GetThreadCount() const { return m_workers.GetCount(); }

private:
    class Worker;
    friend class Worker;

    LxThreadPool() = default;
    // Runs this participant's share: indices first, first + stride, ...
    static void RunShare(const LxArray<LxWorkItem*>& items, unsigned int first, unsigned int stride);

    LxArray<Worker*> m_workers;
    LxSignal m_completion;
    LxInterlockedCounter m_busyWorkers;
    const LxArray<LxWorkItem*>* m_pItems = nullptr;
    std::atomic<bool> m_bQuit{false};
};
