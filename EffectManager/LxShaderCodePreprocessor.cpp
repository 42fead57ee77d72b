#include "EffectManager/LxShaderCodePreprocessor.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxShaderCodePreprocessorTokens.h"
#include "EffectManager/LxTextAppend.h"

#include <cstdarg>

namespace
{
// The block name of a directive: the identifier after the keyword and its blanks, or the quoted text.
LxString DirectiveName(const char* text, unsigned int length, unsigned int keywordLength)
{
    unsigned int i = keywordLength;
    while (i < length && (text[i] == ' ' || text[i] == '\t'))
        ++i;
    if (i < length && text[i] == '"')
        return LxString(text + i + 1, length >= i + 2 ? length - i - 2 : 0);
    return LxString(text + i, length - i);
}
} // namespace

void LxShaderCodePreprocessor::AppendLineDirective(LxString& output, unsigned int line, const LxString& fileName)
{
    if (!output.IsEmpty() && output.GetLast() != '\n')
        output.Append('\n');
    LxString directive;
    directive.Format("#line %u \"%s\"\n", line, fileName.c_str());
    LxAppendGrowing(output, directive);
}

void LxShaderCodePreprocessor::Report(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    LxString message;
    message.FormatV(fmt, args);
    va_end(args);
    LxString text;
    if (!m_stack.IsEmpty())
        text.Format("%s(%u) : ", m_stack.GetLast().fileName.c_str(), m_stack.GetLast().line);
    text.Append(message);
    LxLogManager::GetRef().LogMessage(text, LX_LOG_ERROR, nullptr, 0);
}

const LxShaderCodeBlock* LxShaderCodePreprocessor::FindBlock(const LxString& name) const
{
    for (const LxShaderCodeBlock* block : *m_pBlocks)
        if (block && block->name == name)
            return block;
    return nullptr;
}

bool LxShaderCodePreprocessor::Process(const LxString& code, unsigned int startLine, const LxString& fileName,
                                       LxShadingLanguage language, LxString& output)
{
    output.Clear();
    if (!m_pBlocks)
    {
        LX_ERROR("Code block array not set\n");
        return false;
    }
    m_language = language;
    m_stack.Clear();
    m_included.Clear();
    m_stack.Add(Level{LxString(), fileName, startLine});
    AppendLineDirective(output, startLine, fileName);
    const bool ok = Expand(code, output);
    m_stack.Clear();
    m_included.Clear();
    return ok;
}

bool LxShaderCodePreprocessor::Expand(const LxString& text, LxString& output)
{
    void* scanner = LxShaderPPCreate(text.c_str(), text.GetLength());
    if (!scanner)
    {
        Report("out of dynamic memory in yy_create_buffer()");
        return false;
    }
    bool ok = true;
    const char* piece = nullptr;
    unsigned int length = 0;
    for (int token; ok && (token = LxShaderPPNext(scanner, &piece, &length)) != LX_PP_END;)
    {
        switch (token)
        {
        case LX_PP_TEXT:
            LxAppendGrowing(output, piece, length);
            break;
        case LX_PP_NEWLINE:
            output.Append('\n');
            m_stack.GetLast().line++;
            break;
        case LX_PP_INCLUDE_MISSING:
            Report("Missing name string after $include");
            ok = false;
            break;
        case LX_PP_INSERT_MISSING:
            Report("Missing name string after $insert");
            ok = false;
            break;
        case LX_PP_INCLUDE:
        case LX_PP_INSERT:
        {
            const bool include = token == LX_PP_INCLUDE;
            const char* directive = include ? "$include" : "$insert";
            const LxString name = DirectiveName(piece, length, include ? 8u : 7u);
            const LxShaderCodeBlock* block = FindBlock(name);
            if (!block || block->language != m_language)
            {
                Report("Trying to %s undefined code block \"%s\", or shading language does not match", directive,
                       name.c_str());
                ok = false;
                break;
            }
            if (include && m_included.Contains(name))
                break; // once per shader
            bool cycle = false;
            for (const Level& level : m_stack)
                cycle = cycle || level.name == name;
            if (cycle)
            {
                if (include)
                    break; // a block including itself: it is already in, nothing to add
                Report("Recursive %s detected for code block\"%s\"", directive, name.c_str());
                ok = false;
                break;
            }
            if (output.GetLength() + block->text.GetLength() > LX_MAX_PREPROCESSED_SIZE)
            {
                Report("Expansion of code block \"%s\" makes the shader larger than %u bytes", name.c_str(),
                       static_cast<unsigned int>(LX_MAX_PREPROCESSED_SIZE));
                ok = false;
                break;
            }
            if (include)
                m_included.Add(name);
            const Level outer = m_stack.GetLast();
            m_stack.Add(Level{name, block->fileName, block->firstLine});
            AppendLineDirective(output, block->firstLine, block->fileName);
            ok = Expand(block->text, output);
            m_stack.RemoveLast();
            if (ok)
                AppendLineDirective(output, outer.line, outer.fileName);
            break;
        }
        default:
            break;
        }
    }
    LxShaderPPDestroy(scanner);
    return ok;
}
