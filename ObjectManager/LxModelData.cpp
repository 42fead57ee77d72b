#include "ObjectManager/LxModelData.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxZipArchive.h"
#include "ObjectManager/LxModelADB.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelDataManifestEntry.h"
#include "ObjectManager/LxModelDataSerializer.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"
#include "ObjectManager/LxSkeleton.h"

#include <filesystem>
#include <memory>
#include <system_error>

namespace
{
const char* const kChunkFile = "chunkinfo.txt";
const char* const kSkeletonFile = "skeleton.txt";
const char* const kMetaFile = "metafile.txt";

bool IsZipPath(const LxString& path)
{
    return path.GetLength() >= 4 && (path.EndsWithNoCase(".zip") || path.EndsWithNoCase(".lmx"));
}
} // namespace

LxModelData::LxModelData() : m_pManifest(new LxModelDataManifest) {}

LxModelData::~LxModelData()
{
    for (LxModelChunkDesc* chunk : m_chunks)
        delete chunk;
    delete m_pSkeleton;
    delete m_pManifest;
}

void LxModelData::SetSkeleton(LxSkeleton* skeleton)
{
    if (skeleton != m_pSkeleton)
        delete m_pSkeleton;
    m_pSkeleton = skeleton;
}

LxModelData* LxModelData::ExtractFromArchive(const LxArchive& archive, bool loadItems)
{
    std::unique_ptr<LxModelData> model(new LxModelData);
    LxModelDataManifest* manifest = LxModelDataManifest::ExtractFromArchive(archive);
    if (!manifest)
        return nullptr;
    delete model->m_pManifest;
    model->m_pManifest = manifest;

    // The writer leaves "chunkinfo.txt" out for a model without chunks, so its absence means no chunks.
    if (archive.FileExists(kChunkFile, nullptr) && !LxModelChunkDesc::ReadFromArchive(archive, model->m_chunks))
        return nullptr;

    if (archive.FileExists(kSkeletonFile, nullptr))
    {
        std::unique_ptr<LxFile> file(archive.OpenFile(kSkeletonFile, "r"));
        LxSkeleton* skeleton = file ? LxSkeleton::CreateFromFile(*file) : nullptr;
        if (!skeleton)
        {
            LX_ERROR("Problems reading skeleton from file: %s in archive: %s", kSkeletonFile,
                     archive.GetName().c_str());
            return nullptr;
        }
        model->m_pSkeleton = skeleton;
    }

    if (archive.FileExists(kMetaFile, nullptr))
    {
        std::unique_ptr<LxModelDataMetaFile> meta(LxModelDataMetaFile::ExtractFromArchive(archive));
        if (!meta)
            return nullptr;
        model->m_metaFile = *meta;
    }

    if (!ValidateChunkDescs(model->m_chunks))
        return nullptr;

    if (loadItems)
        for (unsigned int i = 0; i < manifest->GetCount(); ++i)
            if (!manifest->GetEntry(i)->LoadItem(archive))
                return nullptr;
    return model.release();
}

LxModelData* LxModelData::LoadFromPath(const LxString& path, bool loadItems)
{
    std::unique_ptr<LxArchive> archive(LxArchive::Create(path));
    return ExtractFromArchive(*archive, loadItems);
}

bool LxModelData::LoadAllItems(const LxArchive& archive)
{
    for (unsigned int i = 0; i < m_pManifest->GetCount(); ++i)
    {
        LxModelDataManifestEntry* entry = m_pManifest->GetEntry(i);
        if (!entry->GetItem() && !entry->LoadItem(archive))
            return false;
    }
    return true;
}

