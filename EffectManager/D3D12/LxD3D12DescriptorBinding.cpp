#include "EffectManager/D3D12/LxD3D12DescriptorBinding.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxEffect.h"

bool LxD3D12DescriptorBinding::BindTextures(LxEffect& effect, const LxArray<LxTextureSlot*>& slots, const char* who,
                                            ID3D12GraphicsCommandList* list, D3D12_GPU_DESCRIPTOR_HANDLE* table)
{
    (void)list;
    (void)table;
    bool ok = true;
    for (LxTextureSlot* slot : slots)
    {
        if (slot && !effect.GetBoundTexture(slot))
        {
            LX_ERROR("%s: No resource bound to LxTextureSlot.", who);
            ok = false;
        }
    }
    if (ok)
        LX_ERROR("%s: Texture tables are not available without shader-visible frame descriptors.", who);
    return false;
}

bool LxD3D12DescriptorBinding::BindUAVs(LxEffect& effect, const LxArray<LxUAVSlot*>& slots, unsigned int first,
                                        const char* who, ID3D12GraphicsCommandList* list,
                                        D3D12_GPU_DESCRIPTOR_HANDLE* table)
{
    (void)list;
    (void)table;
    (void)first;
    bool ok = true;
    for (LxUAVSlot* slot : slots)
    {
        if (slot && !effect.GetBoundUAV(slot))
        {
            LX_ERROR("%s: No resource bound to LxUAVSlot.", who);
            ok = false;
        }
    }
    if (ok)
        LX_ERROR("%s: UAV tables are not available without shader-visible frame descriptors.", who);
    return false;
}

bool LxD3D12DescriptorBinding::BindSamplers(const LxArray<LxSampler*>& samplers, D3D12_GPU_DESCRIPTOR_HANDLE* table)
{
    (void)samplers;
    (void)table;
    return false;
}
