// LxShaderCache: compiled shaders on disk, one file per distinct compilation, so that an unchanged shader is not
// compiled again in the next run or on the next reload.
//
// A compilation is identified by the MD5 hash (RFC 1321) of the full text handed to the compiler (macro lines and
// preprocessed code, LxShaderCompileRequest::source). Its file, in the cache folder, is named
//   "DX11_" + entry point + "_" + option string + "_" + profile + "_" + "_" + hash as 32 hex digits
// (the two adjacent underscores are part of the format: files written by earlier versions stay valid). A file holds
// exactly the compiled code; it is read with "rb" and written with "wb".
//
// A hit returns the file's bytes when the compiler accepts them (LxShaderCompiler::IsValidCompiledCode); a file
// that is empty, truncated or damaged is reported as a warning and compiled again, and the fresh result replaces
// it. A failure to write a file is reported and does not fail the compilation.
//
// The cache owns its folder archive. Not thread-safe: builders that compile in parallel need a cache each or a lock
// around GetCompiledShader.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMD5Hash.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxString.h"
#include "EffectManager/LxShaderCompiler.h"

class LxFileSystemArchive;

class LX_API LxShaderCache
{
public:
    // Files live under `directory`, which is created if missing (a failure shows when files are written).
    explicit LxShaderCache(const LxString& directory);
    ~LxShaderCache();
    LxShaderCache(const LxShaderCache&) = delete;
    LxShaderCache& operator=(const LxShaderCache&) = delete;

    const LxString& GetDirectory() const { return m_directory; }

    // The hash of the compiler text.
    static LxMD5Hash ComputeKey(const LxString& compilerText);
    static LxString MakeFileName(const LxString& entryPoint, const LxString& optionString, const LxString& profile,
                                 const LxMD5Hash& key);
    // The file name of a request.
    static LxString MakeFileName(const LxShaderCompileRequest& request);

    // The compiled code of `request`: from its cache file when present and accepted by `compiler`, else from
    // `compiler`, storing the result. False (with the compiler's text in `messages`) when compilation fails.
    bool GetCompiledShader(LxShaderCompiler& compiler, const LxShaderCompileRequest& request,
                           LxCountedPtr<LxMemoryBuffer>* code, LxString* messages);

    // The bytes of a cache file; false when it is absent or unreadable.
    bool Lookup(const LxString& fileName, LxCountedPtr<LxMemoryBuffer>* code) const;
    // Writes a cache file; false after reporting the failure.
    bool Store(const LxString& fileName, const LxMemoryBuffer& code) const;

    // Lookups answered from disk and compilations, since construction.
    unsigned int GetHitCount() const { return m_nHits; }
    unsigned int GetCompileCount() const { return m_nCompiles; }

private:
    LxString m_directory;
    LxFileSystemArchive* m_pArchive;
    unsigned int m_nHits = 0;
    unsigned int m_nCompiles = 0;
};
