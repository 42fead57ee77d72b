// LxStringT<Ch>: the byte string of every interface (only the char instantiation is used, as LxString).
//
// Layout: one pointer to the first character. The 8 bytes before it hold the capacity (bytes for characters,
// terminator included) and then the length (terminator excluded), both unsigned 32-bit. The characters are always
// zero-terminated. An empty string still owns a block (capacity 1), so default construction allocates; only a
// moved-from string points at a shared static empty block (capacity 0), which any write replaces.
//
// Growth: appending k characters to a string of length l grows the block to exactly l + k + 1; appending a single
// character doubles the capacity; assignment reallocates only when the capacity is too small.
//
// Strings are byte strings: no encoding is assumed and case conversion is ASCII only. Not thread-safe.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxMemory.h"

#include <cstdarg>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// The string hash: h = h * 5 + c over the bytes taken as signed chars, in unsigned 32-bit arithmetic. Every name
// lookup starts here, so it is inline (and outside the exported class, so that no module imports it). Blocks of
// bytes are folded at once with the same result as the byte-wise definition, since
// h(block of k bytes) = h * 5^k + sum(c_i * 5^(k-1-i)) mod 2^32: sixteen bytes with SSE2 (sign-extended to 16 bits,
// multiplied by 125, 25, 5, 1 per group of four and summed), then eight, four and single bytes.
template <class Ch>
LX_FORCE_INLINE unsigned int LxHashStringBytes(const Ch* text, unsigned int length)
{
    auto c = [](Ch ch) { return static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(ch))); };
    uint32_t h = 0;
    unsigned int i = 0;
#if defined(__SSE2__)
    if (sizeof(Ch) == 1 && length >= 16)
    {
        const __m128i weights = _mm_setr_epi16(125, 25, 5, 1, 125, 25, 5, 1);
        const __m128i zero = _mm_setzero_si128();
        for (; i + 16 <= length; i += 16)
        {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + i));
            const __m128i sign = _mm_cmpgt_epi8(zero, bytes);
            const __m128i lo = _mm_madd_epi16(_mm_unpacklo_epi8(bytes, sign), weights);
            const __m128i hi = _mm_madd_epi16(_mm_unpackhi_epi8(bytes, sign), weights);
            const __m128 l = _mm_castsi128_ps(lo), u = _mm_castsi128_ps(hi);
            const __m128i groups = _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(l, u, _MM_SHUFFLE(2, 0, 2, 0))),
                                                 _mm_castps_si128(_mm_shuffle_ps(l, u, _MM_SHUFFLE(3, 1, 3, 1))));
            alignas(16) uint32_t g[4];
            _mm_store_si128(reinterpret_cast<__m128i*>(g), groups);
            // 625^4 and 625^3 modulo 2^32.
            h = h * 2264035265u + g[0] * 244140625u + g[1] * 390625u + g[2] * 625u + g[3];
        }
    }
#endif
    for (; i + 8 <= length; i += 8)
    {
        const uint32_t part = c(text[i]) * 78125u + c(text[i + 1]) * 15625u + c(text[i + 2]) * 3125u +
                              c(text[i + 3]) * 625u + c(text[i + 4]) * 125u + c(text[i + 5]) * 25u +
                              c(text[i + 6]) * 5u + c(text[i + 7]);
        h = h * 390625u + part;
    }
    if (i + 4 <= length)
    {
        h = h * 625u + (c(text[i]) * 125u + c(text[i + 1]) * 25u + c(text[i + 2]) * 5u + c(text[i + 3]));
        i += 4;
    }
    for (; i < length; ++i)
        h = h * 5u + c(text[i]);
    return h;
}

template <class Ch>
class LxStringT
{
public:
    LxStringT() { Init(0); }
    // Out of line on purpose: the DLL does not export inline members of its explicit instantiation, so an inline
    // constructor that a caller's optimiser chose not to inline would leave that caller with an unresolved symbol.
    LxStringT(const Ch* text);
    LxStringT(const Ch* text, unsigned int length);
    LxStringT(const LxStringT& other);
    LxStringT(LxStringT&& other) noexcept : m_pData(other.m_pData) { other.m_pData = EmptyRep(); }
    ~LxStringT() { Release(); }

    LxStringT& operator=(const LxStringT& other)
    {
        if (this != &other)
            Assign(other.m_pData, other.GetLength());
        return *this;
    }
    LxStringT& operator=(LxStringT&& other) noexcept
    {
        if (this != &other)
        {
            Release();
            m_pData = other.m_pData;
            other.m_pData = EmptyRep();
        }
        return *this;
    }
    LxStringT& operator=(const Ch* text)
    {
        Assign(text, text ? Measure(text) : 0);
        return *this;
    }

