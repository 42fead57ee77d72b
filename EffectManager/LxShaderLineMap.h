// LxShaderLineMap: maps lines of the text handed to the shader compiler back to the effect file and line they came
// from, using the "#line N "file"" directives the shader-code preprocessor writes. Compilers that ignore "#line"
// report positions in the generated text; MapMessages rewrites those positions so that a message points at what the
// user wrote.
//
// Positions are recognised at the start of a message line in both forms compilers use:
//   name(line,col...): text   ->   file(mapped,col...): text
//   name:line:col: text       ->   file(mapped,col): text
// where name is the source name the compiler was given. Lines before the first directive (the macro lines) and
// messages naming other files (a compiler that honours "#line" already names the effect file) stay as they are.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"

class LX_API LxShaderLineMap
{
public:
    explicit LxShaderLineMap(const LxString& compilerText);

    // The origin of line `generatedLine` (1-based) of the compiler text; false where it has none.
    bool Lookup(unsigned int generatedLine, LxString* file, unsigned int* line) const;
    LxString MapMessages(const LxString& messages, const LxString& sourceName) const;

private:
    struct Origin
    {
        int file; // index into m_files; -1 for none
        unsigned int line;
    };
    LxArray<LxString> m_files;
    LxArray<Origin> m_lines; // index = generated line - 1
};
