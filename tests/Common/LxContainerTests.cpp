// Containers and shared ownership: LxArray, LxList, LxHashMap/LxHashSet, LxCountedPtr, LxMemoryBuffer and the
// interlocked counters.
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxHashMap.h"
#include "Common/LxInterlockedCounter.h"
#include "Common/LxList.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{
// Counts live instances so that leaks and double destruction show up.
struct Tracked
{
    static int live;
    int value;
    explicit Tracked(int v = 0) : value(v) { ++live; }
    Tracked(const Tracked& o) : value(o.value) { ++live; }
    Tracked& operator=(const Tracked&) = default;
    ~Tracked() { --live; }
    bool operator==(const Tracked& o) const { return value == o.value; }
};
int Tracked::live = 0;

// Puts every key into the same home slot, so probing and deleted-slot reuse are exercised.
struct CollidingHasher
{
    unsigned int operator()(int) const { return 3; }
    unsigned int SecondHashValue(int) const { return 1; }
};
typedef LxHashMap<LxString, int, LxStringHasher> StringMap;
} // namespace

TEST(LxArray, GrowsInsertsAndRemovesWithoutLeaking)
{
    {
        LxArray<Tracked> a;
        for (int i = 0; i < 100; ++i)
            a.Add(Tracked(i));
        EXPECT_EQ(Tracked::live, 100);
        a.Add(a[0]); // an element of the array itself, while the array grows
        EXPECT_EQ(a.GetLast().value, 0);
        a.Insert(1, Tracked(-1));
        EXPECT_EQ(a[2].value, 1);
        a.RemoveAt(1);
        EXPECT_EQ(a[1].value, 1);
        a.RemoveAtSwap(0);
        EXPECT_EQ(a[0].value, 0); // the last element (a copy of 0) took its place
        EXPECT_EQ(a.Find(Tracked(50)), 50);
        EXPECT_TRUE(a.Remove(Tracked(50)));
        EXPECT_FALSE(a.Contains(Tracked(50)));
        a.Resize(10);
        EXPECT_EQ(Tracked::live, 10);
        LxArray<Tracked> copy(a);
        LxArray<Tracked> moved(std::move(copy));
        EXPECT_EQ(moved.GetCount(), 10u);
        EXPECT_EQ(copy.GetCount(), 0u); // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(Tracked::live, 20);
    }
    EXPECT_EQ(Tracked::live, 0);
}

TEST(LxList, LinksInBothDirections)
{
    LxList<int> l;
    l.Add(2);
    l.Add(3);
    l.AddFront(1);
    EXPECT_EQ(std::vector<int>(l.begin(), l.end()), (std::vector<int>{1, 2, 3}));
    auto it = l.Erase(l.Find(2));
    EXPECT_EQ(*it, 3);
    l.InsertBefore(it, 9);
    EXPECT_EQ(std::vector<int>(l.begin(), l.end()), (std::vector<int>{1, 9, 3}));
    EXPECT_EQ(*--l.end(), 3);
    l.RemoveFirst();
    l.RemoveLast();
    EXPECT_EQ(l.GetFirst(), 9);
    EXPECT_EQ(l.GetLast(), 9);
    LxList<int> copy(l);
    l.Clear();
    EXPECT_TRUE(l.IsEmpty());
    EXPECT_EQ(copy.GetCount(), 1u);
}

