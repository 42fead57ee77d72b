// LxStandardFile: a disk file on the C runtime's buffered streams (fopen modes "rb", "wb", "wt", "rt", ...).
// A "t" mode on Windows translates line ends; elsewhere text and binary are the same.
#pragma once

#include "Common/LxFile.h"

#include <cstdio>

class LX_API LxStandardFile : public LxFile
{
public:
    // Opens at once; check IsOpen(). Successful opens go to the file-access log.
    LxStandardFile(const LxString& path, const LxString& mode);
    ~LxStandardFile() override;

    void Close() override;
    unsigned int Read(void* buffer, unsigned int bytes) override;
    bool Write(const void* buffer, unsigned int bytes) override;
    using LxFile::Write;
    bool Seek(long offset, SeekOrigin origin) override;
    unsigned int GetSize() const override;
    bool Flush() override;

private:
    std::FILE* m_pStream = nullptr;
};
