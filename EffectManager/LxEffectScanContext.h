// Internal to the effect parser: the state the scanner (LxEffectScanner.l) and the grammar (LxEffectParser.y)
// share for one parse, and the small values that travel on the grammar's stack. Not part of the public API.
#pragma once

#include "Common/LxArray.h"
#include "Common/LxString.h"

class LxEffectParser;
class LxEffectBuilder;

// A captured text (art notes, code block, shader body) with the line it began on.
struct LxEffectTextToken
{
    LxString text;
    unsigned int line;
};

struct LxEffectScanContext
{
    // One pushed input: an included file or the text of an expanded define.
    struct Frame
    {
        void* buffer; // the flex buffer of the input below this one
        LxString fileName;
        unsigned int line;
        bool isDefine;
    };

    LxEffectParser* parser = nullptr;
    LxEffectBuilder* builder = nullptr;
    LxString fileName;
    unsigned int line = 1;
    LxArray<Frame> frames;
    unsigned int defineDepth = 0;
    unsigned long long expandedBytes = 0; // bounded, so that self-multiplying defines cannot run away
    unsigned long long expandedLimit = 1ull << 20;

    int commentDepth = 0;
    LxString text;                    // text being captured
    unsigned int textLine = 0;        // line the capture began on
    const char* captureEnd = nullptr; // end keyword of a code capture
    unsigned int captureEndLength = 0;
    bool captureFirstLine = false;
};

// Scanner entry points (LxEffectScanner.l).
// Scans `size` bytes at `data` in place: data[size] and data[size + 1] must be 0 (flex's end-of-buffer marks).
// The bytes are modified while scanning and restored; they must outlive the scanner.
void* LxEffectScannerCreate(LxEffectScanContext* context, char* data, unsigned int size);
void LxEffectScannerDestroy(void* scanner);
// Switches the scanner to capture code up to `endKeyword` (a literal that outlives the capture).
void LxEffectScannerBeginCapture(void* scanner, const char* endKeyword);
// Grammar entry point (LxEffectParser.y): 0 on success.
int LxEffectGrammarParse(LxEffectParser* parser, void* scanner);
