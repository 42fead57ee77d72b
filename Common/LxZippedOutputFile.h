// LxZippedOutputFile: a new entry being written into a zip archive made by LxZipArchive::CreateNewZipFile.
// Data is deflated as it is written; Close (or the destructor) finishes the entry. Read and Seek fail.
#pragma once

#include "Common/LxFile.h"

class LxZipArchive;

class LX_API LxZippedOutputFile : public LxFile
{
public:
    LxZippedOutputFile(LxZipArchive* archive, void* writer, const LxString& name);
    ~LxZippedOutputFile() override;

    void Close() override;
    unsigned int Read(void* buffer, unsigned int bytes) override;
    bool Write(const void* buffer, unsigned int bytes) override;
    using LxFile::Write;
    bool Seek(long offset, SeekOrigin origin) override;
    unsigned int GetSize() const override { return m_nSize; }
    bool Flush() override { return m_bOpen; }

private:
    friend class LxZipArchive;
    void Detach(); // the archive is going away

    LxZipArchive* m_pArchive;
    void* m_pWriter; // zipFile
    unsigned int m_nSize = 0;
};
