#include "Common/LxFile.h"

#include "Common/LxLogManager.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxPlatform.h"
#include "Common/LxStandardFile.h"

#include <cstdio>
#include <cstring>
#include <mutex>

namespace
{
std::mutex& AccessLogLock()
{
    static std::mutex lock;
    return lock;
}
std::FILE* g_pAccessLog = nullptr;
} // namespace

LxFile* LxFile::Open(const LxString& path, const LxString& mode)
{
    return new LxStandardFile(path, mode);
}

bool LxFile::Exists(const LxString& path)
{
    return LxPlatform::PathExists(path.c_str());
}

bool LxFile::GetTimeStamp(const LxString& path, long long& time)
{
    return LxPlatform::GetFileWriteTime(path.c_str(), time);
}

void* LxFile::ReadFileToBuffer(LxFile& file, unsigned int* size)
{
    if (!file.IsOpen())
    {
        LX_ERROR("LxFile::ReadFileToBuffer() Attempted to read from an invalid LxFile?!?");
        return nullptr;
    }
    const unsigned int bytes = file.GetSize();
    // One spare byte keeps the block zero-terminated for text parsers; it is not counted in *size.
    unsigned char* data = static_cast<unsigned char*>(LxMalloc(static_cast<size_t>(bytes) + 1));
    const unsigned int got = bytes ? file.Read(data, bytes) : 0;
    if (got == LX_FILE_READ_ERROR)
    {
        LxFree(data);
        LX_ERROR("LxFile::ReadFileToBuffer()  I/O error?!?");
        return nullptr;
    }
    // A text-mode file on Windows reads fewer bytes than its size (line ends shrink): keep what was read.
    data[got] = 0;
    if (size)
        *size = got;
    return data;
}

LxMemoryBuffer* LxFile::ReadFileToMemoryBuffer(LxFile& file)
{
    if (!file.IsOpen())
    {
        LX_ERROR("LxFile::ReadFileToMemoryBuffer().  Attempted to read from an invalid LxFile?!?");
        return nullptr;
    }
    const unsigned int bytes = file.GetSize();
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(bytes);
    if (!buffer)
        return nullptr;
    const unsigned int got = bytes ? file.Read(buffer->GetData(), bytes) : 0;
    if (got == LX_FILE_READ_ERROR)
    {
        delete buffer;
        LX_ERROR("LxFile::ReadFileToMemoryBuffer().  I/O error?!?");
        return nullptr;
    }
    buffer->Truncate(got); // a text-mode read may be shorter than the size
    return buffer;
}

LxCountedPtr<LxMemoryBuffer> LxFile::LoadBinaryFile(const LxString& path)
{
    LxFile* file = Open(path, LxString("rb"));
    if (!file->IsOpen())
    {
        delete file;
        LX_ERROR("LxFile::LoadBinaryFile().  Failed to open file: %s", path.c_str());
        return LxCountedPtr<LxMemoryBuffer>();
    }
    unsigned int size = 0;
    unsigned char* data = static_cast<unsigned char*>(ReadFileToBuffer(*file, &size));
    delete file;
    if (!data)
    {
        LX_ERROR("LxFile::LoadBinaryFile().  Error returned from LxFile::ReadFileToBuffer?!?");
        return LxCountedPtr<LxMemoryBuffer>();
    }
    return LxCountedPtr<LxMemoryBuffer>(new LxMemoryBuffer(data, size));
}

void LxFile::SplitTextLines(const char* text, unsigned int size, LxList<LxString>& lines)
{
    unsigned int start = 0;
    for (unsigned int i = 0; i < size; ++i)
    {
        const char c = text[i];
        if (c != '\r' && c != '\n')
            continue;
        lines.Add(LxString(text + start, i - start));
        if (c == '\r' && i + 1 < size && text[i + 1] == '\n')
            ++i; // CR LF is one line end; LF CR stays two
        start = i + 1;
    }
    if (start < size)
        lines.Add(LxString(text + start, size - start));
}

bool LxFile::ReadTextLines(LxList<LxString>& lines)
{
    unsigned int size = 0;
    char* data = static_cast<char*>(ReadFileToBuffer(*this, &size));
    if (!data)
    {
        LX_ERROR("LxFile::ReadTextLines().  Error returned from LxFile::ReadFileToBuffer()");
        return false;
    }
    SplitTextLines(data, size, lines);
    LxFree(data);
    return true;
}

LxString LxFile::ReadFileToString(LxFile& file)
{
    LxList<LxString> lines;
    LxString result;
    if (!file.ReadTextLines(lines))
    {
        LX_ERROR("LxFile::ReadFileToString().  Error returned LxFile::ReadTextLines()");
        return result;
    }
    unsigned int total = 0;
    for (const LxString& line : lines)
        total += line.GetLength() + 1;
    result.Reserve(total + 1, false);
    for (const LxString& line : lines)
    {
        result.Append(line);
        result.Append("\n", 1);
    }
    return result;
}

void LxFile::EnableFileAccessLogging(const LxString& logPath)
{
    std::lock_guard<std::mutex> guard(AccessLogLock());
    if (g_pAccessLog)
        std::fclose(g_pAccessLog);
    g_pAccessLog = std::fopen(logPath.c_str(), "wt");
    if (!g_pAccessLog)
        LX_ERROR("Error opening file access log file %s", logPath.c_str());
}

void LxFile::CloseFileAccessLog()
{
    std::lock_guard<std::mutex> guard(AccessLogLock());
    if (g_pAccessLog)
        std::fclose(g_pAccessLog);
    g_pAccessLog = nullptr;
}

void LxFile::LogFileAccess(const LxString& path, const LxString& mode, bool opened)
{
    if (!opened)
        return;
    std::lock_guard<std::mutex> guard(AccessLogLock());
    if (!g_pAccessLog)
        return;
    std::fprintf(g_pAccessLog, "%s %s\n", mode.c_str(), path.c_str());
    std::fflush(g_pAccessLog);
}
