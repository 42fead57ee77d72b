#include "GPUResourceManager/LxGPUReadback.h"

#include "Common/LxImageData2D.h"
#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxMappedSurface.h"

#include <cstdint>
#include <cstring>

namespace
{
// float bits of one binary16 value: sign moves up 16 bits; the exponent is rebased from 15 to 127; denormal halves
// become normal floats; infinities and NaNs (payload kept) stay what they are.
unsigned HalfBitsToFloatBits(unsigned h)
{
    const unsigned sign = (h & 0x8000u) << 16;
    unsigned exponent = (h >> 10) & 0x1Fu;
    unsigned mantissa = h & 0x3FFu;
    if (exponent == 0x1F)
    {
        return sign | 0x7F800000u | (mantissa << 13);
    }
    if (exponent == 0)
    {
        if (mantissa == 0)
        {
            return sign;
        }
        // Normalise: shift the mantissa up until its leading one reaches the implicit bit.
        int e = -1;
        do
        {
            ++e;
            mantissa <<= 1;
        } while ((mantissa & 0x400u) == 0);
        return sign | ((127 - 15 - e) << 23) | ((mantissa & 0x3FFu) << 13);
    }
    return sign | ((exponent + 127 - 15) << 23) | (mantissa << 13);
}

struct HalfTable
{
    unsigned bits[65536];
    HalfTable()
    {
        for (unsigned h = 0; h < 65536; ++h)
        {
            bits[h] = HalfBitsToFloatBits(h);
        }
    }
};

const HalfTable& GetHalfTable()
{
    static const HalfTable table; // built once, thread-safely, on first use
    return table;
}

bool CheckArguments(const char* who, LxMappedSurface* src, LxImageData2D* dst)
{
    if (src == nullptr || dst == nullptr || src->data == nullptr)
    {
        LX_ERROR("%s.  No surface or image.", who);
        return false;
    }
    if (!dst->IsEmpty() && dst->GetPixelStride() < 4)
    {
        LX_ERROR("%s.  The destination image needs four channels per pixel (it has %u).", who, dst->GetNumChannels());
        return false;
    }
    return true;
}

template <class Texel>
void Convert(LxMappedSurface* src, LxImageData2D* dst, Texel texel)
{
    const unsigned width = dst->GetWidth();
    const unsigned height = dst->GetHeight();
    double* out = dst->GetData();
    for (unsigned y = 0; y < height; ++y)
    {
        const unsigned char* row = src->data + static_cast<size_t>(y) * src->rowPitch;
        const size_t base = static_cast<size_t>(y < height - 1 ? y : height - 1) * dst->GetRowStride();
        for (unsigned x = 0; x < width; ++x)
        {
            double rgba[4];
            texel(row, x, rgba);
            double* p = out + base + static_cast<size_t>(x < width - 1 ? x : width - 1) * dst->GetPixelStride();
            for (int c = 0; c < 4; ++c)
            {
                p[c] = rgba[c];
            }
        }
    }
}

template <class T>
T Load(const unsigned char* p)
{
    T v;
    std::memcpy(&v, p, sizeof(T));
    return v;
}

void FillMissing(double* rgba, unsigned channels)
{
    for (unsigned c = channels; c < 3; ++c)
    {
        rgba[c] = 0.0;
    }
    if (channels < 4)
    {
        rgba[3] = 1.0;
    }
}

// Float16, Float32, Int32 and UInt32 share everything but the scalar read.
template <class Scalar>
void ConvertChannels(const char* who, LxMappedSurface* src, LxImageData2D* dst, unsigned channels)
{
    if (channels < 1 || channels > 4 || !CheckArguments(who, src, dst))
    {
        return;
    }
    Convert(src, dst,
            [channels](const unsigned char* row, unsigned x, double* rgba)
            {
                const unsigned char* texel = row + static_cast<size_t>(x) * channels * Scalar::kSize;
                for (unsigned c = 0; c < channels; ++c)
                {
                    rgba[c] = Scalar::Read(texel + c * Scalar::kSize);
                }
                FillMissing(rgba, channels);
            });
}

struct Half
{
    static const unsigned kSize = 2;
    static double Read(const unsigned char* p)
    {
        const unsigned bits = GetHalfTable().bits[Load<uint16_t>(p)];
        float f;
        std::memcpy(&f, &bits, sizeof(f));
        return f;
    }
};
struct Float
{
    static const unsigned kSize = 4;
    static double Read(const unsigned char* p) { return Load<float>(p); }
};
struct Int
{
    static const unsigned kSize = 4;
    static double Read(const unsigned char* p) { return Load<int32_t>(p); }
};
struct UInt
{
    static const unsigned kSize = 4;
    static double Read(const unsigned char* p) { return Load<uint32_t>(p); }
};

void ConvertBytes(const char* who, LxMappedSurface* src, LxImageData2D* dst, int r, int g, int b, int a)
{
    if (!CheckArguments(who, src, dst))
    {
        return;
    }
    Convert(src, dst,
            [=](const unsigned char* row, unsigned x, double* rgba)
            {
                const unsigned char* texel = row + static_cast<size_t>(x) * 4;
                rgba[0] = texel[r] / 255.0;
                rgba[1] = texel[g] / 255.0;
                rgba[2] = texel[b] / 255.0;
                rgba[3] = a >= 0 ? texel[a] / 255.0 : 1.0;
            });
}
} // namespace

