// Model archives: folder and zip round trips (byte for byte), zips made by Info-ZIP and Python, item files cut at
// every byte and with hostile headers and counts, every message of the manifest, chunk, sub-chunk and meta files,
// the validation rules, the save errors, and the ADB writer and reader.
#include "Common/LxFile.h"
#include "Common/LxFileSystemArchive.h"
#include "Common/LxZipArchive.h"
#include "LxModelTestUtil.h"
#include "ObjectManager/LxADBReader.h"
#include "ObjectManager/LxADBWriter.h"
#include "ObjectManager/LxModelADB.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelDataManifestEntry.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"
#include "ObjectManager/LxSkeleton.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

using LxModelTest::Bytes;
using LxModelTest::Messages;
using LxModelTest::S;
typedef std::vector<std::string> Lines;

namespace
{
const char* const kHash = "0123456789abcdef0123456789abcdef";
const std::string kVersion = "Unsupported file version.  You may need to re-build Lumex.";

std::string SaveSample(const std::string& path)
{
    std::unique_ptr<LxModelData> model(LxModelTest::MakeSampleModel());
    EXPECT_TRUE(model->SaveToPath(S(path)));
    return path;
}

// A folder holding the given files.
std::string Folder(const std::string& hint, const std::map<std::string, std::string>& files)
{
    const std::string dir = LxTest::MakeTempDir(hint);
    for (const auto& f : files)
        LxTest::WriteBytes(dir + "/" + f.first, f.second);
    return dir;
}

// One manifest entry loaded from a folder holding just its item file.
bool LoadItem(LxModelDataType type, const std::string& bytes, LxModelDataManifestEntry* out = nullptr,
              LxModelADB::StorageFormat format = LxModelADB::STORAGE_BINARY)
{
    static std::string dir = LxTest::MakeTempDir("item");
    LxTest::WriteBytes(dir + "/item.bin", bytes);
    LxFileSystemArchive archive(S(dir));
    LxMD5Hash hash;
    LxModelDataManifestEntry local(type, "item", "item.bin", hash);
    LxModelDataManifestEntry& entry = out ? *out : local;
    entry.SetStorageFormat(format);
    return entry.LoadItem(archive);
}

// The item files of the sample, with the message each field's truncation gives.
struct Field
{
    unsigned int size;
    std::string message;
};

Bytes Header(const std::string& meta)
{
    Bytes b;
    b.U32(1).U32(1).U32(static_cast<unsigned int>(meta.size())).Raw(meta);
    return b;
}

std::vector<Field> HeaderFields(const std::string& meta)
{
    return {{4, "Error reading item file header."},
            {4, "Error reading item file header."},
            {4, "Error reading item file header."},
            {static_cast<unsigned int>(meta.size()), "Error reading meta data."}};
}

std::unique_ptr<LxModelDataManifest> ReadManifest(const std::string& text)
{
    LxFileSystemArchive archive(S(Folder("manifest", {{"manifest.txt", text}})));
    return std::unique_ptr<LxModelDataManifest>(LxModelDataManifest::ExtractFromArchive(archive));
}

struct ChunkResult
{
    bool ok;
    std::vector<std::unique_ptr<LxModelChunkDesc>> chunks;
};

ChunkResult ReadChunks(const std::map<std::string, std::string>& files)
{
    LxFileSystemArchive archive(S(Folder("chunks", files)));
    LxArray<LxModelChunkDesc*> chunks;
    ChunkResult r;
    r.ok = LxModelChunkDesc::ReadFromArchive(archive, chunks);
    for (LxModelChunkDesc* c : chunks)
        r.chunks.emplace_back(c);
    return r;
}

const std::string kChunkHeader = "[LxModelData ChunkDesc v1]\n";
const std::string kBlockStart = "CHUNK c\nIB ib\n";
} // namespace

// --- round trips --------------------------------------------------------------------------------------------------

