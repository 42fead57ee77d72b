// The Lumex demo's entry point: parses the options, runs the demo, prints where its output went.
#include "LxDemoApp.h"

#include <cstdio>
#include <string>

int main(int argc, char** argv)
{
    LxDemoOptions options;
    std::string error;
    if (!options.Parse(argc, argv, &error))
    {
        std::fprintf(stderr, "%s\n%s", error.c_str(), LxDemoOptions::Usage());
        return 2;
    }
    LxDemoApp app;
    if (!app.Start(options))
    {
        std::fprintf(stderr, "The demo could not start: see %s/LumexLog.txt\n", options.outputFolder.c_str());
        return 1;
    }
    const int code = app.Run();
    app.Stop();
    std::printf("%s: %s\n", code == 0 ? "demo ok" : "demo FAILED", app.GetSummary().c_str());
    std::printf("output: %s (screenshots frame*.png, report.txt, LumexLog.txt)\n", options.outputFolder.c_str());
    return code;
}
