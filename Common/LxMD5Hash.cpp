#include "Common/LxMD5Hash.h"

#include "Common/LxFile.h"

#include <cstdint>
#include <cstring>

namespace
{
inline uint32_t Rotl(uint32_t x, int c)
{
    return (x << c) | (x >> (32 - c));
}

// The four auxiliary functions in the forms that need the fewest operations (F and G without a NOT).
#define LX_MD5_F(x, y, z) ((z) ^ ((x) & ((y) ^ (z))))
#define LX_MD5_G(x, y, z) ((y) ^ ((z) & ((x) ^ (y))))
#define LX_MD5_H(x, y, z) ((x) ^ (y) ^ (z))
#define LX_MD5_I(x, y, z) ((y) ^ ((x) | ~(z)))
#define LX_MD5_STEP(f, a, b, c, d, x, t, s)                                                                            \
    (a) += f((b), (c), (d)) + (x) + (t);                                                                               \
    (a) = Rotl((a), (s)) + (b)

// Processes `blocks` consecutive 64-byte blocks.
void Transform(uint32_t state[4], const unsigned char* data, size_t blocks)
{
    uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    for (; blocks; --blocks, data += 64)
    {
        uint32_t x[16];
        std::memcpy(x, data, 64); // MD5 words are little-endian, like every target of this library
        const uint32_t sa = a, sb = b, sc = c, sd = d;

        LX_MD5_STEP(LX_MD5_F, a, b, c, d, x[0], 0xd76aa478, 7);
        LX_MD5_STEP(LX_MD5_F, d, a, b, c, x[1], 0xe8c7b756, 12);
        LX_MD5_STEP(LX_MD5_F, c, d, a, b, x[2], 0x242070db, 17);
        LX_MD5_STEP(LX_MD5_F, b, c, d, a, x[3], 0xc1bdceee, 22);
        LX_MD5_STEP(LX_MD5_F, a, b, c, d, x[4], 0xf57c0faf, 7);
        LX_MD5_STEP(LX_MD5_F, d, a, b, c, x[5], 0x4787c62a, 12);
        LX_MD5_STEP(LX_MD5_F, c, d, a, b, x[6], 0xa8304613, 17);
        LX_MD5_STEP(LX_MD5_F, b, c, d, a, x[7], 0xfd469501, 22);
        LX_MD5_STEP(LX_MD5_F, a, b, c, d, x[8], 0x698098d8, 7);
        LX_MD5_STEP(LX_MD5_F, d, a, b, c, x[9], 0x8b44f7af, 12);
        LX_MD5_STEP(LX_MD5_F, c, d, a, b, x[10], 0xffff5bb1, 17);
        LX_MD5_STEP(LX_MD5_F, b, c, d, a, x[11], 0x895cd7be, 22);
        LX_MD5_STEP(LX_MD5_F, a, b, c, d, x[12], 0x6b901122, 7);
        LX_MD5_STEP(LX_MD5_F, d, a, b, c, x[13], 0xfd987193, 12);
        LX_MD5_STEP(LX_MD5_F, c, d, a, b, x[14], 0xa679438e, 17);
        LX_MD5_STEP(LX_MD5_F, b, c, d, a, x[15], 0x49b40821, 22);

        LX_MD5_STEP(LX_MD5_G, a, b, c, d, x[1], 0xf61e2562, 5);
        LX_MD5_STEP(LX_MD5_G, d, a, b, c, x[6], 0xc040b340, 9);
        LX_MD5_STEP(LX_MD5_G, c, d, a, b, x[11], 0x265e5a51, 14);
        LX_MD5_STEP(LX_MD5_G, b, c, d, a, x[0], 0xe9b6c7aa, 20);
        LX_MD5_STEP(LX_MD5_G, a, b, c, d, x[5], 0xd62f105d, 5);
        LX_MD5_STEP(LX_MD5_G, d, a, b, c, x[10], 0x02441453, 9);
        LX_MD5_STEP(LX_MD5_G, c, d, a, b, x[15], 0xd8a1e681, 14);
        LX_MD5_STEP(LX_MD5_G, b, c, d, a, x[4], 0xe7d3fbc8, 20);
        LX_MD5_STEP(LX_MD5_G, a, b, c, d, x[9], 0x21e1cde6, 5);
        LX_MD5_STEP(LX_MD5_G, d, a, b, c, x[14], 0xc33707d6, 9);
        LX_MD5_STEP(LX_MD5_G, c, d, a, b, x[3], 0xf4d50d87, 14);
        LX_MD5_STEP(LX_MD5_G, b, c, d, a, x[8], 0x455a14ed, 20);
        LX_MD5_STEP(LX_MD5_G, a, b, c, d, x[13], 0xa9e3e905, 5);
        LX_MD5_STEP(LX_MD5_G, d, a, b, c, x[2], 0xfcefa3f8, 9);
        LX_MD5_STEP(LX_MD5_G, c, d, a, b, x[7], 0x676f02d9, 14);
        LX_MD5_STEP(LX_MD5_G, b, c, d, a, x[12], 0x8d2a4c8a, 20);

        LX_MD5_STEP(LX_MD5_H, a, b, c, d, x[5], 0xfffa3942, 4);
        LX_MD5_STEP(LX_MD5_H, d, a, b, c, x[8], 0x8771f681, 11);
        LX_MD5_STEP(LX_MD5_H, c, d, a, b, x[11], 0x6d9d6122, 16);
        LX_MD5_STEP(LX_MD5_H, b, c, d, a, x[14], 0xfde5380c, 23);
        LX_MD5_STEP(LX_MD5_H, a, b, c, d, x[1], 0xa4beea44, 4);
        LX_MD5_STEP(LX_MD5_H, d, a, b, c, x[4], 0x4bdecfa9, 11);
        LX_MD5_STEP(LX_MD5_H, c, d, a, b, x[7], 0xf6bb4b60, 16);
        LX_MD5_STEP(LX_MD5_H, b, c, d, a, x[10], 0xbebfbc70, 23);
        LX_MD5_STEP(LX_MD5_H, a, b, c, d, x[13], 0x289b7ec6, 4);
        LX_MD5_STEP(LX_MD5_H, d, a, b, c, x[0], 0xeaa127fa, 11);
        LX_MD5_STEP(LX_MD5_H, c, d, a, b, x[3], 0xd4ef3085, 16);
        LX_MD5_STEP(LX_MD5_H, b, c, d, a, x[6], 0x04881d05, 23);
        LX_MD5_STEP(LX_MD5_H, a, b, c, d, x[9], 0xd9d4d039, 4);
        LX_MD5_STEP(LX_MD5_H, d, a, b, c, x[12], 0xe6db99e5, 11);
        LX_MD5_STEP(LX_MD5_H, c, d, a, b, x[15], 0x1fa27cf8, 16);
        LX_MD5_STEP(LX_MD5_H, b, c, d, a, x[2], 0xc4ac5665, 23);

        LX_MD5_STEP(LX_MD5_I, a, b, c, d, x[0], 0xf4292244, 6);
        LX_MD5_STEP(LX_MD5_I, d, a, b, c, x[7], 0x432aff97, 10);
        LX_MD5_STEP(LX_MD5_I, c, d, a, b, x[14], 0xab9423a7, 15);
        LX_MD5_STEP(LX_MD5_I, b, c, d, a, x[5], 0xfc93a039, 21);
        LX_MD5_STEP(LX_MD5_I, a, b, c, d, x[12], 0x655b59c3, 6);
        LX_MD5_STEP(LX_MD5_I, d, a, b, c, x[3], 0x8f0ccc92, 10);
        LX_MD5_STEP(LX_MD5_I, c, d, a, b, x[10], 0xffeff47d, 15);
        LX_MD5_STEP(LX_MD5_I, b, c, d, a, x[1], 0x85845dd1, 21);
        LX_MD5_STEP(LX_MD5_I, a, b, c, d, x[8], 0x6fa87e4f, 6);
        LX_MD5_STEP(LX_MD5_I, d, a, b, c, x[15], 0xfe2ce6e0, 10);
        LX_MD5_STEP(LX_MD5_I, c, d, a, b, x[6], 0xa3014314, 15);
        LX_MD5_STEP(LX_MD5_I, b, c, d, a, x[13], 0x4e0811a1, 21);
        LX_MD5_STEP(LX_MD5_I, a, b, c, d, x[4], 0xf7537e82, 6);
        LX_MD5_STEP(LX_MD5_I, d, a, b, c, x[11], 0xbd3af235, 10);
        LX_MD5_STEP(LX_MD5_I, c, d, a, b, x[2], 0x2ad7d2bb, 15);
        LX_MD5_STEP(LX_MD5_I, b, c, d, a, x[9], 0xeb86d391, 21);

        a += sa;
        b += sb;
        c += sc;
        d += sd;
    }
    state[0] = a;
    state[1] = b;
    state[2] = c;
    state[3] = d;
}
} // namespace

