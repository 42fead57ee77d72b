// LxADBWriter: collects the bytes of an animation data block and turns them into an LxModelADB.
//
// WriteData appends; when the buffer is full it grows to the larger of the size needed and twice its capacity
// (1024 bytes for the first block). FinalizeADB hands the bytes to a new binary ADB (owned by the caller) and
// leaves the writer empty for the next block. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

class LxModelADB;

class LX_API LxADBWriter
{
public:
    LxADBWriter() = default;
    ~LxADBWriter();
    LxADBWriter(const LxADBWriter&) = delete;
    LxADBWriter& operator=(const LxADBWriter&) = delete;

    void WriteData(const void* data, unsigned int size);
    // The ADB `name`, file name name + ".adb", the usage and version given, no meta data, the bytes written.
    LxModelADB* FinalizeADB(const LxString& name, const LxString& usage, unsigned int version);

    unsigned int GetSize() const { return m_nSize; }
    unsigned int GetCapacity() const { return m_nCapacity; }

private:
    unsigned char* m_pData = nullptr;
    unsigned int m_nSize = 0;
    unsigned int m_nCapacity = 0;
};
