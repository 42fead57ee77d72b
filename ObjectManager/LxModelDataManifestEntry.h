// LxModelDataManifestEntry: one line of a model archive's manifest: the item's type, name, file name inside the
// archive and MD5 hash, for an ADB its usage string and storage format, and the item itself once loaded.
//
// The entry owns its item (SetItem takes ownership and deletes the previous one). LoadItem reads the item file
// through LxModelDataSerializer and replaces the item only on success; on failure it has logged an error and the
// entry keeps whatever it held. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxMD5Hash.h"
#include "Common/LxString.h"
#include "ObjectManager/LxModelADB.h"
#include "ObjectManager/LxModelDataType.h"

class LxArchive;
class LxFile;
class LxModelDataItem;

class LX_API LxModelDataManifestEntry
{
public:
    LxModelDataManifestEntry(LxModelDataType type, const LxString& name, const LxString& fileName,
                             const LxMD5Hash& hash);
    ~LxModelDataManifestEntry();
    LxModelDataManifestEntry(const LxModelDataManifestEntry&) = delete;
    LxModelDataManifestEntry& operator=(const LxModelDataManifestEntry&) = delete;

    LxModelDataType GetType() const { return m_type; }
    const LxString& GetName() const { return m_name; }
    const LxString& GetFileName() const { return m_fileName; }
    const LxMD5Hash& GetHash() const { return m_hash; }
    // ADB entries only: whose block it is and how its file is stored.
    const LxString& GetUsage() const { return m_usage; }
    LxModelADB::StorageFormat GetStorageFormat() const { return m_format; }
    void SetUsage(const LxString& usage) { m_usage = usage; }
    void SetStorageFormat(LxModelADB::StorageFormat format) { m_format = format; }

    // Null until the item is loaded or added.
    LxModelDataItem* GetItem() const { return m_pItem; }
    void SetItem(LxModelDataItem* item);

    // "VB name file hash\n" (likewise IB, TEX), or "ADB name file hash usage TEXT|BINARY\n".
    bool WriteToTextFile(LxFile& file) const;
    LxString ToText() const;
    // The archive's time stamp of the item file; false after "Unable to retrieve time stamp ...".
    bool GetItemTimeStamp(const LxArchive& archive, long long* time) const;
    // Reads the item file with the reader of the entry's type (and storage format for an ADB).
    bool LoadItem(const LxArchive& archive);

private:
    LxModelDataType m_type;
    LxString m_name;
    LxString m_fileName;
    LxMD5Hash m_hash;
    LxString m_usage;
    LxModelADB::StorageFormat m_format = LxModelADB::STORAGE_BINARY;
    LxModelDataItem* m_pItem = nullptr;
};
