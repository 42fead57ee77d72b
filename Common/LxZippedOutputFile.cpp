#include "Common/LxZippedOutputFile.h"

#include "Common/LxPlatform.h"
#include "Common/LxZipArchive.h"

#include <cstring>
#include <minizip/zip.h>

LxZippedOutputFile::LxZippedOutputFile(LxZipArchive* archive, void* writer, const LxString& name)
    : LxFile(name), m_pArchive(archive), m_pWriter(writer)
{
    zip_fileinfo info;
    std::memset(&info, 0, sizeof(info));
    int year, month, day, hour, minute, second;
    LxPlatform::GetLocalDateTime(year, month, day, hour, minute, second);
    info.tmz_date.tm_year = static_cast<uInt>(year);
    info.tmz_date.tm_mon = static_cast<uInt>(month - 1);
    info.tmz_date.tm_mday = static_cast<uInt>(day);
    info.tmz_date.tm_hour = static_cast<uInt>(hour);
    info.tmz_date.tm_min = static_cast<uInt>(minute);
    info.tmz_date.tm_sec = static_cast<uInt>(second);
    m_bOpen = zipOpenNewFileInZip64(static_cast<zipFile>(m_pWriter), name.c_str(), &info, nullptr, 0, nullptr, 0,
                                    nullptr, Z_DEFLATED, Z_DEFAULT_COMPRESSION, 0) == ZIP_OK;
}

LxZippedOutputFile::~LxZippedOutputFile()
{
    Close();
}

void LxZippedOutputFile::Close()
{
    if (!m_bOpen)
        return;
    m_bOpen = false;
    if (m_pWriter)
        zipCloseFileInZip(static_cast<zipFile>(m_pWriter));
    if (m_pArchive)
        m_pArchive->OnOutputClosed(m_name);
    m_pArchive = nullptr;
    m_pWriter = nullptr;
}

void LxZippedOutputFile::Detach()
{
    // The archive finishes the zip file itself; close the entry while the writer still exists.
    if (m_bOpen && m_pWriter)
        zipCloseFileInZip(static_cast<zipFile>(m_pWriter));
    m_bOpen = false;
    m_pArchive = nullptr;
    m_pWriter = nullptr;
}

unsigned int LxZippedOutputFile::Read(void*, unsigned int)
{
    return 0;
}

bool LxZippedOutputFile::Write(const void* buffer, unsigned int bytes)
{
    if (!m_bOpen)
        return false;
    if (zipWriteInFileInZip(static_cast<zipFile>(m_pWriter), buffer, bytes) != ZIP_OK)
        return false;
    m_nSize += bytes;
    return true;
}

bool LxZippedOutputFile::Seek(long offset, SeekOrigin origin)
{
    // Only the no-op seek works on a deflate stream.
    return m_bOpen && offset == 0 && origin == SEEK_FROM_CURRENT;
}