    // --- access -------------------------------------------------------------------------------------------------
    const Ch* c_str() const { return m_pData; }
    // Writable characters; after writing through it call SetLength (or keep the length unchanged).
    Ch* GetBuffer() { return m_pData; }
    unsigned int GetLength() const { return Header()->length; }
    unsigned int GetCapacity() const { return Header()->capacity; }
    bool IsEmpty() const { return GetLength() == 0; }
    Ch operator[](unsigned int i) const { return m_pData[i]; }
    Ch& operator[](unsigned int i) { return m_pData[i]; }
    Ch GetLast() const { return GetLength() ? m_pData[GetLength() - 1] : Ch(0); }

    // --- storage ------------------------------------------------------------------------------------------------
    // Makes the block hold `capacity` bytes (terminator included). With keepContents, at most capacity - 1
    // characters are kept; otherwise the new block is empty. Reserve(0, ...) gives an empty string.
    void Reserve(unsigned int capacity, bool keepContents);
    // Sets the length after writing through GetBuffer; must be below the capacity.
    void SetLength(unsigned int length)
    {
        Header()->length = length;
        m_pData[length] = 0;
    }
    void Clear() { Assign(nullptr, 0); }
    void Truncate(unsigned int length)
    {
        if (length < GetLength())
            SetLength(length);
    }

    // --- building -----------------------------------------------------------------------------------------------
    void Assign(const Ch* text, unsigned int length);
    // printf-style; replaces the contents.
    void Format(const char* fmt, ...) LX_PRINTF_FORMAT(2, 3);
    void FormatV(const char* fmt, va_list args);
    void AppendFormat(const char* fmt, ...) LX_PRINTF_FORMAT(2, 3);
    void AppendFormatV(const char* fmt, va_list args);
    static LxStringT Formatted(const char* fmt, ...) LX_PRINTF_FORMAT(1, 2);

    void Append(const Ch* text, unsigned int length);
    void Append(const Ch* text) { Append(text, text ? Measure(text) : 0); }
    void Append(const LxStringT& other) { Append(other.m_pData, other.GetLength()); }
    void Append(Ch c);
    LxStringT& operator+=(const Ch* text)
    {
        Append(text);
        return *this;
    }
    LxStringT& operator+=(const LxStringT& other)
    {
        Append(other);
        return *this;
    }
    LxStringT& operator+=(Ch c)
    {
        Append(c);
        return *this;
    }

    // --- comparison and hashing ---------------------------------------------------------------------------------
    // Lengths first, then the characters a word at a time.
    bool Equals(const LxStringT& other) const
    {
        const unsigned int n = GetLength() * static_cast<unsigned int>(sizeof(Ch));
        if (n != other.GetLength() * sizeof(Ch))
            return false;
        const char* a = reinterpret_cast<const char*>(m_pData);
        const char* b = reinterpret_cast<const char*>(other.m_pData);
        if (n >= 8)
        {
            // Eight bytes at a time; the tail is the last eight bytes again (overlapping), not a byte loop.
            uint64_t wa, wb;
            for (unsigned int i = 0; i + 8 <= n; i += 8)
            {
                std::memcpy(&wa, a + i, 8);
                std::memcpy(&wb, b + i, 8);
                if (wa != wb)
                    return false;
            }
            std::memcpy(&wa, a + n - 8, 8);
            std::memcpy(&wb, b + n - 8, 8);
            return wa == wb;
        }
        for (unsigned int i = 0; i < n; ++i)
            if (a[i] != b[i])
                return false;
        return true;
    }
    bool Equals(const Ch* text) const;
    bool EqualsNoCase(const LxStringT& other) const;
    int Compare(const LxStringT& other) const;
    // h = h * 5 + c over the bytes taken as signed chars, unsigned 32-bit arithmetic.
    unsigned int Hash() const { return LxHashStringBytes(m_pData, GetLength()); }

    // --- conversion ---------------------------------------------------------------------------------------------
    // strtol in `base`; succeeds only when the whole text was used, or all of it but a last 'L'/'l'. On failure
    // `out` is left untouched. An empty string fails.
    bool ToInteger(long* out, int base = 10) const;
    bool ToInteger(int* out, int base = 10) const;
    // strtod over the whole text (surrounding blanks allowed); an empty string fails.
    bool ToDouble(double* out) const;
    void ToUpper();
    void ToLower();
    LxStringT Upper() const;
    LxStringT Lower() const;

