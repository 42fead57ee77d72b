#include "ObjectManager/LxAnimationSet.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxList.h"
#include "Common/LxLogManager.h"
#include "Common/LxZipArchive.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace
{
const char* const kManifestName = "manifest.txt";
const char* const kPackedName = "PackedAnimation";
const char* const kManifestV10 = "[LxAnimationSet Manifest v1.0]";
const char* const kManifestV11 = "[LxAnimationSet Manifest v1.1]";

struct LoadedCurve
{
    LxString name;
    LxCountedPtr<LxAnimationCurve> curve;
};

bool IsZipPath(const LxString& path)
{
    return path.EndsWithNoCase(".zip") || path.EndsWithNoCase(".lmx");
}

// Reads the curve streams of a set's archive into `loaded`, reporting every error it can before it gives up.
class ManifestReader
{
public:
    ManifestReader(const LxArchive& archive, const LxAnimationSet& set, LxArray<LoadedCurve>& loaded)
        : m_archive(archive), m_set(set), m_loaded(loaded)
    {
    }

    // Keeps the first curve of a name, warns about any other.
    void Keep(const LxString& name, LxAnimationCurve* curve)
    {
        LxCountedPtr<LxAnimationCurve> shared(curve);
        bool taken = static_cast<bool>(m_set.GetCurve(name));
        for (unsigned int i = 0; !taken && i < m_loaded.GetCount(); ++i)
            taken = m_loaded[i].name == name;
        if (taken)
        {
            LX_WARNING("Multiple curves found with name: %s", name.c_str());
            return;
        }
        m_loaded.Add(LoadedCurve{name, shared});
    }

    // Version 1.0: "name file" per line, one curve stream per file. Every line is tried, so that one load
    // reports all the broken ones.
    bool ReadSeparateFiles(LxList<LxString>::const_iterator line, LxList<LxString>::const_iterator end)
    {
        const char* archiveName = m_archive.GetName().c_str();
        bool ok = true;
        for (; line != end; ++line)
        {
            LxArray<LxString> tokens;
            line->Split(" \t", tokens);
            if (tokens.GetCount() < 2)
            {
                LX_ERROR("Syntax error in manifest file for: %s", archiveName);
                ok = false;
                continue;
            }
            std::unique_ptr<LxFile> file(m_archive.OpenFile(tokens[1], "rb"));
            if (!file)
            {
                LX_ERROR("Error opening animation curve file: %s in: %s", tokens[1].c_str(), archiveName);
                ok = false;
                continue;
            }
            LxAnimationCurve* curve = LxAnimationCurve::ReadCurveStream(file.get());
            if (!curve)
            {
                LX_ERROR("Error reading animation curve file: %s in: %s", tokens[1].c_str(), archiveName);
                ok = false;
                continue;
            }
            Keep(tokens[0], curve);
        }
        return ok;
    }

    // Version 1.1: one name per line, the curves one after another in "PackedAnimation". A broken curve leaves
    // the stream position unknown, so the first error ends the load.
    bool ReadPacked(LxList<LxString>::const_iterator line, LxList<LxString>::const_iterator end)
    {
        const char* archiveName = m_archive.GetName().c_str();
        if (line == end)
            return true; // no curves: nothing to open
        std::unique_ptr<LxFile> file(m_archive.OpenFile(kPackedName, "rb"));
        if (!file)
        {
            LX_ERROR("Unable to open packed animation file in animation set.");
            return false;
        }
        for (; line != end; ++line)
        {
            LxString name = *line;
            name.Trim();
            if (name.IsEmpty())
            {
                LX_ERROR("Syntax error in manifest file for: %s", archiveName);
                return false;
            }
            LxAnimationCurve* curve = LxAnimationCurve::ReadCurveStream(file.get());
            if (!curve)
            {
                LX_ERROR("Error reading animation curve named: %s in: %s", name.c_str(), archiveName);
                return false;
            }
            Keep(name, curve);
        }
        return true;
    }

private:
    const LxArchive& m_archive;
    const LxAnimationSet& m_set;
    LxArray<LoadedCurve>& m_loaded;
};

// The output side of SaveToFile: a new zip, or an existing folder; on failure it removes what it wrote.
class SetWriter
{
public:
    explicit SetWriter(const LxString& path) : m_path(path), m_bZip(IsZipPath(path))
    {
        if (m_bZip)
            m_pArchive.reset(LxZipArchive::CreateNewZipFile(path));
        else if (LxFile::Exists(path))
            m_pArchive.reset(LxArchive::Create(path));
    }
    ~SetWriter()
    {
        m_pArchive.reset(); // finishes the zip
        if (m_bSucceeded)
            return;
        if (m_bZip)
            std::remove(m_path.c_str());
        for (const LxString& file : m_written)
            std::remove(file.c_str());
    }

    bool IsOpen() const { return m_pArchive != nullptr; }
    void Succeed() { m_bSucceeded = true; }
    LxFile* Create(const LxString& name)
    {
        LxFile* file = m_pArchive->OpenFile(name, "wb");
        if (file && !m_bZip)
        {
            LxString full;
            if (m_pArchive->FileExists(name, &full))
                m_written.Add(full);
        }
        return file;
    }

private:
    LxString m_path;
    bool m_bZip;
    bool m_bSucceeded = false;
    std::unique_ptr<LxArchive> m_pArchive;
    LxArray<LxString> m_written;
};
} // namespace

bool LxAnimationSet::AddCurve(const LxString& name, const LxCountedPtr<LxAnimationCurve>& curve)
{
    if (!curve)
    {
        LX_ERROR("LxAnimationSet::AddCurve.  The curve for %s is null.", name.c_str());
        return false;
    }
    if (m_curves.Contains(name))
    {
        LX_ERROR("Attempted to add a second curve named: %s to the animation set.", name.c_str());
        return false;
    }
    m_curves.Insert(name, curve);
    return true;
}

