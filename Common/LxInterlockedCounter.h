// LxInterlockedCounter (32-bit signed) and LxInterlockedCounter64 (64-bit signed): a value changed only by
// full-barrier locked operations; safe to share between threads.
#pragma once

#include <atomic>
#include <cstdint>

template <class T>
class LxInterlockedCounterT
{
public:
    explicit LxInterlockedCounterT(T value = 0) : m_value(value) {}
    LxInterlockedCounterT(const LxInterlockedCounterT&) = delete;
    LxInterlockedCounterT& operator=(const LxInterlockedCounterT&) = delete;

    // Return the new value.
    T Increment() { return m_value.fetch_add(1) + 1; }
    T Decrement() { return m_value.fetch_sub(1) - 1; }
    T Add(T amount) { return m_value.fetch_add(amount) + amount; }
    // Stores v and returns the previous value.
    T Set(T v) { return m_value.exchange(v); }
    // Stores newValue only if the value equals comparand; returns the value found.
    T TestAndSet(T comparand, T newValue)
    {
        m_value.compare_exchange_strong(comparand, newValue);
        return comparand;
    }
    T Get() const { return m_value.load(); }

private:
    std::atomic<T> m_value;
};

class LxInterlockedCounter : public LxInterlockedCounterT<int32_t>
{
public:
    using LxInterlockedCounterT<int32_t>::LxInterlockedCounterT;
};

class LxInterlockedCounter64 : public LxInterlockedCounterT<int64_t>
{
public:
    using LxInterlockedCounterT<int64_t>::LxInterlockedCounterT;
};
