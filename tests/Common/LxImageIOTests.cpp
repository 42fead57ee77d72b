// PNG load and save: round trips of every channel count at 8 and 16 bits, the loader's expansions of what the saver
// never writes (palettes, transparency, low bit depths, interlacing; files made with libpng directly), and damaged
// files: every truncation point, bad signatures, corrupt data, absurd dimensions.
#include "support/LxTestSupport.h"

#include "Common/LxImageData2D.h"
#include "Common/LxImageIO.h"

#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace
{
std::vector<unsigned char> ToVector(const LxArray<unsigned char>& bytes)
{
    return std::vector<unsigned char>(bytes.begin(), bytes.end());
}

// An image whose every sample is a distinct exact step of the bit depth, so a round trip must be exact.
LxImageData2D Pattern(unsigned width, unsigned height, unsigned channels, unsigned bitDepth)
{
    const unsigned steps = bitDepth == 16 ? 65535 : 255;
    LxImageData2D image(width, height, channels);
    const unsigned count = width * height * channels;
    for (unsigned i = 0; i < count; ++i)
    {
        image.GetData()[i] = ((i * 7919u + 13u) % (steps + 1)) / static_cast<double>(steps);
    }
    return image;
}

void ExpectSameImage(const LxImageData2D& expected, const LxImageData2D& actual)
{
    ASSERT_EQ(expected.GetWidth(), actual.GetWidth());
    ASSERT_EQ(expected.GetHeight(), actual.GetHeight());
    ASSERT_EQ(expected.GetNumChannels(), actual.GetNumChannels());
    const unsigned count = expected.GetWidth() * expected.GetHeight() * expected.GetNumChannels();
    EXPECT_EQ(std::vector<double>(expected.GetData(), expected.GetData() + count),
              std::vector<double>(actual.GetData(), actual.GetData() + count));
}

std::vector<unsigned char> SmallPNG()
{
    LxArray<unsigned char> bytes;
    EXPECT_TRUE(LxImageIO::SavePNGToMemory(Pattern(5, 3, 4, 8), bytes));
    return ToVector(bytes);
}

// Loads `bytes` into an image that already holds a 1x1 marker; a failed load must leave the marker.
bool LoadKeepsMarker(const std::vector<unsigned char>& bytes, bool* markerKept)
{
    LxImageData2D image(1, 1, 1);
    image.GetData()[0] = 0.25;
    const bool ok =
        LxImageIO::LoadPNGFromMemory(bytes.data(), static_cast<unsigned>(bytes.size()), "damaged.png", &image);
    *markerKept = image.GetWidth() == 1 && image.GetHeight() == 1 && image.GetData()[0] == 0.25;
    return ok;
}

// Rewrites the big-endian word at `offset` and the CRC of the chunk it lies in (IHDR: bytes 8 to 32).
void PatchIHDR(std::vector<unsigned char>& png, size_t offset, unsigned value)
{
    for (int i = 0; i < 4; ++i)
    {
        png[offset + i] = static_cast<unsigned char>(value >> (24 - 8 * i));
    }
    const unsigned crc = static_cast<unsigned>(crc32(0, png.data() + 12, 17)); // type + 13 data bytes
    for (int i = 0; i < 4; ++i)
    {
        png[29 + i] = static_cast<unsigned char>(crc >> (24 - 8 * i));
    }
}

// Files the saver never writes, made with libpng itself. Plain C state only across its longjmp.
struct RawImage
{
    unsigned width;
    unsigned height;
    int colorType;
    int bitDepth;
    int interlace;
    std::vector<unsigned char> rows; // packed as PNG stores them
    std::vector<png_color> palette;
    std::vector<unsigned char> paletteAlpha;
};

void AppendBytes(png_structp png, png_bytep data, png_size_t count)
{
    auto* out = static_cast<std::vector<unsigned char>*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + count);
}

bool EncodeRaw(RawImage* raw, std::vector<unsigned char>* out, png_bytep* rows)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png)))
    {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, out, AppendBytes, nullptr);
    png_set_IHDR(png, info, raw->width, raw->height, raw->bitDepth, raw->colorType, raw->interlace,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!raw->palette.empty())
        png_set_PLTE(png, info, raw->palette.data(), static_cast<int>(raw->palette.size()));
    if (!raw->paletteAlpha.empty())
        png_set_tRNS(png, info, raw->paletteAlpha.data(), static_cast<int>(raw->paletteAlpha.size()), nullptr);
    png_write_info(png, info);
    png_write_image(png, rows);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

std::vector<unsigned char> Encode(RawImage& raw)
{
    const size_t rowBytes = raw.rows.size() / raw.height;
    std::vector<png_bytep> rows;
    for (unsigned y = 0; y < raw.height; ++y)
        rows.push_back(raw.rows.data() + y * rowBytes);
    std::vector<unsigned char> out;
    EXPECT_TRUE(EncodeRaw(&raw, &out, rows.data()));
    return out;
}

