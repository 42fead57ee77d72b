// libFuzzer target over the particle description language: scanner, grammar, builders and domain checks, fed
// arbitrary bytes as a particle file, once without and once with an animation set; the same bytes also go
// through the texture remapping reader. Nothing on disk is read, so every run depends on the input alone. Any
// crash, hang, leak or sanitizer report is a finding.
#include "Common/LxLogManager.h"
#include "ParticleSystem/LxParticleAnimationSet.h"
#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "ParticleSystem/LxParticleGroupLoader.h"
#include "ParticleSystem/LxParticleKeyFrameChannel.h"
#include "ParticleSystem/LxParticleParser.h"

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
// Knows every curve whose name starts with "c", and takes every exported curve unless its name holds "refuse".
class FuzzAnimationSet : public LxParticleAnimationSet
{
public:
    bool HasCurve(const LxString& name) const override { return name.StartsWith("c"); }
    bool AddCurve(const LxString& name, const LxParticleKeyFrameChannel& channel) override
    {
        m_fSum += channel.Evaluate(0.5f);
        return name.Find("refuse") < 0;
    }

private:
    float m_fSum = 0.0f;
};

// Walks the description as a simulator would, touching every value.
float Walk(const LxParticleGroupDesc& group)
{
    float sum = group.GetVersion();
    for (unsigned int s = 0; s < group.GetSystemCount(); ++s)
    {
        const LxParticleSystemDesc& system = group.GetSystem(s);
        auto parameter = [&](const LxParticleParameter& p)
        {
            for (unsigned int c = 0; c < p.GetComponentCount(); ++c)
            {
                sum += p.GetFixed(c) + p.GetMinimum(c) + p.GetMaximum(c) + p.GetExponent(c);
                for (unsigned int part = 0; part < p.GetStride(); ++part)
                    if (const LxParticleKeyFrameChannel* channel = p.GetComponentChannel(c, part))
                        sum += channel->Evaluate(0.25f);
            }
        };
        for (unsigned int i = 0; i < system.GetEffectParameterCount(); ++i)
            parameter(system.GetEffectParameter(i).parameter);
        for (unsigned int t = 0; t < system.GetTextureSetCount(); ++t)
            sum += static_cast<float>(system.GetTextureSet(t).GetSlotCount());
        for (unsigned int kind = 0; kind < 2; ++kind)
        {
            const unsigned int count = kind ? system.GetActionCount() : system.GetEmitterCount();
            for (unsigned int e = 0; e < count; ++e)
            {
                const LxParticleElementDesc& element = kind ? system.GetAction(e) : system.GetEmitter(e);
                for (unsigned int i = 0; i < element.GetParameterCount(); ++i)
                    parameter(element.GetParameter(i).parameter);
                for (unsigned int i = 0; i < element.GetValueCount(); ++i)
                    sum += element.GetValue(i).value.GetFloat();
                if (element.HasShape())
                    for (unsigned int i = 0; i < element.GetShape().GetParameterCount(); ++i)
                        sum += element.GetShape().GetParameter(i).value.x;
                sum += element.GetTransform().GetScale().x;
            }
        }
    }
    return sum;
}

void ParseWith(LxParticleBuilder& builder, const LxString& text)
{
    LxParticleParser parser;
    parser.Init("fuzz.txt", text, &builder);
    parser.Parse();
    LxParticleGroupDesc* group = builder.TakeResult();
    if (group)
        static_cast<void>(Walk(*group));
    delete group;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > (1u << 20))
        return 0;
    // Each input starts with a clean once-only error set, or the set would grow without bound.
    LxLogManager::ResetLumexErrorLog();
    const LxString text(reinterpret_cast<const char*>(data), static_cast<unsigned int>(size));
    LxParticleBuilder plain;
    ParseWith(plain, text);
    FuzzAnimationSet curves;
    LxParticleBuilder animated;
    animated.SetAnimationSet(&curves);
    ParseWith(animated, text);
    LxParticleGroupLoader::TextureMapping mapping;
    LxParticleGroupLoader::ParseTextureMapping(text, mapping);
    return 0;
}
