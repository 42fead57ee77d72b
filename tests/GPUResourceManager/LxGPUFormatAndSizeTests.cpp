// The format enumeration (values, names, bits, block compression) and the texture size and mip-layout computations
// built on it.
#include "support/LxTestSupport.h"

#include "Common/LxMemory.h"
#include "GPUResourceManager/LxGPUResourceFormat.h"
#include "GPUResourceManager/LxGPUTextureSize.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{
LxCountedPtr<LxMemoryBuffer> MakeBuffer(unsigned size)
{
    return LxCountedPtr<LxMemoryBuffer>(LxMemoryBuffer::Allocate(size));
}
} // namespace

TEST(GPUResourceFormat, ValuesAndNamesFollowTheTable)
{
    EXPECT_EQ(99u, static_cast<unsigned>(LX_FORMAT_COUNT));
    struct
    {
        unsigned value;
        const char* name;
    } const anchors[] = {
        {0, "LX_FORMAT_UNKNOWN"},           {2, "LX_FORMAT_R32G32B32A32_FLOAT"},
        {4, "LX_FORMAT_R32G32B32A32_SINT"}, {20, "LX_FORMAT_D32_FLOAT_S8X24_UINT"},
        {26, "LX_FORMAT_R11G11B10_FLOAT"},  {28, "LX_FORMAT_R8G8B8A8_UNORM"},
        {40, "LX_FORMAT_D32_FLOAT"},        {45, "LX_FORMAT_D24_UNORM_S8_UINT"},
        {55, "LX_FORMAT_D16_UNORM"},        {65, "LX_FORMAT_A8_UNORM"},
        {66, "LX_FORMAT_R1_UNORM"},         {84, "LX_FORMAT_BC5_SNORM"},
        {85, "LX_FORMAT_BC7_TYPELESS"},     {87, "LX_FORMAT_BC7_UNORM_SRGB"},
        {91, "LX_FORMAT_B8G8R8X8_UNORM"},   {96, "LX_FORMAT_ETC5"},
        {98, "LX_FORMAT_D16_COMPARISON"},
    };
    for (const auto& a : anchors)
    {
        const char* name = LxGetFormatName(static_cast<LxGPUResourceFormat>(a.value));
        ASSERT_NE(nullptr, name) << a.value;
        EXPECT_STREQ(a.name, name) << a.value;
    }
    EXPECT_EQ(nullptr, LxGetFormatName(LX_FORMAT_COUNT));
}

TEST(GPUResourceFormat, NameLookupRoundTripsEveryFormatAndRejectsOthers)
{
    for (unsigned v = 0; v < LX_FORMAT_COUNT; ++v)
    {
        LxGPUResourceFormat found = LX_FORMAT_COUNT;
        ASSERT_TRUE(LxGetFormatFromName(LxGetFormatName(static_cast<LxGPUResourceFormat>(v)), &found)) << v;
        EXPECT_EQ(v, static_cast<unsigned>(found));
    }
    LxGPUResourceFormat untouched = LX_FORMAT_R8_UNORM;
    EXPECT_FALSE(LxGetFormatFromName("LX_FORMAT_BC6H_UF16", &untouched)); // there is no BC6H
    EXPECT_FALSE(LxGetFormatFromName("lx_format_r8g8b8a8_unorm", &untouched));
    EXPECT_FALSE(LxGetFormatFromName("R8G8B8A8_UNORM", &untouched));
    EXPECT_EQ(LX_FORMAT_R8_UNORM, untouched);
}