    // --- searching and editing ----------------------------------------------------------------------------------
    // Positions are byte indices; -1 means not found.
    int Find(const Ch* sub, unsigned int start = 0) const;
    int Find(Ch c, unsigned int start = 0) const;
    int FindLast(Ch c) const;
    int FindLastOf(const Ch* set) const;
    bool StartsWith(const Ch* prefix) const;
    bool EndsWith(const Ch* suffix) const;
    bool EndsWithNoCase(const Ch* suffix) const;
    // Replaces every occurrence of `what` (non-empty) by `with`; returns the number of replacements.
    unsigned int Replace(const Ch* what, const Ch* with);
    unsigned int Replace(Ch what, Ch with);
    LxStringT Substring(unsigned int start, unsigned int count = 0xFFFFFFFFu) const;
    LxStringT Left(unsigned int count) const { return Substring(0, count); }
    LxStringT Right(unsigned int count) const
    {
        return count >= GetLength() ? *this : Substring(GetLength() - count, count);
    }
    // Removes blanks, tabs, carriage returns and line feeds from both ends / one end.
    void Trim();
    void TrimLeft();
    void TrimRight();
    // Splits at any of `delimiters`; empty pieces are dropped unless keepEmpty. Appends to `out`.
    void Split(const Ch* delimiters, LxArray<LxStringT>& out, bool keepEmpty = false) const;

    // --- paths (both '\' and '/' separate) ----------------------------------------------------------------------
    // "a/b/c.txt" gives "a/b"; a path without separator gives "".
    LxStringT GetDirectory() const;
    // "a/b/c.txt" gives "c.txt".
    LxStringT GetFileName() const;
    // "c.txt" gives "txt"; no dot in the file name gives "".
    LxStringT GetExtension() const;

private:
    struct BlockHeader
    {
        uint32_t capacity;
        uint32_t length;
    };
    static_assert(sizeof(BlockHeader) == 8, "the string header must stay 8 bytes");

    BlockHeader* Header() const { return reinterpret_cast<BlockHeader*>(m_pData) - 1; }
    static Ch* EmptyRep();
    static unsigned int Measure(const Ch* text)
    {
        unsigned int n = 0;
        while (text[n])
            ++n;
        return n;
    }
    static Ch* AllocateBlock(unsigned int capacity);
    void Init(unsigned int capacity);
    void InitFrom(const Ch* text, unsigned int length);
    void Release();
    void GrowTo(unsigned int capacity); // keeps contents

    Ch* m_pData;
};

// The char instantiation is compiled once, in the library (exported from the DLL on Windows).
extern template class LX_TEMPLATE_API LxStringT<char>;
typedef LxStringT<char> LxString;

template <class Ch>
inline bool operator==(const LxStringT<Ch>& a, const LxStringT<Ch>& b)
{
    return a.Equals(b);
}
template <class Ch>
inline bool operator!=(const LxStringT<Ch>& a, const LxStringT<Ch>& b)
{
    return !a.Equals(b);
}
template <class Ch>
inline bool operator==(const LxStringT<Ch>& a, const Ch* b)
{
    return a.Equals(b);
}
template <class Ch>
inline bool operator!=(const LxStringT<Ch>& a, const Ch* b)
{
    return !a.Equals(b);
}
template <class Ch>
inline bool operator<(const LxStringT<Ch>& a, const LxStringT<Ch>& b)
{
    return a.Compare(b) < 0;
}
template <class Ch>
inline LxStringT<Ch> operator+(const LxStringT<Ch>& a, const LxStringT<Ch>& b)
{
    LxStringT<Ch> r(a);
    r.Append(b);
    return r;
}
template <class Ch>
inline LxStringT<Ch> operator+(const LxStringT<Ch>& a, const Ch* b)
{
    LxStringT<Ch> r(a);
    r.Append(b);
    return r;
}
template <class Ch>
inline LxStringT<Ch> operator+(const Ch* a, const LxStringT<Ch>& b)
{
    LxStringT<Ch> r(a);
    r.Append(b);
    return r;
}

// The hasher and comparer of string-keyed hash maps.
struct LxStringHasher
{
    unsigned int operator()(const LxString& s) const { return s.Hash(); }
    unsigned int SecondHashValue(const LxString& s) const { return SecondHashFromFirst(s.Hash()); }
    static unsigned int SecondHashFromFirst(unsigned int h) { return h * 2u + 1u; }
};
