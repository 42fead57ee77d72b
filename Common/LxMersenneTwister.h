// LxMersenneTwister: the MT19937 pseudo-random generator of Matsumoto and Nishimura, with the reference
// implementation's interface and outputs (init_genrand(5489) gives the same sequence as std::mt19937).
//
// A generator that was never seeded seeds itself with 5489 on first use, as the reference does. Each object has its
// own state: not thread-safe, but independent objects may be used on different threads.
#pragma once

#include "Common/LxApi.h"

class LX_API LxMersenneTwister
{
public:
    LxMersenneTwister() = default;
    explicit LxMersenneTwister(unsigned int seed) { init_genrand(seed); }

    void init_genrand(unsigned int seed);
    // Seeds from an array of 32-bit keys (the reference's init_by_array).
    void init_by_array(const unsigned int* key, unsigned int length);

    // Uniform on [0, 0xffffffff].
    unsigned int genrand_int32();
    // Uniform on [0, 0x7fffffff].
    int genrand_int31();
    // genrand_int32 / (2^32 - 1): uniform on [0, 1].
    double genrand_real1();
    // genrand_int32 / 2^32: uniform on [0, 1).
    double genrand_real2();
    // (genrand_int32 + 0.5) / 2^32: uniform on (0, 1).
    double genrand_real3();
    // Two outputs a >> 5 and b >> 6 joined into 53 bits: (a 2^26 + b) / 2^53, uniform on [0, 1).
    double genrand_res53();

private:
    void Generate();

    static const int N = 624;
    unsigned int m_mt[N] = {};
    int m_index = N + 1; // N + 1: not seeded yet
};
