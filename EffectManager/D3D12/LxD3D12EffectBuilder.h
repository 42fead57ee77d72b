// LxD3D12EffectBuilder: the effect builder for Direct3D 12. On top of the generic builder it compiles each shader
// with the platform compiler (through the effect manager's shader cache when there is a manager), checks the
// compiled shader against the effect by reflection, backs the effect parameters with the constant buffers the
// shaders declare, and gives every pass a root signature and pipeline state (LxD3D12EffectPass,
// LxD3D12ComputePass) and every sampler a Direct3D 12 description (LxD3D12Sampler).
//
// Compilation: the shader code is preprocessed, the macros (the manager's defines and "LX_3D_API_D3D12") are
// prepended as "#define" lines, the profile is the "Profile" option or the stage prefix with the suffix of the
// device's feature level (9_1/9_2 "_2_0", 9_3 "_3_0", 10_0 "_4_0", 10_1 "_4_1", 11_0/12_0/12_1 "_5_0"; any other
// level, 11_1 included, is refused with "Unknown feature level"), and the options "AvoidFlowControl",
// "PreferFlowControl", "SkipOptimization" and "Debug" become compiler flags. Compiler messages are logged with their
// positions mapped back to the effect file (LxShaderLineMap).
//
// The device and compiler are not owned and must outlive the builder; the passes made keep their device objects.
// Without a device the builder still compiles and reflects (a checking tool), and FinalizePass fails.
#pragma once

#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxShaderCompiler.h"

#include <d3d12.h>

class LxD3D12Effect;
class LxD3D12Shader;

class LX_API LxD3D12EffectBuilder : public LxEffectBuilder
{
public:
    // `compiler` null: the builder uses a compiler of its own.
    LxD3D12EffectBuilder(ID3D12Device* device, D3D_FEATURE_LEVEL featureLevel, LxShaderCompiler* compiler);
    ~LxD3D12EffectBuilder() override;

    // The profile suffix of a feature level ("_5_0"), or null for a level the builder does not know.
    static const char* GetProfileSuffix(D3D_FEATURE_LEVEL level);
    // Without a device, FinalizePass accepts every pass (compile-and-reflect checking only).
    void SetCheckOnly(bool checkOnly) { m_bCheckOnly = checkOnly; }

    bool ValidateShaderAnnotations(LxShaderType type, const LxAnnotationMap& options, LxShadingLanguage& language,
                                   LxString& entryPoint, LxString& dumpFile) override;
    LxEffect* CreateEffect(const LxString& name) override;
    LxEffectPass* CreatePass(const LxString& name, LxEffectTechnique* technique) override;
    LxSampler* CreateSampler(const LxString& name, LxEffect* effect, const LxAnnotationMap* annotations,
                             const LxSampler* templateSampler) override;
    LxCountedPtr<LxEffectShader> CompileShader(LxShaderType type, const LxShaderCodeBlock& code,
                                               const LxString& entryPoint, LxShadingLanguage language,
                                               const LxAnnotationMap& options,
                                               const LxArray<LxShaderMacro>& macros) override;
    bool CompileBinaryShaderPair(const LxString& fileName, const LxCountedPtr<LxMemoryBuffer>& data) override;
    bool FinalizePass(LxEffectPass* pass) override;

private:
    // Fills the shader's reflection tables against `effect`; false after reporting every problem found.
    bool Reflect(LxD3D12Shader& shader, LxD3D12Effect& effect);

    ID3D12Device* m_pDevice;
    D3D_FEATURE_LEVEL m_featureLevel;
    LxShaderCompiler* m_pCompiler;
    LxShaderCompiler* m_pOwnCompiler = nullptr;
    bool m_bCheckOnly = false;
};
