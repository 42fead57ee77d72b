// LxD3D12DepthStencilView: a depth-stencil view of a 2D texture, 2D array or cube array on Direct3D 12. The portable
// view carries the description; the descriptor and its heap slot are LxD3D12ViewDescriptor's (see there for the heaps,
// the kinds of descriptor and the slot's lifetime).
//
// Made by the resource's view getters (LxD3D12ViewFactories), which call Create. One thread at a time; failures are
// logged and answered with false.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12ViewDescriptor.h"
#include "GPUResourceManager/LxGPUDepthStencilResourceView.h"

class LX_API LxD3D12DepthStencilView : public LxGPUDepthStencilResourceView, public LxD3D12ViewDescriptor
{
public:
    LxD3D12DepthStencilView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc);

    bool Create() override;
    void Destroy() override;
};
