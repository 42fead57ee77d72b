// LxGPUResourceViewDescription: what a view of a GPU resource sees (its kind, the format it reads the data as, and
// the range of the resource it covers), compared field by field so a resource can find a view it already made.
//
// Plain value type; no ownership, no threading concerns. Only the range fields that the resource type uses take
// part in equality: buffers compare (first element, element count), textures the four 16-bit fields. A description
// of an unknown resource type never equals anything, not even itself, so such a view is never shared.
#pragma once

#include "Common/LxApi.h"
#include "GPUResourceManager/LxGPUResourceFormat.h"

// The kind of view. Values are stored in descriptions and tables; keep them.
enum LxGPUResourceViewType : unsigned
{
    LX_VIEW_RENDERABLE = 0,       // render target
    LX_VIEW_DEPTH_STENCIL = 1,    // depth-stencil target
    LX_VIEW_SAMPLING = 2,         // shader resource
    LX_VIEW_UNORDERED_ACCESS = 3, // unordered access (UAV)
};

// The range of the resource a view covers: a union, read as `buffer` for buffers and as `texture` for textures.
union LxGPUResourceDescription
{
    struct
    {
        unsigned firstElement;
        unsigned numElements;
    } buffer;
    struct
    {
        unsigned short firstMip;
        unsigned short mipCount;
        // First array slice of 2D arrays and cube arrays (faces), first depth slice of 3D textures.
        unsigned short firstSlice;
        // Array size (or face count) of 2D arrays and cube arrays, depth slice count of 3D textures.
        unsigned short sliceCount;
    } texture;

    static LxGPUResourceDescription Buffer(unsigned firstElement, unsigned numElements)
    {
        LxGPUResourceDescription d;
        d.buffer.firstElement = firstElement;
        d.buffer.numElements = numElements;
        return d;
    }
    static LxGPUResourceDescription Texture(unsigned short firstMip, unsigned short mipCount, unsigned short firstSlice,
                                            unsigned short sliceCount)
    {
        LxGPUResourceDescription d;
        d.texture.firstMip = firstMip;
        d.texture.mipCount = mipCount;
        d.texture.firstSlice = firstSlice;
        d.texture.sliceCount = sliceCount;
        return d;
    }
};
static_assert(sizeof(LxGPUResourceDescription) == 8, "the resource description is 8 bytes");

class LX_API LxGPUResourceViewDescription
{
public:
    enum Flags : unsigned short
    {
        FLAG_READ_ONLY_DEPTH = 0x1,
        FLAG_READ_ONLY_STENCIL = 0x2,
        FLAG_APPEND = 0x8, // a UAV with an append/consume counter (buffers only)
    };

    LxGPUResourceViewDescription();
    // resourceType is an LxGPUResource::Type and must equal the type of the resource the view is made for (cube
    // arrays also accept 2D-array views of their faces).
    LxGPUResourceViewDescription(LxGPUResourceViewType viewType, LxGPUResourceFormat format, unsigned resourceType,
                                 const LxGPUResourceDescription& resourceDesc, unsigned short flags = 0);

    bool operator==(const LxGPUResourceViewDescription& other) const;
    bool operator!=(const LxGPUResourceViewDescription& other) const { return !(*this == other); }

    LxGPUResourceViewType viewType;
    LxGPUResourceFormat format;
    unsigned resourceType;
    LxGPUResourceDescription resourceDesc;
    unsigned short flags;
};
