// LxModelADB: an animation data block, an opaque block of bytes that another part of the framework fills and
// reads back (its usage string says whose it is), with that owner's version number. Stored in the archive either
// as a binary item file or as plain text (the file is the data). Plain data; the owner (a manifest entry) deletes
// it.
#pragma once

#include "ObjectManager/LxModelDataItem.h"

class LX_API LxModelADB : public LxModelDataItem
{
public:
    // The values are those of the manifest entry's storage format.
    enum StorageFormat
    {
        STORAGE_BINARY = 0,
        STORAGE_TEXT = 1
    };

    LxModelADB(const LxString& name, const LxString& fileName, const LxString& usage, StorageFormat format,
               unsigned int version)
        : LxModelDataItem(name, fileName), m_usage(usage), m_format(format), m_nVersion(version)
    {
    }
    LxModelDataType GetType() const override { return LX_MODEL_DATA_ADB; }
    const LxString& GetUsage() const { return m_usage; }
    StorageFormat GetStorageFormat() const { return m_format; }
    unsigned int GetVersion() const { return m_nVersion; }
    // The byte count of the block (the data's size).
    unsigned int GetADBSize() const { return GetDataSize(); }

protected:
    void HashDescription(LxMD5Hash::Builder& builder) const override;

private:
    LxString m_usage;
    StorageFormat m_format;
    unsigned int m_nVersion;
};
