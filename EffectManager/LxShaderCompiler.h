// LxShaderCompiler: the platform's shader compiler as the effect system sees it (the Direct3D 12 builder puts
// D3DCompile behind it; tests put a fake). Compilation goes through LxEffectManager::CompileShader, which asks the
// shader cache first when one is set.
//
// A request carries the full text the compiler gets: the "#define" lines of the macros followed by the
// preprocessed shader code (BuildSource). That text, with the entry point, option string and profile, identifies
// a cached result, so it must hold everything that changes the compiled code.
//
// Compile may be called from several builders at once only if the implementation says so; the base class keeps
// no state.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"

class LxAnnotationMap;
struct LxShaderMacro;

struct LxShaderCompileRequest
{
    LxString source;        // macros and preprocessed code, see LxShaderCompiler::BuildSource
    LxString entryPoint;    // "main" unless the shader's "EntryPoint" option says otherwise
    LxString profile;       // "vs_5_0", "ps_5_0", ...
    unsigned int flags = 0; // LxShaderCompiler::Flag bits
    LxString sourceName;    // the effect file, for the compiler's messages
};

class LX_API LxShaderCompiler
{
public:
    // Valued as the D3DCOMPILE_ bits they stand for, so the platform passes them through.
    enum Flag : unsigned int
    {
        FLAG_DEBUG = 0x1,
        FLAG_SKIP_OPTIMIZATION = 0x4,
        FLAG_AVOID_FLOW_CONTROL = 0x200,
        FLAG_PREFER_FLOW_CONTROL = 0x400,
    };

    virtual ~LxShaderCompiler() = default;

    // Compiles the request. True with the compiled code in `code`; false with the compiler's text (possibly empty)
    // in `messages`. Reports nothing itself: the caller knows the context the message needs.
    virtual bool Compile(const LxShaderCompileRequest& request, LxCountedPtr<LxMemoryBuffer>* code,
                         LxString* messages) = 0;

    // Whether bytes read back from the shader cache can be what Compile produced: a cache file may be truncated
    // (a crash while it was written) or damaged. The base accepts a well-formed shader container ("DXBC" or DXIL:
    // magic, total size equal to the data size, chunk table and chunks inside the data).
    virtual bool IsValidCompiledCode(const void* data, unsigned int size) const;

    // "#define name value\n" for each macro in order, then the code.
    static LxString BuildSource(const LxArray<LxShaderMacro>& macros, const LxString& preprocessedCode);
    // The flag bits of a shader's options "AvoidFlowControl", "PreferFlowControl", "SkipOptimization", "Debug".
    static unsigned int FlagsFromOptions(const LxAnnotationMap& options);
    // The part of cache file names that tells the flags apart: "_Fa_" (avoid flow control), "_Fp_" (prefer flow
    // control), "_Od_" (skip optimization), in that order; "Debug" adds nothing.
    static LxString MakeOptionString(unsigned int flags);
    // The structural check IsValidCompiledCode uses.
    static bool IsShaderContainer(const void* data, unsigned int size);
};
