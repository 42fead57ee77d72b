#include "LxModelTestUtil.h"

#include "Common/LxFile.h"
#include "Common/LxMatrix4.h"
#include "Common/LxMemory.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxZipArchive.h"
#include "ObjectManager/LxADBWriter.h"
#include "ObjectManager/LxModelADB.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"
#include "ObjectManager/LxSkeleton.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <minizip/unzip.h>
#include <sstream>

namespace LxModelTest
{
Messages::Messages()
{
    LxLogManager::ResetLumexErrorLog();
    LxLogManager::GetRef().AddLogListener(this);
}

Messages::~Messages()
{
    LxLogManager::GetRef().RemoveLogListener(this);
}

void Messages::OnLogMessage(const LxString& text, _LxLogMessageType type)
{
    std::string line(text.c_str(), text.GetLength());
    static const char* const prefixes[] = {"DEBUG: ", "WARNING: ", "ERROR: ", "CRITICAL: "};
    // "file(line) : [hh:mm:ss] PREFIX message\n"; continuation lines are indented under the message's start.
    size_t start = line.find("] ");
    start = start == std::string::npos ? 0 : start + 2;
    for (const char* prefix : prefixes)
        if (line.compare(start, std::strlen(prefix), prefix) == 0)
        {
            start += std::strlen(prefix);
            break;
        }
    std::string message = line.substr(start);
    if (!message.empty() && message.back() == '\n')
        message.pop_back();
    const std::string indent = "\n" + std::string(start, ' ');
    for (size_t at = message.find(indent); at != std::string::npos; at = message.find(indent, at + 1))
        message.erase(at + 1, start);
    m_messages.emplace_back(static_cast<int>(type), message);
}

std::vector<std::string> Messages::Of(int type) const
{
    std::vector<std::string> out;
    for (const auto& m : m_messages)
        if (m.first == type)
            out.push_back(m.second);
    return out;
}

Bytes& Bytes::U32(unsigned int v)
{
    for (int i = 0; i < 4; ++i)
        data += static_cast<char>((v >> (8 * i)) & 0xFF);
    return *this;
}

Bytes& Bytes::U16(unsigned short v)
{
    data += static_cast<char>(v & 0xFF);
    data += static_cast<char>(v >> 8);
    return *this;
}

Bytes& Bytes::U8(unsigned char v)
{
    data += static_cast<char>(v);
    return *this;
}

std::string ArchiveName(const std::string& folder)
{
    std::string name = folder;
    for (char& c : name)
        if (c == '\\')
            c = '/';
    return name + "/";
}

std::map<std::string, std::string> ReadTree(const std::string& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    {
        if (!entry.is_regular_file())
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        std::ostringstream s;
        s << in.rdbuf();
        const std::string name = std::filesystem::relative(entry.path(), folder).generic_string();
        std::string bytes = s.str();
#if defined(_WIN32)
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".txt") == 0)
            for (size_t at = bytes.find("\r\n"); at != std::string::npos; at = bytes.find("\r\n", at))
                bytes.erase(at, 1);
#endif
        files[name] = bytes;
    }
    return files;
}

std::map<std::string, std::string> ReadZip(const std::string& path)
{
    std::map<std::string, std::string> files;
    unzFile uf = unzOpen64(path.c_str());
    if (!uf)
        return files;
    LxZipArchive archive(S(path));
    for (int err = unzGoToFirstFile(uf); err == UNZ_OK; err = unzGoToNextFile(uf))
    {
        char name[512];
        unz_file_info64 info;
        if (unzGetCurrentFileInfo64(uf, &info, name, sizeof(name), nullptr, 0, nullptr, 0) != UNZ_OK)
            break;
        std::unique_ptr<LxFile> file(archive.OpenFile(name, "rb"));
        unsigned int size = 0;
        char* data = file ? static_cast<char*>(LxFile::ReadFileToBuffer(*file, &size)) : nullptr;
        files[name] = data ? std::string(data, size) : std::string("<unreadable>");
        LxFree(data);
    }
    unzClose(uf);
    return files;
}

namespace
{
LxCountedPtr<LxMemoryBuffer> Buffer(const std::string& bytes)
{
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(static_cast<unsigned int>(bytes.size()));
    if (!bytes.empty())
        std::memcpy(buffer->GetData(), bytes.data(), bytes.size());
    return LxCountedPtr<LxMemoryBuffer>(buffer);
}

std::string Floats(std::initializer_list<float> values)
{
    std::string s;
    for (float f : values)
        s.append(reinterpret_cast<const char*>(&f), 4);
    return s;
}
} // namespace

