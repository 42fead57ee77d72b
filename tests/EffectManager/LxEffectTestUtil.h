// Helpers of the effect-system tests: parsing effect text with a builder of choice, reading test data, and a pass,
// builder and draw context that stand in for the platform's and record what the effect asks of them.
#pragma once

#include "Common/LxString.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectDrawContext.h"
#include "EffectManager/LxEffectParser.h"
#include "support/LxTestSupport.h"

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace LxFxTest
{
inline std::string ReadText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline std::string EffectsDir()
{
    return LxTest::DataDir() + "/effects";
}

// Parses `text` as the file `name`; the builder defaults to the generic one. Null on failure.
inline std::unique_ptr<LxEffect> Parse(const std::string& text, const std::string& name = "test.fx",
                                       LxEffectBuilder* builder = nullptr, LxEffectParser* parser = nullptr)
{
    LxEffectBuilder generic;
    LxEffectParser ownParser;
    LxEffectParser& p = parser ? *parser : ownParser;
    p.Init(LxString(name.c_str()), LxString(text.c_str(), static_cast<unsigned int>(text.size())),
           builder ? builder : &generic);
    return std::unique_ptr<LxEffect>(p.Parse());
}

// Parses a file of tests/data/effects (its includes resolve next to it).
inline std::unique_ptr<LxEffect> ParseDataFile(const std::string& relative, LxEffectBuilder* builder = nullptr)
{
    const std::string path = EffectsDir() + "/" + relative;
    return Parse(ReadText(path), path, builder);
}
// Records "bind <pass> of <effect>" and "unbind <pass>" in Calls(), and the pass bound last.
class RecordingPass : public LxEffectPass
{
public:
    using LxEffectPass::LxEffectPass;
    bool Bind(LxEffect& effect) override
    {
        lastBound = this;
        Calls().push_back("bind " + std::string(GetName().c_str()) + " of " + effect.GetName().c_str());
        return true;
    }
    void Unbind(LxEffect&) override { Calls().push_back("unbind " + std::string(GetName().c_str())); }
    static std::vector<std::string>& Calls()
    {
        static std::vector<std::string> calls;
        return calls;
    }
    static inline const LxEffectPass* lastBound = nullptr;
};

class RecordingBuilder : public LxEffectBuilder
{
public:
    LxEffectPass* CreatePass(const LxString& name, LxEffectTechnique* technique) override
    {
        return new RecordingPass(name, technique);
    }
};

// Answers the active override technique and records "current <index> of <effect>" with the pass calls.
class RecordingDrawContext : public LxEffectDrawContext
{
public:
    int GetActiveOverrideTechnique() const override { return activeOverride; }
    void SetCurrentPass(LxEffect* effect, unsigned int passIndex) override
    {
        RecordingPass::Calls().push_back("current " + std::to_string(passIndex) + " of " + effect->GetName().c_str());
    }
    int activeOverride = -1;
};
} // namespace LxFxTest
