// Readback converters: source layouts, row pitch, channel fill rules, and the half table checked bit for bit
// against the library's own half conversion.
#include "support/LxTestSupport.h"

#include "Common/LxHalf.h"
#include "Common/LxImageData2D.h"
#include "GPUResourceManager/LxGPUReadback.h"
#include "GPUResourceManager/LxMappedSurface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace
{
// A source surface of `height` rows with `pitch` bytes each (pitch larger than the texels, as real surfaces are);
// the padding holds a marker that must never be read into the image.
struct Surface
{
    Surface(unsigned pitch, unsigned height) : bytes(pitch * height, 0xEE)
    {
        surface.rowPitch = pitch;
        surface.data = bytes.data();
    }
    // Channel `index` of the first texel.
    template <class T>
    void Put(unsigned index, T value)
    {
        std::memcpy(bytes.data() + index * sizeof(T), &value, sizeof(T));
    }
    std::vector<unsigned char> bytes;
    LxMappedSurface surface;
};

void ExpectPixel(const LxImageData2D& img, unsigned x, unsigned y, double r, double g, double b, double a)
{
    const double* p = img.GetPixel(x, y);
    EXPECT_EQ((std::vector<double>{r, g, b, a}), std::vector<double>(p, p + 4)) << x << "," << y;
}
} // namespace

TEST(GPUReadback, EightBitLayouts)
{
    Surface s(12, 2); // 2 texels of 4 bytes per row, 4 bytes of padding
    const unsigned char row0[8] = {255, 0, 51, 102, 0, 255, 0, 255};
    const unsigned char row1[8] = {10, 20, 30, 40, 1, 2, 3, 4};
    std::memcpy(s.bytes.data(), row0, 8);
    std::memcpy(s.bytes.data() + 12, row1, 8);

    LxImageData2D img(2, 2);
    LxReadbackRGBA8(&s.surface, &img);
    ExpectPixel(img, 0, 0, 1.0, 0.0, 51 / 255.0, 102 / 255.0);
    ExpectPixel(img, 1, 1, 1 / 255.0, 2 / 255.0, 3 / 255.0, 4 / 255.0);

    LxReadbackRGBX8(&s.surface, &img);
    ExpectPixel(img, 0, 0, 1.0, 0.0, 51 / 255.0, 1.0);
    ExpectPixel(img, 0, 1, 10 / 255.0, 20 / 255.0, 30 / 255.0, 1.0);

    LxReadbackBGRA8(&s.surface, &img);
    ExpectPixel(img, 0, 0, 51 / 255.0, 0.0, 1.0, 102 / 255.0);
    ExpectPixel(img, 1, 1, 3 / 255.0, 2 / 255.0, 1 / 255.0, 4 / 255.0);

    LxReadbackBGRX8(&s.surface, &img);
    ExpectPixel(img, 0, 1, 30 / 255.0, 20 / 255.0, 10 / 255.0, 1.0);
}

TEST(GPUReadback, TenBitLayoutsKeepTheirOwnPacking)
{
    Surface s(8, 1);
    // r = 1023, g = 0, b = 341, a = 2 with red in the top bits...
    const uint32_t redTop = (1023u << 22) | (0u << 12) | (341u << 2) | 2u;
    // ...and the same values with alpha in the top bits.
    const uint32_t alphaTop = (2u << 30) | (1023u << 20) | (0u << 10) | 341u;
    std::memcpy(s.bytes.data(), &redTop, 4);
    std::memcpy(s.bytes.data() + 4, &alphaTop, 4);

    LxImageData2D img(2, 1);
    LxReadbackR10G10B10A2(&s.surface, &img);
    ExpectPixel(img, 0, 0, 1.0, 0.0, 341 / 1023.0, 2 / 3.0);
    LxReadbackA2R10G10B10(&s.surface, &img);
    ExpectPixel(img, 1, 0, 1.0, 0.0, 341 / 1023.0, 2 / 3.0);
}

