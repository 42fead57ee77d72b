#include "Common/LxString.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace
{
inline bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
inline bool IsSeparator(char c)
{
    return c == '/' || c == '\\';
}
inline char AsciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}
inline char AsciiUpper(char c)
{
    return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c;
}
} // namespace

// A moved-from string points here: capacity 0 and length 0 force every write to allocate first, and Release
// recognises the block and never frees it.
template <class Ch>
Ch* LxStringT<Ch>::EmptyRep()
{
    struct alignas(8) EmptyBlock
    {
        uint32_t capacity;
        uint32_t length;
        Ch terminator[4];
    };
    static EmptyBlock s_empty = {0, 0, {0, 0, 0, 0}};
    return s_empty.terminator;
}

template <class Ch>
Ch* LxStringT<Ch>::AllocateBlock(unsigned int capacity)
{
    BlockHeader* h =
        static_cast<BlockHeader*>(LxMalloc(sizeof(BlockHeader) + static_cast<size_t>(capacity) * sizeof(Ch)));
    h->capacity = capacity;
    h->length = 0;
    Ch* data = reinterpret_cast<Ch*>(h + 1);
    data[0] = 0;
    return data;
}

template <class Ch>
void LxStringT<Ch>::Init(unsigned int capacity)
{
    m_pData = AllocateBlock(capacity ? capacity : 1);
}

template <class Ch>
LxStringT<Ch>::LxStringT(const Ch* text)
{
    InitFrom(text, text ? Measure(text) : 0);
}

template <class Ch>
LxStringT<Ch>::LxStringT(const Ch* text, unsigned int length)
{
    InitFrom(text, length);
}

template <class Ch>
LxStringT<Ch>::LxStringT(const LxStringT& other)
{
    InitFrom(other.m_pData, other.GetLength());
}

template <class Ch>
void LxStringT<Ch>::InitFrom(const Ch* text, unsigned int length)
{
    m_pData = AllocateBlock(length + 1);
    if (length)
        std::memcpy(m_pData, text, length * sizeof(Ch));
    SetLength(length);
}

template <class Ch>
void LxStringT<Ch>::Release()
{
    if (m_pData != EmptyRep())
        LxFree(Header());
    m_pData = EmptyRep();
}

template <class Ch>
void LxStringT<Ch>::Reserve(unsigned int capacity, bool keepContents)
{
    if (capacity == 0)
    {
        Release();
        Init(1);
        return;
    }
    Ch* data = AllocateBlock(capacity);
    if (keepContents)
    {
        unsigned int keep = GetLength();
        if (keep > capacity - 1)
            keep = capacity - 1;
        std::memcpy(data, m_pData, keep * sizeof(Ch));
        data[keep] = 0;
        reinterpret_cast<BlockHeader*>(data)[-1].length = keep;
    }
    Release();
    m_pData = data;
}

template <class Ch>
void LxStringT<Ch>::GrowTo(unsigned int capacity)
{
    if (capacity > GetCapacity())
        Reserve(capacity, true);
}

template <class Ch>
void LxStringT<Ch>::Assign(const Ch* text, unsigned int length)
{
    if (length + 1 > GetCapacity())
    {
        // text may point into this string: build the new block before releasing the old one.
        Ch* data = AllocateBlock(length + 1);
        if (length)
            std::memcpy(data, text, length * sizeof(Ch));
        Release();
        m_pData = data;
    }
    else if (length)
        std::memmove(m_pData, text, length * sizeof(Ch));
    SetLength(length);
}

template <class Ch>
void LxStringT<Ch>::Append(const Ch* text, unsigned int length)
{
    if (length == 0)
        return;
    const unsigned int l = GetLength();
    if (l + length + 1 > GetCapacity())
    {
        Ch* data = AllocateBlock(l + length + 1);
        std::memcpy(data, m_pData, l * sizeof(Ch));
        std::memcpy(data + l, text, length * sizeof(Ch)); // text may be this string's own characters
        Release();
        m_pData = data;
    }
    else
        std::memmove(m_pData + l, text, length * sizeof(Ch));
    SetLength(l + length);
}

template <class Ch>
void LxStringT<Ch>::Append(Ch c)
{
    const unsigned int l = GetLength();
    if (l + 2 > GetCapacity())
    {
        const unsigned int cap = GetCapacity();
        GrowTo(cap ? cap * 2 : 2);
    }
    m_pData[l] = c;
    SetLength(l + 1);
}

template <class Ch>
void LxStringT<Ch>::FormatV(const char* fmt, va_list args)
{
    va_list measure;
    va_copy(measure, args);
    const int n = std::vsnprintf(nullptr, 0, fmt, measure);
    va_end(measure);
    if (n < 0)
    {
        Reserve(1, false);
        return;
    }
    Reserve(static_cast<unsigned int>(n) + 1, false);
    std::vsnprintf(m_pData, static_cast<size_t>(n) + 1, fmt, args);
    SetLength(static_cast<unsigned int>(std::strlen(m_pData)));
}

