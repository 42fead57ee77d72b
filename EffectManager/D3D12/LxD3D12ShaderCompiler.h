// LxD3D12ShaderCompiler: the platform's HLSL compiler (D3DCompile) behind the effect system's compiler seam.
//
// The request's text already holds the macro lines, so no macro table is passed to D3DCompile; the request's flags
// are D3DCOMPILE_ bits and go through unchanged. Every call to D3DCompile is counted (GetCompileCount), which is how
// callers see that the shader cache answered instead.
//
// Compile may run on several threads at once (D3DCompile is reentrant; the counter is atomic).
#pragma once

#include "Common/LxInterlockedCounter.h"
#include "EffectManager/LxShaderCompiler.h"

class LX_API LxD3D12ShaderCompiler : public LxShaderCompiler
{
public:
    bool Compile(const LxShaderCompileRequest& request, LxCountedPtr<LxMemoryBuffer>* code,
                 LxString* messages) override;

    // Calls of D3DCompile since construction.
    unsigned int GetCompileCount() const { return static_cast<unsigned int>(m_nCompiles.Get()); }

private:
    LxInterlockedCounter m_nCompiles;
};
