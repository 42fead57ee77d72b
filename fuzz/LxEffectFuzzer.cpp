// libFuzzer target over the effect language: scanner, grammar, generic builder, shader-code preprocessor and the
// override-technique builder, fed arbitrary bytes as an effect file. Includes resolve through an empty search
// path (nothing on disk is read), so every run depends on the input alone. Any crash, hang, leak or sanitizer
// report is a finding.
#include "Common/LxLogManager.h"
#include "Common/LxSearchPath.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectParser.h"
#include "EffectManager/LxOverrideTechniqueEffectBuilder.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Messages are formatted as usual but go nowhere: no file, no console.
    LxLogManager::Init(false, false, LxString());
    return 0;
}

namespace
{
void ParseWith(LxEffectBuilder& builder, const LxString& text, const LxSearchPath& search)
{
    LxEffectParser parser;
    parser.SetIncludeArchive(&search);
    parser.AddDefine("FUZZ_DEFINE", "Float fuzzDefined (1.0)");
    parser.Init("fuzz.fx", text, &builder);
    LxEffect* effect = parser.Parse();
    if (effect)
    {
        // Walk what was built, as a renderer would.
        for (unsigned int t = 0; t < effect->GetNumTechniques(); ++t)
        {
            LxEffectTechnique* technique = effect->GetTechnique(t);
            unsigned int passes = 0;
            if (effect->Begin(technique, &passes))
                effect->End();
        }
        for (unsigned int i = 0; i < effect->GetNumTextureSlots(); ++i)
        {
            LxSlotViewParams params;
            effect->GetTextureSlot(i)->ReadViewParams(&params);
        }
    }
    delete effect;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > (1u << 20))
        return 0;
    // Each input starts with a clean once-only error set, or the set would grow without bound.
    LxLogManager::ResetLumexErrorLog();
    const LxString text(reinterpret_cast<const char*>(data), static_cast<unsigned int>(size));
    const LxSearchPath search;
    LxEffectBuilder builder;
    ParseWith(builder, text, search);
    LxOverrideTechniqueEffectBuilder overrideBuilder;
    ParseWith(overrideBuilder, text, search);
    return 0;
}
