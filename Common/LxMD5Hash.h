// LxMD5Hash: the 16-byte MD5 digest (RFC 1321) used as the identity of file contents, cached shaders and shared
// GPU resources. Text form: 32 lowercase hex digits, first byte first.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"

#define MD5_HASH_LENGTH 16

class LxFile;

class LX_API LxMD5Hash
{
public:
    LxMD5Hash() { ZeroHash(this); }

    static void ComputeHash(const void* data, unsigned int size, LxMD5Hash* out);
    // Reads the whole file and hashes it; false when the file cannot be read.
    static bool ComputeFileHash(LxFile* file, LxMD5Hash* out);

    LxString ToString() const;
    // Exactly 32 hex digits; any other length or a bad pair fails and leaves `out` untouched.
    static bool FromString(const LxString& text, LxMD5Hash* out);

    bool IsZero() const;
    static void ZeroHash(LxMD5Hash* hash);
    bool operator==(const LxMD5Hash& o) const;
    bool operator!=(const LxMD5Hash& o) const { return !(*this == o); }

    const unsigned char* GetBytes() const { return m_bytes; }
    unsigned char* GetBytes() { return m_bytes; }

    // Hash-map key support: h = h * 5 + b over the 16 bytes (unsigned), the second value h * 2 + 1.
    struct Hasher
    {
        unsigned int operator()(const LxMD5Hash& h) const
        {
            unsigned int v = 0;
            for (int i = 0; i < MD5_HASH_LENGTH; ++i)
                v = v * 5u + h.m_bytes[i];
            return v;
        }
        unsigned int SecondHashValue(const LxMD5Hash& h) const { return (*this)(h)*2u + 1u; }
    };

    // Incremental hashing of data that arrives in pieces.
    class LX_API Builder
    {
    public:
        Builder();
        void Update(const void* data, size_t size);
        void Finish(LxMD5Hash* out);

    private:
        unsigned int m_state[4];
        unsigned long long m_nBytes;
        unsigned char m_buffer[64];
    };

private:
    unsigned char m_bytes[MD5_HASH_LENGTH];
};