template <class Ch>
void LxStringT<Ch>::Format(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    FormatV(fmt, args);
    va_end(args);
}

template <class Ch>
void LxStringT<Ch>::AppendFormatV(const char* fmt, va_list args)
{
    va_list measure;
    va_copy(measure, args);
    const int n = std::vsnprintf(nullptr, 0, fmt, measure);
    va_end(measure);
    if (n <= 0)
        return;
    const unsigned int l = GetLength();
    GrowTo(l + static_cast<unsigned int>(n) + 1);
    std::vsnprintf(m_pData + l, static_cast<size_t>(n) + 1, fmt, args);
    SetLength(l + static_cast<unsigned int>(std::strlen(m_pData + l)));
}

template <class Ch>
void LxStringT<Ch>::AppendFormat(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    AppendFormatV(fmt, args);
    va_end(args);
}

template <class Ch>
LxStringT<Ch> LxStringT<Ch>::Formatted(const char* fmt, ...)
{
    LxStringT s;
    va_list args;
    va_start(args, fmt);
    s.FormatV(fmt, args);
    va_end(args);
    return s;
}

template <class Ch>
bool LxStringT<Ch>::Equals(const Ch* text) const
{
    if (!text)
        return GetLength() == 0;
    const unsigned int n = GetLength();
    for (unsigned int i = 0; i < n; ++i)
        if (text[i] == 0 || text[i] != m_pData[i]) // a zero inside the string must not walk past the text's end
            return false;
    return text[n] == 0;
}

template <class Ch>
bool LxStringT<Ch>::EqualsNoCase(const LxStringT& other) const
{
    const unsigned int n = GetLength();
    if (n != other.GetLength())
        return false;
    for (unsigned int i = 0; i < n; ++i)
        if (AsciiLower(m_pData[i]) != AsciiLower(other.m_pData[i]))
            return false;
    return true;
}

template <class Ch>
int LxStringT<Ch>::Compare(const LxStringT& other) const
{
    const unsigned int a = GetLength(), b = other.GetLength();
    const int c = std::memcmp(m_pData, other.m_pData, (a < b ? a : b) * sizeof(Ch));
    if (c)
        return c;
    return a < b ? -1 : (a > b ? 1 : 0);
}

template <class Ch>
bool LxStringT<Ch>::ToInteger(long* out, int base) const
{
    const unsigned int n = GetLength();
    if (n == 0)
        return false;
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(m_pData, &end, base);
    const unsigned int used = static_cast<unsigned int>(end - m_pData);
    if (used == 0 || errno == ERANGE)
        return false;
    if (used != n && !(used + 1 == n && (m_pData[used] == 'L' || m_pData[used] == 'l')))
        return false;
    *out = v;
    return true;
}

template <class Ch>
bool LxStringT<Ch>::ToInteger(int* out, int base) const
{
    long v;
    if (!ToInteger(&v, base) || v != static_cast<long>(static_cast<int>(v)))
        return false;
    *out = static_cast<int>(v);
    return true;
}

template <class Ch>
bool LxStringT<Ch>::ToDouble(double* out) const
{
    if (GetLength() == 0)
        return false;
    char* end = nullptr;
    const double v = std::strtod(m_pData, &end);
    if (end == m_pData)
        return false;
    while (*end && IsBlank(*end))
        ++end;
    if (*end)
        return false;
    *out = v;
    return true;
}

template <class Ch>
void LxStringT<Ch>::ToUpper()
{
    for (unsigned int i = 0, n = GetLength(); i < n; ++i)
        m_pData[i] = AsciiUpper(m_pData[i]);
}

template <class Ch>
void LxStringT<Ch>::ToLower()
{
    for (unsigned int i = 0, n = GetLength(); i < n; ++i)
        m_pData[i] = AsciiLower(m_pData[i]);
}

template <class Ch>
LxStringT<Ch> LxStringT<Ch>::Upper() const
{
    LxStringT r(*this);
    r.ToUpper();
    return r;
}

template <class Ch>
LxStringT<Ch> LxStringT<Ch>::Lower() const
{
    LxStringT r(*this);
    r.ToLower();
    return r;
}

template <class Ch>
int LxStringT<Ch>::Find(const Ch* sub, unsigned int start) const
{
    const unsigned int n = GetLength();
    const unsigned int k = sub ? Measure(sub) : 0;
    if (start > n || k > n - start)
        return -1;
    if (k == 0)
        return static_cast<int>(start);
    for (unsigned int i = start; i + k <= n; ++i)
        if (m_pData[i] == sub[0] && std::memcmp(m_pData + i, sub, k * sizeof(Ch)) == 0)
            return static_cast<int>(i);
    return -1;
}

template <class Ch>
int LxStringT<Ch>::Find(Ch c, unsigned int start) const
{
    for (unsigned int i = start, n = GetLength(); i < n; ++i)
        if (m_pData[i] == c)
            return static_cast<int>(i);
    return -1;
}

template <class Ch>
int LxStringT<Ch>::FindLast(Ch c) const
{
    for (unsigned int i = GetLength(); i > 0; --i)
        if (m_pData[i - 1] == c)
            return static_cast<int>(i - 1);
    return -1;
}

