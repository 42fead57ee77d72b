#include "EffectManager/LxShaderLineMap.h"

#include <cstdlib>
#include <cstring>

namespace
{
// Parses `#line N "file"` (spaces allowed after '#'); false for any other line.
bool ParseLineDirective(const char* begin, const char* end, unsigned int* number, LxString* file)
{
    const char* p = begin;
    while (p < end && (*p == ' ' || *p == '\t'))
        ++p;
    if (p >= end || *p != '#')
        return false;
    ++p;
    while (p < end && (*p == ' ' || *p == '\t'))
        ++p;
    if (end - p < 4 || std::strncmp(p, "line", 4) != 0)
        return false;
    p += 4;
    while (p < end && (*p == ' ' || *p == '\t'))
        ++p;
    if (p >= end || *p < '0' || *p > '9')
        return false;
    unsigned long value = 0;
    while (p < end && *p >= '0' && *p <= '9' && value < 100000000ul)
        value = value * 10 + unsigned(*p++ - '0');
    *number = static_cast<unsigned int>(value);
    while (p < end && (*p == ' ' || *p == '\t'))
        ++p;
    if (p < end && *p == '"')
    {
        const char* q = ++p;
        while (q < end && *q != '"')
            ++q;
        *file = LxString(p, static_cast<unsigned int>(q - p));
    }
    return true;
}

// Reads decimal digits at `p` (at most 9); false when there are none.
bool ReadNumber(const char*& p, const char* end, unsigned int* value)
{
    const char* start = p;
    unsigned long v = 0;
    while (p < end && *p >= '0' && *p <= '9' && p - start < 9)
        v = v * 10 + unsigned(*p++ - '0');
    *value = static_cast<unsigned int>(v);
    return p > start;
}
} // namespace

LxShaderLineMap::LxShaderLineMap(const LxString& compilerText)
{
    const char* text = compilerText.c_str();
    const char* end = text + compilerText.GetLength();
    Origin next = {-1, 0};
    for (const char* line = text; line < end;)
    {
        const char* eol = static_cast<const char*>(std::memchr(line, '\n', static_cast<size_t>(end - line)));
        if (!eol)
            eol = end;
        unsigned int number = 0;
        LxString file;
        if (ParseLineDirective(line, eol, &number, &file))
        {
            // The directive line itself has no origin; the line after it is `number` of `file` (the file stays
            // when the directive names none).
            m_lines.Add(Origin{-1, 0});
            int index = next.file;
            if (!file.IsEmpty())
            {
                index = m_files.Find(file);
                if (index < 0)
                {
                    m_files.Add(file);
                    index = static_cast<int>(m_files.GetCount()) - 1;
                }
            }
            next = Origin{index, number};
        }
        else
        {
            m_lines.Add(next);
            if (next.file >= 0)
                ++next.line;
        }
        line = eol + 1;
    }
}

bool LxShaderLineMap::Lookup(unsigned int generatedLine, LxString* file, unsigned int* line) const
{
    if (generatedLine == 0 || generatedLine > m_lines.GetCount())
        return false;
    const Origin& origin = m_lines[generatedLine - 1];
    if (origin.file < 0)
        return false;
    *file = m_files[origin.file];
    *line = origin.line;
    return true;
}

LxString LxShaderLineMap::MapMessages(const LxString& messages, const LxString& sourceName) const
{
    LxString out;
    const char* text = messages.c_str();
    const char* end = text + messages.GetLength();
    const unsigned int nameLength = sourceName.GetLength();
    for (const char* line = text; line < end;)
    {
        const char* eol = static_cast<const char*>(std::memchr(line, '\n', static_cast<size_t>(end - line)));
        const char* next = eol ? eol + 1 : end;
        if (!eol)
            eol = end;
        bool mapped = false;
        if (nameLength > 0 && unsigned(eol - line) > nameLength &&
            std::strncmp(line, sourceName.c_str(), nameLength) == 0)
        {
            const char* p = line + nameLength;
            const char form = *p++;
            unsigned int generated = 0, column = 0;
            LxString file;
            unsigned int original = 0;
            if ((form == '(' || form == ':') && ReadNumber(p, eol, &generated) && Lookup(generated, &file, &original))
            {
                LxString head;
                if (form == '(')
                    head.Format("%s(%u", file.c_str(), original);
                else
                {
                    const char* q = p;
                    if (q < eol && *q == ':' && (++q, ReadNumber(q, eol, &column)))
                    {
                        head.Format("%s(%u,%u)", file.c_str(), original, column);
                        p = q;
                    }
                    else
                        head.Format("%s(%u)", file.c_str(), original);
                }
                out.Append(head);
                out.Append(LxString(p, static_cast<unsigned int>(eol - p)));
                mapped = true;
            }
        }
        if (!mapped)
            out.Append(LxString(line, static_cast<unsigned int>(eol - line)));
        if (next > eol)
            out.Append("\n");
        line = next;
    }
    return out;
}