// Folder -> folder, folder -> zip, zip -> zip and folder, foreign zips -> folder: every copy holds the same bytes.
TEST(ModelArchive, FolderAndZipRoundTripsAreByteForByte)
{
    const std::string root = LxTest::MakeTempDir("rt");
    const std::string a = SaveSample(root + "/a");
    std::unique_ptr<LxModelData> model(LxModelData::LoadFromPath(S(a), true));
    ASSERT_TRUE(model);
    ASSERT_TRUE(model->SaveToPath(S(root + "/c")));
    const auto first = LxModelTest::ReadTree(a);
    EXPECT_EQ(first, LxModelTest::ReadTree(root + "/c"));
    EXPECT_EQ(11u, first.size()); // manifest, meta file, 5 items, chunks, 2 sub-chunk files, skeleton
    EXPECT_EQ("[LxModelData ChunkDesc v1]\n"
              "CHUNK body\nPrimType TRIANGLE_LIST\nIB indices\nIBRange 0 6\nVBRange 0 4\nEffect skin.fx\n"
              "Technique Lit\nStream POSITION positions\nTexture DiffuseMap diffuse\nBONEMAP 0  2  -1 \n"
              "VisibilityCurve body.visible\nPARAM Vector 1 Tint 1 0.5 0.25 0.100000001 \n"
              "PARAM VectorB 2 Flags true false false true false false true true \nPARAM Int 3 Counts 7 -3 0 \n"
              "PARAM Float 1 Glow Animation glow.curve \nPARAM Float 1 Shininess EFFECT_DEFAULT_VALUE \n"
              "SUBCHUNKS 2\nENDCHUNK\n"
              "CHUNK body\nPrimType TRIANGLE_LIST\nIBRange 0 6\nVBRange 0 4\nEffect outline.fx\nTechnique Edges\n"
              "ENDCHUNK\n"
              "CHUNK points\nPrimType POINT_LIST\nIB NONINDEXED\nIBRange 0 4\nVBRange 0 4\nEffect points.fx\n"
              "Stream POSITION positions\nENDCHUNK\n",
              first.at("chunkinfo.txt"));
    EXPECT_EQ("[LxModelData Metafile v1]\nexporter LxModelTests\nunits metres\n", first.at("metafile.txt"));
    EXPECT_EQ("free text\nsecond line\n", first.at("notes.txt"));
    EXPECT_EQ(Header("exporter=test").U32(4).U32(12).data, first.at("positions.vb").substr(0, 33));

    const std::string zip1 = SaveSample(root + "/one.zip");
    EXPECT_EQ(first, LxModelTest::ReadZip(zip1));
    model.reset(LxModelData::LoadFromPath(S(zip1), true));
    ASSERT_TRUE(model);
    ASSERT_TRUE(model->SaveToPath(S(root + "/two.ZIP")));
    ASSERT_TRUE(model->SaveToPath(S(root + "/again")));
    EXPECT_EQ(first, LxModelTest::ReadZip(root + "/two.ZIP"));
    EXPECT_EQ(first, LxModelTest::ReadTree(root + "/again"));

#ifndef _WIN32 // Info-ZIP and Python run in the native lane, whose provisioning installs them
    // Our zips pass Info-ZIP's test; zips made by Info-ZIP and by Python (some entries stored) load.
    ASSERT_TRUE(LxModelTest::HaveTool("unzip") && LxModelTest::HaveTool("zip") && LxModelTest::HaveTool("python3"))
        << "zip, unzip or python3 is missing (scripts/provision.sh installs them)";
    EXPECT_TRUE(LxModelTest::Run("unzip -tqq '" + zip1 + "'"));
    EXPECT_TRUE(LxModelTest::Run("unzip -tqq '" + root + "/two.ZIP'"));
    const std::string folder = a;
    ASSERT_TRUE(LxModelTest::Run("cd '" + folder + "' && zip -qrX9 ../infozip.zip ."));
    ASSERT_TRUE(LxModelTest::Run(
        "python3 -c \"import os, sys, zipfile\n"
        "src, dst = sys.argv[1], sys.argv[2]\n"
        "with zipfile.ZipFile(dst, 'w', zipfile.ZIP_DEFLATED) as z:\n"
        "    for name in sorted(os.listdir(src)):\n"
        "        z.write(os.path.join(src, name), name, zipfile.ZIP_STORED if name.endswith('.tex') else None)\n\" '" +
        folder + "' '" + root + "/python.zip'"));
    for (const std::string& zip : {root + "/infozip.zip", root + "/python.zip"})
    {
        model.reset(LxModelData::LoadFromPath(S(zip), true));
        ASSERT_TRUE(model) << zip;
        const std::string out = zip.substr(0, zip.size() - 4) + "-copy";
        ASSERT_TRUE(model->SaveToPath(S(out)));
        EXPECT_EQ(first, LxModelTest::ReadTree(out)) << zip;
    }
#endif
}

TEST(ModelArchive, LoadsWhatWasSavedAndFailsWithoutAnItemFile)
{
    const std::string dir = SaveSample(LxTest::MakeTempDir("content") + "/m");
    std::unique_ptr<LxModelData> model(LxModelData::LoadFromPath(S(dir), false));
    ASSERT_TRUE(model);
    const LxModelDataManifest& manifest = model->GetManifest();
    ASSERT_EQ(5u, manifest.GetCount());
    EXPECT_EQ(nullptr, manifest.GetEntry(0)->GetItem());
    ASSERT_TRUE(model->LoadAllItems(LxFileSystemArchive(S(dir))));

    const LxModelVB* vb = static_cast<const LxModelVB*>(manifest.GetEntryByName("positions")->GetItem());
    EXPECT_EQ(4u, vb->GetDesc().vertexCount);
    EXPECT_EQ("exporter=test", std::string(reinterpret_cast<const char*>(vb->GetMetaData()->GetData()), 13));
    LxMD5Hash hash;
    vb->ComputeHash(&hash);
    EXPECT_EQ(manifest.GetEntryByName("positions")->GetHash(), hash);
    const LxModelTexture* tex = static_cast<const LxModelTexture*>(manifest.GetEntryByName("diffuse")->GetItem());
    EXPECT_EQ(28u, tex->GetDesc().format);
    const LxModelDataManifestEntry* morphs = manifest.GetEntryByADBUsage("MorphData");
    ASSERT_TRUE(morphs);
    EXPECT_STREQ("morphs.adb", morphs->GetFileName().c_str());
    EXPECT_EQ(3u, static_cast<const LxModelADB*>(morphs->GetItem())->GetVersion());
    EXPECT_EQ(LxModelADB::STORAGE_TEXT, manifest.GetEntryByADBUsage("Notes")->GetStorageFormat());
    EXPECT_EQ(nullptr, manifest.GetEntryByADBUsage("Nothing"));
    // Chunks, skeleton and meta file: the round trip compares their re-saved text with the exact text above.
    ASSERT_EQ(3u, model->GetChunkDescCount());
    EXPECT_EQ(3u, model->GetSkeleton()->GetNumBones());
    long long time = 0;
    EXPECT_TRUE(morphs->GetItemTimeStamp(LxFileSystemArchive(S(dir)), &time));
    EXPECT_GT(time, 0);

    // A missing item file fails the whole load; a lazy load succeeds but has no time stamp for it.
    std::remove((dir + "/diffuse.tex").c_str());
    Messages log;
    EXPECT_FALSE(LxModelData::LoadFromPath(S(dir), true));
    EXPECT_EQ(Lines{"File: diffuse.tex not found in archive."}, log.Errors());
    std::unique_ptr<LxModelData> lazy(LxModelData::LoadFromPath(S(dir), false));
    EXPECT_TRUE(lazy);
    log.Clear();
    EXPECT_FALSE(lazy->GetManifest().GetEntryByName("diffuse")->GetItemTimeStamp(LxFileSystemArchive(S(dir)), &time));
    EXPECT_EQ(Lines{"Unable to retrieve time stamp from file 'diffuse.tex'  in archive '" +
                    LxModelTest::ArchiveName(dir) + "'."},
              log.Errors());
}

