#include "GPUResourceManager/LxMipChain.h"

#include <cmath>
#include <cstring>

namespace
{
// Texel bytes of the covered formats (0: not covered) and whether the colour channels are sRGB-encoded.
unsigned TexelBytes(LxGPUResourceFormat format, bool* srgb)
{
    *srgb = format == LX_FORMAT_R8G8B8A8_UNORM_SRGB;
    switch (format)
    {
    case LX_FORMAT_R8_UNORM:
    case LX_FORMAT_A8_UNORM:
        return 1;
    case LX_FORMAT_R8G8_UNORM:
        return 2;
    case LX_FORMAT_R8G8B8A8_UNORM:
    case LX_FORMAT_R8G8B8A8_UNORM_SRGB:
    case LX_FORMAT_B8G8R8A8_UNORM:
    case LX_FORMAT_B8G8R8X8_UNORM:
        return 4;
    default:
        return 0;
    }
}

float ToLinear(unsigned char value)
{
    const float c = value / 255.0f;
    return c <= 0.04045f ? c / 12.92f : std::pow((c + 0.055f) / 1.055f, 2.4f);
}

unsigned char FromLinear(float value)
{
    const float c = value <= 0.0031308f ? value * 12.92f : 1.055f * std::pow(value, 1.0f / 2.4f) - 0.055f;
    const float scaled = c * 255.0f + 0.5f;
    return static_cast<unsigned char>(scaled < 0.0f ? 0.0f : (scaled > 255.0f ? 255.0f : scaled));
}

unsigned Half(unsigned size)
{
    return size > 1 ? size / 2 : 1;
}

// One level from the one above it (w x h x d texels of `bytes` bytes each).
void Downsample(const unsigned char* src, unsigned w, unsigned h, unsigned d, unsigned bytes, bool srgb,
                unsigned char* dst)
{
    const unsigned dw = Half(w), dh = Half(h), dd = Half(d);
    for (unsigned z = 0; z < dd; ++z)
        for (unsigned y = 0; y < dh; ++y)
            for (unsigned x = 0; x < dw; ++x)
                for (unsigned channel = 0; channel < bytes; ++channel)
                {
                    // The colour channels of a four-byte sRGB texel are the first three.
                    const bool linear = srgb && channel < 3;
                    float sum = 0.0f;
                    unsigned count = 0;
                    for (unsigned dz = 0; dz < (d > 1 ? 2u : 1u); ++dz)
                        for (unsigned dy = 0; dy < (h > 1 ? 2u : 1u); ++dy)
                            for (unsigned dx = 0; dx < (w > 1 ? 2u : 1u); ++dx)
                            {
                                const unsigned sx = 2 * x + dx < w ? 2 * x + dx : w - 1;
                                const unsigned sy = 2 * y + dy < h ? 2 * y + dy : h - 1;
                                const unsigned sz = 2 * z + dz < d ? 2 * z + dz : d - 1;
                                const unsigned char v = src[((size_t(sz) * h + sy) * w + sx) * bytes + channel];
                                sum += linear ? ToLinear(v) : float(v);
                                ++count;
                            }
                    const float mean = sum / count;
                    dst[((size_t(z) * dh + y) * dw + x) * bytes + channel] =
                        linear ? FromLinear(mean) : static_cast<unsigned char>(mean + 0.5f);
                }
}
} // namespace

bool LxCanBuildMipChain(LxGPUResourceFormat format)
{
    bool srgb = false;
    return TexelBytes(format, &srgb) != 0;
}

LxCountedPtr<LxMemoryBuffer> LxBuildMipChain(unsigned width, unsigned height, unsigned depth, unsigned mipCount,
                                             unsigned sliceCount, LxGPUResourceFormat format,
                                             const LxMemoryBuffer& firstLevels)
{
    bool srgb = false;
    const unsigned bytes = TexelBytes(format, &srgb);
    if (bytes == 0 || width == 0 || height == 0 || depth == 0 || mipCount == 0 || sliceCount == 0)
    {
        return LxCountedPtr<LxMemoryBuffer>();
    }
    unsigned long long chainBytes = 0;
    for (unsigned mip = 0, w = width, h = height, d = depth; mip < mipCount; ++mip)
    {
        chainBytes += static_cast<unsigned long long>(w) * h * d * bytes;
        w = Half(w), h = Half(h), d = Half(d);
    }
    const unsigned long long firstBytes = static_cast<unsigned long long>(width) * height * depth * bytes;
    const unsigned long long total = chainBytes * sliceCount;
    if (firstBytes * sliceCount > firstLevels.GetSize() || total > 0xFFFFFFFFull)
    {
        return LxCountedPtr<LxMemoryBuffer>();
    }
    LxCountedPtr<LxMemoryBuffer> chain(LxMemoryBuffer::Allocate(static_cast<unsigned>(total)));
    if (!chain || !chain->GetData())
    {
        return LxCountedPtr<LxMemoryBuffer>();
    }
    for (unsigned slice = 0; slice < sliceCount; ++slice)
    {
        unsigned char* level = chain->GetData() + slice * chainBytes;
        std::memcpy(level, firstLevels.GetData() + slice * firstBytes, static_cast<size_t>(firstBytes));
        for (unsigned mip = 1, w = width, h = height, d = depth; mip < mipCount; ++mip)
        {
            unsigned char* next = level + static_cast<size_t>(w) * h * d * bytes;
            Downsample(level, w, h, d, bytes, srgb, next);
            level = next;
            w = Half(w), h = Half(h), d = Half(d);
        }
    }
    return chain;
}
