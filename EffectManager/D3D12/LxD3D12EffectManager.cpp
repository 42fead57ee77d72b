#include "EffectManager/D3D12/LxD3D12EffectManager.h"

#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12EffectBuilder.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

bool LxD3D12EffectManager::Init()
{
    return LxEffectManager::Init(new LxD3D12EffectManager());
}

void LxD3D12EffectManager::RegisterCreateFunction()
{
    LxEffectManager::SetCreateFunction([]() -> LxEffectManager* { return new LxD3D12EffectManager(); });
}

LxD3D12EffectManager* LxD3D12EffectManager::GetD3D12Ptr()
{
    return dynamic_cast<LxD3D12EffectManager*>(LxEffectManager::GetExistingPtr());
}

LxEffectBuilder* LxD3D12EffectManager::CreateEffectBuilder(bool isDefaultEffect)
{
    (void)isDefaultEffect;
    LxD3D12RenderManager* renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    if (!renderManager || !renderManager->GetDevice())
    {
        LX_ERROR("LxD3D12EffectManager::CreateEffectBuilder.  The Direct3D 12 render manager is not initialised");
        return nullptr;
    }
    return new LxD3D12EffectBuilder(renderManager->GetDevice(), renderManager->GetFeatureLevel(), &m_compiler);
}
