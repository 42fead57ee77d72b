// LxD3D12Sampler: an effect sampler on Direct3D 12: a D3D12_SAMPLER_DESC that the sampler states edit.
//
// A new sampler copies its template's description (the default sampler of the effect manager) or starts from
// MIN_MAG_MIP_LINEAR filtering, WRAP addressing, no LOD bias, MaxAnisotropy 0, ComparisonFunc ALWAYS, a (0, 0, 0, 0)
// border and the LOD range [0, FLT_MAX]. States are checked as they come; errors go through the builder that
// created the sampler (with the effect file's position) until CreateResources, through the log afterwards.
#pragma once

#include "EffectManager/LxSampler.h"

#include <d3d12.h>

class LxEffectBuilder;

class LX_API LxD3D12Sampler : public LxSampler
{
public:
    LxD3D12Sampler(const LxString& name, LxEffect* effect, const LxAnnotationMap* annotations,
                   const LxSampler* templateSampler, LxEffectBuilder* reporter);

    const D3D12_SAMPLER_DESC& GetDesc() const { return m_desc; }
    static void SetDefaults(D3D12_SAMPLER_DESC* desc);
    // Interprets one sampler state into `desc`: false with the message in `error`.
    static bool ApplyState(const LxString& name, const LxStateValue& value, D3D12_SAMPLER_DESC* desc, LxString* error);

    bool AddState(const LxString& name, const LxStateValue& value) override;
    // Checks the description as a whole; "Error finalizing DX12 sampler!" when the device would refuse it.
    bool CreateResources() override;

private:
    D3D12_SAMPLER_DESC m_desc;
    LxEffectBuilder* m_pReporter;
};
