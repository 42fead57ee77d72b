// LxModelData: the in-memory form of a model archive (a folder or a zip file): the manifest of data items, the
// chunk descriptions, the optional skeleton and the meta file.
//
// Archive files: "manifest.txt" (required), "chunkinfo.txt" (absent when the model has no chunks),
// "skeleton.txt" (optional), "metafile.txt" (optional), the sub-chunk files of chunks that have sub-chunks, and
// one file per manifest entry.
//
// Ownership: the model data owns its manifest (which owns the entries and their items), its chunk descriptions
// and its skeleton. ExtractFromArchive returns a new object owned by the caller, or null after logging; a model
// that fails anywhere is destroyed whole, never returned half-read. SaveToArchive writes into an archive that is
// open for writing (a folder, or a zip made by LxZipArchive::CreateNewZipFile) and returns false after logging;
// what it wrote before the failure stays in the archive. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxString.h"
#include "ObjectManager/LxModelDataMetaFile.h"

class LxArchive;
class LxModelChunkDesc;
class LxModelDataManifest;
class LxSkeleton;

class LX_API LxModelData
{
public:
    LxModelData();
    ~LxModelData();
    LxModelData(const LxModelData&) = delete;
    LxModelData& operator=(const LxModelData&) = delete;

    // Reads the model; with loadItems, every item file too (in manifest order; the first failure ends the load).
    static LxModelData* ExtractFromArchive(const LxArchive& archive, bool loadItems);
    // Opens `path` as an archive (a folder, or a zip file by its extension) and extracts the model from it.
    static LxModelData* LoadFromPath(const LxString& path, bool loadItems);
    // Validates, then writes the manifest, the meta file, every item file, the chunk descriptions with their
    // sub-chunk files, and the skeleton. Every manifest entry must hold its item.
    bool SaveToArchive(const LxArchive& archive) const;
    // Saves into a new zip file when `path` ends in ".zip" or ".lmx" (any case), else into the folder `path`
    // (created when missing).
    bool SaveToPath(const LxString& path) const;

    // Loads every entry's item that is not loaded yet.
    bool LoadAllItems(const LxArchive& archive);
    // The rules a model's chunk descriptions must keep; logs the first broken one.
    static bool ValidateChunkDescs(const LxArray<LxModelChunkDesc*>& chunks);

    LxModelDataManifest& GetManifest() { return *m_pManifest; }
    const LxModelDataManifest& GetManifest() const { return *m_pManifest; }

    unsigned int GetChunkDescCount() const { return m_chunks.GetCount(); }
    LxModelChunkDesc* GetChunkDesc(unsigned int index) const { return m_chunks[index]; }
    const LxArray<LxModelChunkDesc*>& GetChunkDescs() const { return m_chunks; }
    // Takes ownership.
    void AddChunkDesc(LxModelChunkDesc* chunk) { m_chunks.Add(chunk); }

    // Null when the model has none.
    const LxSkeleton* GetSkeleton() const { return m_pSkeleton; }
    // Takes ownership (null removes the skeleton).
    void SetSkeleton(LxSkeleton* skeleton);

    LxModelDataMetaFile& GetMetaFile() { return m_metaFile; }
    const LxModelDataMetaFile& GetMetaFile() const { return m_metaFile; }

private:
    LxModelDataManifest* m_pManifest;
    LxArray<LxModelChunkDesc*> m_chunks;
    LxSkeleton* m_pSkeleton = nullptr;
    LxModelDataMetaFile m_metaFile;
};
