// LxModelDataManifest: the list of data items of a model archive ("manifest.txt"), in file order.
//
// File: the header line "[LxModelData Manifest v1]", then one line per item: "VB|IB|TEX name file hash" or
// "ADB name file hash usage [TEXT|BINARY]" (no format word means binary). Lines with fewer than 3 or more than 6
// tokens are skipped with a warning; any other fault ends the read with an error and no manifest.
//
// The manifest owns its entries, and each entry owns its item once loaded or added. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxList.h"
#include "Common/LxString.h"

class LxArchive;
class LxModelADB;
class LxModelDataItem;
class LxModelDataManifestEntry;
class LxModelIB;
class LxModelTexture;
class LxModelVB;

class LX_API LxModelDataManifest
{
public:
    LxModelDataManifest() = default;
    ~LxModelDataManifest();
    LxModelDataManifest(const LxModelDataManifest&) = delete;
    LxModelDataManifest& operator=(const LxModelDataManifest&) = delete;

    // Reads "manifest.txt" of the archive; null after an error.
    static LxModelDataManifest* ExtractFromArchive(const LxArchive& archive);
    // The same from lines already read (the header first).
    static LxModelDataManifest* ParseLines(const LxList<LxString>& lines);
    // Writes "manifest.txt": the header, then one line per entry in order.
    bool WriteToArchive(const LxArchive& archive) const;

    unsigned int GetCount() const { return m_entries.GetCount(); }
    LxModelDataManifestEntry* GetEntry(unsigned int index) const { return m_entries[index]; }
    // The first entry with that name / ADB usage, or null.
    LxModelDataManifestEntry* GetEntryByName(const LxString& name) const;
    LxModelDataManifestEntry* GetEntryByADBUsage(const LxString& usage) const;

    // Each appends an entry made from the item (type, name, file name, hash, and for an ADB its usage and storage
    // format); the entry takes ownership of the item. Returns the new entry.
    LxModelDataManifestEntry* AddModelDataItem(LxModelVB* item);
    LxModelDataManifestEntry* AddModelDataItem(LxModelIB* item);
    LxModelDataManifestEntry* AddModelDataItem(LxModelTexture* item);
    LxModelDataManifestEntry* AddModelDataItem(LxModelADB* item);
    // Removes and deletes the entry (and its item); an entry not in this manifest is refused with an error.
    bool RemoveDataItem(LxModelDataManifestEntry* entry);

private:
    LxModelDataManifestEntry* AddItem(LxModelDataItem* item);

    LxArray<LxModelDataManifestEntry*> m_entries;
};
