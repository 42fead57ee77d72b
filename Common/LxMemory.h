// The tracked allocator. Every allocation of the library, global new and delete included, goes through LxMalloc
// and LxFree so that LxMemoryStats always knows the live block count, the bytes in use and the peak.
//
// Contract:
//  - LxMalloc never returns null. When the heap is exhausted it calls the installed new-handler and retries for as
//    long as one is installed; with none, it writes "OUT OF MEMORY! ABORTING.\n" to stderr and exits with code 1.
//    A request of 0 bytes is served as 1 byte.
//  - Allocations are recorded with the requested size and releases with the block's real size as the heap reports
//    it (LxHeapBlockSize, _msize on Windows). On the native lane each block carries a small header holding its
//    requested size, so both figures agree there as they do on the Windows heap.
//  - LxAlignedMalloc keeps the distance to the raw block in the byte just before the returned address, so the
//    alignment must be a power of two no greater than 128.
//  - Thread-safe: the statistics are relaxed atomics (no lock is taken; a reader may see a figure a few
//    allocations old).
#pragma once

#include "Common/LxApi.h"

#include <atomic>
#include <cstddef>

LX_API void* LxMalloc(size_t size);
// One attempt, no new-handler and no exit: null when the heap is exhausted. For allocators layered on top that
// run their own new-handler loop (each Windows module has its own new-handler).
LX_API void* LxTryMalloc(size_t size);
LX_API void LxFree(void* p);
// size 0 releases p and returns null; an unchanged block size returns p as it is.
LX_API void* LxRealloc(void* p, size_t size);
LX_API void* LxAlignedMalloc(size_t size, size_t alignment);
LX_API void LxAlignedFree(void* p);
// The size of a block from LxMalloc as the heap reports it.
LX_API size_t LxHeapBlockSize(const void* p);

class LX_API LxMemoryStats
{
public:
    static std::atomic<unsigned long long> ms_nCurrMemUsage;   // bytes currently allocated
    static std::atomic<unsigned long long> ms_nPeakMemUsage;   // highest value ms_nCurrMemUsage ever reached
    static std::atomic<unsigned long long> ms_nNumAllocations; // live blocks

    static unsigned long long GetCurrentUsage() { return ms_nCurrMemUsage.load(std::memory_order_relaxed); }
    static unsigned long long GetPeakUsage() { return ms_nPeakMemUsage.load(std::memory_order_relaxed); }
    static unsigned long long GetAllocationCount() { return ms_nNumAllocations.load(std::memory_order_relaxed); }

private:
    friend struct LxAllocatorInternals; // the allocator routines in LxMemory.cpp
    static void MemoryAllocated(unsigned long long size);
    static void MemoryFreed(unsigned long long size);
};
