// Readback converters: turn a mapped readback surface into an LxImageData2D of double channels, one converter per
// source texel layout. Stateless and thread-safe.
//
// Each walks the destination (rows advance the source by its row pitch) and writes four channels per pixel, so the
// destination needs at least four channels; a null argument or a destination with fewer channels is logged and
// nothing is written. The source must hold at least the destination's width x height texels. Channels the source
// lacks are written as 0 (colour) and 1 (alpha). Unsigned-normalised data is scaled to 0..1; integers are unscaled.
#pragma once

#include "Common/LxApi.h"

class LxImageData2D;
struct LxMappedSurface;

LX_API void LxReadbackRGBA8(LxMappedSurface* src, LxImageData2D* dst);
LX_API void LxReadbackRGBX8(LxMappedSurface* src, LxImageData2D* dst);
LX_API void LxReadbackBGRA8(LxMappedSurface* src, LxImageData2D* dst);
LX_API void LxReadbackBGRX8(LxMappedSurface* src, LxImageData2D* dst);
// Red in the top bits (r = bits 22-31, g = 12-21, b = 2-11, a = 0-1).
LX_API void LxReadbackR10G10B10A2(LxMappedSurface* src, LxImageData2D* dst);
// Alpha in the top bits (a = bits 30-31, r = 20-29, g = 10-19, b = 0-9).
LX_API void LxReadbackA2R10G10B10(LxMappedSurface* src, LxImageData2D* dst);
// `channels` (1 to 4) values per source texel; any other count writes nothing.
LX_API void LxReadbackFloat16(LxMappedSurface* src, LxImageData2D* dst, unsigned channels);
LX_API void LxReadbackFloat32(LxMappedSurface* src, LxImageData2D* dst, unsigned channels);
LX_API void LxReadbackInt32(LxMappedSurface* src, LxImageData2D* dst, unsigned channels);
LX_API void LxReadbackUInt32(LxMappedSurface* src, LxImageData2D* dst, unsigned channels);

// The 65,536-entry table behind LxReadbackFloat16: the float bit pattern of every half bit pattern. Built once, on
// first use, from the binary16 layout itself (not from a conversion routine), so it can check one.
LX_API const unsigned* LxGetHalfToFloatTable();
