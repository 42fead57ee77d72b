// Helpers of the effect-system tests: parsing effect text with a builder of choice, and reading test data.
#pragma once

#include "Common/LxString.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectParser.h"
#include "support/LxTestSupport.h"

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

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
} // namespace LxFxTest