LxModelData* MakeSampleModel()
{
    std::unique_ptr<LxModelData> model(new LxModelData);
    LxModelDataManifest& manifest = model->GetManifest();

    LxModelVB* vb = new LxModelVB("positions", "positions.vb", LxModelVBDesc{12, 4});
    vb->SetData(Buffer(Floats({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0})));
    vb->SetMetaData(Buffer("exporter=test"));
    manifest.AddModelDataItem(vb);

    LxModelIB* ib = new LxModelIB("indices", "indices.ib", LxModelIBDesc{2, 6});
    const unsigned short indices[6] = {0, 1, 2, 0, 2, 3};
    ib->SetData(Buffer(std::string(reinterpret_cast<const char*>(indices), sizeof(indices))));
    manifest.AddModelDataItem(ib);

    LxModelTextureDesc texDesc;
    texDesc.width = 2;
    texDesc.height = 2;
    texDesc.depth = 1;
    texDesc.mipLevels = 1;
    texDesc.arraySize = 1;
    texDesc.format = 28;
    LxModelTexture* texture = new LxModelTexture("diffuse", "diffuse.tex", texDesc);
    texture->SetData(Buffer(std::string("\xff\x00\x00\xff\x00\xff\x00\xff\x00\x00\xff\xff\xff\xff\xff\xff", 16)));
    manifest.AddModelDataItem(texture);

    LxADBWriter writer;
    writer.WriteData("morph targets", 13);
    manifest.AddModelDataItem(writer.FinalizeADB("morphs", "MorphData", 3));
    LxModelADB* text = new LxModelADB("notes", "notes.txt", "Notes", LxModelADB::STORAGE_TEXT, 0);
    text->SetData(Buffer("free text\nsecond line\n"));
    manifest.AddModelDataItem(text);

    LxModelChunkDesc* body = new LxModelChunkDesc("body");
    body->SetIBName("indices");
    body->SetIndexRange(0, 6);
    body->SetVertexRange(0, 4);
    body->SetEffectFile("skin.fx");
    body->SetTechnique("Lit");
    body->AddVBMapping("POSITION", "positions");
    body->AddTexMapping("DiffuseMap", "diffuse");
    LxArray<int> boneMap;
    boneMap.Add(0);
    boneMap.Add(2);
    boneMap.Add(-1);
    body->SetBoneMap(boneMap);
    body->SetVisibilityCurve("body.visible");
    LxParameterSetting color("Tint", LxEffectParameter::TYPE_VECTOR, 1);
    const float tint[4] = {1.0f, 0.5f, 0.25f, 0.1f};
    unsigned int words[4];
    std::memcpy(words, tint, sizeof(words));
    color.SetValues(words);
    body->AddParameterSetting(color);
    LxParameterSetting flags("Flags", LxEffectParameter::TYPE_VECTOR_BOOL, 2);
    const unsigned int bools[8] = {1, 0, 0, 1, 0, 0, 1, 1};
    flags.SetValues(bools);
    body->AddParameterSetting(flags);
    LxParameterSetting counts("Counts", LxEffectParameter::TYPE_INT, 3);
    const unsigned int ints[3] = {7, static_cast<unsigned int>(-3), 0};
    counts.SetValues(ints);
    body->AddParameterSetting(counts);
    LxParameterSetting glow("Glow", LxEffectParameter::TYPE_FLOAT, 1);
    glow.SetAnimation("glow.curve");
    body->AddParameterSetting(glow);
    body->AddParameterSetting(LxParameterSetting("Shininess", LxEffectParameter::TYPE_FLOAT, 1));
    LxModelSubChunk first, second;
    first.indexMin = 0;
    first.indexMax = 3;
    first.vertexMax = 3;
    first.boundsMax[0] = first.boundsMax[1] = 1.0f;
    second.indexMin = 3;
    second.indexMax = 6;
    second.vertexMax = 4;
    second.userValue = 9;
    second.boundsMax[0] = second.boundsMax[1] = 1.0f;
    body->AddSubChunk(first);
    body->AddSubChunk(second);
    LxSubChunkTree tree;
    tree.indexMax = 6;
    tree.vertexMax = 4;
    LxSubChunkTreeNode root;
    root.subChunkCount = 2;
    root.left = 1;
    root.right = 2;
    root.boundsMax[0] = root.boundsMax[1] = 1.0f;
    LxSubChunkTreeNode left = root, right = root;
    left.left = left.right = right.left = right.right = -1;
    left.subChunkCount = right.subChunkCount = 1;
    right.firstSubChunk = 1;
    tree.AddNode(root);
    tree.AddNode(left);
    tree.AddNode(right);
    body->AddSubChunkTree(tree);
    model->AddChunkDesc(body);

    LxModelChunkDesc* outline = new LxModelChunkDesc("body");
    outline->SetIndexRange(0, 6);
    outline->SetVertexRange(0, 4);
    outline->SetEffectFile("outline.fx");
    outline->SetTechnique("Edges");
    model->AddChunkDesc(outline);

    LxModelChunkDesc* points = new LxModelChunkDesc("points");
    points->SetPrimType(LxRenderManager::PRIM_POINT_LIST);
    points->SetNonIndexed();
    points->SetIndexRange(0, 4);
    points->SetVertexRange(0, 4);
    points->SetEffectFile("points.fx");
    points->AddVBMapping("POSITION", "positions");
    model->AddChunkDesc(points);

    LxSkeleton* skeleton = new LxSkeleton;
    LxMatrix4 m;
    skeleton->AddBone(LxBone("root", m), "");
    skeleton->AddBone(LxBone("spine", m.MakeTranslation(0.0f, 1.5f, 0.0f)), "root");
    skeleton->AddBone(LxBone("head", m.MakeScaling(1.0f, 2.0f, 0.5f)), "spine");
    model->SetSkeleton(skeleton);

    model->GetMetaFile().AddEntry("exporter LxModelTests");
    model->GetMetaFile().AddEntry("units metres");
    return model.release();
}

bool Run(const std::string& command)
{
    return std::system(command.c_str()) == 0;
}

bool HaveTool(const std::string& name)
{
#if defined(_WIN32)
    (void)name;
    return false;
#else
    return Run("command -v " + name + " >/dev/null 2>&1");
#endif
}
} // namespace LxModelTest
