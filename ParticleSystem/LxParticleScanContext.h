// Internal to the particle parser: the state the scanner (LxParticleScanner.l) and the grammar
// (LxParticleParser.y) share for one parse. Not part of the public API.
#pragma once

#include <csetjmp>

class LxParticleParser;

struct LxParticleScanContext
{
    LxParticleParser* parser = nullptr;
    unsigned int line = 1;
    // Set by an internal failure of the generated scanner: from then on the scan reports the end of the input.
    bool failed = false;
    // While a token is being scanned: where an internal failure jumps to (it leaves only generated scanner code,
    // which holds nothing that needs unwinding).
    std::jmp_buf* failureJump = nullptr;
};

// Scanner entry points (LxParticleScanner.l).
// Scans `size` bytes at `data` in place: data[size] and data[size + 1] must be 0 (flex's end-of-buffer marks).
void* LxParticleScannerCreate(LxParticleScanContext* context, char* data, unsigned int size);
void LxParticleScannerDestroy(void* scanner);
// Grammar entry point (LxParticleParser.y): 0 on success.
int LxParticleGrammarParse(LxParticleParser* parser, void* scanner);
