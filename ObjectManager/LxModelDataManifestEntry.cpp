#include "ObjectManager/LxModelDataManifestEntry.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxModelDataItem.h"
#include "ObjectManager/LxModelDataSerializer.h"

namespace
{
const char* TypeWord(LxModelDataType type)
{
    switch (type)
    {
    case LX_MODEL_DATA_VB:
        return "VB";
    case LX_MODEL_DATA_IB:
        return "IB";
    case LX_MODEL_DATA_TEX:
        return "TEX";
    default:
        return "ADB";
    }
}
} // namespace

LxModelDataManifestEntry::LxModelDataManifestEntry(LxModelDataType type, const LxString& name, const LxString& fileName,
                                                   const LxMD5Hash& hash)
    : m_type(type), m_name(name), m_fileName(fileName), m_hash(hash)
{
}

LxModelDataManifestEntry::~LxModelDataManifestEntry()
{
    delete m_pItem;
}

void LxModelDataManifestEntry::SetItem(LxModelDataItem* item)
{
    if (item != m_pItem)
        delete m_pItem;
    m_pItem = item;
}

LxString LxModelDataManifestEntry::ToText() const
{
    LxString line(TypeWord(m_type));
    line += " ";
    line += m_name;
    line += " ";
    line += m_fileName;
    line += " ";
    line += m_hash.ToString();
    if (m_type == LX_MODEL_DATA_ADB)
    {
        line += " ";
        line += m_usage;
        line += m_format == LxModelADB::STORAGE_TEXT ? " TEXT" : " BINARY";
    }
    line += "\n";
    return line;
}

bool LxModelDataManifestEntry::WriteToTextFile(LxFile& file) const
{
    return file.Write(ToText());
}

bool LxModelDataManifestEntry::GetItemTimeStamp(const LxArchive& archive, long long* time) const
{
    long long t = 0;
    if (!archive.GetFileTime(m_fileName, t))
    {
        LX_ERROR("Unable to retrieve time stamp from file '%s'  in archive '%s'.", m_fileName.c_str(),
                 archive.GetName().c_str());
        return false;
    }
    *time = t;
    return true;
}

bool LxModelDataManifestEntry::LoadItem(const LxArchive& archive)
{
    LxModelDataSerializer serializer;
    switch (m_type)
    {
    case LX_MODEL_DATA_VB:
        return serializer.ReadVB(archive, *this);
    case LX_MODEL_DATA_IB:
        return serializer.ReadIB(archive, *this);
    case LX_MODEL_DATA_TEX:
        return serializer.ReadTexture(archive, *this);
    case LX_MODEL_DATA_ADB:
        return m_format == LxModelADB::STORAGE_TEXT ? serializer.ReadTextADB(archive, *this)
                                                    : serializer.ReadADB(archive, *this);
    }
    return false;
}
