// LxParticleParser: parses the text of a particle file into calls on an LxParticleBuilder (no syntax tree is
// built).
//
//   LxParticleBuilder builder;
//   LxParticleParser parser;
//   parser.Init("particleFile.txt", text, &builder);
//   bool ok = parser.Parse();                        // false when any scanner, grammar or builder error occurred
//   LxParticleGroupDesc* group = ok ? builder.TakeResult() : nullptr;
//
// Every message names the file and line it concerns ("particleFile.txt(12) : ...") and is logged as an error.
// Syntax errors read "syntax error, unexpected <token>, expecting <token> or <token>", tokens named by their
// keyword (or "identifier", "string", "integer", "float", "boolean", "end of file"); scanner
// errors are "Invalid character: %c (ASCII: %d)" (a character that is not printable: "Invalid character (ASCII:
// %d)"), "Unterminated string!" and "Number out of range: <digits>". After a syntax error the parser skips to the
// next section and goes on, so that later errors are reported too; the parse fails as a whole.
//
// One parser parses one file at a time; separate parsers may run on separate threads (all state is in the
// parser and its scanner). The parser does not own the builder.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

class LxParticleBuilder;
class LxParticleBuilderBase;
struct LxParticleScanContext;

class LX_API LxParticleParser
{
public:
    LxParticleParser() = default;
    ~LxParticleParser() = default;
    LxParticleParser(const LxParticleParser&) = delete;
    LxParticleParser& operator=(const LxParticleParser&) = delete;

    // Prepares a parse of `contents` (the text of `fileName`) into `builder`.
    void Init(const LxString& fileName, const LxString& contents, LxParticleBuilder* builder);
    // Runs the parse. True when the file was read without any error; the builder holds the result either way.
    bool Parse();

    const LxString& GetFileName() const { return m_fileName; }
    // The 1-based line the scanner is on (or the line of the construct being handed to the builder).
    unsigned int GetCurrentLineNumber() const;
    LxParticleBuilder* GetBuilder() const { return m_pBuilder; }

    // Logs "file(line) : message" as an error and marks the parse as failed.
    void ReportError(const char* fmt, ...) LX_PRINTF_FORMAT(2, 3);
    // An internal failure of the generated scanner (flex's fatal errors): reported like any error, and the scan
    // then ends as if the input had ended there, so the parse fails; the process goes on.
    void ReportScannerFailure(const char* message);

    // --- used by the grammar ------------------------------------------------------------------------------------
    // While non-zero, messages (the builder's too) name this line instead of the scanner's.
    void SetReportLine(unsigned int line);
    // The emitter or action builder whose members are being read (null outside an element).
    void SetElementBuilder(LxParticleBuilderBase* element) { m_pElementBuilder = element; }
    LxParticleBuilderBase* GetElementBuilder() const { return m_pElementBuilder; }

private:
    LxString m_fileName;
    LxString m_contents;
    LxParticleBuilder* m_pBuilder = nullptr;
    LxParticleBuilderBase* m_pElementBuilder = nullptr;
    LxParticleScanContext* m_pContext = nullptr;
    unsigned int m_nReportLine = 0;
    bool m_bFailed = false;
};
