// LxDemoOptions: the demo's command line. Unknown options and bad values are reported in `error` and make Parse
// answer false; the application then prints Usage() and exits with 2.
//
//   --frames N        render N frames on a fixed clock, then write the report and quit (the recorded run). Without
//                     it the demo runs interactively: real time, until the window is closed (Escape), report then
//   --width W         client width (default 640)      --height H   client height (default 480)
//   --out DIR         output folder for screenshots, report and log (default "demo-output", made if missing)
//   --data DIR        the demo's data folder (default "data" next to the executable)
//   --cache DIR       the shader cache (default "shader-cache"; a second run compiles nothing)
//   --shots A,B,...   frames whose back buffer is saved as PNG (default: 1, the middle and the last frame)
//   --step SECONDS    fixed clock step per frame (default 1/60); ignored with --interactive
//   --interactive     real time even with --frames
//   --watch           reload effects and objects when their files change (checked once a second)
#pragma once

#include <string>
#include <vector>

class LxDemoOptions
{
public:
    bool Parse(int argc, char** argv, std::string* error);
    static const char* Usage();

    unsigned frames = 0; // 0: until the window is closed
    unsigned width = 640;
    unsigned height = 480;
    std::string outputFolder = "demo-output";
    std::string dataFolder = "data";
    std::string cacheFolder = "shader-cache";
    std::vector<unsigned> screenshotFrames; // filled by Parse when --shots is not given
    double fixedStep = 1.0 / 60.0;
    bool interactive = false;
    bool watchFiles = false;
};
