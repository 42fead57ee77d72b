// Stands in for the text editor in the log tests: writes the path it was given into "<path>.opened".
#include <cstdio>
#include <string>

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    const std::string marker = std::string(argv[1]) + ".opened";
    std::FILE* f = std::fopen(marker.c_str(), "wb");
    if (!f)
        return 1;
    std::fputs(argv[1], f);
    std::fclose(f);
    return 0;
}
