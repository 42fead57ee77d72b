// LxModelDataMetaFile: free-text entries that travel with a model archive ("metafile.txt"): the exporter's name,
// source file, units and the like, one entry per line, kept in order.
// Readers log an error and return null; the writer returns false after "Error writing metafile.". Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxList.h"
#include "Common/LxString.h"

class LxArchive;

class LX_API LxModelDataMetaFile
{
public:
    LxModelDataMetaFile() = default;

    // An entry holding a line break would come back as several entries; the caller keeps entries to one line.
    void AddEntry(const LxString& entry) { m_entries.Add(entry); }
    unsigned int GetCount() const { return m_entries.GetCount(); }
    const LxString& GetEntry(unsigned int index) const { return m_entries[index]; }
    void Clear() { m_entries.Clear(); }

    static LxModelDataMetaFile* ExtractFromArchive(const LxArchive& archive);
    static LxModelDataMetaFile* ParseLines(const LxList<LxString>& lines);
    bool WriteToArchive(const LxArchive& archive) const;

private:
    LxArray<LxString> m_entries;
};