TEST(LxHashMap, GrowthInsertionAndIteration)
{
    StringMap m(8, 0.5f);
    EXPECT_EQ(m.GetSlotCount(), 8u); // the slot count holds from construction, however lazily it is allocated
    for (int i = 0; i < 4; ++i)
        m.Insert(LxString::Formatted("key%d", i), i);
    EXPECT_EQ(m.GetSlotCount(), 8u);
    m.Insert(LxString("key4"), 4); // the insertion after the threshold grows
    EXPECT_EQ(m.GetSlotCount(), 16u);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(*m.FindValue(LxString::Formatted("key%d", i)), i);
    StringMap odd(10, 0.75f);
    EXPECT_EQ(odd.GetSlotCount(), 16u); // rounded up to a power of two
    EXPECT_EQ(StringMap(0, 0.5f).GetSlotCount(), 1u);

    // The threshold is checked before every insertion, the first included: 1 slot at 0.5 has a threshold of 0.
    StringMap tiny(1, 0.5f);
    tiny.Insert(LxString("a"), 1);
    EXPECT_EQ(tiny.GetSlotCount(), 2u);
    tiny.Insert(LxString("b"), 2);
    EXPECT_EQ(tiny.GetSlotCount(), 4u);
    EXPECT_EQ(tiny.SlotOf(LxString("a")), LxString("a").Hash() % 4u); // positions follow the grown table
    EXPECT_EQ(tiny.SlotOf(LxString("zz")), tiny.GetSlotCount());      // absent
    StringMap empty(4, 0.5f);
    EXPECT_TRUE(empty.begin() == empty.end());

    // Insert hands back the existing entry, whose node does not move.
    auto first = m.Insert(LxString("a"), 1);
    auto again = m.Insert(LxString("a"), 2);
    EXPECT_TRUE(first.second);
    EXPECT_FALSE(again.second);
    EXPECT_EQ(&*again.first, &*first.first);
    EXPECT_EQ(again.first->value, 1);
    m.Set(LxString("a"), 3);
    EXPECT_EQ(m[LxString("a")], 3);
    EXPECT_EQ(m[LxString("new")], 0);
    EXPECT_EQ(m.GetCount(), 7u);

    // Iteration visits every entry once; erasing while iterating.
    StringMap big;
    for (int i = 0; i < 100; ++i)
        big.Insert(LxString::Formatted("%d", i), i);
    int sum = 0, count = 0;
    for (const auto& e : big)
    {
        sum += e.value;
        ++count;
    }
    EXPECT_EQ(count, 100);
    EXPECT_EQ(sum, 4950);
    for (auto it = big.begin(); it != big.end();)
        it = (it->value % 2) ? big.Erase(it) : ++it;
    StringMap copy(big);
    big.Clear();
    EXPECT_EQ(big.GetCount(), 0u);
    EXPECT_EQ(copy.GetCount(), 50u);
    EXPECT_TRUE(copy.Contains(LxString("42")));
    EXPECT_FALSE(copy.Contains(LxString("43")));

    LxHashSet<LxString, LxStringHasher> set(8, 0.5f);
    EXPECT_TRUE(set.Insert(LxString("x")));
    EXPECT_FALSE(set.Insert(LxString("x")));
    EXPECT_TRUE(set.Contains(LxString("x")));
    EXPECT_TRUE(set.Erase(LxString("x")));
    EXPECT_EQ(set.GetCount(), 0u);
}

TEST(LxHashMap, ProbingFindsCollidingKeysAndReusesDeletedSlots)
{
    LxHashMap<int, int, CollidingHasher> m(8, 0.9f);
    for (int k = 0; k < 5; ++k)
        m.Insert(k, k * 10);
    for (int k = 0; k < 5; ++k)
        EXPECT_EQ(m.SlotOf(k), unsigned(3 + k) % 8) << k;
    EXPECT_FALSE(m.Contains(99));

    // Erasing leaves a deleted marker that keeps later keys reachable.
    EXPECT_TRUE(m.Erase(1));
    EXPECT_EQ(m.GetSlotState(4), (LxHashMap<int, int, CollidingHasher>::SLOT_DELETED));
    EXPECT_EQ(m.GetDeletedCount(), 1u);
    EXPECT_EQ(*m.FindValue(4), 40);
    // Re-inserting takes the first deleted slot on the probe path.
    m.Insert(1, 11);
    EXPECT_EQ(m.SlotOf(1), 4u);
    EXPECT_EQ(m.GetDeletedCount(), 0u);
    // A new key also takes a deleted slot rather than the empty one further on.
    m.Erase(2);
    m.Insert(7, 70);
    EXPECT_EQ(m.SlotOf(7), 5u);
    EXPECT_EQ(*m.FindValue(3), 30);

    // Many insert/erase rounds at a constant size: deleted slots must not pile up until lookups fail.
    LxHashMap<int, int, LxIntegerHasher<int>> churn(16, 0.75f);
    for (int round = 0; round < 2000; ++round)
    {
        churn.Insert(round, round);
        ASSERT_TRUE(round < 8 || churn.Erase(round - 8)) << round;
    }
    EXPECT_EQ(churn.GetCount(), 8u);
    EXPECT_LE(churn.GetSlotCount(), 16u);
    for (int k = 1992; k < 2000; ++k)
        EXPECT_TRUE(churn.Contains(k));
}

