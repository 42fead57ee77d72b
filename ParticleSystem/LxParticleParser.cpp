#include "ParticleSystem/LxParticleParser.h"

#include "Common/LxLogManager.h"
#include "ParticleSystem/LxParticleBuilder.h"
#include "ParticleSystem/LxParticleScanContext.h"

#include <cstdarg>

void LxParticleParser::Init(const LxString& fileName, const LxString& contents, LxParticleBuilder* builder)
{
    m_fileName = fileName;
    // Room for the scanner's two end marks after the text (the string's terminator is the first).
    m_contents.Reserve(contents.GetLength() + 2, false);
    m_contents.Assign(contents.c_str(), contents.GetLength());
    m_pBuilder = builder;
}

bool LxParticleParser::Parse()
{
    if (!m_pBuilder)
    {
        LX_ERROR("LxParticleParser::Parse.  Init was not called with a builder");
        return false;
    }
    LxParticleScanContext context;
    context.parser = this;
    m_pContext = &context;
    m_pElementBuilder = nullptr;
    m_nReportLine = 0;
    m_bFailed = false;

    const unsigned int length = m_contents.GetLength();
    if (m_contents.GetCapacity() < length + 2)
        m_contents.Reserve(length + 2, true);
    m_contents.GetBuffer()[length + 1] = 0;
    void* scanner = LxParticleScannerCreate(&context, m_contents.GetBuffer(), length);
    int result = 1;
    if (scanner)
    {
        result = LxParticleGrammarParse(this, scanner);
        LxParticleScannerDestroy(scanner);
    }
    else
        ReportError("out of dynamic memory in yy_create_buffer()");
    if (result != 0)
        m_bFailed = true;
    if (m_bFailed)
    {
        // A parse that stopped inside a system leaves it open; it is dropped with the rest of the failed file.
        m_pBuilder->SetParseError();
        m_pBuilder->AbandonOpenScopes();
    }
    m_pBuilder->SetSourcePosition(LxString(), 0);
    m_pContext = nullptr;
    m_pElementBuilder = nullptr;
    m_nReportLine = 0;
    return !m_bFailed && !m_pBuilder->ErrorOccurred();
}

unsigned int LxParticleParser::GetCurrentLineNumber() const
{
    if (m_nReportLine)
        return m_nReportLine;
    return m_pContext ? m_pContext->line : 0;
}

void LxParticleParser::SetReportLine(unsigned int line)
{
    m_nReportLine = line;
    if (m_pBuilder)
        m_pBuilder->SetSourcePosition(m_fileName, GetCurrentLineNumber());
}

void LxParticleParser::ReportError(const char* fmt, ...)
{
    m_bFailed = true;
    LxString text;
    const unsigned int line = GetCurrentLineNumber();
    if (line)
        text.Format("%s(%u) : ", m_fileName.c_str(), line);
    else
        text.Format("%s : ", m_fileName.c_str());
    va_list args;
    va_start(args, fmt);
    text.AppendFormatV(fmt, args);
    va_end(args);
    LxLogManager::GetRef().LogMessage(text, LX_LOG_ERROR, nullptr, 0);
}

void LxParticleParser::ReportScannerFailure(const char* message)
{
    ReportError("%s", message);
    if (m_pContext)
        m_pContext->failed = true;
}
