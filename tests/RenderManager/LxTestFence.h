// A fence without a GPU: Signal records the value and, unless told to hold, completes it at once; a test (or a
// thread playing the GPU) completes held values with Complete. Waits block on a condition variable, so waits
// across threads behave as they do on a real fence. Every member is safe to use from any thread.
#pragma once

#include "RenderManager/include/LxFence.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace LxTest
{
class TestFence : public LxFence
{
public:
    // With hold set, signalled values wait for Complete.
    explicit TestFence(bool hold = false) : m_hold(hold) {}

    bool Signal(unsigned long long value) override
    {
        m_lastSignalled.store(value);
        if (!m_hold.load())
            Complete(value);
        return true;
    }
    unsigned long long GetCompletedValue() const override { return m_completed.load(std::memory_order_acquire); }

    // The GPU reached `value` (values only rise).
    void Complete(unsigned long long value)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (value > m_completed.load())
            m_completed.store(value, std::memory_order_release);
        m_changed.notify_all();
    }
    void SetHold(bool hold) { m_hold.store(hold); }
    unsigned long long GetLastSignalled() const { return m_lastSignalled.load(); }
    // Blocks until the completed value reaches `value` (for test threads, not through LxFence::Wait).
    void WaitCompleted(unsigned long long value)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [&] { return m_completed.load() >= value; });
    }

    std::atomic<int> blockingWaits{0};
    bool failArm = false; // set before the fence is shared

protected:
    bool ArmWait(unsigned long long value) override
    {
        if (failArm)
            return false;
        std::lock_guard<std::mutex> lock(m_mutex);
        m_armed = value;
        return true;
    }
    void WaitForArmedValue() override
    {
        blockingWaits.fetch_add(1);
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [&] { return m_completed.load() >= m_armed; });
    }

private:
    std::atomic<bool> m_hold;
    std::atomic<unsigned long long> m_completed{0};
    std::atomic<unsigned long long> m_lastSignalled{0};
    unsigned long long m_armed = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
};
} // namespace LxTest
