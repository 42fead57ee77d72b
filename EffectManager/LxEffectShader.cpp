#include "EffectManager/LxEffectShader.h"

LxEffectShader::LxEffectShader(LxShaderType type, const LxShaderCodeBlock& code, const LxString& entryPoint,
                               LxShadingLanguage language, const LxAnnotationMap& options)
    : m_type(type), m_code(code), m_entryPoint(entryPoint), m_language(language), m_options(options)
{
}
