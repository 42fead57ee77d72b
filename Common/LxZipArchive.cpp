#include "Common/LxZipArchive.h"

#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxPlatform.h"
#include "Common/LxZippedInputFile.h"
#include "Common/LxZippedOutputFile.h"

#include <minizip/unzip.h>
#include <minizip/zip.h>

namespace
{
// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long long DaysFromCivil(long long y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

// Zip times carry no zone; they are taken as UTC on the FILETIME scale.
long long ZipTimeToTicks(const tm_unz& t)
{
    const long long days = DaysFromCivil(t.tm_year, t.tm_mon + 1, t.tm_mday);
    const long long seconds = days * 86400 + t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec;
    return (seconds + 11644473600LL) * 10000000LL;
}

// fopen-style modes: r, w or a, then any of b, t and + (each at most once).
bool IsValidMode(const LxString& mode, bool& reading)
{
    if (mode.IsEmpty() || mode.GetLength() > 4 || (mode[0] != 'r' && mode[0] != 'w' && mode[0] != 'a'))
        return false;
    bool seen[3] = {false, false, false};
    for (unsigned int i = 1; i < mode.GetLength(); ++i)
    {
        const int k = mode[i] == 'b' ? 0 : mode[i] == 't' ? 1 : mode[i] == '+' ? 2 : -1;
        if (k < 0 || seen[k])
            return false;
        seen[k] = true;
    }
    reading = mode[0] == 'r' && !seen[2];
    return true;
}

// The name of a zip compression method (APPNOTE numbering), for the message that refuses it.
const char* CompressionMethodName(unsigned long method)
{
    switch (method)
    {
    case 1:
        return "shrink";
    case 2:
    case 3:
    case 4:
    case 5:
        return "reduce";
    case 6:
        return "implode";
    case 9:
        return "deflate64";
    case 10:
        return "PKWARE DCL implode";
    case 12:
        return "bzip2";
    case 14:
        return "LZMA";
    case 18:
        return "IBM TERSE";
    case 19:
        return "IBM LZ77";
    case 93:
        return "Zstandard";
    case 95:
        return "xz";
    case 96:
        return "JPEG";
    case 97:
        return "WavPack";
    case 98:
        return "PPMd";
    case 99:
        return "AES encryption";
    default:
        return "unknown";
    }
}

// Deflate cannot expand data by more than about 1032:1; stored entries are their own size.
bool SizesFit(const LxZipArchive::EntryInfo& e, unsigned long long archiveSize)
{
    if (e.uncompressedSize > 0xFFFFFFFFull || e.compressedSize > archiveSize)
        return false;
    if (e.method == 0)
        return e.compressedSize == e.uncompressedSize;
    return e.uncompressedSize <= e.compressedSize * 1032ull + 1024ull; // deflate: the only other method read
}
} // namespace

LxZipArchive::LxZipArchive(const LxString& path) : m_name(path), m_directory(64, 0.5f)
{
    LxFile* probe = LxFile::Open(path, LxString("rb"));
    if (probe->IsOpen())
        m_nArchiveSize = probe->GetSize();
    delete probe;

    m_pReader = unzOpen64(path.c_str());
    if (!m_pReader || !BuildDirectory())
    {
        if (m_pReader)
            unzClose(static_cast<unzFile>(m_pReader));
        m_pReader = nullptr;
        m_directory.Clear();
        LX_ERROR("LxZipArchive.  Errors initializing directory cache!");
    }
}

LxZipArchive::LxZipArchive(const LxString& path, void* writer) : m_name(path), m_pWriter(writer), m_directory(64, 0.5f)
{
}

LxZipArchive::~LxZipArchive()
{
    if (m_pOpenOutput)
        m_pOpenOutput->Detach();
    if (m_pReader)
        unzClose(static_cast<unzFile>(m_pReader));
    if (m_pWriter)
        zipClose(static_cast<zipFile>(m_pWriter), nullptr);
}

