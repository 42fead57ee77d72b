// LxEffectParser: parses an effect file into calls on an LxEffectBuilder (no syntax tree is built).
//
//   LxEffectParser parser;
//   parser.SetIncludeArchive(&searchPath);      // where "#include" looks (optional)
//   parser.AddDefine("QUALITY", "2");           // text macros, visible to "#ifdef" too (optional)
//   parser.Init("water.fx", contents, &builder);
//   LxEffect* effect = parser.Parse();          // null when any scanner, grammar or builder error occurred
//
// Every message names the file and line it concerns ("water.fx(12) : ...") and is logged as an error; the parse
// goes on after an error so that all errors of a file are reported, and then fails as a whole. The caller owns the
// returned effect. One parser parses one file at a time; separate parsers may run on separate threads (the
// scanner and grammar keep all their state in the parser).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxHashMap.h"
#include "Common/LxString.h"

class LxArchive;
class LxEffect;
class LxEffectBuilder;
struct LxEffectScanContext;

class LX_API LxEffectParser
{
public:
    LxEffectParser();
    ~LxEffectParser();
    LxEffectParser(const LxEffectParser&) = delete;
    LxEffectParser& operator=(const LxEffectParser&) = delete;

    // --- defines ------------------------------------------------------------------------------------------------
    void AddDefine(const LxString& name, const LxString& value);
    // False when `name` is not defined.
    bool GetDefine(const LxString& name, LxString& value) const;
    const LxString* FindDefine(const LxString& name) const { return m_defines.FindValue(name); }
    void RemoveDefine(const LxString& name);
    void ClearDefines() { m_defines.Clear(); }

    // Where "#include" and binary shader pairs are looked up (not owned). Without one, names are tried relative
    // to the effect file's folder, then through the global archive, then as given.
    void SetIncludeArchive(const LxArchive* archive) { m_pIncludeArchive = archive; }
    const LxArchive* GetIncludeArchive() const { return m_pIncludeArchive; }

    // Reads a whole file found through `archive` (or as described for SetIncludeArchive when null, relative to
    // `relativeTo`'s folder). False when it cannot be found or read; `found` tells which.
    static bool LoadEffectFileContents(const LxArchive* archive, const LxString& relativeTo, const LxString& fileName,
                                       LxString& contents, bool* found = nullptr);

    // --- parsing ------------------------------------------------------------------------------------------------
    // Prepares a parse of `fileContents` (the text of `fileName`) into `builder` (not owned).
    void Init(const LxString& fileName, const LxString& fileContents, LxEffectBuilder* builder);
    // Runs the parse; the finished effect (owned by the caller) or null.
    LxEffect* Parse();
    // Forgets the file, contents and builder of the last Init (defines and include archive stay).
    void Reset();

    // Position of the scanner: the file on top of the include stack and its 1-based line.
    const LxString& GetCurrentEffectFileName() const;
    unsigned int GetCurrentLineNumber() const;
    LxEffectBuilder* GetBuilder() const { return m_pBuilder; }

    // Logs "file(line) : message" as an error and marks the parse as failed.
    void ReportError(const char* fmt, ...) LX_PRINTF_FORMAT(2, 3);
    // While non-zero, messages name this line instead of the scanner's (the grammar sets it to the line of the
    // construct it hands to the builder, which the scanner may already have read past).
    void SetReportLine(unsigned int line) { m_nReportLine = line; }

private:
    LxHashMap<LxString, LxString, LxStringHasher> m_defines;
    const LxArchive* m_pIncludeArchive = nullptr;
    LxString m_fileName;
    LxString m_contents;
    LxEffectBuilder* m_pBuilder = nullptr;
    LxEffectScanContext* m_pContext = nullptr;
    unsigned int m_nReportLine = 0;
};

// Logs a parser message prefixed with the parser's current file name and line number, as an error.
LX_API void LxFormatAndLogShaderParserMessage(const LxEffectParser* parser, const char* fmt, ...)
    LX_PRINTF_FORMAT(2, 3);
