#include "Common/LxStandardFile.h"

#include "Common/LxLogManager.h"
#include "Common/LxPlatform.h"

LxStandardFile::LxStandardFile(const LxString& path, const LxString& mode) : LxFile(path)
{
    m_pStream = std::fopen(path.c_str(), mode.c_str());
    m_bOpen = m_pStream != nullptr;
    LogFileAccess(path, mode, m_bOpen);
}

LxStandardFile::~LxStandardFile()
{
    Close();
}

void LxStandardFile::Close()
{
    if (m_pStream)
        std::fclose(m_pStream);
    m_pStream = nullptr;
    m_bOpen = false;
}

unsigned int LxStandardFile::Read(void* buffer, unsigned int bytes)
{
    if (!m_bOpen)
        return 0;
    const size_t got = std::fread(buffer, 1, bytes, m_pStream);
    if (got < bytes && std::ferror(m_pStream))
    {
        LX_ERROR("ERROR reading file: %s\n", LxPlatform::LastErrorText());
        std::clearerr(m_pStream);
        return LX_FILE_READ_ERROR;
    }
    return static_cast<unsigned int>(got);
}

bool LxStandardFile::Write(const void* buffer, unsigned int bytes)
{
    // No logging here: the log file itself is written through this call.
    if (!m_bOpen)
        return false;
    return std::fwrite(buffer, 1, bytes, m_pStream) == bytes;
}

bool LxStandardFile::Seek(long offset, SeekOrigin origin)
{
    if (!m_bOpen)
        return false;
    if (offset == 0 && origin == SEEK_FROM_CURRENT)
        return true;
    const int whence = origin == SEEK_FROM_START ? SEEK_SET : origin == SEEK_FROM_CURRENT ? SEEK_CUR : SEEK_END;
    return std::fseek(m_pStream, offset, whence) == 0;
}

unsigned int LxStandardFile::GetSize() const
{
    if (!m_bOpen)
        return 0;
    const long pos = std::ftell(m_pStream);
    if (pos < 0 || std::fseek(m_pStream, 0, SEEK_END) != 0)
        return 0;
    const long size = std::ftell(m_pStream);
    std::fseek(m_pStream, pos, SEEK_SET);
    return size < 0 ? 0u : static_cast<unsigned int>(size);
}

bool LxStandardFile::Flush()
{
    if (!m_bOpen)
        return false;
    return std::fflush(m_pStream) != -1;
}
