// LxZipArchive: the files of a zip archive (read through minizip), or a new zip archive being written.
//
// Reading: the constructor walks the central directory once into a hash map from normalised entry name to the
// entry's place and sizes, so FileExists and OpenFile are constant-time. Each opened entry gets its own minizip
// reader, so several entries may be open at once. Entries whose declared sizes cannot fit the archive are refused
// at OpenFile rather than trusted with an allocation. Only reading modes are accepted.
// Writing (CreateNewZipFile): OpenFile with a writing mode adds an entry; one entry may be open at a time and must
// be closed (or deleted) before the archive is deleted, which finishes the zip file.
// Missing names fall back to the global archive. Not thread-safe.
#pragma once

#include "Common/LxArchive.h"
#include "Common/LxHashMap.h"

class LxZippedOutputFile;

class LX_API LxZipArchive : public LxArchive
{
public:
    // Opens an existing zip file for reading; on failure logs "LxZipArchive.  Errors initializing directory
    // cache!" and stays empty (IsValid() false).
    explicit LxZipArchive(const LxString& path);
    ~LxZipArchive() override;

    // A new, empty zip file for writing; null when it cannot be created.
    static LxZipArchive* CreateNewZipFile(LxString path);

    bool FileExists(const LxString& name, LxString* fullPath) const override;
    LxFile* OpenFile(const LxString& name, const LxString& mode) const override;
    bool GetFileTime(const LxString& name, long long& time) const override;
    const LxString& GetName() const override { return m_name; }

    bool IsValid() const { return m_pReader != nullptr || m_pWriter != nullptr; }
    bool IsWriting() const { return m_pWriter != nullptr; }
    unsigned int GetEntryCount() const { return m_directory.GetCount(); }

    // Where an entry lives and what its central directory says of it.
    struct EntryInfo
    {
        unsigned long long directoryOffset; // position of the entry in the central directory
        unsigned long long fileNumber;      // index of the entry
        unsigned long long compressedSize;
        unsigned long long uncompressedSize;
        unsigned long method;
        unsigned long crc;
        long long time; // 100-ns ticks since 1601
    };

private:
    friend class LxZippedOutputFile;
    LxZipArchive(const LxString& path, void* writer);
    void OnOutputClosed(const LxString& name);
    bool BuildDirectory();

    LxString m_name;
    void* m_pReader = nullptr; // unzFile, only for walking the directory
    void* m_pWriter = nullptr; // zipFile of an archive being written
    unsigned long long m_nArchiveSize = 0;
    LxHashMap<LxString, EntryInfo, LxStringHasher> m_directory;
    mutable LxZippedOutputFile* m_pOpenOutput = nullptr;
};