LxImageData2D Decode(const std::vector<unsigned char>& png)
{
    LxImageData2D image;
    EXPECT_TRUE(LxImageIO::LoadPNGFromMemory(png.data(), static_cast<unsigned>(png.size()), "raw.png", &image));
    return image;
}

std::vector<double> Samples(const LxImageData2D& image)
{
    return std::vector<double>(image.GetData(),
                               image.GetData() + image.GetWidth() * image.GetHeight() * image.GetNumChannels());
}
} // namespace

TEST(ImageIO, RoundTripsEveryChannelCountAtBothDepths)
{
    const std::string dir = LxTest::MakeTempDir("png");
    for (unsigned bitDepth : {8u, 16u})
    {
        for (unsigned channels = 1; channels <= 4; ++channels)
        {
            SCOPED_TRACE("depth " + std::to_string(bitDepth) + ", channels " + std::to_string(channels));
            const LxImageData2D image = Pattern(7, 5, channels, bitDepth);
            const std::string path = dir + "/img" + std::to_string(bitDepth) + "_" + std::to_string(channels) + ".png";
            ASSERT_TRUE(LxImageIO::SavePNG(path.c_str(), image, bitDepth));
            LxImageData2D loaded;
            ASSERT_TRUE(LxImageIO::LoadPNG(path.c_str(), &loaded));
            ExpectSameImage(image, loaded);

            // The file and the memory encoder write the same bytes.
            LxArray<unsigned char> bytes;
            ASSERT_TRUE(LxImageIO::SavePNGToMemory(image, bytes, bitDepth));
            EXPECT_EQ(LxTest::ReadBytes(path), std::string(bytes.begin(), bytes.end()));
        }
    }
}

TEST(ImageIO, SaveClampsAndRounds)
{
    LxImageData2D image(4, 1, 1);
    const double values[4] = {-0.5, 1.5, std::nan(""), 0.5};
    std::memcpy(image.GetData(), values, sizeof(values));
    for (unsigned bitDepth : {8u, 16u})
    {
        LxArray<unsigned char> bytes;
        ASSERT_TRUE(LxImageIO::SavePNGToMemory(image, bytes, bitDepth));
        const LxImageData2D loaded = Decode(ToVector(bytes));
        const double half = bitDepth == 8 ? 128 / 255.0 : 32768 / 65535.0; // 0.5 rounds up
        EXPECT_EQ((std::vector<double>{0.0, 1.0, 0.0, half}), Samples(loaded));
    }
}

TEST(ImageIO, LoaderExpandsPalettesLowDepthsAndInterlacing)
{
    // A palette of three colours, the second half transparent: RGBA.
    RawImage palette{3, 1, PNG_COLOR_TYPE_PALETTE, 8, PNG_INTERLACE_NONE, {2, 1, 0}, {}, {}};
    palette.palette = {{255, 0, 0}, {0, 51, 255}, {10, 20, 30}};
    palette.paletteAlpha = {255, 102};
    EXPECT_EQ((std::vector<double>{10 / 255.0, 20 / 255.0, 30 / 255.0, 1.0, 0.0, 0.2, 1.0, 0.4, 1.0, 0.0, 0.0, 1.0}),
              Samples(Decode(Encode(palette))));

    // Without transparency a palette is RGB.
    palette.paletteAlpha.clear();
    const LxImageData2D rgb = Decode(Encode(palette));
    EXPECT_EQ(3u, rgb.GetNumChannels());
    EXPECT_EQ((std::vector<double>{0.0, 0.2, 1.0}), std::vector<double>(rgb.GetPixel(1, 0), rgb.GetPixel(1, 0) + 3));

    // 2-bit grey, four pixels in one byte: 0, 1, 2, 3 of 3.
    RawImage grey{4, 1, PNG_COLOR_TYPE_GRAY, 2, PNG_INTERLACE_NONE, {0x1B}, {}, {}};
    EXPECT_EQ((std::vector<double>{0.0, 85 / 255.0, 170 / 255.0, 1.0}), Samples(Decode(Encode(grey))));

    // Adam7 interlacing: seven passes over a 9x9 RGB image come back in place.
    RawImage interlaced{9, 9, PNG_COLOR_TYPE_RGB, 8, PNG_INTERLACE_ADAM7, {}, {}, {}};
    std::vector<double> expected;
    for (unsigned i = 0; i < 9 * 9 * 3; ++i)
    {
        interlaced.rows.push_back(static_cast<unsigned char>(i * 3));
        expected.push_back(static_cast<unsigned char>(i * 3) / 255.0);
    }
    EXPECT_EQ(expected, Samples(Decode(Encode(interlaced))));
}

