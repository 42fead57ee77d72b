// LxD3D12DescriptorHeap: a Direct3D 12 descriptor heap whose slots LxDescriptorHeap hands out and recycles behind the
// frame fence. This class makes the heap, turns slot indices into handles (start + index x increment) and writes
// descriptors into slots (CreatePlaced), checking that the kind of descriptor suits the heap.
//
// The heap is owned (released by Release or the destructor). Slot allocation is thread-safe (LxDescriptorHeap);
// writing a slot is safe from any thread that owns the slot. Failures are logged and answered with false or -1.
#pragma once

#include "GPUResourceManager/LxDescriptorHeap.h"

#include <d3d12.h>

class LX_API LxD3D12DescriptorHeap : public LxDescriptorHeap
{
public:
    enum DescriptorKind
    {
        DESCRIPTOR_CBV,
        DESCRIPTOR_SRV,
        DESCRIPTOR_UAV,
        DESCRIPTOR_SAMPLER,
        DESCRIPTOR_RTV,
        DESCRIPTOR_DSV,
    };

    LxD3D12DescriptorHeap() = default;
    ~LxD3D12DescriptorHeap() override;

    // A heap of `count` descriptors of `type`; shader-visible heaps only for CBV/SRV/UAV and samplers.
    bool Create(ID3D12Device* device, D3D12_DESCRIPTOR_HEAP_TYPE type, unsigned count, bool shaderVisible);
    void Release();

    ID3D12DescriptorHeap* GetHeap() const { return m_pHeap; }
    D3D12_DESCRIPTOR_HEAP_TYPE GetType() const { return m_type; }
    D3D12_CPU_DESCRIPTOR_HANDLE GetCPUHandle(unsigned index) const;
    // Zero for a heap that shaders cannot see.
    D3D12_GPU_DESCRIPTOR_HANDLE GetGPUHandle(unsigned index) const;

    // Writes a descriptor of `kind` for `resource` into slot `index`. `viewDesc` points at the matching
    // D3D12_*_VIEW_DESC / D3D12_SAMPLER_DESC (may be null for views but not for constant buffers and samplers).
    // `counter` is the append/consume counter of a structured-buffer UAV (null: none).
    // Refuses a kind the heap's type cannot hold ("Wrong type of descriptor passed to CreatePlaced") and a slot
    // outside the heap.
    bool CreatePlaced(unsigned index, DescriptorKind kind, ID3D12Resource* resource, const void* viewDesc,
                      ID3D12Resource* counter = nullptr);

    // The heap type that holds descriptors of `kind`.
    static D3D12_DESCRIPTOR_HEAP_TYPE GetHeapTypeFor(DescriptorKind kind);

private:
    ID3D12Device* m_pDevice = nullptr; // not owned: the device outlives its heaps
    ID3D12DescriptorHeap* m_pHeap = nullptr;
    D3D12_DESCRIPTOR_HEAP_TYPE m_type = D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV;
    unsigned m_nIncrement = 0;
    bool m_bShaderVisible = false;
};
