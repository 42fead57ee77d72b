#include "EffectManager/LxEffectParser.h"

#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMemory.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectScanContext.h"

#include <cstdarg>

namespace
{
LxString FormatV(const char* fmt, va_list args)
{
    LxString text;
    text.FormatV(fmt, args);
    return text;
}

bool ReadWhole(LxFile* file, LxString& contents)
{
    if (!file || !file->IsOpen())
        return false;
    unsigned int size = 0;
    void* data = LxFile::ReadFileToBuffer(*file, &size);
    if (!data && size != 0)
        return false;
    if (!data)
    {
        // An empty file reads as no block; it is still a file.
        contents.Clear();
        return file->GetSize() == 0;
    }
    contents.Assign(static_cast<const char*>(data), size);
    LxFree(data);
    return true;
}
} // namespace

LxEffectParser::LxEffectParser() = default;

LxEffectParser::~LxEffectParser() = default;

void LxEffectParser::AddDefine(const LxString& name, const LxString& value)
{
    m_defines.Set(name, value);
}

bool LxEffectParser::GetDefine(const LxString& name, LxString& value) const
{
    const LxString* v = m_defines.FindValue(name);
    if (!v)
        return false;
    value = *v;
    return true;
}

void LxEffectParser::RemoveDefine(const LxString& name)
{
    m_defines.Erase(name);
}

bool LxEffectParser::LoadEffectFileContents(const LxArchive* archive, const LxString& relativeTo,
                                            const LxString& fileName, LxString& contents, bool* found)
{
    if (found)
        *found = false;
    if (fileName.IsEmpty())
        return false;
    LxFile* file = nullptr;
    if (archive)
    {
        if (!archive->FileExists(fileName, nullptr))
            return false;
        if (found)
            *found = true;
        file = archive->OpenFile(fileName, "rb");
    }
    else
    {
        // Next to the file that names it, then through the global archive, then as given.
        const LxString dir = relativeTo.GetDirectory();
        LxString candidate = dir.IsEmpty() ? fileName : dir + "/" + fileName;
        if (!LxFile::Exists(candidate))
            candidate = fileName;
        if (LxFile::Exists(candidate))
        {
            if (found)
                *found = true;
            file = LxFile::Open(candidate, "rb");
        }
        else if (LxArchive* global = LxGetGlobalArchive())
        {
            if (!global->FileExists(fileName, nullptr))
                return false;
            if (found)
                *found = true;
            file = global->OpenFile(fileName, "rb");
        }
        else
            return false;
    }
    const bool ok = ReadWhole(file, contents);
    delete file;
    return ok;
}

void LxEffectParser::Init(const LxString& fileName, const LxString& fileContents, LxEffectBuilder* builder)
{
    m_fileName = fileName;
    // Room for the scanner's two end marks after the text (the string's terminator is the first).
    m_contents.Reserve(fileContents.GetLength() + 2, false);
    m_contents.Assign(fileContents.c_str(), fileContents.GetLength());
    m_pBuilder = builder;
    if (builder)
    {
        builder->SetParser(this);
        if (builder->GetEffectName().IsEmpty())
            builder->SetEffectName(fileName);
        builder->SetFileArchive(m_pIncludeArchive);
    }
}

LxEffect* LxEffectParser::Parse()
{
    if (!m_pBuilder)
    {
        LX_ERROR("LxEffectParser::Parse.  Init was not called with a builder");
        return nullptr;
    }
    LxEffectScanContext context;
    context.parser = this;
    context.builder = m_pBuilder;
    context.fileName = m_fileName;
    context.line = 1;
    // Defines may expand to a few times the file's own size, never to unbounded text.
    context.expandedLimit = (1ull << 20) + 8ull * m_contents.GetLength();
    m_pContext = &context;

    const unsigned int length = m_contents.GetLength();
    if (m_contents.GetCapacity() < length + 2)
        m_contents.Reserve(length + 2, true);
    m_contents.GetBuffer()[length + 1] = 0;
    void* scanner = LxEffectScannerCreate(&context, m_contents.GetBuffer(), length);
    int result = 1;
    if (scanner)
    {
        result = LxEffectGrammarParse(this, scanner);
        LxEffectScannerDestroy(scanner);
    }
    else
        ReportError("out of dynamic memory in yy_create_buffer()");

    if (result != 0)
        m_pBuilder->SetParseError();
    // Finished even after errors: the checks of the whole effect may find more to report.
    m_pBuilder->EndEffect();
    m_pContext = nullptr;
    m_nReportLine = 0;
    m_pBuilder->SetParser(nullptr);
    return m_pBuilder->GetResult();
}

void LxEffectParser::Reset()
{
    m_fileName.Clear();
    m_contents.Clear();
    m_pBuilder = nullptr;
    m_pContext = nullptr;
}

const LxString& LxEffectParser::GetCurrentEffectFileName() const
{
    return m_pContext ? m_pContext->fileName : m_fileName;
}

unsigned int LxEffectParser::GetCurrentLineNumber() const
{
    if (!m_pContext)
        return 0;
    return m_nReportLine ? m_nReportLine : m_pContext->line;
}

void LxEffectParser::ReportError(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    const LxString text = FormatV(fmt, args);
    va_end(args);
    LxFormatAndLogShaderParserMessage(this, "%s", text.c_str());
    if (m_pBuilder)
        m_pBuilder->SetParseError();
}

void LxFormatAndLogShaderParserMessage(const LxEffectParser* parser, const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    const LxString message = FormatV(fmt, args);
    va_end(args);
    LxString text;
    if (parser)
    {
        const unsigned int line = parser->GetCurrentLineNumber();
        if (line > 0)
            text.Format("%s(%u) : ", parser->GetCurrentEffectFileName().c_str(), line);
        else
            text.Format("%s : ", parser->GetCurrentEffectFileName().c_str());
    }
    text.Append(message);
    LxLogManager::GetRef().LogMessage(text, LX_LOG_ERROR, nullptr, 0);
}
