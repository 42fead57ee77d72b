// LxD3D12ViewFactories: the view factories every Direct3D 12 resource class shares, as a base placed between the
// portable resource class and the platform one (class LxD3D12Texture3D : public LxD3D12ViewFactories<LxGPUTexture3D>).
// The portable getters have already checked the description against the resource (IsViewValid) when a factory
// runs; the views made here find their ID3D12Resource and descriptor heap when they are created.
//
// Header-only template; each factory returns a new, not yet created view (null only when memory runs out).
#pragma once

#include "GPUResourceManager/D3D12/LxD3D12UnorderedAccessView.h"
#include "GPUResourceManager/D3D12/LxD3D12View.h"

#include <new>

template <class Base>
class LxD3D12ViewFactories : public Base
{
public:
    using Base::Base;

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
