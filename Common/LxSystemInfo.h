// LxSystemInfo: what the processor offers. Stateless and thread-safe.
#pragma once

#include "Common/LxApi.h"

class LX_API LxSystemInfo
{
public:
    // Bits of GetSIMDISA.
    enum SIMDISA
    {
        LX_SIMD_SSE = 1,
        LX_SIMD_SSE2 = 2,
        LX_SIMD_SSE3 = 4
    };

    // Logical processors available to the process's system (at least 1).
    static unsigned int GetProcessorCount();
    // From the processor identification, leaf 1: bit 0 SSE (EDX bit 25), bit 1 SSE2 (EDX bit 26), bit 2 SSE3
    // (ECX bit 0). 0 on processors without that instruction.
    static unsigned int GetSIMDISA();
    // The mapping GetSIMDISA applies to the ECX and EDX words of leaf 1.
    static unsigned int DecodeSIMDISA(unsigned int ecx, unsigned int edx);
};
