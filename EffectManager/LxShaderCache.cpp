#include "EffectManager/LxShaderCache.h"

#include "Common/LxFile.h"
#include "Common/LxFileSystemArchive.h"
#include "Common/LxLogManager.h"

#include <cstring>
#include <filesystem>
#include <system_error>

LxShaderCache::LxShaderCache(const LxString& directory)
    : m_directory(directory), m_pArchive(new LxFileSystemArchive(directory))
{
    std::error_code ec;
    if (!directory.IsEmpty())
        std::filesystem::create_directories(std::filesystem::path(directory.c_str()), ec);
}

LxShaderCache::~LxShaderCache()
{
    delete m_pArchive;
}

LxMD5Hash LxShaderCache::ComputeKey(const LxString& compilerText)
{
    LxMD5Hash hash;
    LxMD5Hash::ComputeHash(compilerText.c_str(), compilerText.GetLength(), &hash);
    return hash;
}

LxString LxShaderCache::MakeFileName(const LxString& entryPoint, const LxString& optionString, const LxString& profile,
                                     const LxMD5Hash& key)
{
    LxString name("DX11_");
    name.Append(entryPoint);
    name.Append("_");
    name.Append(optionString);
    name.Append("_");
    name.Append(profile);
    name.Append("_");
    name.Append("_");
    name.Append(key.ToString());
    return name;
}

LxString LxShaderCache::MakeFileName(const LxShaderCompileRequest& request)
{
    return MakeFileName(request.entryPoint, LxShaderCompiler::MakeOptionString(request.flags), request.profile,
                        ComputeKey(request.source));
}

bool LxShaderCache::Lookup(const LxString& fileName, LxCountedPtr<LxMemoryBuffer>* code) const
{
    // Only this folder: a cache file must never be answered from the global archive.
    if (!LxFile::Exists(m_pArchive->GetFullPath(fileName)))
        return false;
    LxFile* file = m_pArchive->OpenFile(fileName, "rb");
    if (!file)
        return false;
    const unsigned int size = file->GetSize();
    LxMemoryBuffer* buffer = LxMemoryBuffer::Allocate(size ? size : 1);
    if (!buffer)
    {
        LX_ERROR("Error creating D3D10 blob for cached shader.");
        delete file;
        return false;
    }
    const unsigned int read = size ? file->Read(buffer->GetData(), size) : 0;
    delete file;
    if (read != size)
    {
        delete buffer;
        return false;
    }
    buffer->Truncate(size);
    *code = LxCountedPtr<LxMemoryBuffer>(buffer);
    return true;
}

bool LxShaderCache::Store(const LxString& fileName, const LxMemoryBuffer& code) const
{
    LxFile* file = m_pArchive->OpenFile(fileName, "wb");
    bool ok = file != nullptr;
    if (ok)
        ok = code.GetSize() == 0 || file->Write(code.GetData(), code.GetSize());
    delete file;
    if (!ok)
    {
        LX_ERROR("%s", (LxString("Failed to open file: ") + fileName + " in shader cache.").c_str());
        return false;
    }
    return true;
}

bool LxShaderCache::GetCompiledShader(LxShaderCompiler& compiler, const LxShaderCompileRequest& request,
                                      LxCountedPtr<LxMemoryBuffer>* code, LxString* messages)
{
    const LxString fileName = MakeFileName(request);
    LxCountedPtr<LxMemoryBuffer> cached;
    if (Lookup(fileName, &cached))
    {
        if (compiler.IsValidCompiledCode(cached->GetData(), cached->GetSize()))
        {
            ++m_nHits;
            *code = cached;
            return true;
        }
        LX_WARNING("%s",
                   (LxString("Shader cache file: ") + fileName + " is damaged; the shader is compiled again.").c_str());
    }
    ++m_nCompiles;
    LxCountedPtr<LxMemoryBuffer> compiled;
    LxString text;
    if (!compiler.Compile(request, &compiled, &text) || !compiled)
    {
        if (messages)
            *messages = text;
        return false;
    }
    Store(fileName, *compiled);
    *code = compiled;
    return true;
}