namespace
{
struct Observer : LxCountedPtrObserver<Tracked>
{
    int calls = 0;
    Tracked* last = nullptr;
    void OnOneReferenceLeft(Tracked* object) override
    {
        ++calls;
        last = object;
    }
};
} // namespace

TEST(LxCountedPtr, SharingReleasingAndTheOneReferenceObserver)
{
    Observer observer;
    {
        LxCountedPtr<Tracked> cache(new Tracked(5));
        cache.SetObserver(&observer);
        LxCountedPtr<Tracked> user1(cache);
        LxCountedPtr<Tracked> user2 = user1;
        EXPECT_EQ(cache.GetRefCount(), 3u);
        user2.Release(); // 3 -> 2: silent
        EXPECT_EQ(observer.calls, 0);
        EXPECT_EQ(user2, nullptr);
        user1.Release(); // 2 -> 1: the cache holds the last reference
        EXPECT_EQ(observer.calls, 1);
        EXPECT_EQ(observer.last, cache.Get());
    } // last reference: destroyed without a call
    EXPECT_EQ(observer.calls, 1);
    EXPECT_EQ(Tracked::live, 0);

    LxCountedPtr<Tracked> a(new Tracked(1));
    LxCountedPtr<Tracked> b(new Tracked(2));
    b = a;
    EXPECT_EQ(Tracked::live, 1);
    EXPECT_EQ(a.GetRefCount(), 2u);
    EXPECT_EQ(b->value, 1);
    LxCountedPtr<Tracked>& alias = b;
    b = alias; // self-assignment
    EXPECT_EQ(a.GetRefCount(), 2u);
    LxCountedPtr<Tracked> c(std::move(b));
    EXPECT_EQ(b, nullptr); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(c, a);
    c = nullptr;
    a = nullptr;
    EXPECT_EQ(Tracked::live, 0);

    // Swapping objects: every holder of a record sees the other object; counts stay with the records.
    LxCountedPtr<Tracked> shared(new Tracked(1)), holder(shared), fresh(new Tracked(2));
    shared.SwapObjects(fresh);
    EXPECT_EQ(holder->value, 2);
    EXPECT_EQ(fresh->value, 1);
    EXPECT_EQ(shared.GetRefCount(), 2u);
    EXPECT_EQ(fresh.GetRefCount(), 1u);
    fresh = nullptr; // destroys the old object
    EXPECT_EQ(Tracked::live, 1);
}

TEST(LxMemoryBuffer, OwnsItsBytesAndOnlyShrinks)
{
    const unsigned long long before = LxMemoryStats::GetCurrentUsage();
    {
        LxCountedPtr<LxMemoryBuffer> buffer(LxMemoryBuffer::Allocate(1000));
        ASSERT_TRUE(buffer);
        EXPECT_EQ(buffer->GetSize(), 1000u);
        buffer->GetData()[999] = 7;
        buffer->Truncate(10);
        buffer->Truncate(20); // never grows
        EXPECT_EQ(buffer->GetSize(), 10u);
    }
    EXPECT_EQ(LxMemoryStats::GetCurrentUsage(), before);
}

TEST(LxInterlockedCounter, ReturnValuesAndExactnessUnderContention)
{
    LxInterlockedCounter c(5);
    EXPECT_EQ(c.Increment(), 6);
    EXPECT_EQ(c.Decrement(), 5);
    EXPECT_EQ(c.Set(9), 5);
    EXPECT_EQ(c.TestAndSet(1, 2), 9); // no match: unchanged
    EXPECT_EQ(c.Get(), 9);
    EXPECT_EQ(c.TestAndSet(9, 3), 9);
    EXPECT_EQ(c.Get(), 3);
    LxInterlockedCounter64 big(0x100000000LL);
    EXPECT_EQ(big.Increment(), 0x100000001LL);

    LxInterlockedCounter counter;
    LxInterlockedCounter64 counter64;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(
            [&]
            {
                for (int i = 0; i < 20000; ++i)
                {
                    counter.Increment();
                    counter64.Decrement();
                }
            });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(counter.Get(), 80000);
    EXPECT_EQ(counter64.Get(), -80000);
}
