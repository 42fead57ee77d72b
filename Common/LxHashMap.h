// LxHashMap<Key, Value, Hasher, Comparer>: open addressing with double hashing; LxHashSet<Key, ...> is the same
// table without a value.
//
// - The slot count is a power of two; the growth threshold is slots * maxLoadFactor, truncated. Before an
//   insertion that finds the occupied count at the threshold, the table is rebuilt with slots / maxLoadFactor
//   (rounded up to a power of two): entries are re-inserted, deleted slots vanish.
// - Probing starts at hash mod slots and steps by the hasher's SecondHashValue (odd, so every slot is reached);
//   at most slots + 1 probes. Insert reuses the first deleted slot met on the way.
// - Slots hold pointers to separately allocated nodes, so a rebuild moves only pointers and a node (and a
//   reference to its key or value) stays put until it is erased.
// - Hasher provides operator()(const Key&) and SecondHashValue(const Key&); Comparer is a binary equality. A hasher
//   whose second value is a function of the first may also provide SecondHashFromFirst(unsigned int): the key is
//   then hashed once per lookup. Each node keeps its key's hash, so rebuilds never rehash keys and mismatching
//   keys are rejected without comparing them.
// Not thread-safe.
#pragma once

#include "Common/LxMemory.h"

#include <cstring>
#include <type_traits>
#include <utility>

template <class T>
struct LxHashComparer
{
    bool operator()(const T& a, const T& b) const { return a == b; }
};

// Integral keys: Knuth's multiplicative hash; the second value is odd by construction.
template <class T>
struct LxIntegerHasher
{
    unsigned int operator()(const T& v) const
    {
        const unsigned long long x = static_cast<unsigned long long>(v);
        return static_cast<unsigned int>((x ^ (x >> 32)) * 2654435761u);
    }
    unsigned int SecondHashValue(const T& v) const
    {
        const unsigned long long x = static_cast<unsigned long long>(v);
        return static_cast<unsigned int>((x ^ (x >> 29)) * 40503u) * 2u + 1u;
    }
};

// Pointer keys hash their address.
template <class T>
struct LxPointerHasher
{
    unsigned int operator()(const T* p) const { return LxIntegerHasher<unsigned long long>()(Bits(p)); }
    unsigned int SecondHashValue(const T* p) const
    {
        return LxIntegerHasher<unsigned long long>().SecondHashValue(Bits(p));
    }

private:
    static unsigned long long Bits(const T* p)
    {
        return static_cast<unsigned long long>(reinterpret_cast<size_t>(p) >> 3);
    }
};

template <class Key, class Value, class Hasher, class Comparer = LxHashComparer<Key>>
class LxHashMap
{
public:
    enum SlotState : unsigned char
    {
        SLOT_EMPTY = 0,
        SLOT_OCCUPIED = 1,
        SLOT_DELETED = 2
    };

    struct Entry
    {
        Key key;
        Value value;
    };

private:
    struct Node : Entry
    {
        template <class V>
        Node(const Key& k, V&& v, unsigned int h) : Entry{k, std::forward<V>(v)}, hash(h)
        {
        }
        unsigned int hash;
    };

    // SFINAE: does the hasher derive the step from the first hash?
    template <class H>
    static auto HasStepFromFirst(int) -> decltype(H::SecondHashFromFirst(0u), std::true_type());
    template <class H>
    static std::false_type HasStepFromFirst(...);

    unsigned int StepFor(const Key& key, unsigned int h) const
    {
        if constexpr (decltype(HasStepFromFirst<Hasher>(0))::value)
        {
            (void)key;
            return Hasher::SecondHashFromFirst(h);
        }
        else
        {
            (void)h;
            return m_hasher.SecondHashValue(key);
        }
    }

public:
    template <class MapT, class EntryT>
    class IteratorT
    {
    public:
        IteratorT() = default;
        EntryT& operator*() const { return *m_pMap->m_ppNodes[m_nIndex]; }
        EntryT* operator->() const { return m_pMap->m_ppNodes[m_nIndex]; }
        IteratorT& operator++()
        {
            m_nIndex = m_pMap->NextOccupied(m_nIndex + 1);
            return *this;
        }
        bool operator==(const IteratorT& o) const { return m_nIndex == o.m_nIndex; }
        bool operator!=(const IteratorT& o) const { return m_nIndex != o.m_nIndex; }