LxCountedPtr<LxAnimationCurve> LxAnimationSet::GetCurve(const LxString& name) const
{
    const LxCountedPtr<LxAnimationCurve>* curve = m_curves.FindValue(name);
    return curve ? *curve : LxCountedPtr<LxAnimationCurve>();
}

bool LxAnimationSet::RemoveCurve(const LxString& name)
{
    return m_curves.Erase(name);
}

void LxAnimationSet::GetAllCurveNames(LxArray<LxString>& names) const
{
    const unsigned int first = names.GetCount();
    for (const CurveMap::Entry& entry : m_curves)
        names.Add(entry.key);
    std::sort(names.begin() + first, names.end(),
              [](const LxString& a, const LxString& b) { return a.Compare(b) < 0; });
}

bool LxAnimationSet::AddCurvesFromSet(const LxAnimationSet& other)
{
    if (&other == this)
        return true;
    bool ok = true;
    for (const CurveMap::Entry& entry : other.m_curves)
        ok = AddCurve(entry.key, entry.value) && ok;
    return ok;
}

float LxAnimationSet::GetMaxAnimationLength() const
{
    float length = 0.0f;
    for (const CurveMap::Entry& entry : m_curves)
        length = std::max(length, entry.value->GetAnimationLength());
    return length;
}

bool LxAnimationSet::LoadFile(const LxString& path)
{
    std::unique_ptr<LxArchive> archive(LxArchive::Create(path));
    return Load(*archive, path);
}

bool LxAnimationSet::LoadFromArchive(const LxArchive& archive)
{
    return Load(archive, archive.GetName());
}

bool LxAnimationSet::Load(const LxArchive& archive, const LxString& path)
{
    std::unique_ptr<LxFile> manifest(archive.OpenFile(kManifestName, "rb"));
    LxList<LxString> lines;
    if (!manifest || !manifest->ReadTextLines(lines))
    {
        LX_ERROR("Couldn't find manifest file in: %s", path.c_str());
        return false;
    }
    manifest.reset();
    const LxList<LxString>& manifestLines = lines;
    LxString header = lines.IsEmpty() ? LxString() : lines.GetFirst();
    header.TrimRight();
    const bool packed = header == kManifestV11;
    if (!packed && header != kManifestV10)
    {
        LX_ERROR("Missing or illegal manifest file version string. (You might need a new engine build)");
        return false;
    }
    LxArray<LoadedCurve> loaded;
    ManifestReader reader(archive, *this, loaded);
    LxList<LxString>::const_iterator first = manifestLines.begin();
    ++first;
    if (!(packed ? reader.ReadPacked(first, manifestLines.end())
                 : reader.ReadSeparateFiles(first, manifestLines.end())))
        return false;
    for (const LoadedCurve& entry : loaded)
        m_curves.Insert(entry.name, entry.curve);
    return true;
}

LxAnimationSet* LxAnimationSet::CreateFromFile(const LxString& path)
{
    std::unique_ptr<LxAnimationSet> set(new LxAnimationSet());
    return set->LoadFile(path) ? set.release() : nullptr;
}

bool LxAnimationSet::SaveToFile(const LxString& path, bool packed) const
{
    SetWriter writer(path);
    if (!writer.IsOpen())
    {
        LX_ERROR("Couldn't open animation set file %s for writing", path.c_str());
        return false;
    }
    LxArray<LxString> names;
    GetAllCurveNames(names);
    for (const LxString& name : names)
    {
        // The manifest separates names by blanks and lines: such a name could not be read back.
        if (name.IsEmpty() || name.FindLastOf(" \t\r\n") >= 0)
        {
            LX_ERROR("LxAnimationSet::SaveToFile.  The curve name \"%s\" cannot be stored in a manifest.",
                     name.c_str());
            return false;
        }
    }
    LxString manifest(packed ? kManifestV11 : kManifestV10);
    manifest += "\n";
    if (packed)
    {
        std::unique_ptr<LxFile> file(writer.Create(kPackedName));
        if (!file)
        {
            LX_ERROR("Unable to create file '%s' in animation set archive.", kPackedName);
            return false;
        }
        for (const LxString& name : names)
        {
            if (!GetCurve(name)->WriteCurveStream(file.get()))
            {
                LX_ERROR("I/O error writing curve to file in archive: %s", path.c_str());
                return false;
            }
            manifest += name;
            manifest += "\n";
        }
    }
    else
    {
        for (unsigned int i = 0; i < names.GetCount(); ++i)
        {
            const LxString fileName = LxString::Formatted("curve%u.crv", i);
            std::unique_ptr<LxFile> file(writer.Create(fileName));
            if (!file)
            {
                LX_ERROR("Couldn't create curve file: %s in archive: %s", fileName.c_str(), path.c_str());
                return false;
            }
            if (!GetCurve(names[i])->WriteCurveStream(file.get()))
            {
                LX_ERROR("I/O error creating file: %s in archive: %s", fileName.c_str(), path.c_str());
                return false;
            }
            manifest.AppendFormat("%s %s\n", names[i].c_str(), fileName.c_str());
        }
    }
    std::unique_ptr<LxFile> file(writer.Create(kManifestName));
    if (!file)
    {
        LX_ERROR("Error creating manifest file in archive: %s", path.c_str());
        return false;
    }
    if (!file->Write(manifest) || !file->Flush())
    {
        LX_ERROR("I/O error while creating manifest in archive: %s", path.c_str());
        return false;
    }
    file.reset();
    writer.Succeed();
    return true;
}
