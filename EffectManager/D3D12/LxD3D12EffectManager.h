// LxD3D12EffectManager: the effect manager on Direct3D 12. Its builders are LxD3D12EffectBuilder on the render
// manager's device and feature level, compiling with the manager's LxD3D12ShaderCompiler (whose compile count shows
// what the shader cache saved).
//
// The library registers it when it loads (RegisterCreateFunction), so LxEffectManager::GetPtr creates it; Init()
// installs one at once. Effects built before the Direct3D 12 render manager has a device are built by the generic
// builder (parsed and checked, not compiled; they cannot draw): initialise the render manager first.
#pragma once

#include "EffectManager/D3D12/LxD3D12ShaderCompiler.h"
#include "EffectManager/LxEffectManager.h"

class LX_API LxD3D12EffectManager : public LxEffectManager
{
public:
    // Installs a new Direct3D 12 manager as the singleton; false when a manager exists already.
    static bool Init();
    // Makes LxEffectManager::GetPtr create this class.
    static void RegisterCreateFunction();
    // The singleton when it is this class, else null.
    static LxD3D12EffectManager* GetD3D12Ptr();

    LxD3D12ShaderCompiler& GetCompiler() { return m_compiler; }

protected:
    LxD3D12EffectManager() = default;
    ~LxD3D12EffectManager() override = default;

    LxEffectBuilder* CreateEffectBuilder(bool isDefaultEffect) override;

private:
    LxD3D12ShaderCompiler m_compiler;
};
