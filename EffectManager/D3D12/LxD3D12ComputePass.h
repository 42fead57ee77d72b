// LxD3D12ComputePass: a pass of a compute technique: one compute shader, its root signature (constant buffers as
// root CBVs, one SRV table from t0, one UAV table from u0, one sampler table from s0) and a compute pipeline state.
// Bind sets them on the render manager's current list through the compute setters; the application dispatches.
// Stream maps and stream-out maps make no sense here and are refused.
#pragma once

#include "EffectManager/D3D12/LxD3D12EffectPass.h"

class LX_API LxD3D12ComputePass : public LxD3D12EffectPass
{
public:
    LxD3D12ComputePass(const LxString& name, LxEffectTechnique* technique, LxEffectBuilder* reporter);

    bool SetStreamMap(LxStreamMap* map) override;
    bool SetStreamOutMap(unsigned int index, LxStreamMap* map) override;
    bool Finalize(ID3D12Device* device) override;
    bool Bind(LxEffect& effect) override;

private:
    bool FinalizeCompute(ID3D12Device* device);
};
