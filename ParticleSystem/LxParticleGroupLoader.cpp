#include "ParticleSystem/LxParticleGroupLoader.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"
#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleGroupDesc.h"
#include "ParticleSystem/LxParticleParser.h"

#include <memory>

namespace
{
const char* const kParticleFileName = "particleFile.txt";
const char* const kTextureMappingName = "texturemapping.txt";

// The whole file, or false when it cannot be read.
bool ReadWhole(LxFile& file, LxString& contents)
{
    unsigned int size = 0;
    void* data = LxFile::ReadFileToBuffer(file, &size);
    if (!data)
        return false;
    contents.Assign(static_cast<const char*>(data), size);
    LxFree(data);
    return true;
}

// The archive's name as messages show it: without a trailing separator.
LxString ArchiveLabel(const LxArchive& archive)
{
    LxString name = archive.GetName();
    if (name.GetLength() > 1 && (name.GetLast() == '/' || name.GetLast() == '\\'))
        name.Truncate(name.GetLength() - 1);
    return name;
}

LxString Unquote(LxString text)
{
    text.Trim();
    if (text.GetLength() >= 2 && text[0] == '"' && text.GetLast() == '"')
        return text.Substring(1, text.GetLength() - 2);
    return text;
}

bool LoadTextureMapping(const LxArchive& archive, LxParticleGroupLoader::TextureMapping& mapping)
{
    if (!archive.FileExists(kTextureMappingName, nullptr))
        return true; // optional
    std::unique_ptr<LxFile> file(archive.OpenFile(kTextureMappingName, "rb"));
    if (!file || !file->IsOpen())
    {
        LX_ERROR("Error opening texture remapping file in archive \"%s\"", ArchiveLabel(archive).c_str());
        return false;
    }
    LxString text;
    if (!ReadWhole(*file, text) || !LxParticleGroupLoader::ParseTextureMapping(text, mapping))
    {
        LX_ERROR("Error reading texture remapping data from \"%s/%s\"", ArchiveLabel(archive).c_str(),
                 kTextureMappingName);
        return false;
    }
    return true;
}

bool LoadTextures(const LxArchive& archive, const LxParticleGroupLoader::TextureMapping& mapping,
                  LxParticleGroupDesc& group, LxParticleBuilder& builder)
{
    bool ok = true;
    for (unsigned int s = 0; s < group.GetSystemCount(); ++s)
    {
        LxParticleSystemDesc& system = group.GetSystem(s);
        for (unsigned int t = 0; t < system.GetTextureSetCount(); ++t)
        {
            LxParticleTextureSet& set = system.GetTextureSet(t);
            for (unsigned int i = 0; i < set.GetSlotCount(); ++i)
            {
                const LxString written = LxArchive::NormalizeName(set.GetSlot(i).file);
                const LxString* mapped = mapping.FindValue(written);
                const LxString file = mapped ? *mapped : written;
                set.SetSlotFile(i, file);
                if (!archive.FileExists(file, nullptr))
                {
                    LX_ERROR("Can't find referenced texture \"%s\" in archive \"%s\"", file.c_str(),
                             ArchiveLabel(archive).c_str());
                    ok = false;
                }
                else if (!builder.CreateTexture(archive, file, system))
                {
                    LX_ERROR("Could not create texture for particle system \"%s\": %s", system.GetName().c_str(),
                             file.c_str());
                    ok = false;
                }
            }
        }
    }
    if (!ok)
        LX_ERROR("Error loading textures from \"%s\"", ArchiveLabel(archive).c_str());
    return ok;
}
} // namespace

LxParticleGroupDesc* LxParticleGroupLoader::Load(const LxString& rParticleFile, LxParticleBuilder& builder)
{
    if (rParticleFile.IsEmpty())
    {
        LX_ERROR("rParticleFile is is invalid");
        return nullptr;
    }
    std::unique_ptr<LxArchive> archive(LxArchive::Create(rParticleFile));
    return LoadFromArchive(*archive, builder);
}

LxParticleGroupDesc* LxParticleGroupLoader::LoadFromArchive(const LxArchive& archive, LxParticleBuilder& builder)
{
    const LxString fileName = ArchiveLabel(archive) + "/" + kParticleFileName;
    std::unique_ptr<LxFile> file;
    if (archive.FileExists(kParticleFileName, nullptr))
        file.reset(archive.OpenFile(kParticleFileName, "rb"));
    if (!file || !file->IsOpen())
    {
        LX_ERROR("Error opening particle file in archive \"%s\"", ArchiveLabel(archive).c_str());
        return nullptr;
    }
    LxString text;
    if (!ReadWhole(*file, text))
    {
        LX_ERROR("Error reading particle file \"%s\"", fileName.c_str());
        return nullptr;
    }
    file.reset();

    TextureMapping mapping;
    if (!LoadTextureMapping(archive, mapping))
        return nullptr;

    builder.Reset();
    LxParticleParser parser;
    parser.Init(fileName, text, &builder);
    const bool parsed = parser.Parse();
    std::unique_ptr<LxParticleGroupDesc> group(builder.TakeResult());
    if (!parsed || !group)
    {
        LX_ERROR("Invalid particle group file \"%s\"", fileName.c_str());
        return nullptr;
    }
    if (!LoadTextures(archive, mapping, *group, builder))
        return nullptr;
    return group.release();
}

bool LxParticleGroupLoader::ParseTextureMapping(const LxString& text, TextureMapping& mapping)
{
    LxList<LxString> lines;
    LxFile::SplitTextLines(text.c_str(), text.GetLength(), lines);
    for (const LxString& raw : lines)
    {
        LxString line(raw);
        line.Trim();
        if (line.IsEmpty() || line.StartsWith("//"))
            continue;
        const int equals = line.Find('=');
        if (equals < 0)
            return false;
        const LxString name = Unquote(line.Left(static_cast<unsigned int>(equals)));
        const LxString file = Unquote(line.Substring(static_cast<unsigned int>(equals) + 1));
        if (name.IsEmpty() || file.IsEmpty())
            return false;
        mapping.Set(LxArchive::NormalizeName(name), LxArchive::NormalizeName(file));
    }
    return true;
}
