// LxD3D12View: a portable view kind (LxGPUSamplingResourceView, LxGPURenderableResourceView,
// LxGPUDepthStencilResourceView, LxGPUUnorderedAccessView) on Direct3D 12. The portable view carries the
// description; the descriptor and its heap slot are LxD3D12ViewDescriptor's (see there for the heaps, the kinds of
// descriptor and the slot's lifetime). Create writes the descriptor, Destroy (and the destructor) gives it back.
//
// Made by the resource's view getters (LxD3D12Resource), which call Create. Header-only template; one thread
// at a time; failures are logged and answered with false.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12ViewDescriptor.h"
#include "GPUResourceManager/LxGPUResourceView.h"

template <class Base>
class LxD3D12View : public Base, public LxD3D12ViewDescriptor
{
public:
    LxD3D12View(LxGPUResource* resource, const LxGPUResourceViewDescription& desc) : Base(resource, desc) {}

    bool Create() override { return CreateDescriptor(*this); }
    void Destroy() override { ReleaseDescriptor(); }
};
