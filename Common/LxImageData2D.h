// LxImageData2D: a two-dimensional image of double-precision channels, the exchange format between image files
// (the PNG loader and saver), GPU readback and image processing.
//
// Layout: row-major, `channels` doubles per pixel, pixels packed: the pixel stride is the channel count and the row
// stride width x channels (both in elements, not bytes). Pixel (x, y) channel c is at
// y * GetRowStride() + x * GetPixelStride() + c. Channel values are nominally 0..1 for normalised data and
// unscaled for integer data. The image owns its storage (tracked allocator); copies are deep. Not thread-safe.
#pragma once

#include "Common/LxApi.h"

class LX_API LxImageData2D
{
public:
    LxImageData2D() = default;
    // Zero-filled; an empty image when any dimension is 0.
    LxImageData2D(unsigned width, unsigned height, unsigned channels = 4);
    ~LxImageData2D();
    LxImageData2D(const LxImageData2D& other);
    LxImageData2D& operator=(const LxImageData2D& other);

    // Replaces the contents with a zero-filled image of the given size; 0 in any dimension empties it.
    void Allocate(unsigned width, unsigned height, unsigned channels = 4);
    void Clear() { Allocate(0, 0, 0); }

    unsigned GetWidth() const { return m_nWidth; }
    unsigned GetHeight() const { return m_nHeight; }
    unsigned GetNumChannels() const { return m_nChannels; }
    unsigned GetPixelStride() const { return m_nChannels; }
    unsigned GetRowStride() const { return m_nWidth * m_nChannels; }
    bool IsEmpty() const { return m_pData == nullptr; }

    double* GetData() { return m_pData; }
    const double* GetData() const { return m_pData; }
    // The first channel of pixel (x, y); no range check.
    double* GetPixel(unsigned x, unsigned y) { return m_pData + y * GetRowStride() + x * GetPixelStride(); }
    const double* GetPixel(unsigned x, unsigned y) const { return m_pData + y * GetRowStride() + x * GetPixelStride(); }

private:
    unsigned m_nWidth = 0;
    unsigned m_nHeight = 0;
    unsigned m_nChannels = 0;
    double* m_pData = nullptr;
};
