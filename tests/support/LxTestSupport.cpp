#include "support/LxTestSupport.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace LxTest
{
std::string MakeTempDir(const std::string& hint)
{
    static int counter = 0;
    const std::string path = ScratchDir() + "/" + hint + "-" + std::to_string(++counter);
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
    return path;
}

void WriteBytes(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

bool PathExists(const std::string& path)
{
    return std::filesystem::exists(path);
}

std::string DataDir()
{
    return LUMEX_TEST_DATA_DIR_STR;
}

LogCapture::LogCapture()
{
    LxLogManager::ResetLumexErrorLog();
    LxLogManager::GetRef().AddLogListener(this);
}

LogCapture::~LogCapture()
{
    LxLogManager::GetRef().RemoveLogListener(this);
}

void LogCapture::OnLogMessage(const LxString& text, _LxLogMessageType type)
{
    m_lines.emplace_back(std::string(text.c_str(), text.GetLength()), static_cast<int>(type));
}

int LogCapture::Count(const std::string& text, int type) const
{
    int n = 0;
    for (const auto& line : m_lines)
        if ((type < 0 || line.second == type) && line.first.find(text) != std::string::npos)
            ++n;
    return n;
}

int LogCapture::ErrorCount() const
{
    int n = 0;
    for (const auto& line : m_lines)
        if (line.second == LX_LOG_ERROR)
            ++n;
    return n;
}

std::string LogCapture::All() const
{
    std::string all;
    for (const auto& line : m_lines)
        all += line.first;
    return all;
}
} // namespace LxTest