TEST(GPUResourceFormat, BitsPerElementPerRow)
{
    // (first value, last value, bits) of every row of the format table.
    const unsigned rows[][3] = {{0, 0, 0},    {1, 4, 128},  {5, 8, 96},   {9, 14, 64},  {15, 18, 64}, {19, 22, 64},
                                {23, 26, 32}, {27, 32, 32}, {33, 38, 32}, {39, 43, 32}, {44, 47, 32}, {48, 52, 16},
                                {53, 59, 16}, {60, 65, 8},  {66, 66, 1},  {67, 67, 32}, {68, 69, 16}, {70, 72, 4},
                                {73, 78, 8},  {79, 81, 4},  {82, 84, 8},  {85, 87, 8},  {88, 89, 16}, {90, 91, 32},
                                {92, 92, 4},  {93, 93, 8},  {94, 94, 4},  {95, 96, 8},  {97, 97, 32}, {98, 98, 16}};
    unsigned covered = 0;
    for (const auto& row : rows)
    {
        for (unsigned v = row[0]; v <= row[1]; ++v, ++covered)
        {
            EXPECT_EQ(row[2], LxGetFormatBitsPerElement(static_cast<LxGPUResourceFormat>(v))) << v;
        }
    }
    EXPECT_EQ(99u, covered);
    EXPECT_EQ(0u, LxGetFormatBitsPerElement(static_cast<LxGPUResourceFormat>(500)));
}

TEST(GPUResourceFormat, BlockCompressedAndTypelessSets)
{
    for (unsigned v = 0; v < 110; ++v)
    {
        const bool expected = (v >= 70 && v <= 87) || (v >= 92 && v <= 96);
        EXPECT_EQ(expected, LxIsFormatBlockCompressed(static_cast<LxGPUResourceFormat>(v))) << v;
    }
    EXPECT_TRUE(LxIsFormatTypeless(LX_FORMAT_R8G8B8A8_TYPELESS));
    EXPECT_TRUE(LxIsFormatTypeless(LX_FORMAT_R24G8_TYPELESS));
    EXPECT_TRUE(LxIsFormatTypeless(LX_FORMAT_BC7_TYPELESS));
    EXPECT_FALSE(LxIsFormatTypeless(LX_FORMAT_R24_UNORM_X8_TYPELESS)); // reads as UNORM depth
    EXPECT_FALSE(LxIsFormatTypeless(LX_FORMAT_X24_TYPELESS_G8_UINT));
    EXPECT_FALSE(LxIsFormatTypeless(LX_FORMAT_R8G8B8A8_UNORM));
}

TEST(GPUTextureSize, ChainIsSummedInBitsAndBlocksRaiseOnlyLaterLevels)
{
    EXPECT_EQ(0u, LxComputeTextureSize(256, 256, 1, 0, LX_FORMAT_R8G8B8A8_UNORM));
    // (4x1x1x1 + 4x4x4x1 + 4x4x4x1) / 8: the first level keeps its 1x1 size.
    EXPECT_EQ(16u, LxComputeTextureSize(1, 1, 1, 3, LX_FORMAT_BC1_UNORM));
    // 8x8 BC3 with 4 levels: 8x8, then 4x4 three times -> (512 + 128 x 3) bits x 8 / 8.
    EXPECT_EQ((8u * 64 + 8u * 16 * 3) / 8, LxComputeTextureSize(8, 8, 1, 4, LX_FORMAT_BC3_UNORM));
    // Full RGBA8 chain of 4x2: 4x2, 2x1, 1x1.
    EXPECT_EQ(4u * (8 + 2 + 1), LxComputeTextureSize(4, 2, 1, 3, LX_FORMAT_R8G8B8A8_UNORM));
    // Depth halves with a floor of 1 and is never raised for blocked formats.
    EXPECT_EQ(2u * (4 * 4 * 4 + 2 * 2 * 2 + 1), LxComputeTextureSize(4, 4, 4, 3, LX_FORMAT_R16_FLOAT));
    EXPECT_EQ((4u * 4 * 4 * 2 + 4u * 4 * 4 * 1) / 8, LxComputeTextureSize(4, 4, 2, 2, LX_FORMAT_BC4_UNORM));
    // A 1-bit format only becomes whole bytes once the chain is summed.
    EXPECT_EQ((64u + 16 + 4 + 1) / 8, LxComputeTextureSize(8, 8, 1, 4, LX_FORMAT_R1_UNORM));
}

