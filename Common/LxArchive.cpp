#include "Common/LxArchive.h"

#include "Common/LxFileSystemArchive.h"
#include "Common/LxZipArchive.h"

#include <cstdlib>

namespace
{
LxArchive* g_pGlobalArchive = nullptr;
bool g_bCleanupRegistered = false;

void DeleteGlobalArchive()
{
    delete g_pGlobalArchive;
    g_pGlobalArchive = nullptr;
}
} // namespace

LxArchive* LxArchive::Create(const LxString& path)
{
    if (path.GetLength() >= 4 && (path.EndsWithNoCase(".zip") || path.EndsWithNoCase(".lmx")))
        return new LxZipArchive(path);
    return new LxFileSystemArchive(path);
}

LxString LxArchive::NormalizeName(const LxString& name)
{
    LxString n(name);
    n.Replace('\\', '/');
    return n;
}

LxArchive* LxGetGlobalArchive()
{
    return g_pGlobalArchive;
}

void LxSetGlobalArchive(LxArchive* archive)
{
    if (!g_bCleanupRegistered)
    {
        g_bCleanupRegistered = true;
        std::atexit(DeleteGlobalArchive);
    }
    if (g_pGlobalArchive != archive)
        delete g_pGlobalArchive;
    g_pGlobalArchive = archive;
}
