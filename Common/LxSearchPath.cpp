#include "Common/LxSearchPath.h"

#include "Common/LxFile.h"

LxSearchPath::LxSearchPath() : m_name("LxSearchPath") {}

LxSearchPath::~LxSearchPath()
{
    ClearSearchPaths();
}

void LxSearchPath::AddToSearchPath(const LxString& path)
{
    m_archives.Add(LxArchive::Create(path));
}

void LxSearchPath::AddArchive(LxArchive* archive)
{
    if (archive)
        m_archives.Add(archive);
}

void LxSearchPath::ClearSearchPaths()
{
    for (LxArchive* archive : m_archives)
        delete archive;
    m_archives.Clear();
}

bool LxSearchPath::FileExists(const LxString& name, LxString* fullPath) const
{
    for (const LxArchive* archive : m_archives)
        if (archive->FileExists(name, fullPath))
            return true;
    return false;
}

LxFile* LxSearchPath::OpenFile(const LxString& name, const LxString& mode) const
{
    for (const LxArchive* archive : m_archives)
        if (LxFile* file = archive->OpenFile(name, mode))
            return file;
    return nullptr;
}

bool LxSearchPath::GetFileTime(const LxString& name, long long& time) const
{
    for (const LxArchive* archive : m_archives)
        if (archive->GetFileTime(name, time))
            return true;
    return false;
}
