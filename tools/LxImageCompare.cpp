// LxImageCompare: compares two PNG images the way the pixel tests and the demo's check do.
//
//   LxImageCompare <reference.png> <image.png> [<tolerance> [<max differing fraction>]]
//
// Both images must have the same size and channel count. A pixel differs when any of its channels differs from the
// reference by more than `tolerance` steps of 8 bits (default 8: the software rasteriser's interpolation and
// rounding drift a few steps between driver versions; a geometry or colour fault moves far more). The comparison
// passes when at most `max differing fraction` of the pixels differ (default 0.005: a few edge pixels of
// rasterisation differences). Prints the largest channel difference, the differing pixel count and the first
// differing pixel. Exit status: 0 when the images match, 1 when they do not, 2 for a usage or load error.
#include "Common/LxImageData2D.h"
#include "Common/LxImageIO.h"
#include "Common/LxLogManager.h"
#include "Common/LxString.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv)
{
    if (argc < 3 || argc > 5)
    {
        std::fprintf(stderr, "usage: LxImageCompare <reference.png> <image.png> [<tolerance> [<max fraction>]]\n");
        return 2;
    }
    const double tolerance = argc > 3 ? std::atof(argv[3]) : 8.0;
    const double maxFraction = argc > 4 ? std::atof(argv[4]) : 0.005;
    LxLogManager::Init(false, true, LxString("LxImageCompare.log"));
    LxImageData2D reference, image;
    const bool loaded =
        LxImageIO::LoadPNG(LxString(argv[1]), &reference) && LxImageIO::LoadPNG(LxString(argv[2]), &image);
    LxLogManager::ShutDown();
    if (!loaded)
        return 2;
    if (reference.GetWidth() != image.GetWidth() || reference.GetHeight() != image.GetHeight() ||
        reference.GetNumChannels() != image.GetNumChannels())
    {
        std::printf("%s: %ux%u with %u channels, reference %ux%u with %u channels\n", argv[2], image.GetWidth(),
                    image.GetHeight(), image.GetNumChannels(), reference.GetWidth(), reference.GetHeight(),
                    reference.GetNumChannels());
        return 1;
    }
    double largest = 0.0;
    unsigned long differing = 0;
    long firstX = -1, firstY = -1;
    for (unsigned y = 0; y < image.GetHeight(); ++y)
    {
        for (unsigned x = 0; x < image.GetWidth(); ++x)
        {
            double worst = 0.0;
            for (unsigned c = 0; c < image.GetNumChannels(); ++c)
                worst = std::fmax(worst, std::fabs(image.GetPixel(x, y)[c] - reference.GetPixel(x, y)[c]) * 255.0);
            largest = std::fmax(largest, worst);
            if (worst > tolerance)
            {
                if (differing++ == 0)
                {
                    firstX = x;
                    firstY = y;
                }
            }
        }
    }
    const double pixels = double(image.GetWidth()) * image.GetHeight();
    const bool match = differing <= maxFraction * pixels;
    std::printf("%s: %s (largest channel difference %.1f of 255, %lu of %.0f pixels beyond %.1f", argv[2],
                match ? "matches" : "DIFFERS", largest, differing, pixels, tolerance);
    if (differing > 0)
        std::printf(", first at %ld,%ld", firstX, firstY);
    std::printf(")\n");
    return match ? 0 : 1;
}
