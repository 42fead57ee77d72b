// The tracked allocator: statistics, aligned blocks, realloc, and the way it dies when memory runs out.
#include "Common/LxMemory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
struct StatsSnapshot
{
    unsigned long long usage = LxMemoryStats::GetCurrentUsage();
    unsigned long long count = LxMemoryStats::GetAllocationCount();
};
} // namespace

TEST(LxMemory, ZeroByteRequestsCountsAndThePeak)
{
    StatsSnapshot before;
    void* a = LxMalloc(0);
    void* b = LxMalloc(0);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(a, b);
    EXPECT_EQ(LxHeapBlockSize(a), 1u);
    EXPECT_EQ(LxMemoryStats::GetCurrentUsage(), before.usage + 2);
    EXPECT_EQ(LxMemoryStats::GetAllocationCount(), before.count + 2);
    LxFree(a);
    LxFree(b);
    EXPECT_EQ(LxMemoryStats::GetCurrentUsage(), before.usage);
    EXPECT_EQ(LxMemoryStats::GetAllocationCount(), before.count);
    LxFree(nullptr); // ignored
    EXPECT_EQ(LxMemoryStats::GetAllocationCount(), before.count);

    // The peak follows the highest usage; freeing never lowers it.
    void* p = LxMalloc(LxMemoryStats::GetPeakUsage() + (1u << 20));
    const unsigned long long peak = LxMemoryStats::GetPeakUsage();
    EXPECT_GE(peak, LxMemoryStats::GetCurrentUsage());
    LxFree(p);
    EXPECT_EQ(LxMemoryStats::GetPeakUsage(), peak);
}

TEST(LxMemory, AlignedBlocksKeepTheirDistanceInTheByteBefore)
{
    StatsSnapshot before;
    for (size_t alignment : {1u, 2u, 16u, 64u, 128u})
    {
        unsigned char* p = static_cast<unsigned char*>(LxAlignedMalloc(100, alignment));
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % alignment, 0u) << alignment;
        EXPECT_GE(p[-1], 1u);
        EXPECT_LE(p[-1], alignment);
        std::memset(p, 0xAB, 100); // the whole requested size is usable
        EXPECT_EQ(LxMemoryStats::GetCurrentUsage(), before.usage + 100 + alignment);
        LxAlignedFree(p);
        EXPECT_EQ(LxMemoryStats::GetCurrentUsage(), before.usage) << alignment;
        EXPECT_EQ(LxMemoryStats::GetAllocationCount(), before.count);
    }
    LxAlignedFree(nullptr);
}

TEST(LxMemory, ReallocKeepsContentsAndHonoursTheEdgeSizes)
{
    StatsSnapshot before;
    char* p = static_cast<char*>(LxMalloc(8));
    std::memcpy(p, "abcdefgh", 8);
    EXPECT_EQ(LxRealloc(p, 8), p); // same block size: unchanged
    char* q = static_cast<char*>(LxRealloc(p, 64));
    EXPECT_EQ(std::memcmp(q, "abcdefgh", 8), 0);
    EXPECT_EQ(LxHeapBlockSize(q), 64u);
    char* r = static_cast<char*>(LxRealloc(q, 3));
    EXPECT_EQ(std::memcmp(r, "abc", 3), 0);
    EXPECT_EQ(LxRealloc(r, 0), nullptr); // size 0 releases
    EXPECT_EQ(LxMemoryStats::GetCurrentUsage(), before.usage);
    EXPECT_EQ(LxMemoryStats::GetAllocationCount(), before.count);
}

TEST(LxMemory, GlobalNewAndDeleteAreTracked)
{
    StatsSnapshot before;
    {
        std::unique_ptr<std::vector<int>> v(new std::vector<int>(1000));
        std::string s(500, 'x');
        EXPECT_GE(LxMemoryStats::GetCurrentUsage(), before.usage + 4000 + 500);
        struct alignas(64) Wide
        {
            char bytes[64];
        };
        std::unique_ptr<Wide> w(new Wide);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(w.get()) % 64, 0u);
    }
    EXPECT_EQ(LxMemoryStats::GetCurrentUsage(), before.usage);
    EXPECT_EQ(LxMemoryStats::GetAllocationCount(), before.count);
}

TEST(LxMemoryDeathTest, ExhaustionPrintsTheMessageAndExitsWithOne)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // More than any heap can give; with no new-handler installed the allocator gives up.
    const size_t huge = static_cast<size_t>(1) << 62;
    EXPECT_EXIT(
        {
            std::set_new_handler(nullptr);
            LxMalloc(huge);
        },
        testing::ExitedWithCode(1), "OUT OF MEMORY! ABORTING.");
}

namespace
{
void GiveUpHandler()
{
    std::fputs("new-handler ran\n", stderr);
    // A handler that cannot free anything uninstalls itself, so the allocator then gives up.
    std::set_new_handler(nullptr);
}
} // namespace

TEST(LxMemoryDeathTest, NewHandlerIsCalledBeforeGivingUp)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            // Through operator new: on Windows that is the application's own module and its own new-handler.
            std::set_new_handler(GiveUpHandler);
            ::operator delete(::operator new(static_cast<size_t>(1) << 62));
        },
        testing::ExitedWithCode(1), "new-handler ran");
}
