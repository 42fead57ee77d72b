#include "ObjectManager/LxModelDataSerializer.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"
#include "ObjectManager/LxModelADB.h"
#include "ObjectManager/LxModelDataManifestEntry.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"

#include <memory>

namespace
{
const unsigned int kHeaderVersion = 1;
const unsigned int kItemVersion = 1;

struct FileDeleter
{
    void operator()(LxFile* file) const { delete file; }
};
typedef std::unique_ptr<LxFile, FileDeleter> FilePtr;
} // namespace

LxModelDataSerializer::~LxModelDataSerializer()
{
    ReleaseFileHandle();
}

LxFile* LxModelDataSerializer::OpenForReading(const LxArchive& archive, const LxString& fileName)
{
    LxFile* file = archive.FileExists(fileName, nullptr) ? archive.OpenFile(fileName, "rb") : nullptr;
    if (!file || !SetFileHandle(file))
    {
        delete file;
        LX_ERROR("File: %s not found in archive.", fileName.c_str());
        return nullptr;
    }
    m_nRemaining = file->GetSize();
    return file;
}

LxFile* LxModelDataSerializer::OpenForWriting(const LxArchive& archive, const LxString& fileName)
{
    LxFile* file = archive.OpenFile(fileName, "wb");
    if (!file || !SetFileHandle(file))
    {
        delete file;
        LX_ERROR("Error opening file: '%s' in archive: '%s'", fileName.c_str(), archive.GetName().c_str());
        return nullptr;
    }
    return file;
}

void LxModelDataSerializer::Detach(LxFile* file)
{
    ReleaseFileHandle();
    delete file;
}

bool LxModelDataSerializer::Finish(const LxArchive& archive, LxFile* file, bool written)
{
    const LxString name = file->GetName();
    written = written && file->Flush();
    // Closing finishes a zip entry; only then is the write complete.
    file->Close();
    Detach(file);
    if (!written)
        LX_ERROR("Error writing to file: '%s' in archive: '%s'", name.c_str(), archive.GetName().c_str());
    return written;
}

bool LxModelDataSerializer::ReadU32(unsigned int* value)
{
    if (!ReadUInt32(value, 1))
        return false;
    m_nRemaining -= m_nRemaining < 4 ? m_nRemaining : 4;
    return true;
}

bool LxModelDataSerializer::ReadU16(unsigned short* value)
{
    if (!ReadUInt16(value, 1))
        return false;
    m_nRemaining -= m_nRemaining < 2 ? m_nRemaining : 2;
    return true;
}

bool LxModelDataSerializer::ReadU8(unsigned char* value)
{
    if (!ReadUInt8(value, 1))
        return false;
    m_nRemaining -= m_nRemaining < 1 ? m_nRemaining : 1;
    return true;
}

bool LxModelDataSerializer::ReadBlock(unsigned long long size, LxCountedPtr<LxMemoryBuffer>& out, bool* outOfMemory)
{
    out = nullptr;
    if (size > m_nRemaining)
        return false;
    if (size == 0)
        return true;
    LxMemoryBuffer* block = LxMemoryBuffer::Allocate(static_cast<unsigned int>(size));
    if (!block)
    {
        if (outOfMemory)
            *outOfMemory = true;
        return false;
    }
    LxCountedPtr<LxMemoryBuffer> owned(block);
    if (!ReadData(block->GetData(), 1, static_cast<unsigned int>(size)))
        return false;
    m_nRemaining -= static_cast<unsigned int>(size);
    out = owned;
    return true;
}

bool LxModelDataSerializer::ReadHeader(LxCountedPtr<LxMemoryBuffer>& metaData)
{
    unsigned int headerVersion = 0, itemVersion = 0, metaSize = 0;
    if (!ReadU32(&headerVersion))
    {
        LX_ERROR("Error reading item file header.");
        return false;
    }
    if (headerVersion != kHeaderVersion)
    {
        LX_ERROR("Unsupported file version.  You may need to re-build Lumex.");
        return false;
    }
    if (!ReadU32(&itemVersion))
    {
        LX_ERROR("Error reading item file header.");
        return false;
    }
    if (itemVersion != kItemVersion)
    {
        LX_ERROR("Unsupported file version.  You may need to re-build Lumex.");
        return false;
    }
    if (!ReadU32(&metaSize))
    {
        LX_ERROR("Error reading item file header.");
        return false;
    }
    if (!ReadBlock(metaSize, metaData, nullptr))
    {
        LX_ERROR("Error reading meta data.");
        return false;
    }
    return true;
}