TEST(ImageIO, EveryTruncationIsRefusedCleanly)
{
    const std::vector<unsigned char> png = SmallPNG();
    ASSERT_GT(png.size(), 50u);
    for (size_t cut = 0; cut < png.size(); ++cut)
    {
        SCOPED_TRACE("cut at " + std::to_string(cut));
        LxTest::LogCapture log;
        bool markerKept = false;
        EXPECT_FALSE(LoadKeepsMarker(std::vector<unsigned char>(png.begin(), png.begin() + cut), &markerKept));
        EXPECT_TRUE(markerKept);
        EXPECT_EQ(1, log.ErrorCount());
        EXPECT_EQ(1, log.Count("LxImageIO::LoadPNG.  damaged.png: ", LX_LOG_ERROR)) << log.All();
    }
    bool markerKept = true;
    EXPECT_TRUE(LoadKeepsMarker(png, &markerKept));
    EXPECT_FALSE(markerKept);
}

TEST(ImageIO, DamagedFilesAreRefusedWithTheirReason)
{
    const std::vector<unsigned char> good = SmallPNG();
    struct Case
    {
        const char* what;
        std::vector<unsigned char> bytes;
        const char* message; // the whole line after the file name, or null: any libpng reason
    };
    std::vector<Case> cases;

    std::vector<unsigned char> bytes = good;
    bytes[1] = 'Q';
    cases.push_back({"bad signature", bytes, "not a PNG file (bad signature)"});
    cases.push_back({"empty", {}, "not a PNG file (bad signature)"});

    bytes = good;
    bytes[bytes.size() - 20] ^= 0x55; // inside the image data: its CRC no longer matches
    cases.push_back({"corrupt data", bytes, nullptr});

    bytes = good;
    PatchIHDR(bytes, 16, 0x7FFFFFFF);
    cases.push_back({"width past the limit", bytes, nullptr});

    bytes = good;
    PatchIHDR(bytes, 16, 16384);
    PatchIHDR(bytes, 20, 16384);
    cases.push_back(
        {"too many pixels", bytes, "16384 x 16384 pixels is more than the 67108864 pixels an image may have"});

    bytes = good;
    PatchIHDR(bytes, 16, 8000);
    PatchIHDR(bytes, 20, 8000);
    cases.push_back({"more pixels than the data can hold", bytes,
                     "the file is too short to hold 8000 x 8000 pixels (damaged or truncated)"});

    bytes = good;
    PatchIHDR(bytes, 16, 0);
    cases.push_back({"zero width", bytes, nullptr});

    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        LxTest::LogCapture log;
        bool markerKept = false;
        EXPECT_FALSE(LoadKeepsMarker(c.bytes, &markerKept));
        EXPECT_TRUE(markerKept);
        EXPECT_EQ(1, log.ErrorCount()) << log.All();
        const std::string prefix = "LxImageIO::LoadPNG.  damaged.png: ";
        EXPECT_TRUE(log.Contains(prefix + (c.message ? c.message : ""), LX_LOG_ERROR)) << log.All();
    }
}

TEST(ImageIO, FileAndArgumentErrors)
{
    const std::string dir = LxTest::MakeTempDir("pngerr");
    LxTest::LogCapture log;
    LxImageData2D image;
    EXPECT_FALSE(LxImageIO::LoadPNG((dir + "/missing.png").c_str(), &image));
    EXPECT_TRUE(log.Contains("LxImageIO::LoadPNG.  " + dir + "/missing.png: cannot open the file"));

    struct SaveCase
    {
        LxImageData2D image;
        unsigned bitDepth;
        std::string message;
    };
    const SaveCase cases[] = {
        {LxImageData2D(), 8, "(memory): the image is empty."},
        {LxImageData2D(2, 2, 5), 8, "(memory): PNG images have 1 to 4 channels, not 5."},
        {LxImageData2D(2, 2, 3), 12, "(memory): the bit depth must be 8 or 16, not 12."},
        {LxImageData2D(16385, 1, 1), 8, "(memory): 16385 x 1 pixels is larger than 16384 on a side."},
    };
    for (const SaveCase& c : cases)
    {
        LxArray<unsigned char> bytes;
        EXPECT_FALSE(LxImageIO::SavePNGToMemory(c.image, bytes, c.bitDepth));
        EXPECT_TRUE(log.Contains("LxImageIO::SavePNG.  " + c.message, LX_LOG_ERROR)) << log.All();
        EXPECT_EQ(0u, bytes.GetCount());
    }
    const std::string unwritable = dir + "/no/such/folder/x.png";
    EXPECT_FALSE(LxImageIO::SavePNG(unwritable.c_str(), LxImageData2D(1, 1, 1)));
    EXPECT_TRUE(log.Contains("LxImageIO::SavePNG.  " + unwritable + ": cannot open the file for writing."));
}
