#include "Common/LxImageIO.h"

#include "Common/LxFile.h"
#include "Common/LxImageData2D.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"

#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstring>

// libpng reports errors by longjmp back to the setjmp in DecodePNG/EncodePNG. Jumping over a C++ frame that owns an
// object with a destructor is undefined behaviour, so everything libpng can jump over (its own frames and the
// callbacks below) holds plain C data only, and DecodePNG/EncodePNG keep their state in a struct reached through a
// pointer (locals changed after setjmp would be indeterminate after the jump). Memory is taken with LxTryMalloc and
// freed by the caller of DecodePNG/EncodePNG on every path.

namespace
{
const size_t kErrorSize = 256;
const png_size_t kSignatureSize = 8;
// Deflate cannot expand data by more than 1032:1, so a file whose size times this is below the raw image size is
// damaged, whatever its header says. Checked before any image memory is allocated.
const unsigned long long kMaxDeflateRatio = 1032;

struct PngReadState
{
    const unsigned char* data;
    size_t size;
    size_t position;
    // Results of DecodePNG.
    unsigned width;
    unsigned height;
    unsigned channels;
    unsigned bitDepth;
    size_t rowBytes;
    unsigned char* pixels; // LxTryMalloc'd, height x rowBytes; the caller frees it
    png_bytep* rows;       // LxTryMalloc'd row pointers; the caller frees it
    char error[kErrorSize];
};

struct PngWriteState
{
    LxFile* file;                  // either a file...
    LxArray<unsigned char>* bytes; // ...or a byte array (appended to); see WriteBytes
    unsigned width;
    unsigned height;
    int colorType;
    unsigned bitDepth;
    size_t rowBytes;
    unsigned char* pixels; // the caller's encoded samples, height x rowBytes
    png_bytep* rows;       // LxTryMalloc'd; the caller frees it
    char error[kErrorSize];
};

void CopyError(char* error, const char* text)
{
    std::snprintf(error, kErrorSize, "%s", text ? text : "unknown libpng error");
}

void OnReadError(png_structp png, png_const_charp message)
{
    PngReadState* state = static_cast<PngReadState*>(png_get_error_ptr(png));
    if (state->error[0] == 0)
    {
        CopyError(state->error, message);
    }
    png_longjmp(png, 1);
}

void OnWriteError(png_structp png, png_const_charp message)
{
    PngWriteState* state = static_cast<PngWriteState*>(png_get_error_ptr(png));
    if (state->error[0] == 0)
    {
        CopyError(state->error, message);
    }
    png_longjmp(png, 1);
}

// Warnings (a bad CRC on an ancillary chunk, an unknown sRGB profile) leave a readable image: ignored.
void OnWarning(png_structp, png_const_charp) {}

void ReadBytes(png_structp png, png_bytep out, png_size_t count)
{
    PngReadState* state = static_cast<PngReadState*>(png_get_io_ptr(png));
    if (count > state->size - state->position)
    {
        png_error(png, "the file ends too early (truncated)");
    }
    std::memcpy(out, state->data + state->position, count);
    state->position += count;
}

void WriteBytes(png_structp png, png_bytep data, png_size_t count)
{
    PngWriteState* state = static_cast<PngWriteState*>(png_get_io_ptr(png));
    if (state->file)
    {
        if (count > 0xFFFFFFFFu || !state->file->Write(data, static_cast<unsigned>(count)))
        {
            png_error(png, "cannot write the file");
        }
        return;
    }
    // LxArray growth cannot fail (the allocator aborts on exhaustion) and runs to completion before any jump.
    for (png_size_t i = 0; i < count; ++i)
    {
        state->bytes->Add(data[i]);
    }
}

void FlushBytes(png_structp png)
{
    PngWriteState* state = static_cast<PngWriteState*>(png_get_io_ptr(png));
    if (state->file && !state->file->Flush())
    {
        png_error(png, "cannot write the file");
    }
}

// Everything from the signature to IEND. False with state->error set on any failure.
bool DecodePNG(PngReadState* state)
{
    if (state->size < kSignatureSize || png_sig_cmp(state->data, 0, kSignatureSize) != 0)
    {
        CopyError(state->error, "not a PNG file (bad signature)");
        return false;
    }
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, state, OnReadError, OnWarning);
    if (!png)
    {
        CopyError(state->error, "libpng could not start");
        return false;
    }
    png_infop info = png_create_info_struct(png);
    if (!info)
    {
        png_destroy_read_struct(&png, nullptr, nullptr);
        CopyError(state->error, "libpng could not start");
        return false;
    }
    if (setjmp(png_jmpbuf(png)))
    {
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    png_set_read_fn(png, state, ReadBytes);
    // Refuse absurd sizes while reading the header, before libpng allocates anything for them.
    png_set_user_limits(png, LxImageIO::kMaxDimension, LxImageIO::kMaxDimension);
    png_read_info(png, info);

    const png_uint_32 width = png_get_image_width(png, info);
    const png_uint_32 height = png_get_image_height(png, info);
    if (static_cast<unsigned long long>(width) * height > LxImageIO::kMaxPixels)
    {
        std::snprintf(state->error, kErrorSize, "%u x %u pixels is more than the %u pixels an image may have",
                      static_cast<unsigned>(width), static_cast<unsigned>(height), LxImageIO::kMaxPixels);
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    const unsigned long long fileBits =
        static_cast<unsigned long long>(png_get_bit_depth(png, info)) * png_get_channels(png, info) * width;
    const unsigned long long rawBytes = ((fileBits + 7) / 8 + 1) * height;
    if (rawBytes > state->size * kMaxDeflateRatio)
    {
        std::snprintf(state->error, kErrorSize, "the file is too short to hold %u x %u pixels (damaged or truncated)",
                      static_cast<unsigned>(width), static_cast<unsigned>(height));
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }

    // Palettes to RGB, grey below 8 bits to 8, transparency chunks to an alpha channel; 16 bits stay 16.
    png_set_expand(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);

    state->width = width;
    state->height = height;
    state->channels = png_get_channels(png, info);
    state->bitDepth = png_get_bit_depth(png, info);
    state->rowBytes = png_get_rowbytes(png, info);
    if (state->channels < 1 || state->channels > 4 || (state->bitDepth != 8 && state->bitDepth != 16) ||
        state->rowBytes < static_cast<size_t>(width) * state->channels * (state->bitDepth / 8))
    {
        CopyError(state->error, "unsupported pixel layout");
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    state->pixels = static_cast<unsigned char*>(LxTryMalloc(state->rowBytes * height));
    state->rows = static_cast<png_bytep*>(LxTryMalloc(sizeof(png_bytep) * height));
    if (!state->pixels || !state->rows)
    {
        CopyError(state->error, "out of memory for the image");
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    for (png_uint_32 y = 0; y < height; ++y)
    {
        state->rows[y] = state->pixels + y * state->rowBytes;
    }
    png_read_image(png, state->rows);
    // Reads up to IEND, so a file cut anywhere is refused, even past the image data.
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    return true;
}

bool EncodePNG(PngWriteState* state)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, state, OnWriteError, OnWarning);
    if (!png)
    {
        CopyError(state->error, "libpng could not start");
        return false;
    }
    png_infop info = png_create_info_struct(png);
    if (!info)
    {
        png_destroy_write_struct(&png, nullptr);
        CopyError(state->error, "libpng could not start");
        return false;
    }
    if (setjmp(png_jmpbuf(png)))
    {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    png_set_write_fn(png, state, WriteBytes, FlushBytes);
    png_set_IHDR(png, info, state->width, state->height, static_cast<int>(state->bitDepth), state->colorType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_write_image(png, state->rows);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

void ReportLoadError(const LxString& name, const char* reason)
{
    LX_ERROR("LxImageIO::LoadPNG.  %s: %s", name.c_str(), reason);
}

// Samples of the image as PNG stores them (big-endian at 16 bits), clamped to 0..1 and rounded.
unsigned char* EncodeSamples(const LxImageData2D& image, unsigned bitDepth, size_t rowBytes)
{
    unsigned char* pixels = static_cast<unsigned char*>(LxTryMalloc(rowBytes * image.GetHeight()));
    if (!pixels)
    {
        return nullptr;
    }
    const double scale = bitDepth == 16 ? 65535.0 : 255.0;
    const unsigned samples = image.GetWidth() * image.GetNumChannels();
    for (unsigned y = 0; y < image.GetHeight(); ++y)
    {
        const double* in = image.GetPixel(0, y);
        unsigned char* out = pixels + y * rowBytes;
        for (unsigned i = 0; i < samples; ++i)
        {
            double v = in[i];
            v = v > 0.0 ? (v < 1.0 ? v : 1.0) : 0.0; // NaN becomes 0 too
            const unsigned q = static_cast<unsigned>(std::lround(v * scale));
            if (bitDepth == 16)
            {
                out[2 * i] = static_cast<unsigned char>(q >> 8);
                out[2 * i + 1] = static_cast<unsigned char>(q & 0xFF);
            }
            else
            {
                out[i] = static_cast<unsigned char>(q);
            }
        }
    }
    return pixels;
}

bool Save(const LxImageData2D& image, unsigned bitDepth, const LxString& name, LxFile* file,
          LxArray<unsigned char>* bytes)
{
    static const int kColorTypes[4] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_RGB,
                                       PNG_COLOR_TYPE_RGB_ALPHA};
    if (image.IsEmpty())
    {
        LX_ERROR("LxImageIO::SavePNG.  %s: the image is empty.", name.c_str());
        return false;
    }
    if (image.GetNumChannels() < 1 || image.GetNumChannels() > 4)
    {
        LX_ERROR("LxImageIO::SavePNG.  %s: PNG images have 1 to 4 channels, not %u.", name.c_str(),
                 image.GetNumChannels());
        return false;
    }
    if (bitDepth != 8 && bitDepth != 16)
    {
        LX_ERROR("LxImageIO::SavePNG.  %s: the bit depth must be 8 or 16, not %u.", name.c_str(), bitDepth);
        return false;
    }
    if (image.GetWidth() > LxImageIO::kMaxDimension || image.GetHeight() > LxImageIO::kMaxDimension)
    {
        LX_ERROR("LxImageIO::SavePNG.  %s: %u x %u pixels is larger than %u on a side.", name.c_str(), image.GetWidth(),
                 image.GetHeight(), LxImageIO::kMaxDimension);
        return false;
    }
    PngWriteState state = {};
    state.file = file;
    state.bytes = bytes;
    state.width = image.GetWidth();
    state.height = image.GetHeight();
    state.colorType = kColorTypes[image.GetNumChannels() - 1];
    state.bitDepth = bitDepth;
    state.rowBytes = static_cast<size_t>(image.GetWidth()) * image.GetNumChannels() * (bitDepth / 8);
    state.pixels = EncodeSamples(image, bitDepth, state.rowBytes);
    state.rows = static_cast<png_bytep*>(LxTryMalloc(sizeof(png_bytep) * state.height));
    bool ok = state.pixels && state.rows;
    if (!ok)
    {
        CopyError(state.error, "out of memory for the image");
    }
    else
    {
        for (unsigned y = 0; y < state.height; ++y)
        {
            state.rows[y] = state.pixels + y * state.rowBytes;
        }
        ok = EncodePNG(&state);
    }
    LxFree(state.pixels);
    LxFree(state.rows);
    if (!ok)
    {
        LX_ERROR("LxImageIO::SavePNG.  %s: %s", name.c_str(), state.error);
    }
    return ok;
}
} // namespace

bool LxImageIO::LoadPNG(const LxString& path, LxImageData2D* out)
{
    LxFile* file = LxFile::Open(path, "rb");
    if (!file->IsOpen())
    {
        delete file;
        ReportLoadError(path, "cannot open the file");
        return false;
    }
    unsigned size = 0;
    unsigned char* data = static_cast<unsigned char*>(LxFile::ReadFileToBuffer(*file, &size));
    delete file;
    if (!data)
    {
        ReportLoadError(path, "cannot read the file");
        return false;
    }
    const bool ok = LoadPNGFromMemory(data, size, path, out);
    LxFree(data);
    return ok;
}

bool LxImageIO::LoadPNGFromMemory(const unsigned char* data, unsigned size, const LxString& name, LxImageData2D* out)
{
    if (!out || (!data && size))
    {
        ReportLoadError(name, "no data or no image");
        return false;
    }
    PngReadState state = {};
    state.data = data;
    state.size = size;
    const bool ok = DecodePNG(&state);
    if (ok)
    {
        out->Allocate(state.width, state.height, state.channels);
        // Divided, not multiplied by a reciprocal: k / 255.0 is what a saved value k / 255.0 comes back as.
        const double steps = state.bitDepth == 16 ? 65535.0 : 255.0;
        const unsigned samples = state.width * state.channels;
        for (unsigned y = 0; y < state.height; ++y)
        {
            const unsigned char* row = state.rows[y];
            double* pixel = out->GetPixel(0, y);
            for (unsigned i = 0; i < samples; ++i)
            {
                const unsigned v = state.bitDepth == 16 ? (row[2 * i] << 8) | row[2 * i + 1] : row[i];
                pixel[i] = v / steps;
            }
        }
    }
    else
    {
        ReportLoadError(name, state.error);
    }
    LxFree(state.pixels);
    LxFree(state.rows);
    return ok;
}

bool LxImageIO::SavePNG(const LxString& path, const LxImageData2D& image, unsigned bitDepth)
{
    LxFile* file = LxFile::Open(path, "wb");
    if (!file->IsOpen())
    {
        delete file;
        LX_ERROR("LxImageIO::SavePNG.  %s: cannot open the file for writing.", path.c_str());
        return false;
    }
    const bool ok = Save(image, bitDepth, path, file, nullptr);
    delete file;
    return ok;
}

bool LxImageIO::SavePNGToMemory(const LxImageData2D& image, LxArray<unsigned char>& out, unsigned bitDepth)
{
    return Save(image, bitDepth, "(memory)", nullptr, &out);
}