// --- item files ---------------------------------------------------------------------------------------------------

TEST(ModelItems, EveryTruncationOfEveryBinaryItemFails)
{
    const std::string meta = "m!";
    const struct
    {
        LxModelDataType type;
        std::string bytes;
        std::vector<Field> fields;
    } items[] = {
        {LX_MODEL_DATA_VB,
         Header(meta).U32(2).U32(3).Raw("abcdef").data,
         {{4, "Error reading vertex count."}, {4, "Error reading vertex size."}, {6, "Error reading vertex data."}}},
        {LX_MODEL_DATA_IB,
         Header(meta).U32(3).U8(2).Raw("012345").data,
         {{4, "Error reading index count."}, {1, "Error reading index size."}, {6, "Error reading index data."}}},
        {LX_MODEL_DATA_TEX,
         Header(meta).U16(28).U8(0).U16(1).U16(1).U16(1).U8(1).U16(1).U32(4).Raw("rgba").data,
         {{16, "Error reading texture description."}, {4, "Error reading texture data."}}},
        {LX_MODEL_DATA_ADB,
         Header(meta).U32(5).U32(7).Raw("block").data,
         {{4, "Error reading ADB size."}, {4, "Error reading ADB version."}, {5, "Error reading ADB data."}}},
    };
    for (const auto& item : items)
    {
        std::vector<Field> fields = HeaderFields(meta);
        fields.insert(fields.end(), item.fields.begin(), item.fields.end());
        ASSERT_TRUE(LoadItem(item.type, item.bytes));
        unsigned int fieldEnd = 0;
        size_t field = 0;
        for (unsigned int cut = 0; cut < item.bytes.size(); ++cut)
        {
            while (cut >= fieldEnd)
                fieldEnd += fields[field++].size;
            LxMD5Hash hash;
            LxModelDataManifestEntry entry(item.type, "item", "item.bin", hash);
            Messages log;
            EXPECT_FALSE(LoadItem(item.type, item.bytes.substr(0, cut), &entry)) << item.type << " cut " << cut;
            EXPECT_EQ(nullptr, entry.GetItem());
            EXPECT_EQ(Lines{fields[field - 1].message}, log.Errors()) << item.type << " cut " << cut;
        }
    }
}

TEST(ModelItems, HostileHeadersCountsAndSizes)
{
    const std::string none;
    const struct
    {
        LxModelDataType type;
        std::string bytes;
        std::string message;
    } cases[] = {
        {LX_MODEL_DATA_VB, Bytes().U32(2).U32(1).U32(0).U32(0).U32(4).data, kVersion},
        {LX_MODEL_DATA_IB, Bytes().U32(1).U32(2).U32(0).U32(0).U8(2).data, kVersion},
        {LX_MODEL_DATA_VB, Header(none).U32(0xFFFFFFFF).U32(0xFFFFFFFF).Raw("xx").data, "Error reading vertex data."},
        {LX_MODEL_DATA_VB, Header(none).U32(0x40000000).U32(4).data, "Error reading vertex data."},
        {LX_MODEL_DATA_VB, Header(none).U32(3).U32(0).data, "Error reading vertex size."},
        {LX_MODEL_DATA_VB, Bytes().U32(1).U32(1).U32(0xFFFFFFF0).Raw("meta").data, "Error reading meta data."},
        {LX_MODEL_DATA_IB, Header(none).U32(1).U8(3).Raw("abc").data, "Error reading index size."},
        {LX_MODEL_DATA_IB, Header(none).U32(0xFFFFFFFF).U8(4).data, "Error reading index data."},
        {LX_MODEL_DATA_TEX, Header(none).U16(28).U8(3).U16(1).U16(1).U16(1).U8(1).U16(1).U32(0).data,
         "Error reading texture description."},
        {LX_MODEL_DATA_TEX,
         Header(none).U16(28).U8(0).U16(1).U16(1).U16(1).U8(1).U16(1).U32(0xFFFFFFFF).Raw("rgba").data,
         "Error reading texture data."},
        {LX_MODEL_DATA_ADB, Header(none).U32(0xFFFFFFFE).U32(1).data, "Error reading ADB data."},
    };
    for (const auto& c : cases)
    {
        Messages log;
        EXPECT_FALSE(LoadItem(c.type, c.bytes)) << c.message;
        EXPECT_EQ(Lines{c.message}, log.Errors());
    }
}

TEST(ModelItems, EmptyBlocksAndTextADBs)
{
    LxMD5Hash hash;
    LxModelDataManifestEntry vb(LX_MODEL_DATA_VB, "item", "item.bin", hash);
    // A meta-data size of 0 means no meta data and no bytes follow it.
    ASSERT_TRUE(LoadItem(LX_MODEL_DATA_VB, Header("").U32(0).U32(16).data, &vb));
    EXPECT_FALSE(vb.GetItem()->GetMetaData());
    EXPECT_FALSE(vb.GetItem()->GetData());

    LxModelDataManifestEntry text(LX_MODEL_DATA_ADB, "item", "item.bin", hash);
    ASSERT_TRUE(LoadItem(LX_MODEL_DATA_ADB, std::string("\x01\x00 raw text", 11), &text, LxModelADB::STORAGE_TEXT));
    EXPECT_EQ(11u, text.GetItem()->GetDataSize());
    EXPECT_EQ(LxModelADB::STORAGE_TEXT, static_cast<LxModelADB*>(text.GetItem())->GetStorageFormat());
}

// --- manifest -----------------------------------------------------------------------------------------------------

