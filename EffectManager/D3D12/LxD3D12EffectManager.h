// LxD3D12EffectManager: the effect manager on Direct3D 12. Its builders are LxD3D12EffectBuilder on the render
// manager's device and feature level, compiling with the manager's LxD3D12ShaderCompiler (whose compile count shows
// what the shader cache saved).
//
// Install it before anything asks for the effect manager: RegisterCreateFunction() makes GetPtr create it, Init()
// installs one at once (the generic manager that GetPtr would otherwise create compiles nothing). The render manager
// must be initialised before effects load; without it builds fail with a message.
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
