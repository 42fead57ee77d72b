#include "EffectManager/D3D12/LxD3D12ComputePass.h"

#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12Shader.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

LxD3D12ComputePass::LxD3D12ComputePass(const LxString& name, LxEffectTechnique* technique, LxEffectBuilder* reporter)
    : LxD3D12EffectPass(name, technique, reporter)
{
}

bool LxD3D12ComputePass::SetStreamMap(LxStreamMap* map)
{
    if (!map)
        return LxEffectPass::SetStreamMap(nullptr);
    Report("SetStreamMap() invalid for LxD3D12ComputePass.");
    return false;
}

bool LxD3D12ComputePass::SetStreamOutMap(unsigned int index, LxStreamMap* map)
{
    if (!map)
        return LxEffectPass::SetStreamOutMap(index, nullptr);
    Report("SetStreamOutMap() invalid for LxD3D12ComputePass.");
    return false;
}

bool LxD3D12ComputePass::Finalize(ID3D12Device* device)
{
    m_pReporter = nullptr;
    return FinalizeCompute(device);
}

bool LxD3D12ComputePass::FinalizeCompute(ID3D12Device* device)
{
    if (!device)
    {
        LX_ERROR("LxD3D12ComputePass::Finalize.  No Direct3D 12 device");
        return false;
    }
    const LxShaderType stage = LX_COMPUTE_SHADER;
    if (!CreateRootSignature(device, &stage, 1, 0))
        return false;
    const LxD3D12Shader* cs = GetD3D12Shader(LX_COMPUTE_SHADER);
    D3D12_COMPUTE_PIPELINE_STATE_DESC desc = {};
    desc.pRootSignature = m_pRootSignature;
    if (cs)
        desc.CS = cs->GetD3D12ByteCode();
    const HRESULT hr = device->CreateComputePipelineState(&desc, IID_PPV_ARGS(&m_pPipelineState));
    if (FAILED(hr))
    {
        LX_ERROR("CreateComputePipelineState failed. ret=%x\n", unsigned(hr));
        m_pPipelineState = nullptr;
        return false;
    }
    return true;
}

bool LxD3D12ComputePass::Bind(LxEffect& effect)
{
    LxD3D12RenderManager* renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    ID3D12GraphicsCommandList* list = renderManager ? renderManager->GetCurrentD3D12CommandList() : nullptr;
    if (!list || !m_pPipelineState || !m_pRootSignature)
    {
        LX_ERROR("LxD3D12ComputePass::Bind.  No command list to record on, or the pass was not finalized");
        return false;
    }
    list->SetComputeRootSignature(m_pRootSignature);
    list->SetPipelineState(m_pPipelineState);
    return BindRootParameters(list, effect, true, "LxD3D12ComputePass");
}