TEST(ModelManifest, ReadsEveryLineKind)
{
    const std::string h = kHash;
    Messages log;
    std::unique_ptr<LxModelDataManifest> m =
        ReadManifest("[LxModelData Manifest v1]\r\nVB v v.vb " + h + "\r\nIB i sub/i.ib " + h + " extra\r\n" +
                     "ADB a a.adb " + h + " Usage\nADB t t.txt " + h + " Text TEXT\nTEX x x.tex " + h + "\n" +
                     "VB one two three four five six seven\nVB\n");
    ASSERT_TRUE(m);
    ASSERT_EQ(5u, m->GetCount());
    EXPECT_STREQ("sub/i.ib", m->GetEntry(1)->GetFileName().c_str());
    EXPECT_EQ(LxModelADB::STORAGE_BINARY, m->GetEntry(2)->GetStorageFormat());
    EXPECT_EQ(LxModelADB::STORAGE_TEXT, m->GetEntry(3)->GetStorageFormat());
    EXPECT_EQ(LX_MODEL_DATA_TEX, m->GetEntry(4)->GetType());
    EXPECT_STREQ(kHash, m->GetEntry(4)->GetHash().ToString().c_str());
    // The seven-token line and the one-token line are skipped with a warning each (the second is a repeat).
    EXPECT_EQ((Lines{"Malformed line in object manifest file.", "Malformed line in object manifest file."}),
              log.Warnings());
    EXPECT_TRUE(log.Errors().empty());
}

TEST(ModelManifest, RejectsBrokenManifests)
{
    const std::string h = kHash;
    const std::string head = "[LxModelData Manifest v1]\n";
    const struct
    {
        std::string text;
        std::string message;
    } cases[] = {
        {"[LxModelData Manifest v2]\n", "Unsupported manifest file version."},
        {"", "Unsupported manifest file version."},
        {head + "VB v v.vb 0123\n", "Syntax error in manifest file."},
        {head + "VB v v.vb\n", "Syntax error in manifest file."},
        {head + "MESH v v.vb " + h + "\n", "Unknown item type: MESH"},
        {head + "vb v v.vb " + h + "\n", "Unknown item type: vb"},
        {head + "ADB a a.adb " + h + "\n", "Missing usage field for ADB"},
        {head + "ADB a a.adb " + h + " U text\n", "Unkown ADB parameter: text"},
        {head + "VB v ../v.vb " + h + "\n", "Item file name leaves the archive: ../v.vb"},
        {head + "VB v /etc/v.vb " + h + "\n", "Item file name leaves the archive: /etc/v.vb"},
    };
    for (const auto& c : cases)
    {
        Messages log;
        EXPECT_FALSE(ReadManifest(c.text)) << c.text;
        EXPECT_EQ(Lines{c.message}, log.Errors()) << c.text;
    }
    Messages log;
    EXPECT_FALSE(LxModelDataManifest::ExtractFromArchive(LxFileSystemArchive(S(LxTest::MakeTempDir("empty")))));
    EXPECT_EQ(Lines{"Couldn't find manifest file in archive."}, log.Errors());
}

TEST(ModelManifest, AddsFindsAndRemovesEntries)
{
    LxModelDataManifest manifest;
    LxADBWriter writer;
    LxModelDataManifestEntry* adb = manifest.AddModelDataItem(writer.FinalizeADB("a", "Usage", 1));
    LxModelDataManifestEntry* vb = manifest.AddModelDataItem(new LxModelVB("v", "v.vb", LxModelVBDesc{4, 0}));
    EXPECT_EQ("ADB a a.adb " + std::string(adb->GetHash().ToString().c_str()) + " Usage BINARY\n",
              adb->ToText().c_str());
    EXPECT_EQ(adb, manifest.GetEntryByADBUsage("Usage"));
    EXPECT_EQ(vb, manifest.GetEntryByName("v"));
    EXPECT_NE(adb->GetHash(), vb->GetHash());
    EXPECT_TRUE(manifest.RemoveDataItem(adb));
    EXPECT_EQ(1u, manifest.GetCount());
    LxMD5Hash hash;
    LxModelDataManifestEntry stranger(LX_MODEL_DATA_VB, "s", "s.vb", hash);
    Messages log;
    EXPECT_FALSE(manifest.RemoveDataItem(&stranger));
    EXPECT_EQ(Lines{"Attempted to remove a non-existing entry from a model manifest!"}, log.Errors());
}

// --- chunk descriptions -------------------------------------------------------------------------------------------

TEST(ModelChunks, ReportsEveryFaultOfTheFile)
{
    const struct
    {
        std::string body;
        Lines errors;
    } cases[] = {
        {"IB ib\n", {"Unexpected token in chunk description file.  Expected 'CHUNK'"}},
        {"CHUNK\nENDCHUNK\n", {"Missing chunk name."}},
        {"CHUNK a\nCHUNK b\nENDCHUNK\n", {"Missing 'ENDCHUNK' before 'CHUNK'"}},
        {kBlockStart + "PrimType\nENDCHUNK\n", {"Missing primitive type name."}},
        {kBlockStart + "PrimType QUADS\nENDCHUNK\n", {"Unrecognized primitive type: QUADS"}},
        {kBlockStart + "Effect\nENDCHUNK\n", {"Missing effect filename in effect line."}},
        {kBlockStart + "Technique\nENDCHUNK\n", {"Missing technique name in technique line."}},
        {"CHUNK c\nIB\nENDCHUNK\n", {"Missing index buffer name in IB line."}},
        {kBlockStart + "IBRange 1\nVBRange 2\nENDCHUNK\n",
         {"Missing tokens for IBRange line.", "Missing tokens for VBRange line."}},
        {kBlockStart + "IBRange 1 x\nENDCHUNK\n", {"Syntax error"}},
        {kBlockStart + "VBRange -1 3\nENDCHUNK\n", {"Syntax error"}},
        {kBlockStart + "IBRange 0 4294967296\nENDCHUNK\n", {"Syntax error"}},
        {kBlockStart + "Stream POSITION\nTexture Diffuse\nENDCHUNK\n",
         {"Missing tokens for Stream line.", "Missing tokens for Texture line."}},
        {kBlockStart + "BONEMAP\nENDCHUNK\n", {"Missing tokens for bone map line."}},
        {kBlockStart + "BONEMAP 1 2.5\nENDCHUNK\n", {"Syntax error in bone map line."}},
        {kBlockStart + "VisibilityCurve\nENDCHUNK\n", {"Missing tokens for VisibilityCurve line."}},
        {kBlockStart + "Shader x.fx\nprimtype POINT_LIST\nENDCHUNK\n",
         {"Syntax error in chunk description file.  Illegal token: Shader",
          "Syntax error in chunk description file.  Illegal token: primtype"}},
        {kBlockStart + "SUBCHUNKS\nENDCHUNK\n", {"Syntax error"}},
        {kBlockStart + "SUBCHUNKS 2\nENDCHUNK\n", {"Unable to open sub-chunk file for chunk: 'c'"}},
    };
    for (const auto& c : cases)
    {
        Messages log;
        const ChunkResult r = ReadChunks({{"chunkinfo.txt", kChunkHeader + c.body}});
        EXPECT_FALSE(r.ok) << c.body;
        EXPECT_TRUE(r.chunks.empty());
        EXPECT_EQ(c.errors, log.Errors()) << c.body;
    }
    Messages log;
    EXPECT_FALSE(ReadChunks({{"chunkinfo.txt", "[LxModelData ChunkDesc v2]\n"}}).ok);
    EXPECT_FALSE(ReadChunks({}).ok);
    EXPECT_EQ((Lines{"Unsupported chunk description version.", "Error occurred while reading chunk description file."}),
              log.Errors());
}

