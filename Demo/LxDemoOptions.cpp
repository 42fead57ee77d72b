#include "LxDemoOptions.h"

#include <algorithm>
#include <cstdlib>

namespace
{
bool ParseUnsigned(const char* text, unsigned* out)
{
    char* end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 10);
    if (end == text || *end != '\0' || value > 100000000ul)
        return false;
    *out = static_cast<unsigned>(value);
    return true;
}
} // namespace

bool LxDemoOptions::Parse(int argc, char** argv, std::string* error)
{
    bool shotsGiven = false;
    bool framesGiven = false;
    for (int i = 1; i < argc; ++i)
    {
        const std::string option = argv[i];
        const bool takesValue = option == "--frames" || option == "--width" || option == "--height" ||
                                option == "--out" || option == "--data" || option == "--cache" || option == "--shots" ||
                                option == "--step";
        if (takesValue && i + 1 >= argc)
        {
            *error = option + " needs a value";
            return false;
        }
        const char* value = takesValue ? argv[++i] : nullptr;
        if (option == "--frames" || option == "--width" || option == "--height")
        {
            unsigned* target = option == "--frames" ? &frames : option == "--width" ? &width : &height;
            framesGiven = framesGiven || target == &frames;
            if (!ParseUnsigned(value, target) || (target == &frames && *target == 0) ||
                (target != &frames && (*target < 16 || *target > 8192)))
            {
                *error = "bad value for " + option + ": " + value;
                return false;
            }
        }
        else if (option == "--out")
            outputFolder = value;
        else if (option == "--data")
            dataFolder = value;
        else if (option == "--cache")
            cacheFolder = value;
        else if (option == "--step")
        {
            char* end = nullptr;
            fixedStep = std::strtod(value, &end);
            if (end == value || *end != '\0' || !(fixedStep > 0.0 && fixedStep <= 1.0))
            {
                *error = std::string("bad value for --step: ") + value;
                return false;
            }
        }
        else if (option == "--shots")
        {
            shotsGiven = true;
            screenshotFrames.clear();
            std::string list = value;
            size_t start = 0;
            while (start <= list.size())
            {
                const size_t comma = std::min(list.find(',', start), list.size());
                unsigned frame = 0;
                if (comma == start || !ParseUnsigned(list.substr(start, comma - start).c_str(), &frame) || frame == 0)
                {
                    *error = "bad frame list for --shots: " + list;
                    return false;
                }
                screenshotFrames.push_back(frame);
                start = comma + 1;
            }
        }
        else if (option == "--interactive")
            interactive = true;
        else if (option == "--watch")
            watchFiles = true;
        else
        {
            *error = "unknown option: " + option;
            return false;
        }
    }
    if (!framesGiven)
        interactive = true;
    if (!shotsGiven && frames > 0)
    {
        screenshotFrames = {1, std::max(1u, frames / 2), frames};
        screenshotFrames.erase(std::unique(screenshotFrames.begin(), screenshotFrames.end()), screenshotFrames.end());
    }
    return true;
}

const char* LxDemoOptions::Usage()
{
    return "usage: LumexDemo [--frames N] [--width W] [--height H] [--out DIR] [--data DIR] [--cache DIR]\n"
           "                 [--shots A,B,...] [--step SECONDS] [--interactive] [--watch]\n";
}
