#include "ObjectManager/LxModelDataMetaFile.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxModelTextParse.h"

#include <memory>

namespace
{
const char* const kMetaFile = "metafile.txt";
const char* const kMetaHeader = "[LxModelData Metafile v1]";
} // namespace

LxModelDataMetaFile* LxModelDataMetaFile::ExtractFromArchive(const LxArchive& archive)
{
    std::unique_ptr<LxFile> file(archive.FileExists(kMetaFile, nullptr) ? archive.OpenFile(kMetaFile, "r") : nullptr);
    if (!file)
    {
        LX_ERROR("Couldn't find metafile file in archive.");
        return nullptr;
    }
    LxList<LxString> lines;
    if (!file->ReadTextLines(lines))
    {
        LX_ERROR("Error occurred while reading metafile file.");
        return nullptr;
    }
    return ParseLines(lines);
}

LxModelDataMetaFile* LxModelDataMetaFile::ParseLines(const LxList<LxString>& lines)
{
    if (lines.IsEmpty() || !LxTextIs(lines.GetFirst(), kMetaHeader))
    {
        LX_ERROR("Unsupported metafile version.");
        return nullptr;
    }
    LxModelDataMetaFile* meta = new LxModelDataMetaFile;
    meta->m_entries.Reserve(lines.GetCount() - 1);
    bool first = true;
    for (const LxString& line : lines)
    {
        if (!first)
            meta->AddEntry(line);
        first = false;
    }
    return meta;
}

bool LxModelDataMetaFile::WriteToArchive(const LxArchive& archive) const
{
    LxString text(kMetaHeader);
    text += "\n";
    for (const LxString& entry : m_entries)
    {
        text += entry;
        text += "\n";
    }
    std::unique_ptr<LxFile> file(archive.OpenFile(kMetaFile, "w"));
    const bool ok = file && file->Write(text) && file->Flush();
    if (file)
        file->Close();
    if (!ok)
        LX_ERROR("Error writing metafile.");
    return ok;
}