bool LxModelDataSerializer::ReadVB(const LxArchive& archive, LxModelDataManifestEntry& entry)
{
    FilePtr file(OpenForReading(archive, entry.GetFileName()));
    if (!file)
        return false;
    LxCountedPtr<LxMemoryBuffer> meta, data;
    LxModelVBDesc desc;
    bool ok = ReadHeader(meta);
    if (ok && !(ok = ReadU32(&desc.vertexCount)))
        LX_ERROR("Error reading vertex count.");
    if (ok && !(ok = ReadU32(&desc.vertexSize) && (desc.vertexSize != 0 || desc.vertexCount == 0)))
        LX_ERROR("Error reading vertex size.");
    if (ok && !(ok = ReadBlock(static_cast<unsigned long long>(desc.vertexCount) * desc.vertexSize, data, nullptr)))
        LX_ERROR("Error reading vertex data.");
    Detach(file.release());
    if (!ok)
        return false;
    LxModelVB* vb = new LxModelVB(entry.GetName(), entry.GetFileName(), desc);
    vb->SetMetaData(meta);
    vb->SetData(data);
    entry.SetItem(vb);
    return true;
}

bool LxModelDataSerializer::ReadIB(const LxArchive& archive, LxModelDataManifestEntry& entry)
{
    FilePtr file(OpenForReading(archive, entry.GetFileName()));
    if (!file)
        return false;
    LxCountedPtr<LxMemoryBuffer> meta, data;
    LxModelIBDesc desc;
    bool ok = ReadHeader(meta);
    if (ok && !(ok = ReadU32(&desc.indexCount)))
        LX_ERROR("Error reading index count.");
    if (ok && !(ok = ReadU8(&desc.indexSize) && (desc.indexSize == 2 || desc.indexSize == 4)))
        LX_ERROR("Error reading index size.");
    if (ok && !(ok = ReadBlock(static_cast<unsigned long long>(desc.indexCount) * desc.indexSize, data, nullptr)))
        LX_ERROR("Error reading index data.");
    Detach(file.release());
    if (!ok)
        return false;
    LxModelIB* ib = new LxModelIB(entry.GetName(), entry.GetFileName(), desc);
    ib->SetMetaData(meta);
    ib->SetData(data);
    entry.SetItem(ib);
    return true;
}

bool LxModelDataSerializer::ReadTexture(const LxArchive& archive, LxModelDataManifestEntry& entry)
{
    FilePtr file(OpenForReading(archive, entry.GetFileName()));
    if (!file)
        return false;
    LxCountedPtr<LxMemoryBuffer> meta, data;
    LxModelTextureDesc desc;
    unsigned int dataSize = 0;
    bool ok = ReadHeader(meta);
    if (ok && !(ok = ReadU16(&desc.format) && ReadU8(&desc.type) && desc.type <= LxModelTextureDesc::TEXTURE_CUBE &&
                     ReadU16(&desc.width) && ReadU16(&desc.height) && ReadU16(&desc.depth) && ReadU8(&desc.mipLevels) &&
                     ReadU16(&desc.arraySize) && ReadU32(&dataSize)))
        LX_ERROR("Error reading texture description.");
    bool outOfMemory = false;
    if (ok && !(ok = ReadBlock(dataSize, data, &outOfMemory)))
    {
        if (outOfMemory)
            LX_ERROR("Out of memory");
        else
            LX_ERROR("Error reading texture data.");
    }
    Detach(file.release());
    if (!ok)
        return false;
    LxModelTexture* texture = new LxModelTexture(entry.GetName(), entry.GetFileName(), desc);
    texture->SetMetaData(meta);
    texture->SetData(data);
    entry.SetItem(texture);
    return true;
}

bool LxModelDataSerializer::ReadADB(const LxArchive& archive, LxModelDataManifestEntry& entry)
{
    FilePtr file(OpenForReading(archive, entry.GetFileName()));
    if (!file)
        return false;
    LxCountedPtr<LxMemoryBuffer> meta, data;
    unsigned int size = 0, version = 0;
    bool ok = ReadHeader(meta);
    if (ok && !(ok = ReadU32(&size)))
        LX_ERROR("Error reading ADB size.");
    if (ok && !(ok = ReadU32(&version)))
        LX_ERROR("Error reading ADB version.");
    if (ok && !(ok = ReadBlock(size, data, nullptr)))
        LX_ERROR("Error reading ADB data.");
    Detach(file.release());
    if (!ok)
        return false;
    LxModelADB* adb =
        new LxModelADB(entry.GetName(), entry.GetFileName(), entry.GetUsage(), LxModelADB::STORAGE_BINARY, version);
    adb->SetMetaData(meta);
    adb->SetData(data);
    entry.SetItem(adb);
    return true;
}

