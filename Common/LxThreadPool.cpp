#include "Common/LxThreadPool.h"

#include "Common/LxLogManager.h"
#include "Common/LxThread.h"
#include "Common/LxWorkItem.h"

#include <new>

// A worker waits on its own start signal, which it resets itself on waking: a worker that finished its share can
// then never run the same batch twice, however late the caller is in starting the next one.
class LxThreadPool::Worker : public LxThread
{
public:
    Worker(LxThreadPool& pool, unsigned int index) : m_pool(pool), m_nIndex(index) {}
    ~Worker() override { Join(0); }

    void Go() { m_start.Signal(); }

protected:
    unsigned int Run() override
    {
        for (;;)
        {
            m_start.Wait(0);
            m_start.Reset();
            if (m_pool.m_bQuit.load())
                return 0;
            RunShare(*m_pool.m_pItems, m_nIndex, m_pool.m_workers.GetCount() + 1);
            if (m_pool.m_busyWorkers.Decrement() == 0)
                m_pool.m_completion.Signal();
        }
    }

private:
    LxThreadPool& m_pool;
    unsigned int m_nIndex;
    LxSignal m_start;
};

LxThreadPool* LxThreadPool::Create(unsigned int threadCount)
{
    LxThreadPool* pool = threadCount <= MAX_THREADS ? new (std::nothrow) LxThreadPool : nullptr;
    if (pool)
    {
        // All workers exist before the first starts: a worker reads the count to know its stride.
        pool->m_workers.Reserve(threadCount);
        for (unsigned int i = 0; i < threadCount; ++i)
            pool->m_workers.Add(new Worker(*pool, i));
        for (Worker* worker : pool->m_workers)
        {
            if (!worker->Start())
            {
                delete pool; // stops the workers already running
                pool = nullptr;
                break;
            }
        }
    }
    if (!pool)
        LX_ERROR("Error occurred creating thread pool!");
    return pool;
}

LxThreadPool::~LxThreadPool()
{
    m_bQuit.store(true);
    for (Worker* worker : m_workers)
        worker->Go();
    for (Worker* worker : m_workers)
        delete worker; // joins
}

void LxThreadPool::RunShare(const LxArray<LxWorkItem*>& items, unsigned int first, unsigned int stride)
{
    for (unsigned int i = first; i < items.GetCount(); i += stride)
        if (items[i])
            items[i]->Execute();
}

void LxThreadPool::ExecuteWorkItems(const LxArray<LxWorkItem*>& items)
{
    const unsigned int n = m_workers.GetCount();
    if (n == 0)
    {
        RunShare(items, 0, 1);
        return;
    }
    m_completion.Reset();
    m_busyWorkers.Set(static_cast<int32_t>(n));
    m_pItems = &items;
    for (Worker* worker : m_workers)
        worker->Go();
    RunShare(items, n, n + 1);
    m_completion.Wait(0);
    m_pItems = nullptr;
}
