// LxModelDataSerializer: reads and writes the binary item files of a model archive through LxSerializer.
//
// Every binary item file starts with the common header: header version (u32, 1), item version (u32, 1), meta-data
// size (u32) and that many bytes of meta data. Then, little-endian:
//   VB:  vertex count u32, vertex size u32, count x size bytes;
//   IB:  index count u32, index size u8 (2 or 4), count x size bytes;
//   TEX: format u16, type u8, width u16, height u16, depth u16, mip levels u8, array size u16, data size u32, data;
//   ADB: ADB size u32, ADB version u32, size bytes.
// A text ADB has no header: the file is the block's text.
//
// Readers log the first thing that is wrong and fail; a block is allocated only after its size has been checked
// against the bytes the file still holds, so a hostile count costs nothing. On success the new item (with the
// entry's name and file name) is attached to the manifest entry, which owns it; on failure the entry is untouched.
// Binary files are opened "rb"/"wb" (a plain "r"/"w" would translate line ends on Windows). One serializer per
// call at a time; not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxSerializer.h"

class LxArchive;
class LxModelADB;
class LxModelDataManifestEntry;
class LxModelIB;
class LxModelTexture;
class LxModelVB;

class LX_API LxModelDataSerializer : public LxSerializer
{
public:
    LxModelDataSerializer() = default;
    ~LxModelDataSerializer() override;

    bool ReadVB(const LxArchive& archive, LxModelDataManifestEntry& entry);
    bool ReadIB(const LxArchive& archive, LxModelDataManifestEntry& entry);
    bool ReadTexture(const LxArchive& archive, LxModelDataManifestEntry& entry);
    bool ReadADB(const LxArchive& archive, LxModelDataManifestEntry& entry);
    bool ReadTextADB(const LxArchive& archive, LxModelDataManifestEntry& entry);

    // Each writes the item's file (its GetFileName()) into the archive.
    bool WriteVB(const LxArchive& archive, const LxModelVB& vb);
    bool WriteIB(const LxArchive& archive, const LxModelIB& ib);
    bool WriteTexture(const LxArchive& archive, const LxModelTexture& texture);
    bool WriteADB(const LxArchive& archive, const LxModelADB& adb);
    bool WriteTextADB(const LxArchive& archive, const LxModelADB& adb);

private:
    LxFile* OpenForReading(const LxArchive& archive, const LxString& fileName);
    LxFile* OpenForWriting(const LxArchive& archive, const LxString& fileName);
    bool Finish(const LxArchive& archive, LxFile* file, bool written);
    void Detach(LxFile* file);
    bool ReadHeader(LxCountedPtr<LxMemoryBuffer>& metaData);
    bool WriteHeader(const LxCountedPtr<LxMemoryBuffer>& metaData);
    // Reads `size` bytes into a new block (null for 0 bytes); false when the file does not hold that many.
    bool ReadBlock(unsigned long long size, LxCountedPtr<LxMemoryBuffer>& out, bool* outOfMemory);
    bool ReadU32(unsigned int* value);
    bool ReadU16(unsigned short* value);
    bool ReadU8(unsigned char* value);
    bool WriteBlock(const LxCountedPtr<LxMemoryBuffer>& block);

    unsigned int m_nRemaining = 0;
};
