// LxFileSystemArchive: the files under a folder. The full path of a file is the root (with "/" separators and a
// trailing "/" unless empty) followed directly by the name. Missing files are looked up in the global archive.
#pragma once

#include "Common/LxArchive.h"

class LX_API LxFileSystemArchive : public LxArchive
{
public:
    explicit LxFileSystemArchive(const LxString& root);

    bool FileExists(const LxString& name, LxString* fullPath) const override;
    LxFile* OpenFile(const LxString& name, const LxString& mode) const override;
    bool GetFileTime(const LxString& name, long long& time) const override;
    const LxString& GetName() const override { return m_root; }

    LxString GetFullPath(const LxString& name) const;

private:
    LxString m_root;
};
