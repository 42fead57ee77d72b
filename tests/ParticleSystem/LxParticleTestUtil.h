// Helpers of the particle tests: parsing particle text into a builder, reading the test data, the error messages
// a capture holds, an animation set that records what is exported into it, and a builder whose platform hooks
// refuse chosen names.
#pragma once

#include "ParticleSystem/LxParticleAnimationSet.h"
#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "ParticleSystem/LxParticleKeyFrameChannel.h"
#include "ParticleSystem/LxParticleParser.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace LxPxTest
{
inline std::string ReadText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline std::string ParticlesDir()
{
    return LxTest::DataDir() + "/particles";
}

inline LxString Lx(const std::string& s)
{
    return LxString(s.c_str(), static_cast<unsigned int>(s.size()));
}

// Parses `text` as the file `name`; the group, or null on failure.
inline std::unique_ptr<LxParticleGroupDesc> Parse(const std::string& text, const std::string& name = "test.txt",
                                                  LxParticleBuilder* builder = nullptr)
{
    LxParticleBuilder own;
    LxParticleBuilder& b = builder ? *builder : own;
    LxParticleParser parser;
    parser.Init(Lx(name), Lx(text), &b);
    const bool ok = parser.Parse();
    std::unique_ptr<LxParticleGroupDesc> group(b.TakeResult());
    if (ok != (group != nullptr))
        ADD_FAILURE() << "Parse() and TakeResult() disagree";
    return group;
}

// The texts of the errors a capture holds, without time stamp and type prefix.
inline std::multiset<std::string> ErrorMessages(const LxTest::LogCapture& capture)
{
    std::multiset<std::string> messages;
    std::istringstream lines(capture.All());
    const std::string tag = "ERROR: ";
    for (std::string line; std::getline(lines, line);)
    {
        const size_t at = line.find(tag);
        if (at != std::string::npos)
            messages.insert(line.substr(at + tag.size()));
    }
    return messages;
}

// Holds the curves named at construction; records every curve exported into it; refuses names in `refused`.
class TestAnimationSet : public LxParticleAnimationSet
{
public:
    explicit TestAnimationSet(std::set<std::string> curves = {}) : m_curves(std::move(curves)) {}
    bool HasCurve(const LxString& name) const override { return m_curves.count(name.c_str()) != 0; }
    bool AddCurve(const LxString& name, const LxParticleKeyFrameChannel& channel) override
    {
        if (refused.count(name.c_str()))
            return false;
        added[name.c_str()] = channel;
        return true;
    }
    std::map<std::string, LxParticleKeyFrameChannel> added;
    std::set<std::string> refused;

private:
    std::set<std::string> m_curves;
};

// A builder whose shader loading refuses "missing.fx" and whose texture creation refuses "broken.png", and
// which records every texture it was asked to create as "system:file".
class TestBuilder : public LxParticleBuilder
{
public:
    bool LoadShader(const LxString& effectFile) override
    {
        return effectFile != "missing.fx" && LxParticleBuilder::LoadShader(effectFile);
    }
    bool CreateTexture(const LxArchive&, const LxString& file, const LxParticleSystemDesc& system) override
    {
        textures.push_back(std::string(system.GetName().c_str()) + ":" + file.c_str());
        return file != "broken.png";
    }
    std::vector<std::string> textures;
};
} // namespace LxPxTest
