// LxD3D12DescriptorBinding: the descriptor tables of a pass at draw time. The views bound to an effect's texture and
// UAV slots, and the samplers a shader uses, are copied into a contiguous range of shader-visible descriptors that
// is valid for the current frame; the range's GPU handle is what the root table parameter gets.
//
// A slot with nothing bound is reported as "<who>: No resource bound to LxTextureSlot." (or LxUAVSlot) and the
// table is not set. Registers a shader leaves unused get a null descriptor of the slot kind.
#pragma once

#include "Common/LxArray.h"

#include <d3d12.h>

class LxEffect;
class LxSampler;
class LxTextureSlot;
class LxUAVSlot;

class LX_API LxD3D12DescriptorBinding
{
public:
    static bool BindTextures(LxEffect& effect, const LxArray<LxTextureSlot*>& slots, const char* who,
                             ID3D12GraphicsCommandList* list, D3D12_GPU_DESCRIPTOR_HANDLE* table);
    // `slots` indexed by register; the table covers the registers from `first` on.
    static bool BindUAVs(LxEffect& effect, const LxArray<LxUAVSlot*>& slots, unsigned int first, const char* who,
                         ID3D12GraphicsCommandList* list, D3D12_GPU_DESCRIPTOR_HANDLE* table);
    static bool BindSamplers(const LxArray<LxSampler*>& samplers, D3D12_GPU_DESCRIPTOR_HANDLE* table);
};
