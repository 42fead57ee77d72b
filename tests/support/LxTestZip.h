// Builds zip files byte by byte for the archive tests, with switches that make them lie: a wrong CRC, declared
// sizes that differ from the data, a truncated tail.
#pragma once

#include <string>
#include <vector>

namespace LxTest
{
struct ZipEntry
{
    std::string name;
    std::string data;
    bool deflate = true;
    bool corruptCrc = false;
    long long declaredUncompressed = -1; // -1: the true size
    long long declaredCompressed = -1;   // -1: the true size
    int method = -1;                     // -1: deflate or stored as above; else this method, data stored as is
};

std::string BuildZip(const std::vector<ZipEntry>& entries);
} // namespace LxTest
