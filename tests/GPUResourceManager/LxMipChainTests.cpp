// Mip chains made on the CPU from the first level: worked box-filter results for the covered formats (odd edges,
// volumes, slices, sRGB averaged in linear light) and the inputs that are refused.
#include "GPUResourceManager/LxMipChain.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace
{
LxCountedPtr<LxMemoryBuffer> Bytes(const std::vector<unsigned char>& bytes)
{
    LxCountedPtr<LxMemoryBuffer> buffer(LxMemoryBuffer::Allocate(static_cast<unsigned>(bytes.size())));
    std::memcpy(buffer->GetData(), bytes.data(), bytes.size());
    return buffer;
}

std::vector<unsigned char> Chain(unsigned w, unsigned h, unsigned d, unsigned mips, unsigned slices,
                                 LxGPUResourceFormat format, const std::vector<unsigned char>& first)
{
    LxCountedPtr<LxMemoryBuffer> chain = LxBuildMipChain(w, h, d, mips, slices, format, *Bytes(first));
    if (!chain)
        return {};
    return std::vector<unsigned char>(chain->GetData(), chain->GetData() + chain->GetSize());
}
} // namespace

TEST(LxMipChain, LevelsAreBoxFilteredHalvesOfTheLevelAbove)
{
    struct Case
    {
        const char* what;
        unsigned w, h, d, mips, slices;
        LxGPUResourceFormat format;
        std::vector<unsigned char> first, expected;
    };
    const Case cases[] = {
        {"R8 4x2, three levels (the last 1x1)",
         4,
         2,
         1,
         3,
         1,
         LX_FORMAT_R8_UNORM,
         {0, 10, 20, 30, 40, 50, 60, 70},
         {0, 10, 20, 30, 40, 50, 60, 70, /* 2x1 */ 25, 45, /* 1x1 */ 35}},
        {"RGBA8 2x2 rounds to nearest",
         2,
         2,
         1,
         2,
         1,
         LX_FORMAT_R8G8B8A8_UNORM,
         {0, 1, 255, 255, 0, 0, 255, 255, 1, 0, 255, 0, 0, 0, 254, 0},
         {0, 1, 255, 255, 0, 0, 255, 255, 1, 0, 255, 0, 0, 0, 254, 0, /* mean */ 0, 0, 255, 128}},
        {"odd width drops nothing but the last column's partner",
         3,
         1,
         1,
         2,
         1,
         LX_FORMAT_R8_UNORM,
         {10, 20, 200},
         {10, 20, 200, 15}},
        {"volume 2x2x2 to one texel",
         2,
         2,
         2,
         2,
         1,
         LX_FORMAT_R8_UNORM,
         {0, 8, 16, 24, 32, 40, 48, 56},
         {0, 8, 16, 24, 32, 40, 48, 56, 28}},
        {"two slices, each its own chain",
         2,
         1,
         1,
         2,
         2,
         LX_FORMAT_R8G8_UNORM,
         {10, 20, 30, 40, /* slice 1 */ 100, 0, 200, 0},
         {10, 20, 30, 40, 20, 30, /* slice 1 */ 100, 0, 200, 0, 150, 0}},
        // Black and white average to mid grey in light, which sRGB stores as 188; alpha stays a plain mean.
        {"sRGB colour in linear light",
         2,
         1,
         1,
         2,
         1,
         LX_FORMAT_R8G8B8A8_UNORM_SRGB,
         {0, 0, 0, 0, 255, 255, 255, 255},
         {0, 0, 0, 0, 255, 255, 255, 255, 188, 188, 188, 128}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_TRUE(LxCanBuildMipChain(c.format));
        EXPECT_EQ(Chain(c.w, c.h, c.d, c.mips, c.slices, c.format, c.first), c.expected);
    }
}

TEST(LxMipChain, UncoveredFormatsShortInputAndEmptySizesAreRefused)
{
    const std::vector<unsigned char> sixteen(16, 7);
    EXPECT_FALSE(LxCanBuildMipChain(LX_FORMAT_BC1_UNORM));
    EXPECT_FALSE(LxCanBuildMipChain(LX_FORMAT_R32G32B32A32_FLOAT));
    EXPECT_TRUE(Chain(4, 4, 1, 3, 1, LX_FORMAT_BC1_UNORM, sixteen).empty());
    EXPECT_TRUE(Chain(4, 4, 1, 3, 1, LX_FORMAT_R16_FLOAT, std::vector<unsigned char>(32, 0)).empty());
    EXPECT_TRUE(Chain(4, 4, 1, 3, 2, LX_FORMAT_R8_UNORM, sixteen).empty()) << "two slices need 32 bytes";
    EXPECT_TRUE(Chain(0, 4, 1, 3, 1, LX_FORMAT_R8_UNORM, sixteen).empty());
    EXPECT_TRUE(Chain(4, 4, 1, 0, 1, LX_FORMAT_R8_UNORM, sixteen).empty());
    EXPECT_EQ(Chain(4, 4, 1, 1, 1, LX_FORMAT_R8_UNORM, sixteen), sixteen) << "one level is the input itself";
    // Sizes whose chain would not fit a buffer are refused before anything is allocated.
    EXPECT_TRUE(Chain(65536, 65536, 1, 2, 1, LX_FORMAT_R8G8B8A8_UNORM, sixteen).empty());
}
