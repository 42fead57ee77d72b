#include "EffectManager/D3D12/LxD3D12DescriptorBinding.h"

#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12Sampler.h"
#include "EffectManager/LxEffect.h"
#include "GPUResourceManager/D3D12/LxD3D12GPUResourceManager.h"

namespace
{
const D3D12_DESCRIPTOR_HEAP_TYPE kViews = D3D12_DESCRIPTOR_HEAP_TYPE_CBV_SRV_UAV;

// A contiguous shader-visible range of `count` descriptors for this frame; false after reporting.
bool AllocateRange(LxD3D12GPUResourceManager* manager, D3D12_DESCRIPTOR_HEAP_TYPE type, unsigned int count,
                   const char* who, D3D12_CPU_DESCRIPTOR_HANDLE* cpu, D3D12_GPU_DESCRIPTOR_HANDLE* gpu)
{
    if (!manager || !manager->GetDevice())
    {
        LX_ERROR("%s: No Direct3D 12 resource manager to bind descriptor tables with.", who);
        return false;
    }
    if (!manager->AllocateFrameDescriptors(type, count, cpu, gpu))
    {
        LX_ERROR("%s: No shader-visible descriptors left for this frame.", who);
        return false;
    }
    return true;
}
} // namespace

bool LxD3D12DescriptorBinding::BindTextures(LxEffect& effect, const LxArray<LxTextureSlot*>& slots, const char* who,
                                            ID3D12GraphicsCommandList* list, D3D12_GPU_DESCRIPTOR_HANDLE* table)
{
    bool ok = true;
    for (LxTextureSlot* slot : slots)
    {
        if (slot && !effect.GetBoundTexture(slot))
        {
            LX_ERROR("%s: No resource bound to LxTextureSlot.", who);
            ok = false;
        }
    }
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    D3D12_CPU_DESCRIPTOR_HANDLE cpu;
    if (!ok || !AllocateRange(manager, kViews, slots.GetCount(), who, &cpu, table))
        return false;
    ID3D12Device* device = manager->GetDevice();
    const unsigned int step = device->GetDescriptorHandleIncrementSize(kViews);
    for (unsigned int i = 0; i < slots.GetCount(); ++i)
    {
        D3D12_CPU_DESCRIPTOR_HANDLE target = {cpu.ptr + SIZE_T(i) * step};
        if (!slots[i])
        {
            // A register the shader does not use: a null view keeps the table valid.
            D3D12_SHADER_RESOURCE_VIEW_DESC null = {};
            null.Format = DXGI_FORMAT_R8G8B8A8_UNORM;
            null.ViewDimension = D3D12_SRV_DIMENSION_TEXTURE2D;
            null.Shader4ComponentMapping = D3D12_DEFAULT_SHADER_4_COMPONENT_MAPPING;
            null.Texture2D.MipLevels = 1;
            device->CreateShaderResourceView(nullptr, &null, target);
            continue;
        }
        LxCountedPtr<LxGPUSamplingResourceView> view = effect.GetBoundTexture(slots[i]);
        D3D12_CPU_DESCRIPTOR_HANDLE source;
        if (!LxD3D12GPUResourceManager::ResolveView(view.Get(), &source))
        {
            LX_ERROR("%s: The view bound to texture slot '%s' has no descriptor.", who, slots[i]->GetName().c_str());
            ok = false;
            continue;
        }
        device->CopyDescriptorsSimple(1, target, source, kViews);
        if (view->GetResource())
            LxD3D12GPUResourceManager::Transition(
                list, view->GetResource(),
                D3D12_RESOURCE_STATES(D3D12_RESOURCE_STATE_PIXEL_SHADER_RESOURCE |
                                      D3D12_RESOURCE_STATE_NON_PIXEL_SHADER_RESOURCE));
    }
    return ok;
}

bool LxD3D12DescriptorBinding::BindUAVs(LxEffect& effect, const LxArray<LxUAVSlot*>& slots, unsigned int first,
                                        const char* who, ID3D12GraphicsCommandList* list,
                                        D3D12_GPU_DESCRIPTOR_HANDLE* table)
{
    bool ok = true;
    for (unsigned int i = first; i < slots.GetCount(); ++i)
    {
        if (slots[i] && !effect.GetBoundUAV(slots[i]))
        {
            LX_ERROR("%s: No resource bound to LxUAVSlot.", who);
            ok = false;
        }
    }
    const unsigned int count = slots.GetCount() > first ? slots.GetCount() - first : 0;
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    D3D12_CPU_DESCRIPTOR_HANDLE cpu;
    if (!ok || !AllocateRange(manager, kViews, count, who, &cpu, table))
        return false;
    ID3D12Device* device = manager->GetDevice();
    const unsigned int step = device->GetDescriptorHandleIncrementSize(kViews);
    for (unsigned int i = 0; i < count; ++i)
    {
        D3D12_CPU_DESCRIPTOR_HANDLE target = {cpu.ptr + SIZE_T(i) * step};
        LxUAVSlot* slot = slots[first + i];
        if (!slot)
        {
            D3D12_UNORDERED_ACCESS_VIEW_DESC null = {};
            null.Format = DXGI_FORMAT_R32_UINT;
            null.ViewDimension = D3D12_UAV_DIMENSION_TEXTURE2D;
            device->CreateUnorderedAccessView(nullptr, nullptr, &null, target);
            continue;
        }
        LxCountedPtr<LxGPUUnorderedAccessView> view = effect.GetBoundUAV(slot);
        D3D12_CPU_DESCRIPTOR_HANDLE source;
        if (!LxD3D12GPUResourceManager::ResolveView(view.Get(), &source))
        {
            LX_ERROR("%s: The view bound to UAV slot '%s' has no descriptor.", who, slot->GetName().c_str());
            ok = false;
            continue;
        }
        device->CopyDescriptorsSimple(1, target, source, kViews);
        if (view->GetResource())
            LxD3D12GPUResourceManager::Transition(list, view->GetResource(), D3D12_RESOURCE_STATE_UNORDERED_ACCESS);
    }
    return ok;
}

bool LxD3D12DescriptorBinding::BindSamplers(const LxArray<LxSampler*>& samplers, D3D12_GPU_DESCRIPTOR_HANDLE* table)
{
    LxD3D12GPUResourceManager* manager = LxD3D12GPUResourceManager::GetD3D12Ptr();
    D3D12_CPU_DESCRIPTOR_HANDLE cpu;
    if (!AllocateRange(manager, D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER, samplers.GetCount(), "LxD3D12EffectPass", &cpu,
                       table))
        return false;
    ID3D12Device* device = manager->GetDevice();
    const unsigned int step = device->GetDescriptorHandleIncrementSize(D3D12_DESCRIPTOR_HEAP_TYPE_SAMPLER);
    for (unsigned int i = 0; i < samplers.GetCount(); ++i)
    {
        const LxD3D12Sampler* sampler = dynamic_cast<const LxD3D12Sampler*>(samplers[i]);
        D3D12_SAMPLER_DESC desc;
        if (sampler)
            desc = sampler->GetDesc();
        else
            LxD3D12Sampler::SetDefaults(&desc);
        if (desc.MaxAnisotropy < 1)
            desc.MaxAnisotropy = 1;
        device->CreateSampler(&desc, D3D12_CPU_DESCRIPTOR_HANDLE{cpu.ptr + SIZE_T(i) * step});
    }
    return true;
}