template <class Ch>
int LxStringT<Ch>::FindLastOf(const Ch* set) const
{
    for (unsigned int i = GetLength(); i > 0; --i)
        for (const Ch* s = set; *s; ++s)
            if (m_pData[i - 1] == *s)
                return static_cast<int>(i - 1);
    return -1;
}

template <class Ch>
bool LxStringT<Ch>::StartsWith(const Ch* prefix) const
{
    const unsigned int k = Measure(prefix);
    return k <= GetLength() && std::memcmp(m_pData, prefix, k * sizeof(Ch)) == 0;
}

template <class Ch>
bool LxStringT<Ch>::EndsWith(const Ch* suffix) const
{
    const unsigned int k = Measure(suffix);
    return k <= GetLength() && std::memcmp(m_pData + GetLength() - k, suffix, k * sizeof(Ch)) == 0;
}

template <class Ch>
bool LxStringT<Ch>::EndsWithNoCase(const Ch* suffix) const
{
    const unsigned int k = Measure(suffix), n = GetLength();
    if (k > n)
        return false;
    for (unsigned int i = 0; i < k; ++i)
        if (AsciiLower(m_pData[n - k + i]) != AsciiLower(suffix[i]))
            return false;
    return true;
}

template <class Ch>
unsigned int LxStringT<Ch>::Replace(const Ch* what, const Ch* with)
{
    const unsigned int k = what ? Measure(what) : 0;
    if (k == 0)
        return 0;
    const unsigned int w = with ? Measure(with) : 0;
    LxStringT result;
    unsigned int count = 0, from = 0;
    for (int at = Find(what, 0); at >= 0; at = Find(what, from))
    {
        result.Append(m_pData + from, static_cast<unsigned int>(at) - from);
        result.Append(with, w);
        from = static_cast<unsigned int>(at) + k;
        ++count;
    }
    if (count)
    {
        result.Append(m_pData + from, GetLength() - from);
        *this = std::move(result);
    }
    return count;
}

template <class Ch>
unsigned int LxStringT<Ch>::Replace(Ch what, Ch with)
{
    unsigned int count = 0;
    for (unsigned int i = 0, n = GetLength(); i < n; ++i)
        if (m_pData[i] == what)
        {
            m_pData[i] = with;
            ++count;
        }
    return count;
}

template <class Ch>
LxStringT<Ch> LxStringT<Ch>::Substring(unsigned int start, unsigned int count) const
{
    const unsigned int n = GetLength();
    if (start >= n)
        return LxStringT();
    if (count > n - start)
        count = n - start;
    return LxStringT(m_pData + start, count);
}

template <class Ch>
void LxStringT<Ch>::TrimLeft()
{
    unsigned int i = 0;
    const unsigned int n = GetLength();
    while (i < n && IsBlank(m_pData[i]))
        ++i;
    if (i)
    {
        std::memmove(m_pData, m_pData + i, (n - i) * sizeof(Ch));
        SetLength(n - i);
    }
}

template <class Ch>
void LxStringT<Ch>::TrimRight()
{
    unsigned int n = GetLength();
    while (n && IsBlank(m_pData[n - 1]))
        --n;
    if (n != GetLength())
        SetLength(n);
}

template <class Ch>
void LxStringT<Ch>::Trim()
{
    TrimRight();
    TrimLeft();
}

template <class Ch>
void LxStringT<Ch>::Split(const Ch* delimiters, LxArray<LxStringT>& out, bool keepEmpty) const
{
    const unsigned int n = GetLength();
    unsigned int start = 0;
    for (unsigned int i = 0; i <= n; ++i)
    {
        bool cut = (i == n);
        for (const Ch* d = delimiters; !cut && *d; ++d)
            cut = (m_pData[i] == *d);
        if (!cut)
            continue;
        if (i > start || keepEmpty)
            out.Add(LxStringT(m_pData + start, i - start));
        start = i + 1;
    }
}

template <class Ch>
LxStringT<Ch> LxStringT<Ch>::GetDirectory() const
{
    for (unsigned int i = GetLength(); i > 0; --i)
        if (IsSeparator(m_pData[i - 1]))
            return LxStringT(m_pData, i - 1);
    return LxStringT();
}

template <class Ch>
LxStringT<Ch> LxStringT<Ch>::GetFileName() const
{
    for (unsigned int i = GetLength(); i > 0; --i)
        if (IsSeparator(m_pData[i - 1]))
            return LxStringT(m_pData + i, GetLength() - i);
    return *this;
}

template <class Ch>
LxStringT<Ch> LxStringT<Ch>::GetExtension() const
{
    for (unsigned int i = GetLength(); i > 0; --i)
    {
        if (IsSeparator(m_pData[i - 1]))
            break;
        if (m_pData[i - 1] == '.')
            return LxStringT(m_pData + i, GetLength() - i);
    }
    return LxStringT();
}

// Exported through the extern declaration in the header.
template class LxStringT<char>;