TEST(ModelChunks, ParameterDeclarations)
{
    const struct
    {
        std::string line;
        std::string error; // empty: valid
    } cases[] = {
        {"PARAM Float 2 f 1.5 -2e3", ""},
        {"PARAM Matrix 1 m 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", ""},
        {"PARAM VectorI 1 v 1 2 3 -2147483648", ""},
        {"PARAM Bool 1 b EFFECT_DEFAULT_VALUE", ""},
        {"PARAM Vector 4 v Animation curve", ""},
        {"PARAM Float 1", "Wrong number of tokens in parameter declaration."},
        {"PARAM Double 1 d 1", "Unknown parameter data type: Double"},
        {"PARAM Float 0 f 1", "Invalid array size: 0"},
        {"PARAM Float two f 1", "Invalid array size: two"},
        {"PARAM Float 1 f", "Missing tokens in parameter declaration."},
        {"PARAM Float 2 f 1", "Missing tokens in parameter declaration."},
        {"PARAM Float 1 f 1 2", "Wrong number of tokens in parameter declaration."},
        {"PARAM Matrix 4294967295 f 1", "Missing tokens in parameter declaration."},
        {"PARAM Float 1 f Animation", "Missing tokens in parameter declaration."},
        {"PARAM Float 1 f Animation a b", "Wrong number of tokens in parameter declaration."},
        {"PARAM Float 1 f EFFECT_DEFAULT_VALUE 1", "Wrong number of tokens in parameter declaration."},
        {"PARAM Float 1 f one", "Syntax error in parameter declaration line."},
        {"PARAM Float 1 f 1e39", "Syntax error in parameter declaration line."},
        {"PARAM Int 1 i 1.5", "Syntax error in parameter declaration line."},
        {"PARAM Int 1 i 2147483648", "Syntax error in parameter declaration line."},
        {"PARAM Bool 1 b TRUE", "Syntax error in parameter declaration line."},
        {"PARAM VectorB 1 b true false 1 0", "Syntax error in parameter declaration line."},
    };
    for (const auto& c : cases)
    {
        Messages log;
        const ChunkResult r = ReadChunks({{"chunkinfo.txt", kChunkHeader + kBlockStart + c.line + "\nENDCHUNK\n"}});
        EXPECT_EQ(c.error.empty(), r.ok) << c.line;
        EXPECT_EQ(c.error.empty() ? Lines{} : Lines{c.error}, log.Errors()) << c.line;
        if (r.ok)
        {
            // What is read is written back as the same line, less the spelling of its numbers.
            LxString text;
            r.chunks[0]->AppendText(text);
            const ChunkResult again = ReadChunks({{"chunkinfo.txt", kChunkHeader + text.c_str()}});
            ASSERT_TRUE(again.ok);
            EXPECT_TRUE(r.chunks[0]->GetParameterSettings()[0] == again.chunks[0]->GetParameterSettings()[0]);
        }
    }
}

TEST(ModelChunks, MissingEndChunkAtTheEndIsAWarning)
{
    Messages log;
    const ChunkResult r = ReadChunks({{"chunkinfo.txt", kChunkHeader + "\n" + kBlockStart + "PrimType PATCH_32"}});
    ASSERT_TRUE(r.ok);
    ASSERT_EQ(1u, r.chunks.size());
    EXPECT_EQ(LxRenderManager::PRIM_PATCH_32, r.chunks[0]->GetPrimType());
    EXPECT_EQ(Lines{"Missing 'ENDCHUNK' before end of chunk file."}, log.Warnings());
}

