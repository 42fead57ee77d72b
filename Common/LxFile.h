// LxFile: an open file with virtual read, write, seek, size and flush, plus the whole-file helpers.
//
// Every operation on a file that is not open fails at once (0 or false). Read returns the bytes read, a short count
// at the end of the file, or 0xFFFFFFFF on an I/O error. Sizes and counts are 32-bit.
// Factories return raw owning pointers: the caller deletes the file (the destructor closes it). LxFile::Open
// always returns a file object; test IsOpen() before use. Not thread-safe: one thread per file at a time.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxList.h"
#include "Common/LxString.h"

class LxMemoryBuffer;

#define LX_FILE_READ_ERROR 0xFFFFFFFFu

class LX_API LxFile
{
public:
    enum SeekOrigin
    {
        SEEK_FROM_START = 0,
        SEEK_FROM_CURRENT = 1,
        SEEK_FROM_END = 2
    };

    virtual ~LxFile() = default;
    virtual void Close() = 0;
    virtual unsigned int Read(void* buffer, unsigned int bytes) = 0;
    virtual bool Write(const void* buffer, unsigned int bytes) = 0;
    virtual bool Seek(long offset, SeekOrigin origin) = 0;
    virtual unsigned int GetSize() const = 0;
    virtual bool Flush() = 0;

    bool IsOpen() const { return m_bOpen; }
    const LxString& GetName() const { return m_name; }
    // The characters of text, without terminator.
    bool Write(const LxString& text) { return Write(text.c_str(), text.GetLength()); }

    // A disk file opened with fopen(path, mode); the object is returned even when the open failed.
    static LxFile* Open(const LxString& path, const LxString& mode);
    static bool Exists(const LxString& path);
    // Last-write time in 100-ns ticks since 1601 (the FILETIME scale).
    static bool GetTimeStamp(const LxString& path, long long& time);

    // The whole file in a new block from LxMalloc (the caller frees it with LxFree); null on failure.
    static void* ReadFileToBuffer(LxFile& file, unsigned int* size);
    static LxMemoryBuffer* ReadFileToMemoryBuffer(LxFile& file);
    static LxCountedPtr<LxMemoryBuffer> LoadBinaryFile(const LxString& path);
    // The lines of the file joined with "\n" after each line.
    static LxString ReadFileToString(LxFile& file);
    // Appends the file's lines to `lines`: CR, LF and CR LF end a line (LF CR is two ends); the line ends are not
    // part of the lines; text after the last end is a last line.
    bool ReadTextLines(LxList<LxString>& lines);
    // The same splitting over bytes in memory.
    static void SplitTextLines(const char* text, unsigned int size, LxList<LxString>& lines);

    // The optional file-access log: while enabled, each successful open of a disk file appends "mode path".
    static void EnableFileAccessLogging(const LxString& logPath);
    static void CloseFileAccessLog();
    static void LogFileAccess(const LxString& path, const LxString& mode, bool opened);

protected:
    explicit LxFile(const LxString& name) : m_name(name) {}

    bool m_bOpen = false;
    LxString m_name;
};
