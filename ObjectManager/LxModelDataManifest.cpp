#include "ObjectManager/LxModelDataManifest.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxModelADB.h"
#include "ObjectManager/LxModelDataManifestEntry.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTextParse.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"

#include <memory>

namespace
{
const char* const kManifestFile = "manifest.txt";
const char* const kManifestHeader = "[LxModelData Manifest v1]";

// An item's file must stay inside the archive: no absolute path, no drive, no ".." component.
bool IsSafeFileName(const LxString& name)
{
    const LxString n = LxArchive::NormalizeName(name);
    if (n.IsEmpty() || n[0] == '/' || n.Find(':') >= 0)
        return false;
    LxArray<LxString> parts;
    n.Split("/", parts, true);
    for (const LxString& part : parts)
        if (LxTextIs(part, ".."))
            return false;
    return true;
}
} // namespace

LxModelDataManifest::~LxModelDataManifest()
{
    for (LxModelDataManifestEntry* entry : m_entries)
        delete entry;
}

LxModelDataManifest* LxModelDataManifest::ExtractFromArchive(const LxArchive& archive)
{
    std::unique_ptr<LxFile> file(archive.FileExists(kManifestFile, nullptr) ? archive.OpenFile(kManifestFile, "r")
                                                                            : nullptr);
    if (!file)
    {
        LX_ERROR("Couldn't find manifest file in archive.");
        return nullptr;
    }
    LxList<LxString> lines;
    if (!file->ReadTextLines(lines))
    {
        LX_ERROR("Error occurred while reading manifest file.");
        return nullptr;
    }
    return ParseLines(lines);
}

LxModelDataManifest* LxModelDataManifest::ParseLines(const LxList<LxString>& lines)
{
    if (lines.IsEmpty() || !LxTextIs(lines.GetFirst(), kManifestHeader))
    {
        LX_ERROR("Unsupported manifest file version.");
        return nullptr;
    }
    std::unique_ptr<LxModelDataManifest> manifest(new LxModelDataManifest);
    bool first = true;
    for (const LxString& line : lines)
    {
        if (first)
        {
            first = false;
            continue;
        }
        LxArray<LxString> tokens;
        line.Split(" ", tokens);
        if (tokens.GetCount() < 3 || tokens.GetCount() > 6)
        {
            LX_WARNING("Malformed line in object manifest file.");
            continue;
        }
        LxMD5Hash hash;
        if (tokens.GetCount() < 4 || !LxMD5Hash::FromString(tokens[3], &hash))
        {
            LX_ERROR("Syntax error in manifest file.");
            return nullptr;
        }
        LxModelDataType type;
        if (LxTextIs(tokens[0], "VB"))
            type = LX_MODEL_DATA_VB;
        else if (LxTextIs(tokens[0], "IB"))
            type = LX_MODEL_DATA_IB;
        else if (LxTextIs(tokens[0], "ADB"))
            type = LX_MODEL_DATA_ADB;
        else if (LxTextIs(tokens[0], "TEX"))
            type = LX_MODEL_DATA_TEX;
        else
        {
            LX_ERROR("Unknown item type: %s", tokens[0].c_str());
            return nullptr;
        }
        if (!IsSafeFileName(tokens[2]))
        {
            LX_ERROR("Item file name leaves the archive: %s", tokens[2].c_str());
            return nullptr;
        }
        std::unique_ptr<LxModelDataManifestEntry> entry(new LxModelDataManifestEntry(type, tokens[1], tokens[2], hash));
        if (type == LX_MODEL_DATA_ADB)
        {
            if (tokens.GetCount() < 5)
            {
                LX_ERROR("Missing usage field for ADB");
                return nullptr;
            }
            entry->SetUsage(tokens[4]);
            if (tokens.GetCount() >= 6)
            {
                if (LxTextIs(tokens[5], "TEXT"))
                    entry->SetStorageFormat(LxModelADB::STORAGE_TEXT);
                else if (!LxTextIs(tokens[5], "BINARY"))
                {
                    LX_ERROR("Unkown ADB parameter: %s", tokens[5].c_str());
                    return nullptr;
                }
            }
        }
        manifest->m_entries.Add(entry.release());
    }
    return manifest.release();
}

bool LxModelDataManifest::WriteToArchive(const LxArchive& archive) const
{
    std::unique_ptr<LxFile> file(archive.OpenFile(kManifestFile, "w"));
    LxString text(kManifestHeader);
    text += "\n";
    for (const LxModelDataManifestEntry* entry : m_entries)
        text += entry->ToText();
    bool ok = file && file->Write(text) && file->Flush();
    if (file)
        file->Close();
    if (!ok)
        LX_ERROR("Error writing manifest file.");
    return ok;
}

LxModelDataManifestEntry* LxModelDataManifest::GetEntryByName(const LxString& name) const
{
    for (LxModelDataManifestEntry* entry : m_entries)
        if (entry->GetName() == name)
            return entry;
    return nullptr;
}

LxModelDataManifestEntry* LxModelDataManifest::GetEntryByADBUsage(const LxString& usage) const
{
    for (LxModelDataManifestEntry* entry : m_entries)
        if (entry->GetType() == LX_MODEL_DATA_ADB && entry->GetUsage() == usage)
            return entry;
    return nullptr;
}

LxModelDataManifestEntry* LxModelDataManifest::AddItem(LxModelDataItem* item)
{
    LxMD5Hash hash;
    item->ComputeHash(&hash);
    LxModelDataManifestEntry* entry =
        new LxModelDataManifestEntry(item->GetType(), item->GetName(), item->GetFileName(), hash);
    entry->SetItem(item);
    m_entries.Add(entry);
    return entry;
}

LxModelDataManifestEntry* LxModelDataManifest::AddModelDataItem(LxModelVB* item)
{
    return AddItem(item);
}

LxModelDataManifestEntry* LxModelDataManifest::AddModelDataItem(LxModelIB* item)
{
    return AddItem(item);
}

LxModelDataManifestEntry* LxModelDataManifest::AddModelDataItem(LxModelTexture* item)
{
    return AddItem(item);
}

LxModelDataManifestEntry* LxModelDataManifest::AddModelDataItem(LxModelADB* item)
{
    LxModelDataManifestEntry* entry = AddItem(item);
    entry->SetUsage(item->GetUsage());
    entry->SetStorageFormat(item->GetStorageFormat());
    return entry;
}

bool LxModelDataManifest::RemoveDataItem(LxModelDataManifestEntry* entry)
{
    const int index = m_entries.Find(entry);
    if (index < 0)
    {
        LX_ERROR("Attempted to remove a non-existing entry from a model manifest!");
        return false;
    }
    m_entries.RemoveAt(static_cast<unsigned int>(index));
    delete entry;
    return true;
}