bool LxModelData::ValidateChunkDescs(const LxArray<LxModelChunkDesc*>& chunks)
{
    const LxModelChunkDesc* leader = nullptr;
    for (const LxModelChunkDesc* chunk : chunks)
    {
        const bool follower = leader && leader->GetName() == chunk->GetName();
        if (!follower)
            leader = chunk;
        else if (!chunk->GetVBMappings().IsEmpty() || !chunk->IsIndexed() || !chunk->GetIBName().IsEmpty())
        {
            LX_ERROR("Only the leading chunk in an effect group may set VBs and IBs.");
            return false;
        }
        // A follower draws with its leader's index buffer.
        if (!leader->IsIndexed() &&
            (chunk->GetVertexMin() != chunk->GetIndexMin() || chunk->GetVertexMax() != chunk->GetIndexMax()))
        {
            LX_ERROR("Non-indexed chunks must have vertex range == index range");
            return false;
        }
        if (leader->IsIndexed() && leader->GetIBName().IsEmpty())
        {
            LX_ERROR("Found an indexed chunk which does not have an index buffer set.");
            return false;
        }
        if (chunk->GetIndexMin() > chunk->GetIndexMax() || chunk->GetVertexMin() > chunk->GetVertexMax())
        {
            LX_ERROR("Chunk vertex/index ranges are out of whack (min > max)!!\n");
            return false;
        }
        const LxArray<LxModelSubChunk>& subs = chunk->GetSubChunks();
        if (!subs.IsEmpty())
        {
            unsigned int next = chunk->GetIndexMin();
            bool sequential = true;
            for (const LxModelSubChunk& sub : subs)
            {
                sequential = sequential && sub.indexMin == next && sub.indexMin <= sub.indexMax;
                next = sub.indexMax;
            }
            if (!sequential || next != chunk->GetIndexMax())
            {
                LX_ERROR("Sub-chunk index ranges must be sequential and must cover the entire index buffer range.");
                return false;
            }
        }
        const LxArray<LxSubChunkTree>& trees = chunk->GetSubChunkTrees();
        if (!trees.IsEmpty() && subs.IsEmpty())
        {
            LX_ERROR("Chunks cannot have subchunk trees without subchunks!!");
            return false;
        }
        for (const LxSubChunkTree& tree : trees)
        {
            if (!tree.IsConsistent(subs.GetCount()))
            {
                LX_ERROR("Inconsistent subchunk tree found!\n");
                return false;
            }
            if (tree.indexMin != chunk->GetIndexMin() || tree.indexMax != chunk->GetIndexMax() ||
                tree.vertexMin != chunk->GetVertexMin() || tree.vertexMax != chunk->GetVertexMax())
            {
                LX_ERROR("Vertex/Index ranges for subchunk trees do not match chunk-level range!");
                return false;
            }
        }
    }
    return true;
}

bool LxModelData::SaveToArchive(const LxArchive& archive) const
{
    if (!ValidateChunkDescs(m_chunks))
        return false;
    if (!m_pManifest->WriteToArchive(archive) || !m_metaFile.WriteToArchive(archive))
        return false;
    for (unsigned int i = 0; i < m_pManifest->GetCount(); ++i)
    {
        const LxModelDataManifestEntry* entry = m_pManifest->GetEntry(i);
        const LxModelDataItem* item = entry->GetItem();
        if (!item)
        {
            LX_ERROR("A data item pointer in the manifest was NULL, meaning that the corresponding object was not "
                     "loaded.  All entries in the manifest must be loaded in order to write an object file.");
            return false;
        }
        LxModelDataSerializer serializer;
        bool ok = false;
        switch (item->GetType())
        {
        case LX_MODEL_DATA_ADB:
        {
            const LxModelADB* adb = static_cast<const LxModelADB*>(item);
            ok = adb->GetStorageFormat() == LxModelADB::STORAGE_TEXT ? serializer.WriteTextADB(archive, *adb)
                                                                     : serializer.WriteADB(archive, *adb);
            break;
        }
        case LX_MODEL_DATA_TEX:
            ok = serializer.WriteTexture(archive, *static_cast<const LxModelTexture*>(item));
            break;
        case LX_MODEL_DATA_IB:
            ok = serializer.WriteIB(archive, *static_cast<const LxModelIB*>(item));
            break;
        case LX_MODEL_DATA_VB:
            ok = serializer.WriteVB(archive, *static_cast<const LxModelVB*>(item));
            break;
        }
        if (!ok)
            return false;
    }
    if (!m_chunks.IsEmpty() && !LxModelChunkDesc::WriteToArchive(archive, m_chunks))
        return false;
    if (m_pSkeleton)
    {
        std::unique_ptr<LxFile> file(archive.OpenFile(kSkeletonFile, "w"));
        if (!file)
        {
            LX_ERROR("Failed to open file: %s in archive: %s", kSkeletonFile, archive.GetName().c_str());
            return false;
        }
        const bool ok = m_pSkeleton->WriteToFile(*file);
        file->Close();
        if (!ok)
            return false;
    }
    return true;
}

bool LxModelData::SaveToPath(const LxString& path) const
{
    // The folder (for a zip file, the folder it goes into) is created when missing.
    const bool zip = IsZipPath(path);
    const std::filesystem::path target = std::filesystem::u8path(path.c_str());
    const std::filesystem::path folder = zip ? target.parent_path() : target;
    std::error_code error;
    if (!folder.empty())
        std::filesystem::create_directories(folder, error);
    if (error)
    {
        LX_ERROR("LxModelData::SaveToPath.  Couldn't create the folder %s: %s", folder.u8string().c_str(),
                 error.message().c_str());
        return false;
    }
    if (zip)
    {
        std::unique_ptr<LxZipArchive> archive(LxZipArchive::CreateNewZipFile(path));
        return archive && SaveToArchive(*archive);
    }
    std::unique_ptr<LxArchive> archive(LxArchive::Create(path));
    return SaveToArchive(*archive);
}
