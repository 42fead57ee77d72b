#include "Common/LxFileSystemArchive.h"

#include "Common/LxFile.h"
#include "Common/LxPlatform.h"

LxFileSystemArchive::LxFileSystemArchive(const LxString& root) : m_root(NormalizeName(root))
{
    if (!m_root.IsEmpty() && m_root.GetLast() != '/')
        m_root.Append('/');
}

LxString LxFileSystemArchive::GetFullPath(const LxString& name) const
{
    return m_root + NormalizeName(name);
}

bool LxFileSystemArchive::FileExists(const LxString& name, LxString* fullPath) const
{
    const LxString path = GetFullPath(name);
    if (LxPlatform::PathExists(path.c_str()))
    {
        if (fullPath)
            *fullPath = path;
        return true;
    }
    const LxArchive* global = LxGetGlobalArchive();
    return global && global != this && global->FileExists(name, fullPath);
}

LxFile* LxFileSystemArchive::OpenFile(const LxString& name, const LxString& mode) const
{
    const LxString path = GetFullPath(name);
    // Writing creates files in this folder; reading falls back to the global archive for missing files.
    const bool reading = mode.GetLength() && mode[0] == 'r';
    if (!reading || LxPlatform::PathExists(path.c_str()))
    {
        LxFile* file = LxFile::Open(path, mode);
        if (file->IsOpen())
            return file;
        delete file;
        if (!reading)
            return nullptr;
    }
    const LxArchive* global = LxGetGlobalArchive();
    if (global && global != this)
        return global->OpenFile(name, mode);
    return nullptr;
}

bool LxFileSystemArchive::GetFileTime(const LxString& name, long long& time) const
{
    if (LxPlatform::GetFileWriteTime(GetFullPath(name).c_str(), time))
        return true;
    const LxArchive* global = LxGetGlobalArchive();
    return global && global != this && global->GetFileTime(name, time);
}
