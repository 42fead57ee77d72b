#include "LxAnimationTestUtil.h"

#include <random>

namespace LxAnimTest
{
Messages::Messages()
{
    LxLogManager::ResetLumexErrorLog();
    LxLogManager::GetRef().AddLogListener(this);
}

Messages::~Messages()
{
    LxLogManager::GetRef().RemoveLogListener(this);
}

void Messages::OnLogMessage(const LxString& text, _LxLogMessageType type)
{
    // "file(line) : [hh:mm:ss] PREFIX message\n"
    const std::string line(text.c_str(), text.GetLength());
    size_t start = line.find("] ");
    start = start == std::string::npos ? 0 : start + 2;
    static const char* const prefixes[] = {"DEBUG: ", "WARNING: ", "ERROR: ", "CRITICAL: "};
    for (const char* prefix : prefixes)
    {
        if (line.compare(start, std::strlen(prefix), prefix) == 0)
        {
            start += std::strlen(prefix);
            break;
        }
    }
    std::string message = line.substr(start);
    while (!message.empty() && message.back() == '\n')
        message.pop_back();
    m_messages.emplace_back(static_cast<int>(type), message);
}

std::vector<std::string> Messages::Of(int type) const
{
    std::vector<std::string> out;
    for (const auto& m : m_messages)
        if (m.first == type)
            out.push_back(m.second);
    return out;
}

void Messages::Clear()
{
    m_messages.clear();
    LxLogManager::ResetLumexErrorLog();
}

LxKeyframeCurve* MakeSampleCurve(LxAnimationCurve::AnimationDataType type, unsigned int keys, unsigned int seed,
                                 LxKeyframeCurve::InterpolationMode mode)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> step(0.001f, 0.5f), value(-100.0f, 100.0f);
    LxKeyframeCurve* curve = new LxKeyframeCurve(type, mode);
    const unsigned int size = LxAnimationCurve::GetValueSize(type);
    const bool bools = type == LxAnimationCurve::DATA_BOOL ||
                       (type >= LxAnimationCurve::DATA_VEC2_BOOL && type <= LxAnimationCurve::DATA_VEC4_BOOL);
    const bool ints = type == LxAnimationCurve::DATA_INT ||
                      (type >= LxAnimationCurve::DATA_VEC2_INT && type <= LxAnimationCurve::DATA_VEC4_INT);
    float time = step(random) - 0.25f; // sometimes before 0
    for (unsigned int k = 0; k < keys; ++k)
    {
        unsigned char bytes[64];
        for (unsigned int c = 0; c < size / 4 || (bools && c < size); ++c)
        {
            if (bools)
                bytes[c] = static_cast<unsigned char>(random() & 1u);
            else if (ints)
            {
                const int v = static_cast<int>(random() % 2001u) - 1000;
                std::memcpy(bytes + 4 * c, &v, 4);
            }
            else
            {
                const float v = value(random);
                std::memcpy(bytes + 4 * c, &v, 4);
            }
        }
        curve->AddKey(time, bytes);
        if (!(keys >= 4 && k == keys / 2)) // one cut in the middle
            time += step(random);
    }
    return curve;
}

std::string StreamBytes(const LxAnimationCurve& curve)
{
    MemoryFile file;
    curve.WriteCurveStream(&file);
    return file.Bytes();
}
} // namespace LxAnimTest