bool LxModelDataSerializer::ReadTextADB(const LxArchive& archive, LxModelDataManifestEntry& entry)
{
    FilePtr file(OpenForReading(archive, entry.GetFileName()));
    if (!file)
        return false;
    ReleaseFileHandle(); // the text is read whole, not through the serializer
    unsigned int size = 0;
    unsigned char* text = static_cast<unsigned char*>(LxFile::ReadFileToBuffer(*file, &size));
    file.reset();
    if (!text)
    {
        LX_ERROR("Error reading ADB text data");
        return false;
    }
    LxModelADB* adb =
        new LxModelADB(entry.GetName(), entry.GetFileName(), entry.GetUsage(), LxModelADB::STORAGE_TEXT, 0);
    if (size)
        adb->SetData(LxCountedPtr<LxMemoryBuffer>(new LxMemoryBuffer(text, size)));
    else
        LxFree(text);
    entry.SetItem(adb);
    return true;
}

bool LxModelDataSerializer::WriteBlock(const LxCountedPtr<LxMemoryBuffer>& block)
{
    return !block || block->GetSize() == 0 || WriteData(*block);
}

bool LxModelDataSerializer::WriteHeader(const LxCountedPtr<LxMemoryBuffer>& metaData)
{
    const unsigned int header[3] = {kHeaderVersion, kItemVersion, metaData ? metaData->GetSize() : 0u};
    return WriteUInt32(header, 3) && WriteBlock(metaData);
}

bool LxModelDataSerializer::WriteVB(const LxArchive& archive, const LxModelVB& vb)
{
    LxFile* file = OpenForWriting(archive, vb.GetFileName());
    if (!file)
        return false;
    const unsigned int fields[2] = {vb.GetDesc().vertexCount, vb.GetDesc().vertexSize};
    return Finish(archive, file, WriteHeader(vb.GetMetaData()) && WriteUInt32(fields, 2) && WriteBlock(vb.GetData()));
}

bool LxModelDataSerializer::WriteIB(const LxArchive& archive, const LxModelIB& ib)
{
    LxFile* file = OpenForWriting(archive, ib.GetFileName());
    if (!file)
        return false;
    const unsigned int count = ib.GetDesc().indexCount;
    const unsigned char size = ib.GetDesc().indexSize;
    return Finish(archive, file,
                  WriteHeader(ib.GetMetaData()) && WriteUInt32(&count, 1) && WriteUInt8(&size, 1) &&
                      WriteBlock(ib.GetData()));
}

bool LxModelDataSerializer::WriteTexture(const LxArchive& archive, const LxModelTexture& texture)
{
    LxFile* file = OpenForWriting(archive, texture.GetFileName());
    if (!file)
        return false;
    const LxModelTextureDesc& d = texture.GetDesc();
    const unsigned int dataSize = texture.GetDataSize();
    const bool written = WriteHeader(texture.GetMetaData()) && WriteUInt16(&d.format, 1) && WriteUInt8(&d.type, 1) &&
                         WriteUInt16(&d.width, 1) && WriteUInt16(&d.height, 1) && WriteUInt16(&d.depth, 1) &&
                         WriteUInt8(&d.mipLevels, 1) && WriteUInt16(&d.arraySize, 1) && WriteUInt32(&dataSize, 1) &&
                         WriteBlock(texture.GetData());
    return Finish(archive, file, written);
}

bool LxModelDataSerializer::WriteADB(const LxArchive& archive, const LxModelADB& adb)
{
    LxFile* file = OpenForWriting(archive, adb.GetFileName());
    if (!file)
        return false;
    const unsigned int fields[2] = {adb.GetADBSize(), adb.GetVersion()};
    return Finish(archive, file, WriteHeader(adb.GetMetaData()) && WriteUInt32(fields, 2) && WriteBlock(adb.GetData()));
}

bool LxModelDataSerializer::WriteTextADB(const LxArchive& archive, const LxModelADB& adb)
{
    LxFile* file = OpenForWriting(archive, adb.GetFileName());
    if (!file)
        return false;
    return Finish(archive, file, WriteBlock(adb.GetData()));
}