TEST(ModelChunks, SubChunkFiles)
{
    const std::string chunk = kChunkHeader + kBlockStart + "IBRange 0 6\nSUBCHUNKS 2\nENDCHUNK\n";
    const std::string descHead = "[LxModelData SubChunkDesc v1]\n";
    const std::string sub = "SUBCHUNK 0 3 0 3 0 0 0 0 1 1 1 \nSUBCHUNK 3 6 0 4 0 0 0 0 1 1 1\n";
    const std::string treeHead = "[LxModelData SubChunkTree v1]\n";
    const std::string tree = "[LxModelData SubChunkTreeDesc v1]\nRANGES 0 6 0 4\nNODES 1\nNODE 0 2 -1 -1 0 0 0 1 1 1\n";
    const struct
    {
        std::string desc, trees;
        std::string error;
    } cases[] = {
        {descHead + sub, treeHead + "TREES 1\n" + tree + "\n", ""},
        {descHead + sub, treeHead + "TREES 0\n", ""},
        {"[LxModelData SubChunkDesc v2]\n" + sub, treeHead + "TREES 0\n", "Unsupported sub-chunk description version."},
        {descHead + "SUBCHUNK 0 3 0 3 0 0 0 0 1 1\n", "",
         "Wrong number of tokens on SUBCHUNK line.  There should be 12 of them."},
        {descHead + "SUBCHUNK 0 3 0 3 0 0 0 0 1 1 z\n", "", "Syntax error in subchunk description file."},
        {descHead + "SUBCHUNK -1 3 0 3 0 0 0 0 1 1 1\n", "", "Syntax error in subchunk description file."},
        {descHead + "PIECE 0 3\n", "",
         "Error parsing subchunk description file.  You probably need a new engine build!"},
        {descHead + "SUBCHUNK 0 6 0 4 0 0 0 0 1 1 1\n", "",
         "Error parsing subchunk description file.  You probably need a new engine build!"},
        {descHead + sub, "", "Error reading subchunk trees from tree file: 'SUBCHUNKTREE.c.2.txt'"},
        {descHead + sub, treeHead + "TREES\n", "Syntax error on 'TREES' line in subchunk description file!"},
        {descHead + sub, treeHead + "TREES 4000000000\n",
         "Syntax error in subchunk tree description file: 'SUBCHUNKTREE.c.2.txt'"},
        {descHead + sub, treeHead + "TREES 1\n" + tree + "junk\n",
         "Syntax error in subchunk tree description file: 'SUBCHUNKTREE.c.2.txt'"},
        {descHead + sub, treeHead + "TREES 1\n[LxModelData SubChunkTreeDesc v1]\nRANGES 0 6 0 4\nNODES 99\n",
         "Syntax error in subchunk tree description file: 'SUBCHUNKTREE.c.2.txt'"},
    };
    for (const auto& c : cases)
    {
        const std::map<std::string, std::string> files = {
            {"chunkinfo.txt", chunk}, {"SUBCHUNKDESC.c.2.txt", c.desc}, {"SUBCHUNKTREE.c.2.txt", c.trees}};
        Messages log;
        const ChunkResult r = ReadChunks(files);
        EXPECT_EQ(c.error.empty(), r.ok) << c.desc << c.trees;
        EXPECT_EQ(c.error.empty() ? Lines{} : Lines{c.error}, log.Errors()) << c.desc << c.trees;
    }
    Messages log;
    EXPECT_FALSE(ReadChunks({{"chunkinfo.txt", chunk}, {"SUBCHUNKDESC.c.2.txt", descHead + sub}}).ok);
    EXPECT_EQ(Lines{"Unable to open subchunk tree file: 'SUBCHUNKTREE.c.2.txt'"}, log.Errors());
}

// --- validation ---------------------------------------------------------------------------------------------------

TEST(ModelValidation, EveryRule)
{
    typedef LxArray<LxModelChunkDesc*> Chunks;
    LxModelSubChunk a, b;
    a.indexMax = b.indexMin = 3;
    b.indexMax = 6;
    auto chunk =
        [](Chunks& c, const char* name, unsigned int imin, unsigned int imax, unsigned int vmin, unsigned int vmax)
    {
        c.Add(new LxModelChunkDesc(name));
        c.GetLast()->SetIBName("ib");
        c.GetLast()->SetIndexRange(imin, imax);
        c.GetLast()->SetVertexRange(vmin, vmax);
        return c.GetLast();
    };
    // A leading chunk "a" over indices [0, 6) split into sub-chunks a and b, with a one-node tree.
    auto split = [&](Chunks& c, unsigned int treeSubs, unsigned int treeIndexMax, int left, int right)
    {
        LxModelChunkDesc* leader = chunk(c, "a", 0, 6, 0, 4);
        leader->AddSubChunk(a);
        leader->AddSubChunk(b);
        LxSubChunkTree t;
        t.indexMax = treeIndexMax;
        t.vertexMax = 4;
        LxSubChunkTreeNode root;
        root.subChunkCount = treeSubs;
        root.left = left;
        root.right = right;
        t.AddNode(root);
        leader->AddSubChunkTree(t);
    };
    const std::string leaderOnly = "Only the leading chunk in an effect group may set VBs and IBs.";
    const std::string nonIndexed = "Non-indexed chunks must have vertex range == index range";
    const std::string whack = "Chunk vertex/index ranges are out of whack (min > max)!!\n";
    const std::string sequential =
        "Sub-chunk index ranges must be sequential and must cover the entire index buffer range.";
    const std::string inconsistent = "Inconsistent subchunk tree found!\n";
    const struct
    {
        std::function<void(Chunks&)> build;
        std::string error;
    } cases[] = {
        {[&](Chunks& c) { chunk(c, "a", 0, 6, 0, 4); }, ""},
        {[&](Chunks& c)
         {
             chunk(c, "a", 0, 6, 0, 4);
             chunk(c, "a", 0, 6, 0, 4);
         },
         leaderOnly},
        {[&](Chunks& c)
         {
             chunk(c, "a", 0, 6, 0, 4);
             c.Add(new LxModelChunkDesc("a"));
             c.GetLast()->AddVBMapping("POSITION", "vb");
         },
         leaderOnly},
        // Another name starts another group.
        {[&](Chunks& c)
         {
             chunk(c, "a", 0, 6, 0, 4);
             chunk(c, "b", 0, 6, 0, 4);
             c.Add(new LxModelChunkDesc("b"));
         },
         ""},
        {[&](Chunks& c) { chunk(c, "a", 0, 6, 0, 4)->SetNonIndexed(); }, nonIndexed},
        // A follower draws the leader's vertices: its own ranges must agree too.
        {[&](Chunks& c)
         {
             chunk(c, "a", 2, 4, 2, 4)->SetNonIndexed();
             c.Add(new LxModelChunkDesc("a"));
             c.GetLast()->SetIndexRange(2, 4);
             c.GetLast()->SetVertexRange(2, 3);
         },
         nonIndexed},
        {[&](Chunks& c) { c.Add(new LxModelChunkDesc("a")); },
         "Found an indexed chunk which does not have an index buffer set."},
        {[&](Chunks& c) { chunk(c, "a", 6, 0, 0, 4); }, whack},
        {[&](Chunks& c) { chunk(c, "a", 0, 6, 5, 4); }, whack},
        {[&](Chunks& c) { chunk(c, "a", 0, 6, 0, 4)->AddSubChunk(a); }, sequential},
        {[&](Chunks& c)
         {
             LxModelChunkDesc* leader = chunk(c, "a", 0, 6, 0, 4);
             leader->AddSubChunk(b);
             leader->AddSubChunk(a);
         },
         sequential},
        {[&](Chunks& c) { chunk(c, "a", 0, 6, 0, 4)->AddSubChunkTree(LxSubChunkTree()); },
         "Chunks cannot have subchunk trees without subchunks!!"},
        {[&](Chunks& c) { split(c, 2, 6, -1, -1); }, ""},
        {[&](Chunks& c) { split(c, 2, 6, 0, 0); }, inconsistent}, // the root as its own child
        {[&](Chunks& c) { split(c, 1, 6, -1, -1); }, inconsistent},
        {[&](Chunks& c) { split(c, 2, 5, -1, -1); },
         "Vertex/Index ranges for subchunk trees do not match chunk-level range!"},
    };
    for (size_t i = 0; i < sizeof(cases) / sizeof(cases[0]); ++i)
    {
        Chunks chunks;
        cases[i].build(chunks);
        Messages log;
        EXPECT_EQ(cases[i].error.empty(), LxModelData::ValidateChunkDescs(chunks)) << i;
        EXPECT_EQ(cases[i].error.empty() ? Lines{} : Lines{cases[i].error}, log.Errors()) << i;
        for (LxModelChunkDesc* c : chunks)
            delete c;
    }
}

