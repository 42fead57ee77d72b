// LxSearchPath: an ordered chain of owned archives, itself an archive named "LxSearchPath". Each query asks the
// archives in the order they were added and returns the first success.
#pragma once

#include "Common/LxArchive.h"
#include "Common/LxArray.h"

class LX_API LxSearchPath : public LxArchive
{
public:
    LxSearchPath();
    ~LxSearchPath() override;
    LxSearchPath(const LxSearchPath&) = delete;
    LxSearchPath& operator=(const LxSearchPath&) = delete;

    // Appends LxArchive::Create(path).
    void AddToSearchPath(const LxString& path);
    // Appends an archive and takes ownership of it.
    void AddArchive(LxArchive* archive);
    void ClearSearchPaths();
    unsigned int GetArchiveCount() const { return m_archives.GetCount(); }
    LxArchive* GetArchive(unsigned int i) const { return m_archives[i]; }

    bool FileExists(const LxString& name, LxString* fullPath) const override;
    LxFile* OpenFile(const LxString& name, const LxString& mode) const override;
    bool GetFileTime(const LxString& name, long long& time) const override;
    const LxString& GetName() const override { return m_name; }

private:
    LxArray<LxArchive*> m_archives;
    LxString m_name;
};