const unsigned* LxGetHalfToFloatTable()
{
    return GetHalfTable().bits;
}

void LxReadbackRGBA8(LxMappedSurface* src, LxImageData2D* dst)
{
    ConvertBytes("LxReadbackRGBA8", src, dst, 0, 1, 2, 3);
}

void LxReadbackRGBX8(LxMappedSurface* src, LxImageData2D* dst)
{
    ConvertBytes("LxReadbackRGBX8", src, dst, 0, 1, 2, -1);
}

void LxReadbackBGRA8(LxMappedSurface* src, LxImageData2D* dst)
{
    ConvertBytes("LxReadbackBGRA8", src, dst, 2, 1, 0, 3);
}

void LxReadbackBGRX8(LxMappedSurface* src, LxImageData2D* dst)
{
    ConvertBytes("LxReadbackBGRX8", src, dst, 2, 1, 0, -1);
}

void LxReadbackR10G10B10A2(LxMappedSurface* src, LxImageData2D* dst)
{
    if (!CheckArguments("LxReadbackR10G10B10A2", src, dst))
    {
        return;
    }
    Convert(src, dst,
            [](const unsigned char* row, unsigned x, double* rgba)
            {
                const uint32_t w = Load<uint32_t>(row + static_cast<size_t>(x) * 4);
                rgba[0] = ((w >> 22) & 0x3FF) / 1023.0;
                rgba[1] = ((w >> 12) & 0x3FF) / 1023.0;
                rgba[2] = ((w >> 2) & 0x3FF) / 1023.0;
                rgba[3] = (w & 0x3) / 3.0;
            });
}

void LxReadbackA2R10G10B10(LxMappedSurface* src, LxImageData2D* dst)
{
    if (!CheckArguments("LxReadbackA2R10G10B10", src, dst))
    {
        return;
    }
    Convert(src, dst,
            [](const unsigned char* row, unsigned x, double* rgba)
            {
                const uint32_t w = Load<uint32_t>(row + static_cast<size_t>(x) * 4);
                rgba[0] = ((w >> 20) & 0x3FF) / 1023.0;
                rgba[1] = ((w >> 10) & 0x3FF) / 1023.0;
                rgba[2] = (w & 0x3FF) / 1023.0;
                rgba[3] = ((w >> 30) & 0x3) / 3.0;
            });
}

void LxReadbackFloat16(LxMappedSurface* src, LxImageData2D* dst, unsigned channels)
{
    ConvertChannels<Half>("LxReadbackFloat16", src, dst, channels);
}

void LxReadbackFloat32(LxMappedSurface* src, LxImageData2D* dst, unsigned channels)
{
    ConvertChannels<Float>("LxReadbackFloat32", src, dst, channels);
}

void LxReadbackInt32(LxMappedSurface* src, LxImageData2D* dst, unsigned channels)
{
    ConvertChannels<Int>("LxReadbackInt32", src, dst, channels);
}

void LxReadbackUInt32(LxMappedSurface* src, LxImageData2D* dst, unsigned channels)
{
    ConvertChannels<UInt>("LxReadbackUInt32", src, dst, channels);
}
