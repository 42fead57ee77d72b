// LxD3D12Resource: what every Direct3D 12 resource class shares, as a base placed between the portable resource class
// and the platform one (class LxD3D12Texture3D : public LxD3D12Resource<LxGPUTexture3D>): the view factories, and the
// portable state transition, UAV barrier and copy recorded on the render manager's current list.
//
// The portable getters have already checked a view's description against the resource (IsViewValid) when a
// factory runs; the views made here find their ID3D12Resource and descriptor heap when they are created. Each
// factory returns a new, not yet created view (null only when memory runs out). The recorded operations need an
// open list of the render manager (inside a frame, or its load-time list); without one they log and fail.
// Header-only template; one thread at a time.
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"
#include "GPUResourceManager/D3D12/LxD3D12UnorderedAccessView.h"
#include "GPUResourceManager/D3D12/LxD3D12View.h"

#include <new>

template <class Base>
class LxD3D12Resource : public Base
{
public:
    using Base::Base;

    // `before` and `after` are the Direct3D 12 state bits (as the portable states are valued); the texture's
    // tracked state becomes `after`.
    bool Transition(LxGPUResource::StateType before, LxGPUResource::StateType after) override
    {
        return LxD3D12GPUResourceManager::RecordTransition(this, before, after);
    }
    bool UAVBarrier() override { return LxD3D12GPUResourceManager::RecordUAVBarrier(this); }
    // The whole of `source`, of the same kind and size, into this resource; both return to their states.
    bool CopyResource(LxGPUResource* source) override { return LxD3D12GPUResourceManager::RecordCopy(this, source); }

protected:
    LxGPUSamplingResourceView* CreateSamplingView(const LxGPUResourceViewDescription& desc) override
    {
        return new (std::nothrow) LxD3D12View<LxGPUSamplingResourceView>(this, desc);
    }
    LxGPURenderableResourceView* CreateRenderableView(const LxGPUResourceViewDescription& desc) override
    {
        return new (std::nothrow) LxD3D12View<LxGPURenderableResourceView>(this, desc);
    }
    LxGPUDepthStencilResourceView* CreateDepthStencilView(const LxGPUResourceViewDescription& desc) override
    {
        return new (std::nothrow) LxD3D12View<LxGPUDepthStencilResourceView>(this, desc);
    }
    LxGPUUnorderedAccessView* CreateUnorderedAccessView(const LxGPUResourceViewDescription& desc) override
    {
        return new (std::nothrow) LxD3D12UnorderedAccessView(this, desc);
    }
};
