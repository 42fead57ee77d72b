// LxShaderCodeBlock: a piece of shader source captured from an effect file: a named code block ("StartHLSL name"
// ... "EndHLSL") or the body of a shader stage. The file name and first line let compiler messages and the
// preprocessor's "#line" directives point back into the effect file. A plain value type.
#pragma once

#include "Common/LxString.h"
#include "EffectManager/LxShaderType.h"

struct LxShaderCodeBlock
{
    LxShaderCodeBlock() = default;
    LxShaderCodeBlock(const LxString& blockName, LxShadingLanguage lang, const LxString& code, const LxString& file,
                      unsigned int line)
        : name(blockName), language(lang), text(code), fileName(file), firstLine(line)
    {
    }

    LxString name; // empty for a shader body
    LxShadingLanguage language = LX_SHADING_LANGUAGE_HLSL;
    LxString text;
    LxString fileName;
    unsigned int firstLine = 1;
};
