// LxList<T>: a doubly linked list of values; nodes come from the tracked allocator (global new).
//
// Iterators stay valid until their own element is erased. Not thread-safe.
#pragma once

#include <cstddef>
#include <iterator>
#include <utility>

template <class T>
class LxList
{
    struct Node
    {
        T value;
        Node* prev;
        Node* next;
    };

public:
    class iterator
    {
    public:
        typedef std::bidirectional_iterator_tag iterator_category;
        typedef T value_type;
        typedef std::ptrdiff_t difference_type;
        typedef T* pointer;
        typedef T& reference;

        iterator() = default;
        T& operator*() const { return m_pNode->value; }
        T* operator->() const { return &m_pNode->value; }
        iterator& operator++()
        {
            m_pNode = m_pNode->next;
            return *this;
        }
        iterator& operator--()
        {
            m_pNode = m_pNode ? m_pNode->prev : m_pList->m_pTail;
            return *this;
        }
        bool operator==(const iterator& o) const { return m_pNode == o.m_pNode; }
        bool operator!=(const iterator& o) const { return m_pNode != o.m_pNode; }

    private:
        friend class LxList;
        iterator(Node* n, const LxList* l) : m_pNode(n), m_pList(l) {}
        Node* m_pNode = nullptr;
        const LxList* m_pList = nullptr;
    };

    class const_iterator
    {
    public:
        typedef std::forward_iterator_tag iterator_category;
        typedef T value_type;
        typedef std::ptrdiff_t difference_type;
        typedef const T* pointer;
        typedef const T& reference;

        const_iterator() = default;
        const_iterator(const iterator& it) : m_pNode(it.m_pNode) {}
        const T& operator*() const { return m_pNode->value; }
        const T* operator->() const { return &m_pNode->value; }
        const_iterator& operator++()
        {
            m_pNode = m_pNode->next;
            return *this;
        }
        bool operator==(const const_iterator& o) const { return m_pNode == o.m_pNode; }
        bool operator!=(const const_iterator& o) const { return m_pNode != o.m_pNode; }

    private:
        friend class LxList;
        explicit const_iterator(const Node* n) : m_pNode(n) {}
        const Node* m_pNode = nullptr;
    };

    LxList() = default;
    LxList(const LxList& other)
    {
        for (const T& v : other)
            Add(v);
    }
    LxList(LxList&& other) noexcept : m_pHead(other.m_pHead), m_pTail(other.m_pTail), m_nCount(other.m_nCount)
    {
        other.m_pHead = other.m_pTail = nullptr;
        other.m_nCount = 0;
    }
    ~LxList() { Clear(); }
    LxList& operator=(const LxList& other)
    {
        if (this != &other)
        {
            Clear();
            for (const T& v : other)
                Add(v);
        }
        return *this;
    }
    LxList& operator=(LxList&& other) noexcept
    {
        if (this != &other)
        {
            Clear();
            std::swap(m_pHead, other.m_pHead);
            std::swap(m_pTail, other.m_pTail);
            std::swap(m_nCount, other.m_nCount);
        }
        return *this;
    }

    unsigned int GetCount() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }
    T& GetFirst() { return m_pHead->value; }
    T& GetLast() { return m_pTail->value; }
    const T& GetFirst() const { return m_pHead->value; }
    const T& GetLast() const { return m_pTail->value; }

    iterator begin() { return iterator(m_pHead, this); }
    iterator end() { return iterator(nullptr, this); }
    const_iterator begin() const { return const_iterator(m_pHead); }
    const_iterator end() const { return const_iterator(nullptr); }

    void Add(const T& v) { InsertBefore(end(), v); }
    void Add(T&& v) { InsertBefore(end(), std::move(v)); }
    void AddFront(const T& v) { InsertBefore(begin(), v); }
    // Inserts before `pos` (end() appends); returns the new element.
    template <class U>
    iterator InsertBefore(iterator pos, U&& v)
    {
        Node* n = new Node{T(std::forward<U>(v)), nullptr, pos.m_pNode};
        n->prev = pos.m_pNode ? pos.m_pNode->prev : m_pTail;
        (n->prev ? n->prev->next : m_pHead) = n;
        (pos.m_pNode ? pos.m_pNode->prev : m_pTail) = n;
        ++m_nCount;
        return iterator(n, this);
    }
    // Returns the element after the erased one.
    iterator Erase(iterator pos)
    {
        Node* n = pos.m_pNode;
        if (!n)
            return end();
        Node* next = n->next;
        (n->prev ? n->prev->next : m_pHead) = n->next;
        (n->next ? n->next->prev : m_pTail) = n->prev;
        delete n;
        --m_nCount;
        return iterator(next, this);
    }
    void RemoveFirst() { Erase(begin()); }
    void RemoveLast() { Erase(iterator(m_pTail, this)); }
    void Clear()
    {
        while (m_pHead)
        {
            Node* next = m_pHead->next;
            delete m_pHead;
            m_pHead = next;
        }
        m_pTail = nullptr;
        m_nCount = 0;
    }
    iterator Find(const T& v)
    {
        for (Node* n = m_pHead; n; n = n->next)
            if (n->value == v)
                return iterator(n, this);
        return end();
    }
    bool Remove(const T& v)
    {
        iterator it = Find(v);
        if (it == end())
            return false;
        Erase(it);
        return true;
    }

private:
    Node* m_pHead = nullptr;
    Node* m_pTail = nullptr;
    unsigned int m_nCount = 0;
};
