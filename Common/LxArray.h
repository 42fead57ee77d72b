// LxArray<T>: a growable array of T with a count and a capacity; memory from the tracked allocator.
//
// Elements move when the array grows (move construction when T allows it), so pointers and references into the
// array are valid only until the next insertion. Capacity doubles (starting at 4) when full. Not thread-safe.
#pragma once

#include "Common/LxMemory.h"

#include <new>
#include <type_traits>
#include <utility>

template <class T>
class LxArray
{
public:
    LxArray() = default;
    LxArray(const LxArray& other) { CopyFrom(other); }
    LxArray(LxArray&& other) noexcept : m_pData(other.m_pData), m_nCount(other.m_nCount), m_nCapacity(other.m_nCapacity)
    {
        other.m_pData = nullptr;
        other.m_nCount = other.m_nCapacity = 0;
    }
    ~LxArray()
    {
        Clear();
        LxFree(m_pData);
    }
    LxArray& operator=(const LxArray& other)
    {
        if (this != &other)
        {
            Clear();
            CopyFrom(other);
        }
        return *this;
    }
    LxArray& operator=(LxArray&& other) noexcept
    {
        if (this != &other)
        {
            Clear();
            LxFree(m_pData);
            m_pData = other.m_pData;
            m_nCount = other.m_nCount;
            m_nCapacity = other.m_nCapacity;
            other.m_pData = nullptr;
            other.m_nCount = other.m_nCapacity = 0;
        }
        return *this;
    }

    unsigned int GetCount() const { return m_nCount; }
    unsigned int GetCapacity() const { return m_nCapacity; }
    bool IsEmpty() const { return m_nCount == 0; }
    T* GetData() { return m_pData; }
    const T* GetData() const { return m_pData; }
    T& operator[](unsigned int i) { return m_pData[i]; }
    const T& operator[](unsigned int i) const { return m_pData[i]; }
    T& GetLast() { return m_pData[m_nCount - 1]; }
    const T& GetLast() const { return m_pData[m_nCount - 1]; }
    T* begin() { return m_pData; }
    T* end() { return m_pData + m_nCount; }
    const T* begin() const { return m_pData; }
    const T* end() const { return m_pData + m_nCount; }

    void Reserve(unsigned int capacity)
    {
        if (capacity <= m_nCapacity)
            return;
        T* data = static_cast<T*>(LxMalloc(sizeof(T) * static_cast<size_t>(capacity)));
        for (unsigned int i = 0; i < m_nCount; ++i)
        {
            new (data + i) T(std::move_if_noexcept(m_pData[i]));
            m_pData[i].~T();
        }
        LxFree(m_pData);
        m_pData = data;
        m_nCapacity = capacity;
    }

    // Returns the index of the new element.
    unsigned int Add(const T& value)
    {
        if (m_nCount == m_nCapacity)
        {
            T copy(value); // value may live inside this array
            Grow();
            new (m_pData + m_nCount) T(std::move(copy));
        }
        else
            new (m_pData + m_nCount) T(value);
        return m_nCount++;
    }
    unsigned int Add(T&& value)
    {
        if (m_nCount == m_nCapacity)
        {
            T moved(std::move(value));
            Grow();
            new (m_pData + m_nCount) T(std::move(moved));
        }
        else
            new (m_pData + m_nCount) T(std::move(value));
        return m_nCount++;
    }
    template <class... Args>
    T& Emplace(Args&&... args)
    {
        if (m_nCount == m_nCapacity)
            Grow();
        T* p = new (m_pData + m_nCount) T(std::forward<Args>(args)...);
        ++m_nCount;
        return *p;
    }
    void Insert(unsigned int index, const T& value)
    {
        if (index >= m_nCount)
        {
            Add(value);
            return;
        }
        T copy(value);
        if (m_nCount == m_nCapacity)
            Grow();
        new (m_pData + m_nCount) T(std::move(m_pData[m_nCount - 1]));
        for (unsigned int i = m_nCount - 1; i > index; --i)
            m_pData[i] = std::move(m_pData[i - 1]);
        m_pData[index] = std::move(copy);
        ++m_nCount;
    }
    // Keeps the order of the remaining elements.
    void RemoveAt(unsigned int index)
    {
        if (index >= m_nCount)
            return;
        for (unsigned int i = index; i + 1 < m_nCount; ++i)
            m_pData[i] = std::move(m_pData[i + 1]);
        m_pData[--m_nCount].~T();
    }
    // O(1): the last element takes the removed one's place.
    void RemoveAtSwap(unsigned int index)
    {
        if (index >= m_nCount)
            return;
        if (index + 1 != m_nCount)
            m_pData[index] = std::move(m_pData[m_nCount - 1]);
        m_pData[--m_nCount].~T();
    }
    void RemoveLast()
    {
        if (m_nCount)
            m_pData[--m_nCount].~T();
    }
    // Grows with default-constructed elements or shrinks.
    void Resize(unsigned int count)
    {
        if (count > m_nCapacity)
            Reserve(count);
        for (unsigned int i = m_nCount; i < count; ++i)
            new (m_pData + i) T();
        for (unsigned int i = count; i < m_nCount; ++i)
            m_pData[i].~T();
        m_nCount = count;
    }
    void Clear()
    {
        for (unsigned int i = 0; i < m_nCount; ++i)
            m_pData[i].~T();
        m_nCount = 0;
    }
    // Index of the first element equal to value, or -1.
    int Find(const T& value) const
    {
        for (unsigned int i = 0; i < m_nCount; ++i)
            if (m_pData[i] == value)
                return static_cast<int>(i);
        return -1;
    }
    bool Contains(const T& value) const { return Find(value) >= 0; }
    bool Remove(const T& value)
    {
        const int i = Find(value);
        if (i < 0)
            return false;
        RemoveAt(static_cast<unsigned int>(i));
        return true;
    }

private:
    void Grow() { Reserve(m_nCapacity ? m_nCapacity * 2 : 4); }
    void CopyFrom(const LxArray& other)
    {
        Reserve(other.m_nCount);
        for (unsigned int i = 0; i < other.m_nCount; ++i)
            new (m_pData + i) T(other.m_pData[i]);
        m_nCount = other.m_nCount;
    }

    T* m_pData = nullptr;
    unsigned int m_nCount = 0;
    unsigned int m_nCapacity = 0;
};
