// LxZippedInputFile: one entry of a zip archive opened for reading, with its own minizip reader.
//
// Reads decompress forward; a backward seek re-opens the entry and skips forward. Reaching the end of the entry
// checks its CRC: a mismatch is an I/O error (0xFFFFFFFF). Write always fails. Created by LxZipArchive::OpenFile.
// Short reads: the entry's size is known, so a read that returns fewer bytes than asked (past the end, or a
// damaged entry) logs "Tried to read: N bytes.  Only read: M bytes" and returns M. Code that reads to the end asks
// for exactly what is left (GetSize() minus what it has read), as the whole-file and line readers do, so reaching
// the end is never reported; asking for more is.
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
    bool Seek(long offset, SeekOrigin origin) override;
    unsigned int GetSize() const override;
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
