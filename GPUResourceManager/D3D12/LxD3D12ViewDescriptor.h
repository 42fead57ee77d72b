// LxD3D12ViewDescriptor: the CPU descriptor behind a Direct3D 12 view, the half the four platform view classes share.
// Shader-resource and unordered-access descriptors live in the resource manager's CBV/SRV/UAV heap that shaders do
// not see (draw-time binding copies them into a frame range of the shader-visible heap); render-target and
// depth-stencil descriptors in its RTV and DSV heaps.
//
// The descriptor is written from the view's description: buffers as typed, structured (format unknown on a
// structured buffer) or raw (R32_TYPELESS, or format unknown on any other buffer) ranges, the description's range
// of the buffer's own elements turned into units of the view; textures as 2D, 2D array, multisampled, cube, cube
// array (whole cubes of a cube array, else a 2D array of its faces) or 3D with their mip and slice ranges. Depth
// formats and their typeless forms are read through the matching colour format and written through the matching
// depth format.
// An unordered-access view of a structured buffer with the append flag gets its own counter (a 4-byte buffer kept
// in the unordered-access state), which SetCounter sets on a list; raw and typed views cannot carry one here and
// are made without it (a warning says so). The counter goes with the view, at once: keep an append view alive until
// the frames that use it are done.
//
// The slot goes back to its heap behind the frame fence when the view is released or dies; a view that outlives the
// resource manager that made it leaves the heap alone. Needs the LxD3D12GPUResourceManager singleton, initialised.
// One thread at a time per view. Failures are logged and answered with false.
#pragma once

#include "Common/LxApi.h"

#include <d3d12.h>

class LxD3D12DescriptorHeap;
class LxGPUResourceView;

class LX_API LxD3D12ViewDescriptor
{
public:
    LxD3D12ViewDescriptor() = default;
    virtual ~LxD3D12ViewDescriptor();
    LxD3D12ViewDescriptor(const LxD3D12ViewDescriptor&) = delete;
    LxD3D12ViewDescriptor& operator=(const LxD3D12ViewDescriptor&) = delete;

    // Takes a slot and writes the descriptor of `view` into it; a second call replaces the first descriptor.
    bool CreateDescriptor(const LxGPUResourceView& view);
    void ReleaseDescriptor();

    bool HasDescriptor() const { return m_nSlot >= 0; }
    // Null handle (ptr 0) without a descriptor.
    D3D12_CPU_DESCRIPTOR_HANDLE GetCPUHandle() const { return m_handle; }
    // The append/consume counter (null for views without one), and the recording of a copy that sets it to
    // `value` on `list` (upload memory of the current frame); false (logged) without a counter.
    ID3D12Resource* GetCounterResource() const { return m_pCounter; }
    bool SetCounter(ID3D12GraphicsCommandList* list, unsigned value);

    // The resource manager's heap generation when the descriptor was written.
    unsigned GetHeapGeneration() const { return m_nHeapGeneration; }

private:
    LxD3D12DescriptorHeap* m_pHeap = nullptr;
    int m_nSlot = -1;
    unsigned m_nHeapGeneration = 0;
    D3D12_CPU_DESCRIPTOR_HANDLE m_handle = {};
    ID3D12Resource* m_pCounter = nullptr;
};