bool LxZipArchive::BuildDirectory()
{
    unzFile uf = static_cast<unzFile>(m_pReader);
    unz_global_info64 global;
    if (unzGetGlobalInfo64(uf, &global) != UNZ_OK)
        return false;
    if (global.number_entry == 0)
        return true;
    // Each central directory record takes at least 46 bytes: a larger count is a lie.
    if (m_nArchiveSize && global.number_entry > m_nArchiveSize / 46)
        return false;
    LxArray<char> name;
    int err = unzGoToFirstFile(uf);
    unsigned long long walked = 0;
    while (err == UNZ_OK)
    {
        unz_file_info64 info;
        if (unzGetCurrentFileInfo64(uf, &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK)
            return false;
        name.Resize(static_cast<unsigned int>(info.size_filename) + 1);
        if (unzGetCurrentFileInfo64(uf, &info, name.GetData(), info.size_filename + 1, nullptr, 0, nullptr, 0) !=
            UNZ_OK)
            return false;
        unz64_file_pos pos;
        if (unzGetFilePos64(uf, &pos) != UNZ_OK)
            return false;
        EntryInfo entry;
        entry.directoryOffset = pos.pos_in_zip_directory;
        entry.fileNumber = pos.num_of_file;
        entry.compressedSize = info.compressed_size;
        entry.uncompressedSize = info.uncompressed_size;
        entry.method = info.compression_method;
        entry.crc = info.crc;
        entry.time = ZipTimeToTicks(info.tmu_date);
        m_directory.Insert(NormalizeName(LxString(name.GetData(), static_cast<unsigned int>(info.size_filename))),
                           entry);
        ++walked;
        err = unzGoToNextFile(uf);
    }
    return err == UNZ_END_OF_LIST_OF_FILE && walked == global.number_entry;
}

LxZipArchive* LxZipArchive::CreateNewZipFile(LxString path)
{
    zipFile zf = zipOpen64(path.c_str(), APPEND_STATUS_CREATE);
    if (!zf)
    {
        LX_ERROR("LxZipArchive::CreateNewZipFile.  Couldn't create zip file %s", path.c_str());
        return nullptr;
    }
    return new LxZipArchive(path, zf);
}

bool LxZipArchive::FileExists(const LxString& name, LxString* fullPath) const
{
    const LxString normalized = NormalizeName(name);
    if (m_directory.Contains(normalized))
    {
        if (fullPath)
            *fullPath = normalized;
        return true;
    }
    const LxArchive* global = LxGetGlobalArchive();
    return global && global != this && global->FileExists(name, fullPath);
}

LxFile* LxZipArchive::OpenFile(const LxString& name, const LxString& mode) const
{
    bool reading = false;
    if (!IsValidMode(mode, reading))
    {
        LX_ERROR("%s(): Invalid access mode string", "LxZipArchive::OpenFile");
        return nullptr;
    }
    const LxString normalized = NormalizeName(name);
    if (m_pWriter)
    {
        if (reading)
        {
            LX_ERROR("LxZipArchive::OpenFile.  %s is being written; entries can be read once it is finished.",
                     m_name.c_str());
            return nullptr;
        }
        if (m_pOpenOutput)
        {
            LX_ERROR("LxZipArchive::OpenFile.  Another entry of %s is still open for writing.", m_name.c_str());
            return nullptr;
        }
        LxZipArchive* self = const_cast<LxZipArchive*>(this);
        LxZippedOutputFile* file = new LxZippedOutputFile(self, m_pWriter, normalized);
        if (!file->IsOpen())
        {
            delete file;
            LX_ERROR("LxZipArchive::OpenFile.  Couldn't add %s to %s", normalized.c_str(), m_name.c_str());
            return nullptr;
        }
        m_pOpenOutput = file;
        return file;
    }
    if (!reading)
    {
        LX_ERROR("Opening a file in a zip archive for reading and writing is not supported");
        return nullptr;
    }
    const EntryInfo* entry = m_directory.FindValue(normalized);
    if (!entry)
    {
        const LxArchive* global = LxGetGlobalArchive();
        if (global && global != this && global->FileExists(name, nullptr))
            return global->OpenFile(name, mode);
        LX_ERROR("Couldn't open zip archive for reading!!  FileExists() fails!!");
        return nullptr;
    }
    if (entry->method != 0 && entry->method != Z_DEFLATED)
    {
        LX_ERROR("LxZipArchive::OpenFile.  Entry %s of %s is compressed with method %lu (%s), which is not supported: "
                 "only stored (0) and deflate (8) entries can be read.",
                 normalized.c_str(), m_name.c_str(), entry->method, CompressionMethodName(entry->method));
        return nullptr;
    }
    if (!SizesFit(*entry, m_nArchiveSize))
    {
        LX_ERROR("LxZipArchive::OpenFile.  Entry %s of %s declares sizes that cannot fit the archive (compressed %llu, "
                 "uncompressed %llu, method %lu).",
                 normalized.c_str(), m_name.c_str(), entry->compressedSize, entry->uncompressedSize, entry->method);
        return nullptr;
    }
    LxZippedInputFile* file = new LxZippedInputFile(m_name, normalized, *entry);
    if (!file->IsOpen())
    {
        delete file;
        return nullptr;
    }
    return file;
}

bool LxZipArchive::GetFileTime(const LxString& name, long long& time) const
{
    const EntryInfo* entry = m_directory.FindValue(NormalizeName(name));
    if (entry)
    {
        time = entry->time;
        return true;
    }
    const LxArchive* global = LxGetGlobalArchive();
    return global && global != this && global->GetFileTime(name, time);
}

void LxZipArchive::OnOutputClosed(const LxString& name)
{
    m_pOpenOutput = nullptr;
    EntryInfo entry = {};
    int year, month, day, hour, minute, second;
    LxPlatform::GetLocalDateTime(year, month, day, hour, minute, second);
    tm_unz t;
    t.tm_year = static_cast<uInt>(year);
    t.tm_mon = static_cast<uInt>(month - 1);
    t.tm_mday = static_cast<uInt>(day);
    t.tm_hour = static_cast<uInt>(hour);
    t.tm_min = static_cast<uInt>(minute);
    t.tm_sec = static_cast<uInt>(second);
    entry.time = ZipTimeToTicks(t);
    m_directory.Set(name, entry);
}