    private:
        friend class LxHashMap;
        IteratorT(MapT* map, unsigned int index) : m_pMap(map), m_nIndex(index) {}
        MapT* m_pMap = nullptr;
        unsigned int m_nIndex = 0;
    };
    typedef IteratorT<LxHashMap, Entry> iterator;
    typedef IteratorT<const LxHashMap, const Entry> const_iterator;

    explicit LxHashMap(unsigned int initialSlots = 16, float maxLoadFactor = 0.75f)
        : m_nRequestedSlots(initialSlots), m_fMaxLoadFactor(maxLoadFactor > 0.0f ? maxLoadFactor : 0.75f)
    {
        SetSize(RoundUpPow2(m_nRequestedSlots));
    }
    LxHashMap(const LxHashMap& other)
        : m_nRequestedSlots(other.m_nRequestedSlots), m_fMaxLoadFactor(other.m_fMaxLoadFactor),
          m_hasher(other.m_hasher), m_comparer(other.m_comparer)
    {
        SetSize(RoundUpPow2(m_nRequestedSlots));
        for (const Entry& e : other)
            Insert(e.key, e.value);
    }
    LxHashMap(LxHashMap&& other) noexcept { Swap(other); }
    LxHashMap& operator=(const LxHashMap& other)
    {
        if (this != &other)
        {
            LxHashMap copy(other);
            Swap(copy);
        }
        return *this;
    }
    LxHashMap& operator=(LxHashMap&& other) noexcept
    {
        if (this != &other)
        {
            LxHashMap empty(other.m_nRequestedSlots, other.m_fMaxLoadFactor);
            Swap(empty);
            Swap(other);
        }
        return *this;
    }
    ~LxHashMap()
    {
        Clear();
        LxFree(m_pStates);
        LxFree(m_ppNodes);
    }

    void Swap(LxHashMap& o) noexcept
    {
        std::swap(m_nSlots, o.m_nSlots);
        std::swap(m_nUsed, o.m_nUsed);
        std::swap(m_nDeleted, o.m_nDeleted);
        std::swap(m_nThreshold, o.m_nThreshold);
        std::swap(m_nRequestedSlots, o.m_nRequestedSlots);
        std::swap(m_fMaxLoadFactor, o.m_fMaxLoadFactor);
        std::swap(m_pStates, o.m_pStates);
        std::swap(m_ppNodes, o.m_ppNodes);
        std::swap(m_hasher, o.m_hasher);
        std::swap(m_comparer, o.m_comparer);
    }

    unsigned int GetCount() const { return m_nUsed; }
    bool IsEmpty() const { return m_nUsed == 0; }
    // Always a power of two, from construction on; the slot arrays themselves are allocated by the first insertion.
    unsigned int GetSlotCount() const { return m_nSlots; }
    unsigned int GetDeletedCount() const { return m_nDeleted; }
    float MaxLoadFactor() const { return m_fMaxLoadFactor; }

    iterator begin() { return iterator(this, NextOccupied(0)); }
    iterator end() { return iterator(this, m_nSlots); }
    const_iterator begin() const { return const_iterator(this, NextOccupied(0)); }
    const_iterator end() const { return const_iterator(this, m_nSlots); }

    iterator Find(const Key& key) { return iterator(this, FindSlot(key)); }
    const_iterator Find(const Key& key) const { return const_iterator(this, FindSlot(key)); }
    bool Contains(const Key& key) const { return FindSlot(key) != m_nSlots; }
    Value* FindValue(const Key& key)
    {
        const unsigned int i = FindSlot(key);
        return i == m_nSlots ? nullptr : &m_ppNodes[i]->value;
    }
    const Value* FindValue(const Key& key) const
    {
        const unsigned int i = FindSlot(key);
        return i == m_nSlots ? nullptr : &m_ppNodes[i]->value;
    }

    // Inserts key/value unless the key is present; returns the entry either way and whether it was inserted.
    std::pair<iterator, bool> Insert(const Key& key, const Value& value)
    {
        return InsertImpl(key, [&](void* mem, unsigned int h) { return new (mem) Node(key, value, h); });
    }
    std::pair<iterator, bool> Insert(const Key& key, Value&& value)
    {
        return InsertImpl(key, [&](void* mem, unsigned int h) { return new (mem) Node(key, std::move(value), h); });
    }
    // Inserts or overwrites.
    Value& Set(const Key& key, const Value& value)
    {
        std::pair<iterator, bool> r = Insert(key, value);
        if (!r.second)
            r.first->value = value;
        return r.first->value;
    }
    // The value of key, default-constructed and inserted when absent.
    Value& operator[](const Key& key)
    {
        return InsertImpl(key, [&](void* mem, unsigned int h) { return new (mem) Node(key, Value(), h); }).first->value;
    }

