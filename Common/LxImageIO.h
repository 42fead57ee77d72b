// LxImageIO: PNG files to and from LxImageData2D (through libpng).
//
// Loading keeps the file's channels: 1 grey, 2 grey + alpha, 3 RGB, 4 RGBA. Palettes become RGB (RGBA with a
// transparency chunk), grey below 8 bits becomes 8-bit grey, a transparency chunk on grey or RGB adds an alpha
// channel. Samples are normalised to 0..1 (value / 255 or value / 65535); gamma and colour-space chunks are ignored.
// Saving writes 1 to 4 channels as grey, grey + alpha, RGB or RGBA at 8 or 16 bits, each value clamped to 0..1 and
// rounded to the nearest step.
//
// Damaged input never crashes: bad signatures, truncation at any byte, corrupt chunks, absurd dimensions (more than
// kMaxDimension on a side or kMaxPixels in all, or more pixels than the file's compressed data can hold) are logged
// as "LxImageIO::LoadPNG.  <name>: <reason>" and answered with false, the output image untouched. libpng reports
// its errors by longjmp; only plain C data lives in the frames it jumps over.
// Stateless and thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"

class LxImageData2D;

class LX_API LxImageIO
{
public:
    static const unsigned kMaxDimension = 16384;
    static const unsigned kMaxPixels = 64u * 1024u * 1024u;

    // Reads a PNG file from disk.
    static bool LoadPNG(const LxString& path, LxImageData2D* out);
    // Decodes a PNG held in memory; `name` only labels the messages.
    static bool LoadPNGFromMemory(const unsigned char* data, unsigned size, const LxString& name, LxImageData2D* out);

    // Writes `image` (1 to 4 channels, not empty) at `bitDepth` 8 or 16 bits per sample.
    static bool SavePNG(const LxString& path, const LxImageData2D& image, unsigned bitDepth = 8);
    // Appends the encoded file to `out`.
    static bool SavePNGToMemory(const LxImageData2D& image, LxArray<unsigned char>& out, unsigned bitDepth = 8);
};
