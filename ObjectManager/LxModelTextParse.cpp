#include "ObjectManager/LxModelTextParse.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

bool LxTextIs(const LxString& text, const char* literal)
{
    const size_t n = std::strlen(literal);
    return text.GetLength() == n && std::memcmp(text.c_str(), literal, n) == 0;
}

bool LxHasZeroByte(const LxString& text)
{
    return std::memchr(text.c_str(), 0, text.GetLength()) != nullptr;
}

void LxSplitTokens(const LxString& line, LxArray<LxString>& tokens)
{
    line.Split(" ", tokens);
}

namespace
{
bool ParseDigits(const char* p, const char* end, unsigned long long limit, unsigned long long* out)
{
    if (p == end)
        return false;
    unsigned long long value = 0;
    for (; p != end; ++p)
    {
        if (*p < '0' || *p > '9')
            return false;
        value = value * 10 + static_cast<unsigned long long>(*p - '0');
        if (value > limit)
            return false;
    }
    *out = value;
    return true;
}
} // namespace

bool LxParseUInt32(const LxString& text, unsigned int* out)
{
    unsigned long long value = 0;
    if (!ParseDigits(text.c_str(), text.c_str() + text.GetLength(), 0xFFFFFFFFull, &value))
        return false;
    *out = static_cast<unsigned int>(value);
    return true;
}

bool LxParseInt32(const LxString& text, int* out)
{
    const bool negative = text.GetLength() && text[0] == '-';
    unsigned long long value = 0;
    if (!ParseDigits(text.c_str() + (negative ? 1 : 0), text.c_str() + text.GetLength(),
                     negative ? 0x80000000ull : 0x7FFFFFFFull, &value))
        return false;
    *out = negative ? static_cast<int>(-static_cast<long long>(value)) : static_cast<int>(value);
    return true;
}

bool LxParseFloat(const LxString& text, float* out)
{
    if (text.IsEmpty())
        return false;
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.GetLength())
        return false;
    if (std::isfinite(value) && std::fabs(value) > 3.4028234663852886e38)
        return false;
    *out = static_cast<float>(value);
    return true;
}
