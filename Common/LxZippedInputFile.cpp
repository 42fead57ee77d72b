#include "Common/LxZippedInputFile.h"

#include "Common/LxLogManager.h"

#include <minizip/unzip.h>

LxZippedInputFile::LxZippedInputFile(const LxString& archivePath, const LxString& name,
                                     const LxZipArchive::EntryInfo& entry)
    : LxFile(name), m_entry(entry)
{
    m_pReader = unzOpen64(archivePath.c_str());
    m_bOpen = m_pReader && OpenEntry();
    if (!m_bOpen)
        LX_ERROR("LxZippedInputFile.  Couldn't open %s in %s", name.c_str(), archivePath.c_str());
}

LxZippedInputFile::~LxZippedInputFile()
{
    Close();
}

bool LxZippedInputFile::OpenEntry()
{
    unzFile uf = static_cast<unzFile>(m_pReader);
    if (m_bEntryOpen)
        unzCloseCurrentFile(uf);
    m_bEntryOpen = false;
    unz64_file_pos pos;
    pos.pos_in_zip_directory = m_entry.directoryOffset;
    pos.num_of_file = m_entry.fileNumber;
    if (unzGoToFilePos64(uf, &pos) != UNZ_OK || unzOpenCurrentFile(uf) != UNZ_OK)
        return false;
    m_bEntryOpen = true;
    m_nPosition = 0;
    return true;
}

void LxZippedInputFile::Close()
{
    if (m_pReader)
    {
        if (m_bEntryOpen)
            unzCloseCurrentFile(static_cast<unzFile>(m_pReader));
        unzClose(static_cast<unzFile>(m_pReader));
    }
    m_pReader = nullptr;
    m_bEntryOpen = false;
    m_bOpen = false;
}

void LxZippedInputFile::LogReadError(int code)
{
    LX_ERROR("LxZippedInputFile::Read()  unzReadCurrentFile failed.");
    switch (code)
    {
    case UNZ_ERRNO:
        LX_ERROR("LxZippedInputFile::Read()  Error reported was: I/O error");
        break;
    case UNZ_PARAMERROR:
        LX_ERROR("LxZippedInputFile::Read()  Error reported was: Bad parameters.");
        break;
    case UNZ_BADZIPFILE:
        LX_ERROR("LxZippedInputFile::Read()  Error reported was: Bad zip file");
        break;
    case UNZ_INTERNALERROR:
        LX_ERROR("LxZippedInputFile::Read()  Error reported was: Internal error");
        break;
    case UNZ_CRCERROR:
        LX_ERROR("LxZippedInputFile::Read()  Error reported was: CRC error");
        break;
    default:
        LX_ERROR("LxZippedInputFile::Read()  Error code not recognized.  Value is: %d", code);
        break;
    }
}

unsigned int LxZippedInputFile::Read(void* buffer, unsigned int bytes)
{
    if (!m_bOpen)
        return 0;
    const unsigned int size = static_cast<unsigned int>(m_entry.uncompressedSize);
    const unsigned int wanted = bytes < size - m_nPosition ? bytes : size - m_nPosition;
    unsigned int got = 0;
    if (wanted > 0 && m_bEntryOpen)
    {
        unzFile uf = static_cast<unzFile>(m_pReader);
        const int n = unzReadCurrentFile(uf, buffer, wanted);
        if (n < 0)
        {
            LogReadError(n);
            return LX_FILE_READ_ERROR;
        }
        got = static_cast<unsigned int>(n);
        m_nPosition += got;
        if (m_nPosition == size)
        {
            // The CRC is checked when the entry is closed, so close it as soon as the last byte is out.
            m_bEntryOpen = false;
            const int err = unzCloseCurrentFile(uf);
            if (err != UNZ_OK)
            {
                LogReadError(err);
                return LX_FILE_READ_ERROR;
            }
        }
    }
    // Unlike a disk file, an entry has a known size, so asking for more than is left is the caller's mistake (or
    // a damaged archive): say so, and hand back what was there.
    if (got != bytes)
        LX_ERROR("LxZippedInputFile::Read().  Tried to read: %u bytes.  Only read: %d bytes.  I/O error??", bytes,
                 static_cast<int>(got));
    return got;
}

bool LxZippedInputFile::Write(const void*, unsigned int)
{
    return false;
}

bool LxZippedInputFile::Skip(unsigned int bytes)
{
    unsigned char scratch[4096];
    while (bytes)
    {
        const unsigned int chunk = bytes < sizeof(scratch) ? bytes : static_cast<unsigned int>(sizeof(scratch));
        if (Read(scratch, chunk) != chunk)
            return false;
        bytes -= chunk;
    }
    return true;
}

bool LxZippedInputFile::Seek(long offset, SeekOrigin origin)
{
    if (!m_bOpen)
        return false;
    const long long size = static_cast<long long>(m_entry.uncompressedSize);
    long long target = offset;
    if (origin == SEEK_FROM_CURRENT)
        target += m_nPosition;
    else if (origin == SEEK_FROM_END)
        target += size;
    else if (origin != SEEK_FROM_START)
        return false;
    if (target < 0 || target > size)
        return false;
    if (target == m_nPosition)
        return true;
    // Decompression only runs forward: going back means starting the entry again.
    if (target < m_nPosition && !OpenEntry())
        return false;
    return Skip(static_cast<unsigned int>(target - m_nPosition));
}

unsigned int LxZippedInputFile::GetSize() const
{
    return m_bOpen ? static_cast<unsigned int>(m_entry.uncompressedSize) : 0;
}

bool LxZippedInputFile::Flush()
{
    return m_bOpen;
}
