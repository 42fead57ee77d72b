// LxD3D12UnorderedAccessView: an unordered-access view of a texture or a buffer on Direct3D 12: an LxD3D12View that
// also clears what it sees.
//
// Made by the resource's view getters (LxD3D12Resource), which call Create. One thread at a time; failures are
// logged and answered with false.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12View.h"
#include "GPUResourceManager/LxGPUUnorderedAccessView.h"

class LX_API LxD3D12UnorderedAccessView : public LxD3D12View<LxGPUUnorderedAccessView>
{
public:
    LxD3D12UnorderedAccessView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc);

    // Clears the viewed range on the calling worker's current list of the render manager (inside a frame): the
    // descriptor is copied into a frame range of the shader-visible heap, as the clear needs. The resource is moved
    // to the unordered-access state first. False (logged) without a list or descriptor.
    bool ClearFloat(const float values[4]) override;
    bool ClearUInt(const unsigned values[4]) override;

private:
    bool Clear(const float* floats, const unsigned* uints);
};
