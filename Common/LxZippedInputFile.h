// LxZippedInputFile: one entry of a zip archive opened for reading, with its own minizip reader.
//
// Reads decompress forward; a backward seek re-opens the entry and skips forward. Reaching the end of the entry
// checks its CRC: a mismatch is an I/O error (0xFFFFFFFF). Write always fails. Created by LxZipArchive::OpenFile.
#pragma once

#include "Common/LxFile.h"
#include "Common/LxZipArchive.h"

class LX_API LxZippedInputFile : public LxFile
{
public:
    LxZippedInputFile(const LxString& archivePath, const LxString& name, const LxZipArchive::EntryInfo& entry);
    ~LxZippedInputFile() override;

    void Close() override;
    unsigned int Read(void* buffer, unsigned int bytes) override;
    bool Write(const void* buffer, unsigned int bytes) override;
    using LxFile::Write;
    bool Seek(long offset, int origin) override;
    unsigned int GetSize() override;
    bool Flush() override;

private:
    bool OpenEntry();
    void LogReadError(int code);
    bool Skip(unsigned int bytes);

    void* m_pReader = nullptr; // unzFile
    LxZipArchive::EntryInfo m_entry;
    unsigned int m_nPosition = 0;
    bool m_bEntryOpen = false;
};