TEST(GPUTextureSize, MipLevelInfoLaysLevelsOutBackToBack)
{
    LxCountedPtr<LxMemoryBuffer> data = MakeBuffer(4 * (16 + 4 + 1) + 8);
    LxArray<LxMipLevelInfo> levels;
    ASSERT_TRUE(LxGetMipLevelInfo(4, 4, 1, 3, LX_FORMAT_R8G8B8A8_UNORM, data, 8, levels));
    ASSERT_EQ(3u, levels.GetCount());
    const unsigned expectedPitch[] = {16, 8, 4};
    const unsigned expectedSize[] = {64, 16, 4};
    const unsigned expectedOffset[] = {8, 72, 88};
    for (unsigned i = 0; i < 3; ++i)
    {
        EXPECT_EQ(expectedPitch[i], levels[i].rowPitch) << i;
        EXPECT_EQ(expectedSize[i], levels[i].slicePitch) << i;
        EXPECT_EQ(expectedSize[i], levels[i].levelSize) << i;
        EXPECT_EQ(data->GetData() + expectedOffset[i], levels[i].data) << i;
    }
    EXPECT_EQ(1u, data.GetRefCount()); // the function's own reference went on return

    // A 3D level: slice pitch times depth.
    LxArray<LxMipLevelInfo> volume;
    ASSERT_TRUE(LxGetMipLevelInfo(2, 2, 4, 2, LX_FORMAT_R32_FLOAT, MakeBuffer(64 + 8), 0, volume));
    EXPECT_EQ(8u, volume[0].rowPitch);
    EXPECT_EQ(16u, volume[0].slicePitch);
    EXPECT_EQ(64u, volume[0].levelSize);
    EXPECT_EQ(8u, volume[1].levelSize); // 1x1x2
}

TEST(GPUTextureSize, MipLevelInfoOfBlockFormatsAndShortBuffers)
{
    // BC1 8x8, 3 levels: 8x8 (32 bytes), then 4x4 (8 bytes) twice.
    LxArray<LxMipLevelInfo> bc;
    ASSERT_TRUE(LxGetMipLevelInfo(8, 8, 1, 3, LX_FORMAT_BC1_UNORM, MakeBuffer(48), 0, bc));
    EXPECT_EQ(32u, bc[0].levelSize);
    EXPECT_EQ(8u, bc[1].levelSize);
    EXPECT_EQ(8u, bc[2].levelSize);

    // One byte short of the last level: the levels that fit stay, the call fails.
    LxCountedPtr<LxMemoryBuffer> shortData = MakeBuffer(4 * (16 + 4 + 1) - 1);
    LxArray<LxMipLevelInfo> partial;
    EXPECT_FALSE(LxGetMipLevelInfo(4, 4, 1, 3, LX_FORMAT_R8G8B8A8_UNORM, shortData, 0, partial));
    EXPECT_EQ(2u, partial.GetCount());
    EXPECT_EQ(1u, shortData.GetRefCount());

    // An offset past the end fails at once.
    LxArray<LxMipLevelInfo> none;
    EXPECT_FALSE(LxGetMipLevelInfo(1, 1, 1, 1, LX_FORMAT_R8_UNORM, MakeBuffer(4), 5, none));
    EXPECT_EQ(0u, none.GetCount());

    LxTest::LogCapture capture;
    EXPECT_FALSE(LxGetMipLevelInfo(1, 1, 1, 1, LX_FORMAT_R8_UNORM, LxCountedPtr<LxMemoryBuffer>(), 0, none));
    EXPECT_EQ(1, capture.ErrorCount());

    // Appending keeps what the array held.
    LxArray<LxMipLevelInfo> appended;
    appended.Add(LxMipLevelInfo{1, 2, 3, nullptr});
    ASSERT_TRUE(LxGetMipLevelInfo(2, 2, 1, 2, LX_FORMAT_R8_UNORM, MakeBuffer(5), 0, appended));
    EXPECT_EQ(3u, appended.GetCount());
    EXPECT_EQ(1u, appended[0].rowPitch);
}