TEST(GPUReadback, ChannelCountsFillTheRest)
{
    // One texel per row of 4 floats / halves / ints; rows padded.
    Surface f(20, 1), h(12, 1), i(20, 1), u(20, 1);
    const float fv[4] = {0.25f, -2.0f, 8.5f, 0.75f};
    const int32_t iv[4] = {-7, 100000, -2147483647 - 1, 3};
    const uint32_t uv[4] = {4294967295u, 0, 17, 1};
    for (unsigned c = 0; c < 4; ++c)
    {
        f.Put(c, fv[c]);
        h.Put(c, LxHalf(fv[c]).GetBits());
        i.Put(c, iv[c]);
        u.Put(c, uv[c]);
    }
    for (unsigned channels = 1; channels <= 4; ++channels)
    {
        LxImageData2D img(1, 1);
        auto expect = [&](const double* v) {
            ExpectPixel(img, 0, 0, v[0], channels > 1 ? v[1] : 0.0, channels > 2 ? v[2] : 0.0,
                        channels > 3 ? v[3] : 1.0);
        };
        const double fd[4] = {fv[0], fv[1], fv[2], fv[3]};
        const double id[4] = {double(iv[0]), double(iv[1]), double(iv[2]), double(iv[3])};
        const double ud[4] = {double(uv[0]), double(uv[1]), double(uv[2]), double(uv[3])};
        LxReadbackFloat32(&f.surface, &img, channels);
        expect(fd);
        LxReadbackFloat16(&h.surface, &img, channels);
        expect(fd); // every value above is exact in half precision
        LxReadbackInt32(&i.surface, &img, channels);
        expect(id);
        LxReadbackUInt32(&u.surface, &img, channels);
        expect(ud);
    }

    // Any other channel count writes nothing.
    LxImageData2D img(1, 1);
    img.GetData()[0] = 42.0;
    LxReadbackFloat16(&h.surface, &img, 0);
    LxReadbackFloat32(&f.surface, &img, 5);
    EXPECT_EQ(42.0, img.GetData()[0]);
}

TEST(GPUReadback, RowsAdvanceByThePitch)
{
    const unsigned width = 3, height = 4, pitch = 64;
    Surface s(pitch, height);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
        {
            const float v = static_cast<float>(y * 10 + x);
            std::memcpy(s.bytes.data() + y * pitch + x * 4, &v, 4);
        }
    LxImageData2D img(width, height);
    LxReadbackFloat32(&s.surface, &img, 1);
    for (unsigned y = 0; y < height; ++y)
        for (unsigned x = 0; x < width; ++x)
            ExpectPixel(img, x, y, y * 10 + x, 0.0, 0.0, 1.0);
}

TEST(GPUReadback, BadArgumentsWriteNothing)
{
    Surface s(16, 1);
    LxTest::LogCapture capture;
    LxImageData2D twoChannels(4, 1, 2);
    LxReadbackRGBA8(&s.surface, &twoChannels);
    EXPECT_EQ(0.0, twoChannels.GetData()[0]);
    LxReadbackRGBA8(nullptr, &twoChannels);
    LxReadbackFloat16(&s.surface, nullptr, 4);
    EXPECT_EQ(3, capture.ErrorCount());

    // An empty image is nothing to write into, and no error.
    LxImageData2D empty;
    capture.Clear();
    LxReadbackBGRA8(&s.surface, &empty);
    EXPECT_EQ(0, capture.ErrorCount());
}

TEST(GPUReadback, HalfTableMatchesTheHalfTypeForEveryPattern)
{
    const unsigned* table = LxGetHalfToFloatTable();
    for (unsigned bits = 0; bits < 65536; ++bits)
    {
        const float expected = LxHalf::HalfToFloat(static_cast<unsigned short>(bits));
        float actual;
        std::memcpy(&actual, &table[bits], 4);
        uint32_t expectedBits;
        std::memcpy(&expectedBits, &expected, 4);
        if (std::isnan(expected)) // any NaN with the half's sign
            ASSERT_TRUE(std::isnan(actual) && ((table[bits] >> 16) & 0x8000u) == (bits & 0x8000u)) << bits;
        else
            ASSERT_EQ(expectedBits, table[bits]) << bits; // +0 and -0 differ, denormals exact
    }
}

TEST(ImageData2D, LayoutAndCopies)
{
    LxImageData2D img(3, 2, 4);
    EXPECT_EQ(4u, img.GetPixelStride());
    EXPECT_EQ(12u, img.GetRowStride());
    img.GetPixel(2, 1)[3] = 5.0;
    EXPECT_EQ(5.0, img.GetData()[1 * 12 + 2 * 4 + 3]);
    LxImageData2D copy(img);
    img.GetPixel(2, 1)[3] = 1.0;
    EXPECT_EQ(5.0, copy.GetPixel(2, 1)[3]);
    copy.Allocate(0, 5);
    EXPECT_TRUE(copy.IsEmpty());
    EXPECT_EQ(0u, copy.GetWidth());
}
