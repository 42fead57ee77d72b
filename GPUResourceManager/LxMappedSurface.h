// LxMappedSurface / LxMappedVolume: where a mapped texture subresource lies in CPU memory. Filled by the platform's
// Map and valid until the matching Unmap; the memory belongs to the platform, never to the caller.
#pragma once

struct LxMappedSurface
{
    unsigned rowPitch = 0;         // bytes from one row of texels to the next
    unsigned char* data = nullptr; // first texel
};

struct LxMappedVolume
{
    unsigned rowPitch = 0;   // bytes from one row to the next
    unsigned slicePitch = 0; // bytes from one depth slice to the next
    unsigned char* data = nullptr;
};
