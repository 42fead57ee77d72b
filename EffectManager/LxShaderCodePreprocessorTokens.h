// Internal to LxShaderCodePreprocessor: the pieces its scanner (LxShaderCodePreprocessor.l) returns.
#pragma once

enum LxShaderPPToken
{
    LX_PP_END = 0,
    LX_PP_TEXT = 1,
    LX_PP_NEWLINE = 2,
    LX_PP_INCLUDE = 3,
    LX_PP_INSERT = 4,
    LX_PP_INCLUDE_MISSING = 5,
    LX_PP_INSERT_MISSING = 6
};

void* LxShaderPPCreate(const char* text, unsigned int length);
// The next piece and its text (valid until the next call).
int LxShaderPPNext(void* scanner, const char** text, unsigned int* length);
void LxShaderPPDestroy(void* scanner);
