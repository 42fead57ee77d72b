// LxShaderCodePreprocessor: expands "$include name" and "$insert name" in shader code with the effect's named code
// blocks, and emits "#line" directives so that compiler messages point at lines of the effect file.
//
// "$include" inserts a block once per shader (a block already included in this expansion is skipped silently);
// "$insert" inserts it every time, and inserting a block that is being expanded is a cycle and fails. Expansion is
// recursive. Messages are logged as errors naming the file and line of the innermost block being expanded. The
// output is bounded (LX_MAX_PREPROCESSED_SIZE), so that blocks inserting each other many times cannot exhaust
// memory. Not thread-safe; one preprocessor per thread.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "EffectManager/LxShaderCodeBlock.h"

class LX_API LxShaderCodePreprocessor
{
public:
    enum
    {
        LX_MAX_PREPROCESSED_SIZE = 16 << 20
    };

    LxShaderCodePreprocessor() = default;

    // The named blocks "$include" and "$insert" may name (not owned).
    void SetCodeBlocks(const LxArray<LxShaderCodeBlock*>* blocks) { m_pBlocks = blocks; }

    // Expands `code` (which begins on `startLine` of `fileName`) for a shader in `language`. False after
    // reporting the failure; `output` then holds what was produced so far.
    bool Process(const LxString& code, unsigned int startLine, const LxString& fileName, LxShadingLanguage language,
                 LxString& output);

private:
    struct Level
    {
        LxString name; // empty for the shader body itself
        LxString fileName;
        unsigned int line;
    };

    bool Expand(const LxString& text, LxString& output);
    const LxShaderCodeBlock* FindBlock(const LxString& name) const;
    void Report(const char* fmt, ...) LX_PRINTF_FORMAT(2, 3);
    static void AppendLineDirective(LxString& output, unsigned int line, const LxString& fileName);

    const LxArray<LxShaderCodeBlock*>* m_pBlocks = nullptr;
    LxShadingLanguage m_language = LX_SHADING_LANGUAGE_HLSL;
    LxArray<Level> m_stack;
    LxArray<LxString> m_included;
};