    bool Erase(const Key& key)
    {
        const unsigned int i = FindSlot(key);
        if (i == m_nSlots)
            return false;
        EraseSlot(i);
        return true;
    }
    // Returns the iterator to the next entry.
    iterator Erase(iterator it)
    {
        if (!m_pStates || it.m_nIndex >= m_nSlots || m_pStates[it.m_nIndex] != SLOT_OCCUPIED)
            return end();
        EraseSlot(it.m_nIndex);
        return iterator(this, NextOccupied(it.m_nIndex + 1));
    }
    // Removes every entry; the table keeps its size.
    void Clear()
    {
        for (unsigned int i = 0; m_pStates && i < m_nSlots; ++i)
        {
            if (m_pStates[i] == SLOT_OCCUPIED)
                DestroyNode(m_ppNodes[i]);
            m_pStates[i] = SLOT_EMPTY;
            m_ppNodes[i] = nullptr;
        }
        m_nUsed = 0;
        m_nDeleted = 0;
    }

    // The state of a slot (for diagnostics and tests).
    SlotState GetSlotState(unsigned int slot) const { return m_pStates ? SlotState(m_pStates[slot]) : SLOT_EMPTY; }
    // The slot an entry lives in, or GetSlotCount() when absent.
    unsigned int SlotOf(const Key& key) const { return FindSlot(key); }

private:
    // The smallest power of two not below n, at least 1.
    static unsigned int RoundUpPow2(double n)
    {
        unsigned int s = 1;
        while (s < n && s < 0x80000000u)
            s <<= 1;
        return s;
    }

    void SetSize(unsigned int slots)
    {
        m_nSlots = slots;
        m_nThreshold = static_cast<unsigned int>(static_cast<double>(slots) * m_fMaxLoadFactor);
    }

    void Allocate(unsigned int slots)
    {
        SetSize(slots);
        m_pStates = static_cast<unsigned char*>(LxMalloc(slots));
        std::memset(m_pStates, SLOT_EMPTY, slots);
        m_ppNodes = static_cast<Node**>(LxMalloc(sizeof(Node*) * static_cast<size_t>(slots)));
        std::memset(static_cast<void*>(m_ppNodes), 0, sizeof(Node*) * static_cast<size_t>(slots));
        m_nUsed = 0;
        m_nDeleted = 0;
    }

    void Rebuild(unsigned int slots)
    {
        unsigned char* states = m_pStates;
        Node** nodes = m_ppNodes;
        const unsigned int old = states ? m_nSlots : 0;
        Allocate(slots);
        for (unsigned int i = 0; i < old; ++i)
        {
            if (states[i] != SLOT_OCCUPIED)
                continue;
            Node* n = nodes[i];
            const unsigned int step = StepFor(n->key, n->hash);
            unsigned int j = n->hash & (m_nSlots - 1);
            while (m_pStates[j] != SLOT_EMPTY)
                j = (j + step) & (m_nSlots - 1);
            m_pStates[j] = SLOT_OCCUPIED;
            m_ppNodes[j] = n;
            ++m_nUsed;
        }
        LxFree(states);
        LxFree(nodes);
    }

    unsigned int NextOccupied(unsigned int i) const
    {
        if (!m_pStates)
            return m_nSlots;
        while (i < m_nSlots && m_pStates[i] != SLOT_OCCUPIED)
            ++i;
        return i;
    }

    // An occupied slot always holds a node and a free one never does, so the node array alone tells a hit; the
    // state byte is read only to tell an empty slot (end of the search) from a deleted one.
    unsigned int FindSlot(const Key& key) const
    {
        if (!m_pStates)
            return m_nSlots;
        const unsigned int mask = m_nSlots - 1;
        const unsigned int h = m_hasher(key);
        unsigned int i = h & mask;
        unsigned int step = 0; // computed on the first miss only
        for (unsigned int probes = 0; probes <= m_nSlots; ++probes)
        {
            const Node* n = m_ppNodes[i];
            if (n)
            {
                if (n->hash == h && m_comparer(n->key, key))
                    return i;
            }
            else if (m_pStates[i] == SLOT_EMPTY)
                break;
            if (!step)
                step = StepFor(key, h);
            i = (i + step) & mask;
        }
        return m_nSlots;
    }

