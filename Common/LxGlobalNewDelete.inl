// Replacement global operators new and delete that route through LxMalloc/LxFree.
//
// Included exactly once per module: by the library itself and, on Windows where every module has its own C++
// runtime, by each application through the Lumex package (LxAppAllocator.cpp). Never include it anywhere else.
// Over-aligned requests (alignas above 16) use LxAlignedMalloc up to 128 bytes and a stored raw pointer beyond.
#include <new>

namespace
{
// The new-handler loop runs here, in the module that defines these operators, so that std::set_new_handler of
// this module (the application's, on Windows) is the one honoured; LxMalloc reports the final exhaustion.
// The nothrow forms return null where the others end the process.
inline void* LxNewBlock(std::size_t size, bool nothrow = false)
{
    void* p = LxTryMalloc(size);
    while (!p)
    {
        std::new_handler handler = std::get_new_handler();
        if (!handler)
            return nothrow ? nullptr : LxMalloc(size);
        handler();
        p = LxTryMalloc(size);
    }
    return p;
}

inline void* LxOverAlignedNew(std::size_t size, std::size_t align)
{
    if (align <= 128)
        return LxAlignedMalloc(size, align);
    void* raw = LxMalloc(size + align + sizeof(void*));
    std::size_t p = reinterpret_cast<std::size_t>(raw) + sizeof(void*);
    p = (p + align - 1) & ~(align - 1);
    reinterpret_cast<void**>(p)[-1] = raw;
    return reinterpret_cast<void*>(p);
}
inline void LxOverAlignedDelete(void* p, std::size_t align)
{
    if (!p)
        return;
    if (align <= 128)
        LxAlignedFree(p);
    else
        LxFree(static_cast<void**>(p)[-1]);
}
} // namespace

void* operator new(std::size_t size) { return LxNewBlock(size); }
void* operator new[](std::size_t size) { return LxNewBlock(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return LxNewBlock(size, true); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return LxNewBlock(size, true); }
void operator delete(void* p) noexcept { LxFree(p); }
void operator delete[](void* p) noexcept { LxFree(p); }
void operator delete(void* p, std::size_t) noexcept { LxFree(p); }
void operator delete[](void* p, std::size_t) noexcept { LxFree(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { LxFree(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { LxFree(p); }

void* operator new(std::size_t size, std::align_val_t al) { return LxOverAlignedNew(size, std::size_t(al)); }
void* operator new[](std::size_t size, std::align_val_t al) { return LxOverAlignedNew(size, std::size_t(al)); }
void* operator new(std::size_t size, std::align_val_t al, const std::nothrow_t&) noexcept
{
    return LxOverAlignedNew(size, std::size_t(al));
}
void* operator new[](std::size_t size, std::align_val_t al, const std::nothrow_t&) noexcept
{
    return LxOverAlignedNew(size, std::size_t(al));
}
void operator delete(void* p, std::align_val_t al) noexcept { LxOverAlignedDelete(p, std::size_t(al)); }
void operator delete[](void* p, std::align_val_t al) noexcept { LxOverAlignedDelete(p, std::size_t(al)); }
void operator delete(void* p, std::size_t, std::align_val_t al) noexcept { LxOverAlignedDelete(p, std::size_t(al)); }
void operator delete[](void* p, std::size_t, std::align_val_t al) noexcept { LxOverAlignedDelete(p, std::size_t(al)); }
void operator delete(void* p, std::align_val_t al, const std::nothrow_t&) noexcept
{
    LxOverAlignedDelete(p, std::size_t(al));
}
void operator delete[](void* p, std::align_val_t al, const std::nothrow_t&) noexcept
{
    LxOverAlignedDelete(p, std::size_t(al));
}
