#include "Common/LxMemory.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#if defined(_WIN32)
#include <malloc.h>
#endif

std::atomic<unsigned long long> LxMemoryStats::ms_nCurrMemUsage{0};
std::atomic<unsigned long long> LxMemoryStats::ms_nPeakMemUsage{0};
std::atomic<unsigned long long> LxMemoryStats::ms_nNumAllocations{0};

void LxMemoryStats::MemoryAllocated(unsigned long long size)
{
    ms_nNumAllocations.fetch_add(1, std::memory_order_relaxed);
    const unsigned long long now = ms_nCurrMemUsage.fetch_add(size, std::memory_order_relaxed) + size;
    unsigned long long peak = ms_nPeakMemUsage.load(std::memory_order_relaxed);
    while (now > peak && !ms_nPeakMemUsage.compare_exchange_weak(peak, now, std::memory_order_relaxed))
    {
    }
}

void LxMemoryStats::MemoryFreed(unsigned long long size)
{
    ms_nNumAllocations.fetch_sub(1, std::memory_order_relaxed);
    ms_nCurrMemUsage.fetch_sub(size, std::memory_order_relaxed);
}

// The allocator's access to the private statistics updates.
struct LxAllocatorInternals
{
    static void Allocated(unsigned long long size) { LxMemoryStats::MemoryAllocated(size); }
    static void Freed(unsigned long long size) { LxMemoryStats::MemoryFreed(size); }
};

namespace
{
#if defined(_WIN32)
// The Windows heap remembers each block's requested size (_msize), so blocks go straight to the CRT.
inline void* RawAlloc(size_t size)
{
    return std::malloc(size);
}
inline void RawFree(void* p)
{
    std::free(p);
}
inline size_t RawSize(const void* p)
{
    return _msize(const_cast<void*>(p));
}
#else
// glibc reports rounded-up usable sizes, which would make the released figure differ from the recorded one.
// A 16-byte header (keeping malloc's alignment) holds the requested size instead.
constexpr size_t kHeader = 16;
inline void* RawAlloc(size_t size)
{
    if (size > static_cast<size_t>(-1) - kHeader)
        return nullptr;
    unsigned char* raw = static_cast<unsigned char*>(std::malloc(size + kHeader));
    if (!raw)
        return nullptr;
    std::memcpy(raw, &size, sizeof(size));
    return raw + kHeader;
}
inline void RawFree(void* p)
{
    std::free(static_cast<unsigned char*>(p) - kHeader);
}
inline size_t RawSize(const void* p)
{
    size_t size;
    std::memcpy(&size, static_cast<const unsigned char*>(p) - kHeader, sizeof(size));
    return size;
}
#endif
} // namespace

void* LxMalloc(size_t size)
{
    if (size == 0)
        size = 1;
    void* p = RawAlloc(size);
    while (!p)
    {
        std::new_handler handler = std::get_new_handler();
        if (!handler)
        {
            std::fputs("OUT OF MEMORY! ABORTING.\n", stderr);
            std::fflush(stderr);
            std::exit(1);
        }
        handler();
        p = RawAlloc(size);
    }
    LxAllocatorInternals::Allocated(size);
    return p;
}

void* LxTryMalloc(size_t size)
{
    if (size == 0)
        size = 1;
    void* p = RawAlloc(size);
    if (p)
        LxAllocatorInternals::Allocated(size);
    return p;
}

void LxFree(void* p)
{
    if (!p)
        return;
    LxAllocatorInternals::Freed(RawSize(p));
    RawFree(p);
}

size_t LxHeapBlockSize(const void* p)
{
    return p ? RawSize(p) : 0;
}

void* LxRealloc(void* p, size_t size)
{
    if (size == 0)
    {
        LxFree(p);
        return nullptr;
    }
    if (!p)
        return LxMalloc(size);
    const size_t old = RawSize(p);
    if (old == size)
        return p;
    void* q = LxMalloc(size);
    std::memcpy(q, p, old < size ? old : size);
    LxFree(p);
    return q;
}

void* LxAlignedMalloc(size_t size, size_t alignment)
{
    if (alignment == 0 || (alignment & (alignment - 1)) != 0 || alignment > 128)
    {
        std::fprintf(stderr, "LxAlignedMalloc: alignment %zu is not a power of two up to 128.\n", alignment);
        std::abort();
    }
    if (size > static_cast<size_t>(-1) - alignment)
        size = static_cast<size_t>(-1); // LxMalloc reports the exhaustion
    unsigned char* raw = static_cast<unsigned char*>(LxMalloc(size + alignment));
    const size_t addr = reinterpret_cast<size_t>(raw);
    // The first multiple of the alignment strictly above the raw block: the distance is 1..alignment.
    const size_t aligned = (addr / alignment + 1) * alignment;
    unsigned char* out = reinterpret_cast<unsigned char*>(aligned);
    out[-1] = static_cast<unsigned char>(aligned - addr);
    return out;
}

void LxAlignedFree(void* p)
{
    if (!p)
        return;
    unsigned char* out = static_cast<unsigned char*>(p);
    LxFree(out - out[-1]);
}

// The global operators route every C++ allocation of this module through the tracked allocator. Not under
// ThreadSanitizer: clang links its runtime's own (strong) operators new and delete into every executable, so a
// second definition cannot link; there C++ allocations bypass the statistics (malloc is still intercepted).
#if defined(__SANITIZE_THREAD__)
#define LX_RUNTIME_OWNS_NEW_DELETE 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define LX_RUNTIME_OWNS_NEW_DELETE 1
#endif
#endif
#if !defined(LX_RUNTIME_OWNS_NEW_DELETE)
#include "Common/LxGlobalNewDelete.inl"
#endif
