#include "EffectManager/LxShaderCompiler.h"

#include "EffectManager/LxAnnotationMap.h"
#include "EffectManager/LxEffectBuilder.h"

#include <cstring>

namespace
{
unsigned int ReadU32(const unsigned char* p)
{
    return static_cast<unsigned int>(p[0]) | (static_cast<unsigned int>(p[1]) << 8) |
           (static_cast<unsigned int>(p[2]) << 16) | (static_cast<unsigned int>(p[3]) << 24);
}

// Container header: magic (4), checksum (16), version (4), total size (4), chunk count (4), then one 32-bit offset
// per chunk; each chunk starts with its four-character code and its payload size.
const unsigned int kHeaderSize = 32;
const unsigned int kChunkHeaderSize = 8;
} // namespace

bool LxShaderCompiler::IsValidCompiledCode(const void* data, unsigned int size) const
{
    return IsShaderContainer(data, size);
}

bool LxShaderCompiler::IsShaderContainer(const void* data, unsigned int size)
{
    if (!data || size < kHeaderSize)
        return false;
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    if (std::memcmp(bytes, "DXBC", 4) != 0)
        return false;
    if (ReadU32(bytes + 24) != size)
        return false;
    const unsigned int chunks = ReadU32(bytes + 28);
    // Counted in 64 bits: a damaged count must not wrap around the size check.
    if (kHeaderSize + 4ull * chunks > size)
        return false;
    for (unsigned int i = 0; i < chunks; ++i)
    {
        const unsigned int offset = ReadU32(bytes + kHeaderSize + 4 * i);
        if (offset < kHeaderSize || static_cast<unsigned long long>(offset) + kChunkHeaderSize > size)
            return false;
        const unsigned int chunkSize = ReadU32(bytes + offset + 4);
        if (static_cast<unsigned long long>(offset) + kChunkHeaderSize + chunkSize > size)
            return false;
    }
    return true;
}

LxString LxShaderCompiler::BuildSource(const LxArray<LxShaderMacro>& macros, const LxString& preprocessedCode)
{
    LxString text;
    for (const LxShaderMacro& macro : macros)
    {
        text.Append("#define ");
        text.Append(macro.name);
        text.Append(' ');
        text.Append(macro.value);
        text.Append('\n');
    }
    text.Append(preprocessedCode);
    return text;
}

unsigned int LxShaderCompiler::FlagsFromOptions(const LxAnnotationMap& options)
{
    unsigned int flags = 0;
    if (options.ValueExists("AvoidFlowControl"))
        flags |= FLAG_AVOID_FLOW_CONTROL;
    if (options.ValueExists("PreferFlowControl"))
        flags |= FLAG_PREFER_FLOW_CONTROL;
    if (options.ValueExists("SkipOptimization"))
        flags |= FLAG_SKIP_OPTIMIZATION;
    if (options.ValueExists("Debug"))
        flags |= FLAG_DEBUG;
    return flags;
}

LxString LxShaderCompiler::MakeOptionString(unsigned int flags)
{
    LxString text;
    if (flags & FLAG_AVOID_FLOW_CONTROL)
        text.Append("_Fa_");
    if (flags & FLAG_PREFER_FLOW_CONTROL)
        text.Append("_Fp_");
    if (flags & FLAG_SKIP_OPTIMIZATION)
        text.Append("_Od_");
    return text;
}
