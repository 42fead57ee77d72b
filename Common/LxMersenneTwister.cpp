#include "Common/LxMersenneTwister.h"

namespace
{
const int M = 397;
const unsigned int kMatrixA = 0x9908b0dfu;
const unsigned int kUpperMask = 0x80000000u;
const unsigned int kLowerMask = 0x7fffffffu;
} // namespace

void LxMersenneTwister::init_genrand(unsigned int seed)
{
    m_mt[0] = seed;
    for (int i = 1; i < N; ++i)
        m_mt[i] = 1812433253u * (m_mt[i - 1] ^ (m_mt[i - 1] >> 30)) + static_cast<unsigned int>(i);
    m_index = N;
}

void LxMersenneTwister::init_by_array(const unsigned int* key, unsigned int length)
{
    init_genrand(19650218u);
    if (!key || length == 0)
        return;
    int i = 1;
    unsigned int j = 0;
    for (unsigned int k = (N > static_cast<int>(length) ? N : length); k; --k)
    {
        m_mt[i] = (m_mt[i] ^ ((m_mt[i - 1] ^ (m_mt[i - 1] >> 30)) * 1664525u)) + key[j] + j;
        ++i;
        ++j;
        if (i >= N)
        {
            m_mt[0] = m_mt[N - 1];
            i = 1;
        }
        if (j >= length)
            j = 0;
    }
    for (int k = N - 1; k; --k)
    {
        m_mt[i] = (m_mt[i] ^ ((m_mt[i - 1] ^ (m_mt[i - 1] >> 30)) * 1566083941u)) - static_cast<unsigned int>(i);
        ++i;
        if (i >= N)
        {
            m_mt[0] = m_mt[N - 1];
            i = 1;
        }
    }
    m_mt[0] = 0x80000000u; // the most significant bit makes the initial state non-zero
}

void LxMersenneTwister::Generate()
{
    if (m_index == N + 1)
        init_genrand(5489u);
    int k = 0;
    for (; k < N - M; ++k)
    {
        const unsigned int y = (m_mt[k] & kUpperMask) | (m_mt[k + 1] & kLowerMask);
        m_mt[k] = m_mt[k + M] ^ (y >> 1) ^ ((y & 1u) ? kMatrixA : 0u);
    }
    for (; k < N - 1; ++k)
    {
        const unsigned int y = (m_mt[k] & kUpperMask) | (m_mt[k + 1] & kLowerMask);
        m_mt[k] = m_mt[k + (M - N)] ^ (y >> 1) ^ ((y & 1u) ? kMatrixA : 0u);
    }
    const unsigned int y = (m_mt[N - 1] & kUpperMask) | (m_mt[0] & kLowerMask);
    m_mt[N - 1] = m_mt[M - 1] ^ (y >> 1) ^ ((y & 1u) ? kMatrixA : 0u);
    m_index = 0;
}

unsigned int LxMersenneTwister::genrand_int32()
{
    if (m_index >= N)
        Generate();
    unsigned int y = m_mt[m_index++];
    y ^= (y >> 11);
    y ^= (y << 7) & 0x9d2c5680u;
    y ^= (y << 15) & 0xefc60000u;
    y ^= (y >> 18);
    return y;
}

int LxMersenneTwister::genrand_int31()
{
    return static_cast<int>(genrand_int32() >> 1);
}

double LxMersenneTwister::genrand_real1()
{
    return genrand_int32() * (1.0 / 4294967295.0);
}

double LxMersenneTwister::genrand_real2()
{
    return genrand_int32() * (1.0 / 4294967296.0);
}

double LxMersenneTwister::genrand_real3()
{
    return (static_cast<double>(genrand_int32()) + 0.5) * (1.0 / 4294967296.0);
}

double LxMersenneTwister::genrand_res53()
{
    const unsigned int a = genrand_int32() >> 5;
    const unsigned int b = genrand_int32() >> 6;
    return (a * 67108864.0 + b) * (1.0 / 9007199254740992.0);
}
