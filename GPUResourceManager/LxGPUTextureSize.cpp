#include "GPUResourceManager/LxGPUTextureSize.h"

#include "Common/LxLogManager.h"

namespace
{
void NextLevel(unsigned& w, unsigned& h, unsigned& d, bool blocked)
{
    w = w / 2 ? w / 2 : 1;
    h = h / 2 ? h / 2 : 1;
    d = d / 2 ? d / 2 : 1;
    if (blocked)
    {
        w = w < 4 ? 4 : w;
        h = h < 4 ? 4 : h;
    }
}
} // namespace

unsigned LxComputeTextureSize(unsigned width, unsigned height, unsigned depth, unsigned mipCount,
                              LxGPUResourceFormat format)
{
    const unsigned bits = LxGetFormatBitsPerElement(format);
    const bool blocked = LxIsFormatBlockCompressed(format);
    unsigned w = width, h = height, d = depth;
    unsigned totalBits = 0;
    for (unsigned level = 0; level < mipCount; ++level)
    {
        totalBits += bits * w * h * d;
        NextLevel(w, h, d, blocked);
    }
    return totalBits >> 3;
}

bool LxGetMipLevelInfo(unsigned width, unsigned height, unsigned depth, unsigned mipCount, LxGPUResourceFormat format,
                       LxCountedPtr<LxMemoryBuffer> data, unsigned offset, LxArray<LxMipLevelInfo>& out)
{
    if (!data)
    {
        LX_ERROR("LxGetMipLevelInfo.  No image data.");
        return false;
    }
    const unsigned bits = LxGetFormatBitsPerElement(format);
    const bool blocked = LxIsFormatBlockCompressed(format);
    unsigned char* start = data->GetData();
    const unsigned long long size = data->GetSize();
    unsigned long long running = offset;
    unsigned w = width, h = height, d = depth;
    for (unsigned level = 0; level < mipCount; ++level)
    {
        LxMipLevelInfo info;
        info.rowPitch = (bits * w) / 8;
        info.slicePitch = info.rowPitch * h;
        info.levelSize = info.slicePitch * d;
        if (running + info.levelSize > size)
        {
            return false;
        }
        info.data = start + running;
        running += info.levelSize;
        out.Add(info);
        NextLevel(w, h, d, blocked);
    }
    return true;
}
