#include "EffectManager/D3D12/LxD3D12EffectManager.h"

#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12EffectBuilder.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

namespace
{
// The library registers its platform manager when it loads, so LxEffectManager::GetRef() in an application is the
// Direct3D 12 manager without further calls.
struct RegisterD3D12EffectManager
{
    RegisterD3D12EffectManager() { LxD3D12EffectManager::RegisterCreateFunction(); }
} g_registerD3D12EffectManager;
} // namespace

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
    LxD3D12RenderManager* renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    if (!renderManager || !renderManager->GetDevice())
    {
        // No device yet (tools, device-free tests): the effect is built without compiling, as the generic manager
        // does; it cannot draw.
        LX_DEBUG("LxD3D12EffectManager::CreateEffectBuilder.  No Direct3D 12 device: effects are built uncompiled");
        return LxEffectManager::CreateEffectBuilder(isDefaultEffect);
    }
    return new LxD3D12EffectBuilder(renderManager->GetDevice(), renderManager->GetFeatureLevel(), &m_compiler);
}