TEST(ModelValidation, TreeShapes)
{
    // root 0 splits 3 sub-chunks into node 1 (one) and node 2 (two), which splits into 3 and 4.
    auto make = [](std::initializer_list<std::array<int, 4>> nodes)
    {
        LxSubChunkTree t;
        for (const auto& n : nodes)
        {
            LxSubChunkTreeNode node;
            node.firstSubChunk = static_cast<unsigned int>(n[0]);
            node.subChunkCount = static_cast<unsigned int>(n[1]);
            node.left = n[2];
            node.right = n[3];
            t.AddNode(node);
        }
        return t;
    };
    EXPECT_TRUE(make({{0, 3, 1, 2}, {0, 1, -1, -1}, {1, 2, 3, 4}, {1, 1, -1, -1}, {2, 1, -1, -1}}).IsConsistent(3));
    EXPECT_FALSE(make({{0, 3, 1, 2}, {0, 1, -1, -1}, {1, 2, 3, 4}, {1, 1, -1, -1}, {2, 1, -1, -1}}).IsConsistent(4));
    EXPECT_FALSE(make({{0, 3, 1, 2}, {0, 2, -1, -1}, {1, 2, -1, -1}}).IsConsistent(3)); // overlap
    EXPECT_FALSE(make({{0, 3, 2, 1}, {0, 1, -1, -1}, {1, 2, -1, -1}}).IsConsistent(3)); // children swapped
    EXPECT_FALSE(make({{0, 3, 1, 2}, {0, 1, -1, -1}, {1, 2, -1, -1}, {1, 1, -1, -1}}).IsConsistent(3)); // orphan
    EXPECT_FALSE(make({{0, 3, 1, -1}, {0, 3, -1, -1}}).IsConsistent(3));                                // one child
    EXPECT_FALSE(make({{0, 2, 1, 2}, {0, 1, -1, -1}, {1, 1, 3, 4}, {1, 1, 1, 2}, {1, 0, -1, -1}}).IsConsistent(2));
    EXPECT_FALSE(LxSubChunkTree().IsConsistent(0));
}

// --- meta file and saving -----------------------------------------------------------------------------------------

TEST(ModelMetaFile, Messages)
{
    Messages log;
    EXPECT_FALSE(LxModelDataMetaFile::ExtractFromArchive(LxFileSystemArchive(S(Folder("meta", {})))));
    EXPECT_FALSE(LxModelDataMetaFile::ExtractFromArchive(
        LxFileSystemArchive(S(Folder("meta", {{"metafile.txt", "[LxModelData Metafile v0]\n"}})))));
    EXPECT_EQ((Lines{"Couldn't find metafile file in archive.", "Unsupported metafile version."}), log.Errors());
    std::unique_ptr<LxModelDataMetaFile> meta(LxModelDataMetaFile::ExtractFromArchive(
        LxFileSystemArchive(S(Folder("meta", {{"metafile.txt", "[LxModelData Metafile v1]\r\none\r\n\r\nthree"}})))));
    ASSERT_TRUE(meta);
    ASSERT_EQ(3u, meta->GetCount());
    EXPECT_STREQ("", meta->GetEntry(1).c_str());
    EXPECT_STREQ("three", meta->GetEntry(2).c_str());
}

TEST(ModelSave, Errors)
{
    {
        LxModelData model;
        model.GetManifest().AddModelDataItem(new LxModelVB("v", "v.vb", LxModelVBDesc{}));
        model.GetManifest().GetEntry(0)->SetItem(nullptr);
        Messages log;
        EXPECT_FALSE(model.SaveToPath(S(LxTest::MakeTempDir("save"))));
        EXPECT_EQ(Lines{"A data item pointer in the manifest was NULL, meaning that the corresponding object was not "
                        "loaded.  All entries in the manifest must be loaded in order to write an object file."},
                  log.Errors());
    }
    std::unique_ptr<LxModelData> model(LxModelTest::MakeSampleModel());
    const std::string dir = LxTest::MakeTempDir("save");
    LxTest::WriteBytes(dir + "/SUBCHUNKDESC.body.2.txt", "old");
    Messages log;
    EXPECT_FALSE(model->SaveToPath(S(dir)));
    std::remove((dir + "/SUBCHUNKDESC.body.2.txt").c_str());
    LxTest::WriteBytes(dir + "/SUBCHUNKTREE.body.2.txt", "old");
    EXPECT_FALSE(model->SaveToPath(S(dir)));
    model->GetChunkDesc(0)->SetIndexRange(7, 6);
    EXPECT_FALSE(model->SaveToPath(S(dir)));
    EXPECT_EQ((Lines{"Subchunk description file: 'SUBCHUNKDESC.body.2.txt' already exists in archive.  Cannot save "
                     "subchunk data!",
                     "Subchunk tree file: 'SUBCHUNKTREE.body.2.txt' already exists in archive.  Cannot save subchunk "
                     "trees!",
                     "Chunk vertex/index ranges are out of whack (min > max)!!\n"}),
              log.Errors());
    log.Clear();
    // A folder that cannot be written: every file open fails, the first one ends the save.
    model->GetChunkDesc(0)->SetIndexRange(0, 6);
    EXPECT_FALSE(model->SaveToArchive(LxFileSystemArchive(S(dir + "/no/such/folder"))));
    EXPECT_EQ(Lines{"Error writing manifest file."}, log.Errors());
}

