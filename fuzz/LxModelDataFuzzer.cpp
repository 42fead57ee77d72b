// libFuzzer target over the model archive readers. The first input byte picks the reader, the rest is its input:
//   0  manifest text                      4  IB item file
//   1  chunk descriptions (*)             5  TEX item file
//   2  skeleton text                      6  binary ADB item file
//   3  VB item file                       7  a whole model (*), loaded with its items and saved again
// (*) The rest is split at zero bytes into files: chunks get "chunkinfo.txt", then the text served for every
// sub-chunk description file and for every sub-chunk tree file; a whole model gets "manifest.txt",
// "chunkinfo.txt", "skeleton.txt", then the bytes served for every other name (the item files).
// Files live in memory, so every run depends on the input alone. Any crash, leak or sanitizer report is a finding.
//
// "LxModelDataFuzzer -lumex_write_seeds=DIR" writes a seed corpus made from a sample model with the library's own
// writers, then exits.
#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelDataManifestEntry.h"
#include "ObjectManager/LxModelTestUtil.h" // the sample model of the tests (tests/ObjectManager)
#include "ObjectManager/LxSkeleton.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace
{
// An archive in memory. Names not stored explicitly are answered by prefix ("SUBCHUNKDESC." ...) or by the
// fallback, when set. Writing mode stores the file when it is closed.
class MemoryArchive : public LxArchive
{
public:
    std::map<std::string, std::string> files;
    std::map<std::string, std::string> byPrefix;
    const std::string* fallback = nullptr;

    const std::string* Find(const LxString& name) const
    {
        const std::string n(name.c_str(), name.GetLength());
        auto it = files.find(n);
        if (it != files.end())
            return &it->second;
        for (const auto& p : byPrefix)
            if (n.compare(0, p.first.size(), p.first) == 0)
                return &p.second;
        // The fallback stands for item files only: the model's own optional text files stay absent.
        return n == "metafile.txt" ? nullptr : fallback;
    }
    bool FileExists(const LxString& name, LxString* fullPath) const override
    {
        if (!Find(name))
            return false;
        if (fullPath)
            *fullPath = name;
        return true;
    }
    LxFile* OpenFile(const LxString& name, const LxString& mode) const override;
    bool GetFileTime(const LxString& name, long long& time) const override
    {
        time = 1;
        return Find(name) != nullptr;
    }
    const LxString& GetName() const override { return m_name; }

private:
    LxString m_name = "memory";
};

class MemoryFile : public LxFile
{
public:
    MemoryFile(const LxString& name, const std::string* data, MemoryArchive* target)
        : LxFile(name), m_pData(data), m_pTarget(target)
    {
        m_bOpen = true;
    }
    ~MemoryFile() override { Close(); }
    void Close() override
    {
        if (m_bOpen && m_pTarget)
            m_pTarget->files[std::string(GetName().c_str())] = m_written;
        m_bOpen = false;
    }
    unsigned int Read(void* buffer, unsigned int bytes) override
    {
        if (!m_bOpen || !m_pData)
            return 0;
        const size_t left = m_pData->size() - m_nPosition;
        const unsigned int n = bytes < left ? bytes : static_cast<unsigned int>(left);
        std::memcpy(buffer, m_pData->data() + m_nPosition, n);
        m_nPosition += n;
        return n;
    }
    bool Write(const void* buffer, unsigned int bytes) override
    {
        if (!m_bOpen || !m_pTarget)
            return false;
        m_written.append(static_cast<const char*>(buffer), bytes);
        return true;
    }
    using LxFile::Write;
    bool Seek(long, SeekOrigin) override { return false; }
    unsigned int GetSize() const override
    {
        return static_cast<unsigned int>(m_pData ? m_pData->size() : m_written.size());
    }
    bool Flush() override { return m_bOpen; }

private:
    const std::string* m_pData;
    MemoryArchive* m_pTarget;
    std::string m_written;
    size_t m_nPosition = 0;
};

LxFile* MemoryArchive::OpenFile(const LxString& name, const LxString& mode) const
{
    if (mode.GetLength() && mode[0] == 'w')
        return new MemoryFile(name, nullptr, const_cast<MemoryArchive*>(this));
    const std::string* data = Find(name);
    return data ? new MemoryFile(name, data, nullptr) : nullptr;
}

std::vector<std::string> SplitAtZeros(const std::string& text, size_t parts)
{
    std::vector<std::string> out;
    size_t start = 0;
    while (out.size() + 1 < parts)
    {
        const size_t zero = text.find('\0', start);
        if (zero == std::string::npos)
            break;
        out.push_back(text.substr(start, zero - start));
        start = zero + 1;
    }
    out.push_back(text.substr(start));
    out.resize(parts);
    return out;
}

LxList<LxString> Lines(const std::string& text)
{
    LxList<LxString> lines;
    LxFile::SplitTextLines(text.data(), static_cast<unsigned int>(text.size()), lines);
    return lines;
}

void FuzzItem(LxModelDataType type, const std::string& bytes)
{
    MemoryArchive archive;
    archive.files["item"] = bytes;
    LxMD5Hash hash;
    LxModelDataManifestEntry entry(type, "item", "item", hash);
    entry.LoadItem(archive);
}

void FuzzModel(const std::string& input)
{
    const std::vector<std::string> parts = SplitAtZeros(input, 4);
    MemoryArchive archive;
    archive.files["manifest.txt"] = parts[0];
    if (!parts[1].empty())
        archive.files["chunkinfo.txt"] = parts[1];
    if (!parts[2].empty())
        archive.files["skeleton.txt"] = parts[2];
    archive.fallback = &parts[3];
    std::unique_ptr<LxModelData> model(LxModelData::ExtractFromArchive(archive, true));
    if (!model)
        return;
    MemoryArchive copy;
    if (model->SaveToArchive(copy))
        delete LxModelData::ExtractFromArchive(copy, true);
}

void WriteSeed(const std::string& dir, const std::string& name, char kind, const std::string& data)
{
    const std::string path = dir + "/" + name;
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return;
    std::fputc(kind, f);
    std::fwrite(data.data(), 1, data.size(), f);
    std::fclose(f);
}

void WriteSeeds(const std::string& dir)
{
    std::unique_ptr<LxModelData> model(LxModelTest::MakeSampleModel());
    MemoryArchive saved;
    if (!model->SaveToArchive(saved))
        std::exit(1);
    const auto& f = saved.files;
    const std::string nul(1, '\0');
    WriteSeed(dir, "manifest", 0, f.at("manifest.txt"));
    WriteSeed(dir, "chunks", 1,
              f.at("chunkinfo.txt") + nul + f.at("SUBCHUNKDESC.body.2.txt") + nul + f.at("SUBCHUNKTREE.body.2.txt"));
    WriteSeed(dir, "skeleton", 2, f.at("skeleton.txt"));
    WriteSeed(dir, "vb", 3, f.at("positions.vb"));
    WriteSeed(dir, "ib", 4, f.at("indices.ib"));
    WriteSeed(dir, "tex", 5, f.at("diffuse.tex"));
    WriteSeed(dir, "adb", 6, f.at("morphs.adb"));
    // A whole model whose items are all one vertex buffer.
    LxString manifest("[LxModelData Manifest v1]\nVB a a.vb 0123456789abcdef0123456789abcdef\n"
                      "VB b b.vb 0123456789abcdef0123456789abcdef\n");
    WriteSeed(dir, "model", 7,
              std::string(manifest.c_str()) + nul +
                  "[LxModelData ChunkDesc v1]\nCHUNK c\nIB NONINDEXED\nIBRange 0 4\nVBRange 0 4\nStream P a\n"
                  "ENDCHUNK\n" +
                  nul + f.at("skeleton.txt") + nul + f.at("positions.vb"));
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Messages are formatted as usual but go nowhere: no file, no console.
    LxLogManager::Init(false, false, LxString());
    const char* flag = "-lumex_write_seeds=";
    for (int i = 1; i < *argc; ++i)
        if (std::strncmp((*argv)[i], flag, std::strlen(flag)) == 0)
        {
            WriteSeeds((*argv)[i] + std::strlen(flag));
            std::exit(0);
        }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1 || size > (1u << 20))
        return 0;
    // Each input starts with a clean once-only error set, or the set would grow without bound.
    LxLogManager::ResetLumexErrorLog();
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 8)
    {
    case 0:
        delete LxModelDataManifest::ParseLines(Lines(input));
        break;
    case 1:
    {
        const std::vector<std::string> parts = SplitAtZeros(input, 3);
        MemoryArchive archive;
        archive.byPrefix["SUBCHUNKDESC."] = parts[1];
        archive.byPrefix["SUBCHUNKTREE."] = parts[2];
        LxArray<LxModelChunkDesc*> chunks;
        if (LxModelChunkDesc::ParseLines(Lines(parts[0]), archive, chunks))
        {
            LxModelData::ValidateChunkDescs(chunks);
            LxString text;
            for (LxModelChunkDesc* chunk : chunks)
                chunk->AppendText(text);
        }
        for (LxModelChunkDesc* chunk : chunks)
            delete chunk;
        break;
    }
    case 2:
    {
        MemoryArchive archive;
        archive.files["skeleton.txt"] = input;
        std::unique_ptr<LxFile> file(archive.OpenFile("skeleton.txt", "r"));
        std::unique_ptr<LxSkeleton> skeleton(LxSkeleton::CreateFromFile(*file));
        if (skeleton)
        {
            LxArray<LxMatrix4> matrices;
            matrices.Resize(skeleton->GetNumBones());
            skeleton->ConvertBonesToWorldSpace(matrices);
        }
        break;
    }
    case 3:
        FuzzItem(LX_MODEL_DATA_VB, input);
        break;
    case 4:
        FuzzItem(LX_MODEL_DATA_IB, input);
        break;
    case 5:
        FuzzItem(LX_MODEL_DATA_TEX, input);
        break;
    case 6:
        FuzzItem(LX_MODEL_DATA_ADB, input);
        break;
    default:
        FuzzModel(input);
        break;
    }
    return 0;
}
