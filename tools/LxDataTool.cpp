// LxDataTool: checks and builds the data files of scenes.
//
//   LxDataTool check <path>
//       Validates and describes a model archive (a folder or a .zip/.lmx file holding "manifest.txt"), an
//       animation set (an archive whose manifest starts "[LxAnimationSet Manifest"), a skeleton file
//       ("[LxSkeleton v1]"/"[LxSkeleton v2]") or a curve file (one curve stream). Every item of a model is loaded.
//       Errors are printed as the log writes them.
//   LxDataTool build-model <mesh description> <output folder or .zip>
//       Builds a model archive from a mesh description (below): one vertex buffer (position and texture
//       coordinates, 20 bytes a vertex), one index buffer (16-bit indices, 32-bit past 65535 vertices), the
//       textures, one chunk drawing them with the given effect, the skeleton and the meta file. When the
//       description has keys, the bones' animation is saved as an animation set next to the output:
//       "<output>.anim.zip" ("<name>.anim.zip" for "<name>.zip").
//
// Exit status: 0 when everything is valid (or built), 1 on any error, 2 for a usage error.
//
// Mesh description: a text file, one statement per line, tokens separated by blanks; "#" starts a comment line.
//   name <chunk name>                          the chunk's name (default "mesh")
//   effect <effect file> [<technique>]         the chunk's effect (default "default.fx", technique "Default")
//   vertex <x> <y> <z> [<u> <v>]               a vertex; texture coordinates default to 0 0
//   triangle <i0> <i1> <i2>                    a triangle of vertex indices, counted from 0
//   texture <slot> <width> <height> <r> <g> <b> <a>
//                                              a solid RGBA8 texture (channels 0-255) bound to an effect slot
//   bone <name> <parent or -> <x> <y> <z>      a bone whose bind pose is a translation from its parent (a parent
//                                              is declared before its children); the bone's matrix is the
//                                              inverse of its bind pose in model space
//   key <bone> <time> <x> <y> <z>              a key of the bone's translation curve ("bone.<name>.translate");
//                                              a bone's keys come in increasing time
//   curve <name> <time> <x> <y> <z>           a key of a free vec3 curve of the animation set, under that exact
//                                              name (a fly path: "camera.position", "camera.target"); keys of
//                                              one curve come in increasing time
//   skin <vertex> <bone> <weight> [<bone> <weight> ...]
//                                              up to 4 bone influences of a vertex declared before (bones by
//                                              name, declared before). With any skin statement the model gets a
//                                              second vertex buffer "skin" on the stream "SKIN": per vertex 4
//                                              bone indices (ubyte4) and 4 weights (float4), 20 bytes; vertices
//                                              without a statement follow the first bone with weight 1
//   meta <text...>                             a meta-file entry
// Any fault is reported as "<file>(<line>): <what>" and nothing is written.
#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxVector3.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxKeyframeCurve.h"
#include "ObjectManager/LxModelADB.h"
#include "ObjectManager/LxModelChunkDesc.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxModelDataManifest.h"
#include "ObjectManager/LxModelDataManifestEntry.h"
#include "ObjectManager/LxModelIB.h"
#include "ObjectManager/LxModelTexture.h"
#include "ObjectManager/LxModelVB.h"
#include "ObjectManager/LxSkeleton.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace
{
const unsigned short kFormatRGBA8 = 28; // the R8G8B8A8 unorm code of the GPU resource formats

void Usage()
{
    std::fprintf(stderr, "usage: LxDataTool check <archive|file>\n"
                         "       LxDataTool build-model <mesh description> <output folder or .zip>\n");
}

bool HasZipExtension(const std::string& path)
{
    if (path.size() < 4)
        return false;
    std::string ext = path.substr(path.size() - 4);
    for (char& c : ext)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext == ".zip" || ext == ".lmx";
}

bool IsArchivePath(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_directory(path, error) || HasZipExtension(path);
}

std::string FirstLine(const LxArchive& archive, const char* name)
{
    std::unique_ptr<LxFile> file(archive.FileExists(name, nullptr) ? archive.OpenFile(name, "r") : nullptr);
    LxList<LxString> lines;
    if (!file || !file->ReadTextLines(lines) || lines.IsEmpty())
        return std::string();
    return lines.GetFirst().c_str();
}

const char* TypeWord(LxModelDataType type)
{
    static const char* const words[] = {"VB", "IB", "TEX", "ADB"};
    return words[type];
}

void DumpItem(const LxModelDataManifestEntry& entry)
{
    const LxModelDataItem* item = entry.GetItem();
    std::printf("  %-3s %-16s %-20s %s  %u bytes", TypeWord(entry.GetType()), entry.GetName().c_str(),
                entry.GetFileName().c_str(), entry.GetHash().ToString().c_str(), item->GetDataSize());
    if (item->GetMetaDataSize())
        std::printf(" + %u bytes meta data", item->GetMetaDataSize());
    switch (entry.GetType())
    {
    case LX_MODEL_DATA_VB:
    {
        const LxModelVBDesc& d = static_cast<const LxModelVB*>(item)->GetDesc();
        std::printf(": %u vertices of %u bytes", d.vertexCount, d.vertexSize);
        break;
    }
    case LX_MODEL_DATA_IB:
    {
        const LxModelIBDesc& d = static_cast<const LxModelIB*>(item)->GetDesc();
        std::printf(": %u indices of %u bytes", d.indexCount, d.indexSize);
        break;
    }
    case LX_MODEL_DATA_TEX:
    {
        const LxModelTextureDesc& d = static_cast<const LxModelTexture*>(item)->GetDesc();
        std::printf(": type %u, %ux%ux%u, %u mips, array %u, format %u", d.type, d.width, d.height, d.depth,
                    d.mipLevels, d.arraySize, d.format);
        break;
    }
    case LX_MODEL_DATA_ADB:
    {
        const LxModelADB* adb = static_cast<const LxModelADB*>(item);
        std::printf(": usage %s, %s, version %u", adb->GetUsage().c_str(),
                    adb->GetStorageFormat() == LxModelADB::STORAGE_TEXT ? "text" : "binary", adb->GetVersion());
        break;
    }
    }
    LxMD5Hash hash;
    item->ComputeHash(&hash);
    std::printf("%s\n", hash == entry.GetHash() ? "" : "  (hash differs from the manifest)");
}

void DumpSkeleton(const LxSkeleton& skeleton)
{
    std::printf("skeleton: %u bones\n", skeleton.GetNumBones());
    for (unsigned int i = 0; i < skeleton.GetNumBones(); ++i)
    {
        const int parent = skeleton.GetParentIndex(i);
        const LxVector3 t = skeleton.GetBoneByIndex(i)->GetMatrix().GetTranslation();
        std::printf("  bone %u %s, parent %s, offset translation %g %g %g\n", i,
                    skeleton.GetBoneByIndex(i)->GetName().c_str(),
                    parent < 0 ? "-" : skeleton.GetBoneByIndex(static_cast<unsigned int>(parent))->GetName().c_str(),
                    static_cast<double>(t.x) + 0.0, static_cast<double>(t.y) + 0.0, static_cast<double>(t.z) + 0.0);
    }
}

int CheckModel(const LxArchive& archive)
{
    std::unique_ptr<LxModelData> model(LxModelData::ExtractFromArchive(archive, true));
    if (!model)
        return 1;
    const LxModelDataManifest& manifest = model->GetManifest();
    std::printf("model archive %s: %u items, %u chunks\n", archive.GetName().c_str(), manifest.GetCount(),
                model->GetChunkDescCount());
    for (unsigned int i = 0; i < manifest.GetCount(); ++i)
        DumpItem(*manifest.GetEntry(i));
    for (unsigned int i = 0; i < model->GetChunkDescCount(); ++i)
    {
        const LxModelChunkDesc* c = model->GetChunkDesc(i);
        std::printf("  chunk %s: %s, %s %s, indices [%u, %u), vertices [%u, %u), effect %s %s, %u streams, "
                    "%u textures, %u bones, %u parameters, %u sub-chunks, %u trees\n",
                    c->GetName().c_str(), LxRenderManager::PrimTypeToString(c->GetPrimType()),
                    c->IsIndexed() ? "IB" : "non-indexed", c->GetIBName().c_str(), c->GetIndexMin(), c->GetIndexMax(),
                    c->GetVertexMin(), c->GetVertexMax(), c->GetEffectFile().c_str(), c->GetTechnique().c_str(),
                    c->GetVBMappings().GetCount(), c->GetTexMappings().GetCount(), c->GetBoneMap().GetCount(),
                    c->GetParameterSettings().GetCount(), c->GetSubChunks().GetCount(),
                    c->GetSubChunkTrees().GetCount());
    }
    if (model->GetSkeleton())
        DumpSkeleton(*model->GetSkeleton());
    for (unsigned int i = 0; i < model->GetMetaFile().GetCount(); ++i)
        std::printf("  meta: %s\n", model->GetMetaFile().GetEntry(i).c_str());
    return 0;
}

void DumpCurve(const char* name, const LxAnimationCurve& curve)
{
    const LxKeyframeCurve* keyframes = dynamic_cast<const LxKeyframeCurve*>(&curve);
    std::printf("  curve %s: %s, %u keys, length %g\n", name, LxAnimationCurve::GetDataTypeName(curve.GetDataType()),
                keyframes ? keyframes->GetNumKeys() : 0u, static_cast<double>(curve.GetAnimationLength()));
}

int CheckAnimationSet(const std::string& path)
{
    std::unique_ptr<LxAnimationSet> set(LxAnimationSet::CreateFromFile(path.c_str()));
    if (!set)
        return 1;
    LxArray<LxString> names;
    set->GetAllCurveNames(names);
    std::printf("animation set %s: %u curves, length %g\n", path.c_str(), set->GetCount(),
                static_cast<double>(set->GetMaxAnimationLength()));
    for (const LxString& name : names)
        DumpCurve(name.c_str(), *set->GetCurve(name));
    return 0;
}

int CheckFile(const std::string& path)
{
    std::unique_ptr<LxFile> file(LxFile::Open(path.c_str(), "rb"));
    if (!file->IsOpen())
    {
        std::fprintf(stderr, "LxDataTool: cannot open %s\n", path.c_str());
        return 1;
    }
    char head[12] = {};
    const unsigned int got = file->Read(head, sizeof(head) - 1);
    file->Seek(0, LxFile::SEEK_FROM_START);
    if (got != LX_FILE_READ_ERROR && std::strncmp(head, "[LxSkeleton", 11) == 0)
    {
        std::unique_ptr<LxSkeleton> skeleton(LxSkeleton::CreateFromFile(*file));
        if (!skeleton)
            return 1;
        DumpSkeleton(*skeleton);
        return 0;
    }
    std::unique_ptr<LxAnimationCurve> curve(LxAnimationCurve::ReadCurveStream(file.get()));
    if (!curve)
        return 1;
    if (file->GetSize() != 0)
    {
        char extra;
        if (file->Read(&extra, 1) == 1)
        {
            std::fprintf(stderr, "LxDataTool: %s holds more than one curve stream\n", path.c_str());
            return 1;
        }
    }
    DumpCurve(path.c_str(), *curve);
    return 0;
}

int Check(const std::string& path)
{
    if (!IsArchivePath(path))
        return CheckFile(path);
    std::unique_ptr<LxArchive> archive(LxArchive::Create(path.c_str()));
    if (FirstLine(*archive, "manifest.txt").rfind("[LxAnimationSet Manifest", 0) == 0)
        return CheckAnimationSet(path);
    return CheckModel(*archive);
}

// --- build-model --------------------------------------------------------------------------------------------------

struct Mesh
{
    std::string name = "mesh", effect = "default.fx", technique = "Default";
    std::vector<float> vertices; // 5 floats each
    std::vector<unsigned int> indices;
    struct Texture
    {
        std::string slot;
        unsigned short width, height;
        unsigned char rgba[4];
    };
    std::vector<Texture> textures;
    struct Bone
    {
        std::string name, parent;
        LxVector3 bind; // model space
    };
    std::vector<Bone> bones;
    std::map<std::string, std::vector<std::pair<float, LxVector3>>> keys;
    std::map<std::string, std::vector<std::pair<float, LxVector3>>> curves; // free curves by their own name
    struct Skin
    {
        unsigned char bones[4] = {0, 0, 0, 0};
        float weights[4] = {1.0f, 0.0f, 0.0f, 0.0f};
    };
    std::map<unsigned int, Skin> skins; // by vertex
    std::vector<std::string> meta;
};

bool ParseNumber(const std::string& token, double* out)
{
    if (token.empty())
        return false;
    char* end = nullptr;
    *out = std::strtod(token.c_str(), &end);
    return *end == 0;
}

bool ReadMesh(const std::string& path, Mesh& mesh)
{
    std::ifstream in(path);
    if (!in)
    {
        std::fprintf(stderr, "%s: cannot open the mesh description\n", path.c_str());
        return false;
    }
    bool ok = true;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number)
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        std::istringstream split(line);
        std::vector<std::string> t;
        for (std::string token; split >> token;)
            t.push_back(token);
        if (t.empty() || t[0][0] == '#')
            continue;
        auto fail = [&](const std::string& what)
        {
            std::fprintf(stderr, "%s(%d): %s\n", path.c_str(), number, what.c_str());
            ok = false;
        };
        // Numbers from token `first` on, `count` of them (or `optional` fewer).
        std::vector<double> v;
        auto numbers = [&](size_t first, size_t count, size_t optional = 0)
        {
            if (t.size() > first + count || t.size() + optional < first + count)
                return false;
            for (size_t i = first; i < t.size(); ++i)
            {
                double d = 0;
                if (!ParseNumber(t[i], &d))
                    return false;
                v.push_back(d);
            }
            return true;
        };
        const std::string& k = t[0];
        if (k == "name" && t.size() == 2)
            mesh.name = t[1];
        else if (k == "effect" && (t.size() == 2 || t.size() == 3))
        {
            mesh.effect = t[1];
            if (t.size() == 3)
                mesh.technique = t[2];
        }
        else if (k == "vertex")
        {
            if (!numbers(1, 5, 2))
                fail("a vertex takes 3 coordinates and optionally 2 texture coordinates");
            else
            {
                v.resize(5, 0.0);
                for (double d : v)
                    mesh.vertices.push_back(static_cast<float>(d));
            }
        }
        else if (k == "triangle")
        {
            if (!numbers(1, 3))
                fail("a triangle takes 3 vertex indices");
            for (size_t i = 0; i < v.size(); ++i)
            {
                const double d = v[i];
                if (d < 0 || d != static_cast<double>(static_cast<unsigned int>(d)) ||
                    d >= static_cast<double>(mesh.vertices.size() / 5))
                {
                    fail("triangle index " + t[1 + i] + " names no vertex declared before it");
                    break;
                }
                mesh.indices.push_back(static_cast<unsigned int>(d));
            }
        }
        else if (k == "texture")
        {
            if (t.size() != 8 || !numbers(2, 6))
                fail("a texture takes a slot, a width, a height and 4 channels");
            else if (v[0] < 1 || v[0] > 4096 || v[1] < 1 || v[1] > 4096)
                fail("texture sizes run from 1 to 4096");
            else
            {
                Mesh::Texture tex{t[1], static_cast<unsigned short>(v[0]), static_cast<unsigned short>(v[1]), {}};
                for (int c = 0; c < 4; ++c)
                    tex.rgba[c] = static_cast<unsigned char>(v[2 + c] < 0 ? 0 : v[2 + c] > 255 ? 255 : v[2 + c]);
                mesh.textures.push_back(tex);
            }
        }
        else if (k == "bone")
        {
            if (t.size() != 6 || !numbers(3, 3))
                fail("a bone takes a name, a parent (or -) and a translation");
            else
            {
                LxVector3 bind(static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2]));
                const std::string parent = t[2] == "-" ? std::string() : t[2];
                bool taken = false;
                const Mesh::Bone* parentBone = nullptr;
                for (const Mesh::Bone& b : mesh.bones)
                {
                    taken = taken || b.name == t[1];
                    if (b.name == parent)
                        parentBone = &b;
                }
                if (taken)
                    fail("bone " + t[1] + " is declared twice");
                else if (!parent.empty() && !parentBone)
                    fail("parent bone " + parent + " is not declared before " + t[1]);
                else
                    mesh.bones.push_back(Mesh::Bone{t[1], parent, parentBone ? bind + parentBone->bind : bind});
            }
        }
        else if (k == "key" || k == "curve")
        {
            if (t.size() != 6 || !numbers(2, 4))
                fail(k == "key" ? "a key takes a bone, a time and a translation"
                                : "a curve key takes a curve name, a time and a vec3");
            else
            {
                auto& keys = k == "key" ? mesh.keys[t[1]] : mesh.curves[t[1]];
                if (!keys.empty() && v[0] < keys.back().first)
                    fail("the keys of " + t[1] + " must come in increasing time");
                keys.emplace_back(
                    static_cast<float>(v[0]),
                    LxVector3(static_cast<float>(v[1]), static_cast<float>(v[2]), static_cast<float>(v[3])));
            }
        }
        else if (k == "skin")
        {
            double vertex = -1;
            if (t.size() < 4 || t.size() > 10 || t.size() % 2 != 0 || !ParseNumber(t[1], &vertex))
                fail("a skin statement takes a vertex and 1 to 4 pairs of a bone and a weight");
            else if (vertex < 0 || vertex != static_cast<double>(static_cast<unsigned int>(vertex)) ||
                     vertex >= static_cast<double>(mesh.vertices.size() / 5))
                fail("skin vertex " + t[1] + " names no vertex declared before it");
            else
            {
                Mesh::Skin skin;
                skin.weights[0] = 0.0f;
                bool good = true;
                for (size_t i = 2, n = 0; i + 1 < t.size() && good; i += 2, ++n)
                {
                    size_t bone = 0;
                    while (bone < mesh.bones.size() && mesh.bones[bone].name != t[i])
                        ++bone;
                    double weight = 0;
                    good = bone < mesh.bones.size() && bone <= 255 && ParseNumber(t[i + 1], &weight) && weight >= 0 &&
                           weight <= 1;
                    if (bone == mesh.bones.size())
                        fail("skin bone " + t[i] + " is not declared before");
                    else if (!good)
                        fail("skin weights run from 0 to 1, for one of the first 256 bones");
                    else
                    {
                        skin.bones[n] = static_cast<unsigned char>(bone);
                        skin.weights[n] = static_cast<float>(weight);
                    }
                }
                if (good)
                    mesh.skins[static_cast<unsigned int>(vertex)] = skin;
            }
        }
        else if (k == "meta" && t.size() > 1)
            mesh.meta.push_back(line.substr(line.find("meta") + 5));
        else
            fail("unknown or malformed statement '" + k + "'");
    }
    for (const auto& keys : mesh.keys)
    {
        bool known = false;
        for (const Mesh::Bone& b : mesh.bones)
            known = known || b.name == keys.first;
        if (!known)
        {
            std::fprintf(stderr, "%s: keys for the undeclared bone %s\n", path.c_str(), keys.first.c_str());
            ok = false;
        }
    }
    if (ok && (mesh.vertices.empty() || mesh.indices.empty()))
    {
        std::fprintf(stderr, "%s: a mesh needs at least one vertex and one triangle\n", path.c_str());
        ok = false;
    }
    return ok;
}

