#include "Common/LxHalf.h"

#include <cstdint>
#include <cstring>

unsigned short LxHalf::FloatToHalf(float value)
{
    uint32_t f;
    std::memcpy(&f, &value, sizeof(f));
    const uint32_t sign = (f >> 16) & 0x8000u;
    f &= 0x7fffffffu;

    if (f >= 0x7f800000u)
    {
        if (f == 0x7f800000u)
            return static_cast<unsigned short>(sign | 0x7c00u);
        // NaN: quiet, with the top nine payload bits kept.
        return static_cast<unsigned short>(sign | 0x7e00u | ((f >> 13) & 0x1ffu));
    }
    // 65520 is halfway between 65504 (the largest half) and 65536; ties go to the even neighbour, which is 2^16.
    if (f >= 0x477ff000u)
        return static_cast<unsigned short>(sign | 0x7c00u);

    if (f < 0x38800000u)
    {
        // Below 2^-14: a denormal, counted in units of 2^-24. Up to 2^-25 (the tie included) rounds to zero.
        const uint32_t exponent = f >> 23;
        if (exponent < 102)
            return static_cast<unsigned short>(sign);
        const uint32_t mantissa = (f & 0x7fffffu) | 0x800000u;
        const uint32_t shift = 126 - exponent;
        uint32_t h = mantissa >> shift;
        const uint32_t rest = mantissa & ((1u << shift) - 1);
        const uint32_t halfway = 1u << (shift - 1);
        if (rest > halfway || (rest == halfway && (h & 1)))
            ++h; // may carry into the smallest normal, whose encoding follows on
        return static_cast<unsigned short>(sign | h);
    }

    // Normal: rebias the exponent (127 - 15) and round the 13 dropped bits; a carry moves into the exponent.
    uint32_t h = (f - 0x38000000u) >> 13;
    const uint32_t rest = f & 0x1fffu;
    if (rest > 0x1000u || (rest == 0x1000u && (h & 1)))
        ++h;
    return static_cast<unsigned short>(sign | h);
}

float LxHalf::HalfToFloat(unsigned short bits)
{
    const uint32_t sign = static_cast<uint32_t>(bits & 0x8000u) << 16;
    uint32_t exponent = (bits >> 10) & 0x1fu;
    uint32_t mantissa = bits & 0x3ffu;
    uint32_t f;
    if (exponent == 0x1f)
        f = sign | 0x7f800000u | (mantissa << 13);
    else if (exponent != 0)
        f = sign | ((exponent + 112) << 23) | (mantissa << 13);
    else if (mantissa == 0)
        f = sign;
    else
    {
        // Denormal: shift the leading one into the implicit position.
        exponent = 113;
        while (!(mantissa & 0x400u))
        {
            mantissa <<= 1;
            --exponent;
        }
        f = sign | (exponent << 23) | ((mantissa & 0x3ffu) << 13);
    }
    float value;
    std::memcpy(&value, &f, sizeof(value));
    return value;
}

void LxHalf::FloatToHalf(const float* in, unsigned short* out, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i)
        out[i] = FloatToHalf(in[i]);
}

void LxHalf::HalfToFloat(const unsigned short* in, float* out, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i)
        out[i] = HalfToFloat(in[i]);
}