    template <class MakeNode>
    std::pair<iterator, bool> InsertImpl(const Key& key, MakeNode make)
    {
        if (m_nSlots == 0) // a moved-from map
            SetSize(RoundUpPow2(m_nRequestedSlots));
        // The threshold is checked before every insertion, the first included (a 1-slot table at load factor 0.5
        // has a threshold of 0, so its first insertion already grows it to 2 slots).
        if (m_nUsed >= m_nThreshold)
            Rebuild(RoundUpPow2(static_cast<double>(m_nSlots) / m_fMaxLoadFactor));
        else if (!m_pStates)
            Allocate(m_nSlots);
        else if (m_nUsed + m_nDeleted + 1 >= m_nSlots)
            Rebuild(m_nSlots); // deleted slots crowd out the last empty one: clear them at the same size
        const unsigned int h = m_hasher(key);
        const unsigned int step = StepFor(key, h);
        for (;;)
        {
            const unsigned int mask = m_nSlots - 1;
            unsigned int i = h & mask;
            unsigned int target = m_nSlots;
            for (unsigned int probes = 0; probes <= m_nSlots; ++probes)
            {
                const unsigned char s = m_pStates[i];
                if (s == SLOT_EMPTY)
                {
                    if (target == m_nSlots)
                        target = i;
                    break;
                }
                if (s == SLOT_DELETED)
                {
                    if (target == m_nSlots)
                        target = i;
                }
                else if (m_ppNodes[i]->hash == h && m_comparer(m_ppNodes[i]->key, key))
                    return std::make_pair(iterator(this, i), false);
                i = (i + step) & mask;
            }
            if (target == m_nSlots)
            {
                // Only reachable with a load factor of 1 or more: the table is full.
                Rebuild(m_nSlots * 2);
                continue;
            }
            if (m_pStates[target] == SLOT_DELETED)
                --m_nDeleted;
            m_ppNodes[target] = make(LxMalloc(sizeof(Node)), h);
            m_pStates[target] = SLOT_OCCUPIED;
            ++m_nUsed;
            return std::make_pair(iterator(this, target), true);
        }
    }

    void EraseSlot(unsigned int i)
    {
        DestroyNode(m_ppNodes[i]);
        m_ppNodes[i] = nullptr;
        m_pStates[i] = SLOT_DELETED;
        --m_nUsed;
        ++m_nDeleted;
    }

    static void DestroyNode(Node* n)
    {
        n->~Node();
        LxFree(n);
    }

    unsigned int m_nSlots = 0;
    unsigned int m_nUsed = 0;
    unsigned int m_nDeleted = 0;
    unsigned int m_nThreshold = 0;
    unsigned int m_nRequestedSlots = 16;
    float m_fMaxLoadFactor = 0.75f;
    unsigned char* m_pStates = nullptr;
    Node** m_ppNodes = nullptr;
    Hasher m_hasher;
    Comparer m_comparer;
};

// A set: the same table with an empty value.
template <class Key, class Hasher, class Comparer = LxHashComparer<Key>>
class LxHashSet
{
    struct NoValue
    {
    };
    typedef LxHashMap<Key, NoValue, Hasher, Comparer> Table;

public:
    typedef typename Table::const_iterator const_iterator;

    explicit LxHashSet(unsigned int initialSlots = 16, float maxLoadFactor = 0.75f)
        : m_table(initialSlots, maxLoadFactor)
    {
    }

    // True when the key was not yet in the set.
    bool Insert(const Key& key) { return m_table.Insert(key, NoValue()).second; }
    bool Contains(const Key& key) const { return m_table.Contains(key); }
    bool Erase(const Key& key) { return m_table.Erase(key); }
    void Clear() { m_table.Clear(); }
    unsigned int GetCount() const { return m_table.GetCount(); }
    unsigned int GetSlotCount() const { return m_table.GetSlotCount(); }
    const_iterator begin() const { return m_table.begin(); }
    const_iterator end() const { return m_table.end(); }

private:
    Table m_table;
};
