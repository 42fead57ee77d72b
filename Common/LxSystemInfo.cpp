#include "Common/LxSystemInfo.h"

#if defined(_MSC_VER) && (defined(_M_X64) || defined(_M_IX86))
#include <intrin.h>
#define LX_HAVE_CPUID_MSVC 1
#elif (defined(__GNUC__) || defined(__clang__)) && (defined(__x86_64__) || defined(__i386__))
#include <cpuid.h>
#define LX_HAVE_CPUID_GNU 1
#endif

unsigned int LxSystemInfo::DecodeSIMDISA(unsigned int ecx, unsigned int edx)
{
    unsigned int isa = 0;
    if (edx & (1u << 25))
        isa |= LX_SIMD_SSE;
    if (edx & (1u << 26))
        isa |= LX_SIMD_SSE2;
    if (ecx & 1u)
        isa |= LX_SIMD_SSE3;
    return isa;
}

unsigned int LxSystemInfo::GetSIMDISA()
{
#if defined(LX_HAVE_CPUID_MSVC)
    int regs[4] = {0, 0, 0, 0};
    __cpuid(regs, 1);
    return DecodeSIMDISA(static_cast<unsigned int>(regs[2]), static_cast<unsigned int>(regs[3]));
#elif defined(LX_HAVE_CPUID_GNU)
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx))
        return 0;
    return DecodeSIMDISA(ecx, edx);
#else
    return 0;
#endif
}
