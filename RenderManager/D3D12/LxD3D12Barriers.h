// Resource-barrier descriptions shared by the Direct3D 12 render manager, resource manager and their tests.
// Plain value builders: no device calls, no ownership, callable from any thread.
#pragma once

#include <d3d12.h>

// A transition of every subresource of `resource` from `before` to `after`.
inline D3D12_RESOURCE_BARRIER LxD3D12TransitionBarrier(ID3D12Resource* resource, D3D12_RESOURCE_STATES before,
                                                       D3D12_RESOURCE_STATES after)
{
    D3D12_RESOURCE_BARRIER barrier = {};
    barrier.Type = D3D12_RESOURCE_BARRIER_TYPE_TRANSITION;
    barrier.Transition.pResource = resource;
    barrier.Transition.Subresource = D3D12_RESOURCE_BARRIER_ALL_SUBRESOURCES;
    barrier.Transition.StateBefore = before;
    barrier.Transition.StateAfter = after;
    return barrier;
}
