// LxArchive: a named source of files (a folder, a zip file, or a search path of several).
//
// Names use "/" or "\" alike (archives turn "\" into "/"). When a file is not found in an archive, the archive
// consults the process-wide global archive, unless it is the global archive itself. OpenFile returns a new file
// owned by the caller, or null. Archives are used from one thread at a time.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

class LxFile;

class LX_API LxArchive
{
public:
    virtual ~LxArchive() = default;
    // On success writes the path under which the file was found, when fullPath is not null.
    virtual bool FileExists(const LxString& name, LxString* fullPath) const = 0;
    virtual LxFile* OpenFile(const LxString& name, const LxString& mode) const = 0;
    // Last-write time in 100-ns ticks since 1601.
    virtual bool GetFileTime(const LxString& name, long long& time) const = 0;
    virtual const LxString& GetName() const = 0;

    // A zip archive when the path ends in ".zip" or ".lmx" (any case), else a folder archive rooted at path.
    static LxArchive* Create(const LxString& path);
    // "\" becomes "/".
    static LxString NormalizeName(const LxString& name);
};

// The global archive: null at start. The setter deletes the previous one (when different) and takes ownership;
// the first call registers its deletion at process exit.
LX_API LxArchive* LxGetGlobalArchive();
LX_API void LxSetGlobalArchive(LxArchive* archive);