LxMD5Hash::Builder::Builder() : m_state{0x67452301u, 0xefcdab89u, 0x98badcfeu, 0x10325476u}, m_nBytes(0), m_buffer{} {}

void LxMD5Hash::Builder::Update(const void* data, size_t size)
{
    const unsigned char* p = static_cast<const unsigned char*>(data);
    size_t used = static_cast<size_t>(m_nBytes & 63u);
    m_nBytes += size;
    if (used)
    {
        const size_t take = size < 64 - used ? size : 64 - used;
        std::memcpy(m_buffer + used, p, take);
        p += take;
        size -= take;
        used += take;
        if (used < 64)
            return;
        Transform(m_state, m_buffer, 1);
    }
    if (size >= 64)
    {
        Transform(m_state, p, size / 64);
        p += size & ~size_t(63);
        size &= 63;
    }
    if (size)
        std::memcpy(m_buffer, p, size);
}

void LxMD5Hash::Builder::Finish(LxMD5Hash* out)
{
    const unsigned long long bits = m_nBytes * 8u;
    static const unsigned char pad[64] = {0x80};
    const size_t used = static_cast<size_t>(m_nBytes & 63u);
    Update(pad, used < 56 ? 56 - used : 120 - used);
    unsigned char length[8];
    for (int i = 0; i < 8; ++i)
        length[i] = static_cast<unsigned char>(bits >> (8 * i));
    Update(length, 8);
    std::memcpy(out->m_bytes, m_state, 16);
}