// --- ADB writer and reader ----------------------------------------------------------------------------------------

TEST(ModelADB, WriterGrowsAndFinalizes)
{
    LxADBWriter writer;
    EXPECT_EQ(0u, writer.GetCapacity());
    const std::string chunk(700, 'x');
    writer.WriteData(chunk.data(), 10);
    EXPECT_EQ(1024u, writer.GetCapacity());
    writer.WriteData(chunk.data(), 700);
    writer.WriteData(chunk.data(), 700); // 1410 bytes: twice the capacity
    EXPECT_EQ(2048u, writer.GetCapacity());
    const std::string big(5000, 'y');
    writer.WriteData(big.data(), 5000); // the size needed beats twice the capacity
    EXPECT_EQ(6410u, writer.GetCapacity());
    std::unique_ptr<LxModelADB> adb(writer.FinalizeADB("anim", "BoneAnim", 7));
    EXPECT_EQ(0u, writer.GetSize());
    EXPECT_STREQ("anim.adb", adb->GetFileName().c_str());
    EXPECT_EQ(6410u, adb->GetADBSize());
    EXPECT_FALSE(adb->GetMetaData());

    LxADBReader reader(*adb);
    adb.reset(); // the reader keeps the data alive
    char buffer[6000];
    EXPECT_EQ(1410u, reader.ReadData(buffer, 1410));
    EXPECT_EQ(std::string(1410, 'x'), std::string(buffer, 1410));
    EXPECT_EQ(5000u, reader.ReadData(buffer, 6000));
    EXPECT_EQ('y', buffer[4999]);
    EXPECT_EQ(0u, reader.ReadData(buffer, 1));

    std::unique_ptr<LxModelADB> empty(writer.FinalizeADB("e", "U", 1));
    EXPECT_EQ(0u, empty->GetADBSize());
    EXPECT_EQ(0u, LxADBReader(*empty).ReadData(buffer, 4));
}

TEST(ModelSave, WriteFailures)
{
    const std::string dir = LxTest::MakeTempDir("writefail");
    const LxFileSystemArchive missing(S(dir + "/no/such/folder"));
    const LxFileSystemArchive archive(S(dir));
    LxArray<LxModelChunkDesc*> chunks;
    std::unique_ptr<LxModelData> model(LxModelTest::MakeSampleModel());
    chunks.Add(model->GetChunkDesc(0));
    Messages log;
    EXPECT_FALSE(LxModelChunkDesc::WriteToArchive(missing, chunks));
    EXPECT_FALSE(model->GetMetaFile().WriteToArchive(missing));

    // Sub-chunk files of a chunk whose name leads into folders: only the description's folder exists.
    LxModelChunkDesc nested("part/a");
    nested.SetIBName("ib");
    nested.SetIndexRange(0, 6);
    for (const LxModelSubChunk& sub : model->GetChunkDesc(0)->GetSubChunks())
        nested.AddSubChunk(sub);
    chunks[0] = &nested;
    EXPECT_FALSE(LxModelChunkDesc::WriteToArchive(archive, chunks));
    std::filesystem::create_directories(dir + "/SUBCHUNKDESC.part");
    EXPECT_FALSE(LxModelChunkDesc::WriteToArchive(archive, chunks));

    // A tree that does not fit its sub-chunks cannot be written, validated or not.
    LxSubChunkTree tree;
    tree.AddNode(LxSubChunkTreeNode());
    nested.AddSubChunkTree(tree);
    std::filesystem::remove_all(dir + "/SUBCHUNKDESC.part");
    EXPECT_FALSE(LxModelChunkDesc::WriteToArchive(archive, chunks));

    std::filesystem::create_directories(dir + "/model/skeleton.txt");
    EXPECT_FALSE(model->SaveToPath(S(dir + "/model")));
    EXPECT_EQ(
        (Lines{"Error writing chunk info file.", "Error writing metafile.",
               "Error creating subchunk description file in archive.",
               "Error opening file: 'SUBCHUNKTREE.part/a.2.txt' in archive: '" + LxModelTest::ArchiveName(dir) + "'",
               "Problems generating subchunk tree description\n",
               "Failed to open file: skeleton.txt in archive: " + LxModelTest::ArchiveName(dir + "/model")}),
        log.Errors());
}

TEST(ModelChunks, ZeroBytesNeverMatchWords)
{
    Messages log;
    EXPECT_FALSE(ReadManifest(std::string("[LxModelData Manifest v1]\0x", 27)));
    EXPECT_FALSE(
        ReadChunks({{"chunkinfo.txt", kChunkHeader + kBlockStart + std::string("PrimType POINT_LIST\0!\n", 22) +
                                          std::string("PARAM Float\0! 1 f 1\nIBRange 1 2\0\n", 33)}})
            .ok);
    EXPECT_EQ((Lines{"Unsupported manifest file version.", "Unrecognized primitive type: POINT_LIST",
                     "Unknown parameter data type: Float", "Syntax error"}),
              log.Errors());
}
