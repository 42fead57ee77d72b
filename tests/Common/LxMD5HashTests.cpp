// LxMD5Hash: the RFC 1321 test suite, incremental hashing across block boundaries, the text form and the
// hash-map hasher.
#include "Common/LxFile.h"
#include "Common/LxHashMap.h"
#include "Common/LxMD5Hash.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace
{
std::string Md5Text(const std::string& data)
{
    LxMD5Hash h;
    LxMD5Hash::ComputeHash(data.data(), static_cast<unsigned int>(data.size()), &h);
    return h.ToString().c_str();
}
} // namespace

TEST(LxMD5Hash, Rfc1321TestSuite)
{
    EXPECT_EQ(Md5Text(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(Md5Text("a"), "0cc175b9c0f1b6a831c399e269772661");
    EXPECT_EQ(Md5Text("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(Md5Text("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(Md5Text("abcdefghijklmnopqrstuvwxyz"), "c3fcd3d76192e4007dfb496cca67e13b");
    EXPECT_EQ(Md5Text("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
              "d174ab98d277d9f5a5611c2c9f419d9f");
    EXPECT_EQ(Md5Text("12345678901234567890123456789012345678901234567890123456789012345678901234567890"),
              "57edf4a22be3c955ac49da2e2107b67a");
}

TEST(LxMD5Hash, PaddingBoundariesAndIncrementalUpdatesAgree)
{
    // Lengths around the 56-byte padding limit and the 64-byte block, fed whole and in odd pieces.
    std::string data;
    for (int i = 0; i < 300; ++i)
        data += char('a' + i % 26);
    for (size_t len : {55u, 56u, 57u, 63u, 64u, 65u, 119u, 120u, 128u, 300u})
    {
        const std::string part = data.substr(0, len);
        LxMD5Hash whole, pieces;
        LxMD5Hash::ComputeHash(part.data(), static_cast<unsigned int>(len), &whole);
        LxMD5Hash::Builder builder;
        for (size_t at = 0; at < len;)
        {
            const size_t step = std::min<size_t>(len - at, 1 + at % 37);
            builder.Update(part.data() + at, step);
            at += step;
        }
        builder.Finish(&pieces);
        EXPECT_EQ(whole, pieces) << len;
    }
}

TEST(LxMD5Hash, TextFormAndHasher)
{
    LxMD5Hash h;
    EXPECT_TRUE(h.IsZero());
    ASSERT_TRUE(LxMD5Hash::FromString(LxString("00112233445566778899aabbccddeeff"), &h));
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(h.GetBytes()[i], i * 0x11);
    EXPECT_STREQ(h.ToString().c_str(), "00112233445566778899aabbccddeeff");
    EXPECT_TRUE(LxMD5Hash::FromString(LxString("00112233445566778899AABBCCDDEEFF"), &h));

    LxMD5Hash untouched;
    EXPECT_FALSE(LxMD5Hash::FromString(LxString("0011223344556677889900aabbccddeef"), &untouched)); // 33 digits
    EXPECT_FALSE(LxMD5Hash::FromString(LxString("0011223344556677889900aabbccdde"), &untouched));   // 31
    EXPECT_FALSE(LxMD5Hash::FromString(LxString("zz112233445566778899aabbccddeeff"), &untouched));
    EXPECT_TRUE(untouched.IsZero());
    LxMD5Hash::ZeroHash(&h);
    EXPECT_TRUE(h.IsZero());

    // The hash-map hasher: times five plus each unsigned byte.
    h.GetBytes()[15] = 0xFF;
    LxMD5Hash::Hasher hasher;
    EXPECT_EQ(hasher(h), 255u);
    h.GetBytes()[14] = 1;
    EXPECT_EQ(hasher(h), 5u + 255u);
    EXPECT_EQ(hasher.SecondHashValue(h), (5u + 255u) * 2u + 1u);
    LxHashMap<LxMD5Hash, int, LxMD5Hash::Hasher> map;
    map.Insert(h, 1);
    EXPECT_TRUE(map.Contains(h));
}

TEST(LxMD5Hash, FileHashReadsTheWholeFile)
{
    const std::string path = LxTest::MakeTempDir("md5") + "/data.bin";
    LxTest::WriteBytes(path, "message digest");
    LxFile* file = LxFile::Open(LxString(path.c_str()), LxString("rb"));
    LxMD5Hash h;
    ASSERT_TRUE(LxMD5Hash::ComputeFileHash(file, &h));
    EXPECT_STREQ(h.ToString().c_str(), "f96b697d7cb7938d525a2f31aaf161d0");
    delete file;

    LxTest::LogCapture log;
    LxFile* missing = LxFile::Open(LxString("no-such-file.bin"), LxString("rb"));
    EXPECT_FALSE(LxMD5Hash::ComputeFileHash(missing, &h));
    EXPECT_FALSE(LxMD5Hash::ComputeFileHash(nullptr, &h));
    delete missing;
}