LxCountedPtr<LxMemoryBuffer> Block(const void* data, size_t size)
{
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(static_cast<unsigned int>(size));
    std::memcpy(buffer->GetData(), data, size);
    return LxCountedPtr<LxMemoryBuffer>(buffer);
}

std::string AnimationPath(const std::string& output)
{
    std::string base = output;
    while (base.size() > 1 && (base.back() == '/' || base.back() == '\\'))
        base.pop_back();
    if (!HasZipExtension(base))
        return base + ".anim.zip";
    return base.substr(0, base.size() - 4) + ".anim.zip";
}

int BuildModel(const std::string& meshPath, const std::string& output)
{
    Mesh mesh;
    if (!ReadMesh(meshPath, mesh))
        return 1;
    LxModelData model;
    LxModelDataManifest& manifest = model.GetManifest();
    const unsigned int vertexCount = static_cast<unsigned int>(mesh.vertices.size() / 5);
    LxModelVB* vb = new LxModelVB("vertices", "vertices.vb", LxModelVBDesc{20, vertexCount});
    vb->SetData(Block(mesh.vertices.data(), mesh.vertices.size() * sizeof(float)));
    manifest.AddModelDataItem(vb);
    if (!mesh.skins.empty())
    {
        std::vector<unsigned char> skin(static_cast<size_t>(vertexCount) * 20);
        for (unsigned int i = 0; i < vertexCount; ++i)
        {
            const auto found = mesh.skins.find(i);
            const Mesh::Skin s = found == mesh.skins.end() ? Mesh::Skin() : found->second;
            std::memcpy(&skin[i * 20], s.bones, 4);
            std::memcpy(&skin[i * 20 + 4], s.weights, 16);
        }
        LxModelVB* skinVB = new LxModelVB("skin", "skin.vb", LxModelVBDesc{20, vertexCount});
        skinVB->SetData(Block(skin.data(), skin.size()));
        manifest.AddModelDataItem(skinVB);
    }

    const bool wide = vertexCount > 65536;
    const unsigned int indexCount = static_cast<unsigned int>(mesh.indices.size());
    LxModelIB* ib =
        new LxModelIB("indices", "indices.ib", LxModelIBDesc{static_cast<unsigned char>(wide ? 4 : 2), indexCount});
    if (wide)
        ib->SetData(Block(mesh.indices.data(), mesh.indices.size() * 4));
    else
    {
        std::vector<unsigned short> narrow(mesh.indices.begin(), mesh.indices.end());
        ib->SetData(Block(narrow.data(), narrow.size() * 2));
    }
    manifest.AddModelDataItem(ib);

    LxModelChunkDesc* chunk = new LxModelChunkDesc(mesh.name.c_str());
    chunk->SetIBName("indices");
    chunk->SetIndexRange(0, indexCount);
    chunk->SetVertexRange(0, vertexCount);
    chunk->SetEffectFile(mesh.effect.c_str());
    chunk->SetTechnique(mesh.technique.c_str());
    chunk->AddVBMapping("VERTEX", "vertices");
    if (!mesh.skins.empty())
        chunk->AddVBMapping("SKIN", "skin");
    for (size_t i = 0; i < mesh.textures.size(); ++i)
    {
        const Mesh::Texture& t = mesh.textures[i];
        LxModelTextureDesc desc;
        desc.width = t.width;
        desc.height = t.height;
        desc.depth = 1;
        desc.mipLevels = 1;
        desc.arraySize = 1;
        desc.format = kFormatRGBA8;
        const std::string name = "texture" + std::to_string(i);
        LxModelTexture* texture = new LxModelTexture(name.c_str(), (name + ".tex").c_str(), desc);
        std::vector<unsigned char> texels(static_cast<size_t>(t.width) * t.height * 4);
        for (size_t p = 0; p < texels.size(); p += 4)
            std::memcpy(&texels[p], t.rgba, 4);
        texture->SetData(Block(texels.data(), texels.size()));
        manifest.AddModelDataItem(texture);
        chunk->AddTexMapping(t.slot.c_str(), name.c_str());
    }
    if (!mesh.bones.empty())
    {
        LxSkeleton* skeleton = new LxSkeleton;
        LxArray<int> boneMap;
        for (const Mesh::Bone& b : mesh.bones)
        {
            LxMatrix4 offset;
            offset.MakeTranslation(-b.bind.x, -b.bind.y, -b.bind.z);
            skeleton->AddBone(LxBone(b.name.c_str(), offset), b.parent.c_str());
            boneMap.Add(static_cast<int>(boneMap.GetCount()));
        }
        model.SetSkeleton(skeleton);
        chunk->SetBoneMap(boneMap);
    }
    model.AddChunkDesc(chunk);
    model.GetMetaFile().AddEntry("generator LxDataTool");
    model.GetMetaFile().AddEntry(("source " + meshPath).c_str());
    for (const std::string& entry : mesh.meta)
        model.GetMetaFile().AddEntry(entry.c_str());

    if (!model.SaveToPath(output.c_str()))
        return 1;
    std::printf("model archive %s: %u vertices, %u triangles, %u textures, %u bones\n", output.c_str(), vertexCount,
                indexCount / 3, static_cast<unsigned int>(mesh.textures.size()),
                static_cast<unsigned int>(mesh.bones.size()));
    if (mesh.keys.empty() && mesh.curves.empty())
        return 0;

    LxAnimationSet set;
    for (const auto& bone : mesh.keys)
    {
        LxKeyframeCurve* curve = new LxKeyframeCurve(LxAnimationCurve::DATA_VEC3);
        LxCountedPtr<LxAnimationCurve> owned(curve);
        for (const auto& key : bone.second)
            curve->AddKey(key.first, key.second);
        set.AddCurve(("bone." + bone.first + ".translate").c_str(), owned);
    }
    for (const auto& free : mesh.curves)
    {
        LxKeyframeCurve* curve = new LxKeyframeCurve(LxAnimationCurve::DATA_VEC3);
        LxCountedPtr<LxAnimationCurve> owned(curve);
        for (const auto& key : free.second)
            curve->AddKey(key.first, key.second);
        set.AddCurve(free.first.c_str(), owned);
    }
    const std::string animation = AnimationPath(output);
    if (!set.SaveToFile(animation.c_str(), true))
        return 1;
    std::printf("animation set %s: %u curves\n", animation.c_str(), set.GetCount());
    return 0;
}
} // namespace

int main(int argc, char** argv)
{
    // Errors are echoed to the console as the log writes them; no log file is left behind.
    LxLogManager::Init(false, true, LxString());
    int status = 2;
    if (argc == 3 && std::strcmp(argv[1], "check") == 0)
        status = Check(argv[2]);
    else if (argc == 4 && std::strcmp(argv[1], "build-model") == 0)
        status = BuildModel(argv[2], argv[3]);
    else
        Usage();
    if (status == 0 && LxLogManager::GetRef().ErrorsLogged())
        status = 1;
    LxLogManager::ShutDown();
    return status;
}
