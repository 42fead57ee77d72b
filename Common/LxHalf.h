// LxHalf: an IEEE 754 binary16 value (1 sign, 5 exponent, 10 mantissa bits) as used by 16-bit float vertex and
// texture data.
//
// From float: rounded to nearest, ties to even; magnitudes that round beyond 65504 become infinity; values below
// the smallest normal (2^-14) become denormals or signed zero; infinities keep their sign; a NaN stays a NaN (quiet,
// keeping the top bits of its payload). To float: exact (every half is a float).
#pragma once

#include "Common/LxApi.h"

class LX_API LxHalf
{
public:
    LxHalf() : m_bits(0) {}
    explicit LxHalf(float value) : m_bits(FloatToHalf(value)) {}
    static LxHalf FromBits(unsigned short bits)
    {
        LxHalf h;
        h.m_bits = bits;
        return h;
    }

    unsigned short GetBits() const { return m_bits; }
    float ToFloat() const { return HalfToFloat(m_bits); }
    operator float() const { return ToFloat(); }
    LxHalf& operator=(float value)
    {
        m_bits = FloatToHalf(value);
        return *this;
    }
    // Bit equality (so +0 != -0 and a NaN equals itself).
    bool operator==(const LxHalf& o) const { return m_bits == o.m_bits; }
    bool operator!=(const LxHalf& o) const { return m_bits != o.m_bits; }

    static unsigned short FloatToHalf(float value);
    static float HalfToFloat(unsigned short bits);
    // Arrays: `count` values each way.
    static void FloatToHalf(const float* in, unsigned short* out, unsigned int count);
    static void HalfToFloat(const unsigned short* in, float* out, unsigned int count);

private:
    unsigned short m_bits;
};
