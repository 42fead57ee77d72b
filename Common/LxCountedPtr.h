// LxCountedPtr<T>: shared ownership through a counted control record.
//
// The record holds, in this order, the object pointer, the reference count (unsigned 32-bit, plain, NOT atomic)
// and an optional observer. Releasing a reference destroys the object and the record at zero; when instead the
// count drops to exactly one and an observer is set, the observer is told (a resource cache holding the last
// reference learns that nobody else uses the object). A counted pointer must not be copied or released from two
// threads at once.
#pragma once

#include <cstddef>
#include <utility>

// Receives the one-reference-left notification of a counted pointer's record.
template <class T>
class LxCountedPtrObserver
{
public:
    virtual ~LxCountedPtrObserver() = default;
    virtual void OnOneReferenceLeft(T* object) = 0;
};

template <class T>
class LxCountedPtr
{
public:
    struct Record
    {
        T* object;
        unsigned int count;
        LxCountedPtrObserver<T>* observer;
    };

    LxCountedPtr() = default;
    LxCountedPtr(std::nullptr_t) {}
    // Takes ownership of `object` (allocated with new); null gives an empty pointer.
    explicit LxCountedPtr(T* object)
    {
        if (object)
            m_pRecord = new Record{object, 1u, nullptr};
    }
    LxCountedPtr(const LxCountedPtr& other) : m_pRecord(other.m_pRecord)
    {
        if (m_pRecord)
            ++m_pRecord->count;
    }
    LxCountedPtr(LxCountedPtr&& other) noexcept : m_pRecord(other.m_pRecord) { other.m_pRecord = nullptr; }
    ~LxCountedPtr() { Release(); }

    LxCountedPtr& operator=(const LxCountedPtr& other)
    {
        if (m_pRecord != other.m_pRecord)
        {
            if (other.m_pRecord)
                ++other.m_pRecord->count;
            Release();
            m_pRecord = other.m_pRecord;
        }
        return *this;
    }
    LxCountedPtr& operator=(LxCountedPtr&& other) noexcept
    {
        if (this != &other)
        {
            Release();
            m_pRecord = other.m_pRecord;
            other.m_pRecord = nullptr;
        }
        return *this;
    }
    LxCountedPtr& operator=(std::nullptr_t)
    {
        Release();
        return *this;
    }

    // Drops this reference; the pointer becomes null.
    void Release()
    {
        Record* r = m_pRecord;
        if (!r)
            return;
        m_pRecord = nullptr;
        if (--r->count == 0)
        {
            delete r->object;
            delete r;
        }
        else if (r->count == 1 && r->observer)
            r->observer->OnOneReferenceLeft(r->object);
    }

    // The observer is shared by every pointer of this record; null removes it. Not owned.
    // Exchanges the objects of two records; each record keeps its count and observer. Every holder of this record
    // then sees the other's object: how a reloaded resource reaches everyone who holds the old one. Both must be set.
    void SwapObjects(LxCountedPtr& other)
    {
        T* object = m_pRecord->object;
        m_pRecord->object = other.m_pRecord->object;
        other.m_pRecord->object = object;
    }
    void SetObserver(LxCountedPtrObserver<T>* observer)
    {
        if (m_pRecord)
            m_pRecord->observer = observer;
    }
    unsigned int GetRefCount() const { return m_pRecord ? m_pRecord->count : 0u; }

    T* Get() const { return m_pRecord ? m_pRecord->object : nullptr; }
    T* operator->() const { return m_pRecord->object; }
    T& operator*() const { return *m_pRecord->object; }
    explicit operator bool() const { return m_pRecord != nullptr; }
    bool operator==(std::nullptr_t) const { return m_pRecord == nullptr; }
    bool operator!=(std::nullptr_t) const { return m_pRecord != nullptr; }
    // Two pointers are equal when they share the record (or both are null).
    bool operator==(const LxCountedPtr& o) const { return m_pRecord == o.m_pRecord; }
    bool operator!=(const LxCountedPtr& o) const { return m_pRecord != o.m_pRecord; }

private:
    Record* m_pRecord = nullptr;
};