void LxMD5Hash::ComputeHash(const void* data, unsigned int size, LxMD5Hash* out)
{
    Builder b;
    b.Update(data, size);
    b.Finish(out);
}

bool LxMD5Hash::ComputeFileHash(LxFile* file, LxMD5Hash* out)
{
    if (!file)
        return false;
    unsigned int size = 0;
    void* data = LxFile::ReadFileToBuffer(*file, &size);
    if (!data)
        return false;
    ComputeHash(data, size, out);
    LxFree(data);
    return true;
}

LxString LxMD5Hash::ToString() const
{
    static const char digits[] = "0123456789abcdef";
    char text[2 * MD5_HASH_LENGTH];
    for (int i = 0; i < MD5_HASH_LENGTH; ++i)
    {
        text[2 * i] = digits[m_bytes[i] >> 4];
        text[2 * i + 1] = digits[m_bytes[i] & 15];
    }
    return LxString(text, 2 * MD5_HASH_LENGTH);
}

bool LxMD5Hash::FromString(const LxString& text, LxMD5Hash* out)
{
    if (text.GetLength() != 2 * MD5_HASH_LENGTH)
        return false;
    unsigned char bytes[MD5_HASH_LENGTH];
    for (int i = 0; i < MD5_HASH_LENGTH; ++i)
    {
        long v = 0;
        if (!text.Substring(2 * i, 2).ToInteger(&v, 16) || v < 0 || v > 255)
            return false;
        bytes[i] = static_cast<unsigned char>(v);
    }
    std::memcpy(out->m_bytes, bytes, MD5_HASH_LENGTH);
    return true;
}

bool LxMD5Hash::IsZero() const
{
    for (unsigned char b : m_bytes)
        if (b)
            return false;
    return true;
}

void LxMD5Hash::ZeroHash(LxMD5Hash* hash)
{
    std::memset(hash->m_bytes, 0, MD5_HASH_LENGTH);
}

bool LxMD5Hash::operator==(const LxMD5Hash& o) const
{
    return std::memcmp(m_bytes, o.m_bytes, MD5_HASH_LENGTH) == 0;
}
