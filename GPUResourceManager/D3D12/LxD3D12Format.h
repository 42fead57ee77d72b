// Direct3D 12 format mapping: LxGPUResourceFormat to DXGI_FORMAT and back, and the readback converter of each format.
//
// The two enumerations share their numbering only up to BC5; the mapping is one table for every value. Formats
// Direct3D lacks (ATC, ETC) map to DXGI_FORMAT_UNKNOWN; the comparison depth formats map to their plain depth
// formats. Stateless and thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "GPUResourceManager/LxGPUResourceFormat.h"

#include <dxgiformat.h>

class LxImageData2D;
struct LxMappedSurface;

// DXGI_FORMAT_UNKNOWN for formats Direct3D lacks and for values outside the enumeration.
LX_API DXGI_FORMAT LxGetDXGIFormat(LxGPUResourceFormat format);
// The first format that maps to `format`; LX_FORMAT_UNKNOWN when none does.
LX_API LxGPUResourceFormat LxGetFormatFromDXGI(DXGI_FORMAT format);

// Converts one mapped surface of `format` into `out` (four channels per pixel, already sized); false when the format
// has no converter. Red/blue order and the 10-bit packing are those of the Direct3D formats.
LX_API bool LxConvertReadback(LxGPUResourceFormat format, LxMappedSurface* src, LxImageData2D* dst);
// Whether LxConvertReadback handles `format`.
LX_API bool LxHasReadbackConverter(LxGPUResourceFormat format);
