// LxEffectShader: one shader stage of a pass: its source as captured from the effect file, the entry point,
// language and options, and the preprocessed text handed to the compiler. The platform builder derives from it to
// add the compiled code and its reflection. Passes share shaders (inherited and override passes point at the same
// object) through LxCountedPtr; a shader is immutable once built.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxShaderCodeBlock.h"
#include "EffectManager/LxShaderType.h"

class LX_API LxEffectShader
{
public:
    LxEffectShader(LxShaderType type, const LxShaderCodeBlock& code, const LxString& entryPoint,
                   LxShadingLanguage language, const LxAnnotationMap& options);
    virtual ~LxEffectShader() = default;
    LxEffectShader(const LxEffectShader&) = delete;
    LxEffectShader& operator=(const LxEffectShader&) = delete;

    LxShaderType GetType() const { return m_type; }
    const LxShaderCodeBlock& GetCode() const { return m_code; }
    const LxString& GetEntryPoint() const { return m_entryPoint; }
    LxShadingLanguage GetLanguage() const { return m_language; }
    const LxAnnotationMap& GetOptions() const { return m_options; }

    // The text after "$include"/"$insert" expansion, with its "#line" directives.
    const LxString& GetPreprocessedSource() const { return m_preprocessed; }
    void SetPreprocessedSource(const LxString& text) { m_preprocessed = text; }

private:
    LxShaderType m_type;
    LxShaderCodeBlock m_code;
    LxString m_entryPoint;
    LxShadingLanguage m_language;
    LxAnnotationMap m_options;
    LxString m_preprocessed;
};
