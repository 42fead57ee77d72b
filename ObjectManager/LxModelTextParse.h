// Token helpers of the model archive's text files (internal to the library): one line split on single blanks,
// and strict number parsing that does not depend on the width of long (32 bits on Windows).
#pragma once

#include "Common/LxArray.h"
#include "Common/LxString.h"

// Exact comparison with a literal, lengths first. Text read from a file may hold zero bytes, which a plain
// comparison with a C string would take for the literal's end.
bool LxTextIs(const LxString& text, const char* literal);
// True when the text holds a zero byte (never part of a valid token).
bool LxHasZeroByte(const LxString& text);
// The blank-separated tokens of a line (runs of blanks give no empty tokens), appended to `tokens`.
void LxSplitTokens(const LxString& line, LxArray<LxString>& tokens);
// Decimal digits only, at most 0xFFFFFFFF.
bool LxParseUInt32(const LxString& text, unsigned int* out);
// An optional '-' and decimal digits, within the range of a 32-bit int.
bool LxParseInt32(const LxString& text, int* out);
// A floating-point number (strtod syntax) that fits a float; the whole token must be used.
bool LxParseFloat(const LxString& text, float* out);
