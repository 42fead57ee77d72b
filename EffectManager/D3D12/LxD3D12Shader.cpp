#include "EffectManager/D3D12/LxD3D12Shader.h"

LxD3D12Shader::LxD3D12Shader(LxShaderType type, const LxShaderCodeBlock& code, const LxString& entryPoint,
                             LxShadingLanguage language, const LxAnnotationMap& options)
    : LxEffectShader(type, code, entryPoint, language, options)
{
}

D3D12_SHADER_BYTECODE LxD3D12Shader::GetD3D12ByteCode() const
{
    D3D12_SHADER_BYTECODE code = {nullptr, 0};
    if (m_byteCode)
    {
        code.pShaderBytecode = m_byteCode->GetData();
        code.BytecodeLength = m_byteCode->GetSize();
    }
    return code;
}
