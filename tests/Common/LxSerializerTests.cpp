// The serializer's byte-exact encodings, its line reader and every failure path, through a small derived
// reader/writer over an in-memory file (and one disk round trip).
#include "support/LxTestSupport.h"

#include "Common/LxFile.h"
#include "Common/LxMemory.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxSerializer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{
// A file in memory; writes beyond `writeBudget` bytes fail (to reach the write-failure paths).
class MemoryFile : public LxFile
{
public:
    explicit MemoryFile(std::string bytes = std::string()) : LxFile("memory"), m_bytes(std::move(bytes))
    {
        m_bOpen = true;
    }
    void Close() override { m_bOpen = false; }
    unsigned int Read(void* buffer, unsigned int bytes) override
    {
        if (!m_bOpen)
            return 0;
        const size_t left = m_bytes.size() - m_pos;
        const size_t n = bytes < left ? bytes : left;
        std::memcpy(buffer, m_bytes.data() + m_pos, n);
        m_pos += n;
        return static_cast<unsigned int>(n);
    }
    bool Write(const void* buffer, unsigned int bytes) override
    {
        if (!m_bOpen || m_written + bytes > writeBudget)
            return false;
        m_bytes.append(static_cast<const char*>(buffer), bytes);
        m_written += bytes;
        ++writeCalls;
        return true;
    }
    using LxFile::Write;
    bool Seek(long offset, int) override
    {
        m_pos = static_cast<size_t>(offset);
        return true;
    }
    unsigned int GetSize() override { return static_cast<unsigned int>(m_bytes.size()); }
    bool Flush() override { return true; }

    const std::string& Bytes() const { return m_bytes; }
    size_t Position() const { return m_pos; }
    size_t writeBudget = ~size_t(0) >> 1;
    int writeCalls = 0;

private:
    std::string m_bytes;
    size_t m_pos = 0;
    size_t m_written = 0;
};

// The derived reader/writer: exposes the protected operations.
class TestSerializer : public LxSerializer
{
public:
    using LxSerializer::ReadBool;
    using LxSerializer::ReadData;
    using LxSerializer::ReadFloat32;
    using LxSerializer::ReadFloat64;
    using LxSerializer::ReadLine;
    using LxSerializer::ReadString;
    using LxSerializer::ReadUInt16;
    using LxSerializer::ReadUInt32;
    using LxSerializer::ReadUInt64;
    using LxSerializer::ReadUInt8;
    using LxSerializer::ReleaseFileHandle;
    using LxSerializer::SetFileHandle;
    using LxSerializer::WriteBool;
    using LxSerializer::WriteData;
    using LxSerializer::WriteFloat32;
    using LxSerializer::WriteFloat64;
    using LxSerializer::WriteLine;
    using LxSerializer::WriteString;
    using LxSerializer::WriteUInt16;
    using LxSerializer::WriteUInt32;
    using LxSerializer::WriteUInt64;
    using LxSerializer::WriteUInt8;
};

std::string Hex(const std::string& bytes)
{
    std::string out;
    char buf[4];
    for (unsigned char c : bytes)
    {
        std::snprintf(buf, sizeof(buf), out.empty() ? "%02x" : " %02x", c);
        out += buf;
    }
    return out;
}
} // namespace

TEST(LxSerializer, VersionTagAndAttachment)
{
    TestSerializer s;
    EXPECT_STREQ("[LxSerializer_v1.0]", s.GetVersionTag().c_str());
    EXPECT_EQ(nullptr, s.GetFileHandle());

    LxTest::LogCapture log;
    EXPECT_FALSE(s.SetFileHandle(nullptr));
    EXPECT_TRUE(log.Contains("File object is invalid!", LX_LOG_ERROR));

    MemoryFile good;
    ASSERT_TRUE(s.SetFileHandle(&good));
    MemoryFile closed;
    closed.Close();
    log.Clear();
    LxLogManager::ResetLumexErrorLog();
    EXPECT_FALSE(s.SetFileHandle(&closed));
    EXPECT_TRUE(log.Contains("File object is invalid!"));
    EXPECT_EQ(&good, s.GetFileHandle()) << "a refused file must not replace the attached one";
}

TEST(LxSerializer, NumbersAreLittleEndianAndBackToBack)
{
    MemoryFile f;
    TestSerializer s;
    ASSERT_TRUE(s.SetFileHandle(&f));
    const unsigned char u8[] = {0x01, 0xff};
    const unsigned short u16 = 0x1234;
    const unsigned int u32[] = {0x01020304u, 0xdeadbeefu};
    const unsigned long long u64 = 0x0102030405060708ull;
    const float f32 = 1.0f;
    const double f64 = -2.0;
    ASSERT_TRUE(s.WriteUInt8(u8, 2));
    ASSERT_TRUE(s.WriteUInt16(&u16, 1));
    ASSERT_TRUE(s.WriteUInt32(u32, 2));
    ASSERT_TRUE(s.WriteUInt64(&u64, 1));
    ASSERT_TRUE(s.WriteFloat32(&f32, 1));
    ASSERT_TRUE(s.WriteFloat64(&f64, 1));
    EXPECT_EQ("01 ff 34 12 04 03 02 01 ef be ad de 08 07 06 05 04 03 02 01 00 00 80 3f 00 00 00 00 00 00 00 c0",
              Hex(f.Bytes()));
    EXPECT_EQ(6, f.writeCalls) << "one write per counted call";

    MemoryFile in(f.Bytes());
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(&in));
    unsigned char b8[2];
    unsigned short b16;
    unsigned int b32[2];
    unsigned long long b64;
    float bf;
    double bd;
    ASSERT_TRUE(r.ReadUInt8(b8, 2));
    ASSERT_TRUE(r.ReadUInt16(&b16, 1));
    ASSERT_TRUE(r.ReadUInt32(b32, 2));
    ASSERT_TRUE(r.ReadUInt64(&b64, 1));
    ASSERT_TRUE(r.ReadFloat32(&bf, 1));
    ASSERT_TRUE(r.ReadFloat64(&bd, 1));
    EXPECT_EQ(0xff, b8[1]);
    EXPECT_EQ(0x1234, b16);
    EXPECT_EQ(0xdeadbeefu, b32[1]);
    EXPECT_EQ(u64, b64);
    EXPECT_EQ(1.0f, bf);
    EXPECT_EQ(-2.0, bd);
    unsigned char extra;
    EXPECT_FALSE(r.ReadUInt8(&extra, 1)) << "nothing is left";
}

TEST(LxSerializer, BoolsAreOneByteZeroOrOne)
{
    MemoryFile f;
    TestSerializer s;
    ASSERT_TRUE(s.SetFileHandle(&f));
    const bool three[] = {true, false, true};
    ASSERT_TRUE(s.WriteBool(three, 3));
    EXPECT_EQ("01 00 01", Hex(f.Bytes()));

    // A bool whose storage holds 2 (filled through raw memory) is still written as 1.
    bool odd;
    const unsigned char two = 2;
    std::memcpy(&odd, &two, 1);
    ASSERT_TRUE(s.WriteBool(&odd, 1));
    EXPECT_EQ("01 00 01 01", Hex(f.Bytes()));

    MemoryFile in(std::string("\x00\x07\x01", 3));
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(&in));
    bool back[3] = {true, false, false};
    ASSERT_TRUE(r.ReadBool(back, 3));
    EXPECT_FALSE(back[0]);
    EXPECT_TRUE(back[1]) << "any non-zero byte reads as true";
    EXPECT_TRUE(back[2]);
}

TEST(LxSerializer, ZeroCountsAndRawData)
{
    MemoryFile f;
    TestSerializer s;
    ASSERT_TRUE(s.SetFileHandle(&f));
    EXPECT_TRUE(s.WriteUInt32(nullptr, 0));
    EXPECT_TRUE(s.WriteBool(nullptr, 0));
    EXPECT_TRUE(s.WriteData(nullptr, 12, 0));
    EXPECT_TRUE(f.Bytes().empty());
    EXPECT_EQ(0, f.writeCalls);

    struct Pair
    {
        short a;
        short b;
    } pairs[2] = {{1, 2}, {-1, 3}};
    ASSERT_TRUE(s.WriteData(pairs, sizeof(Pair), 2));
    LxMemoryBuffer* block = LxMemoryBuffer::Allocate(3);
    std::memcpy(block->GetData(), "xyz", 3);
    ASSERT_TRUE(s.WriteData(*block));
    delete block;
    EXPECT_EQ("01 00 02 00 ff ff 03 00 78 79 7a", Hex(f.Bytes()));

    MemoryFile in(f.Bytes());
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(&in));
    Pair back[2];
    ASSERT_TRUE(r.ReadData(back, sizeof(Pair), 2));
    EXPECT_EQ(-1, back[1].a);
    EXPECT_TRUE(r.ReadData(nullptr, 4, 0));
    char rest[4];
    EXPECT_FALSE(r.ReadData(rest, 1, 4)) << "only 3 bytes are left";
}

TEST(LxSerializer, StringsAreCountedWithoutTerminator)
{
    MemoryFile f;
    TestSerializer s;
    ASSERT_TRUE(s.SetFileHandle(&f));
    ASSERT_TRUE(s.WriteString("abc"));
    ASSERT_TRUE(s.WriteString(""));
    ASSERT_TRUE(s.WriteString(LxString("a\0b", 3)));
    EXPECT_EQ("03 00 00 00 61 62 63 00 00 00 00 03 00 00 00 61 00 62", Hex(f.Bytes()));

    MemoryFile in(f.Bytes());
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(&in));
    LxString out = "stale";
    ASSERT_TRUE(r.ReadString(out));
    EXPECT_STREQ("abc", out.c_str());
    ASSERT_TRUE(r.ReadString(out));
    EXPECT_TRUE(out.IsEmpty());
    ASSERT_TRUE(r.ReadString(out));
    ASSERT_EQ(3u, out.Length());
    EXPECT_EQ(0, out[1]);
}

TEST(LxSerializer, LongStringsSurviveTheRoundTrip)
{
    // Longer than the piece size the reader uses for large counts.
    std::string big(3u << 20 | 5, 'q');
    for (size_t i = 0; i < big.size(); i += 4097)
        big[i] = static_cast<char>('a' + i % 26);
    MemoryFile f;
    TestSerializer s;
    ASSERT_TRUE(s.SetFileHandle(&f));
    ASSERT_TRUE(s.WriteString(LxString(big.data(), static_cast<unsigned int>(big.size()))));
    MemoryFile in(f.Bytes());
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(&in));
    LxString out;
    ASSERT_TRUE(r.ReadString(out));
    ASSERT_EQ(big.size(), out.Length());
    EXPECT_EQ(0, std::memcmp(big.data(), out.c_str(), big.size()));
}

TEST(LxSerializer, StringFailures)
{
    LxTest::LogCapture log;
    {
        MemoryFile in(std::string("\x02\x00", 2));
        TestSerializer r;
        ASSERT_TRUE(r.SetFileHandle(&in));
        LxString out = "x";
        EXPECT_FALSE(r.ReadString(out));
        EXPECT_TRUE(out.IsEmpty());
        EXPECT_TRUE(log.Contains("Can't get string's length!", LX_LOG_ERROR));
    }
    {
        MemoryFile in(std::string("\x05\x00\x00\x00"
                                  "ab",
                                  6));
        TestSerializer r;
        ASSERT_TRUE(r.SetFileHandle(&in));
        LxString out;
        EXPECT_FALSE(r.ReadString(out));
        EXPECT_TRUE(out.IsEmpty());
        EXPECT_TRUE(log.Contains("Unexpected end of file while reading string!", LX_LOG_ERROR));
    }
    {
        // A corrupt count far beyond the file: fails as a short string without reserving gigabytes first.
        MemoryFile in(std::string("\xf0\xff\xff\xff"
                                  "abcdef",
                                  10));
        TestSerializer r;
        ASSERT_TRUE(r.SetFileHandle(&in));
        LxString out;
        const unsigned long long before = LxMemoryStats::ms_nPeakMemUsage.load();
        EXPECT_FALSE(r.ReadString(out));
        EXPECT_LT(LxMemoryStats::ms_nPeakMemUsage.load() - before, 8ull << 20);
    }
    {
        MemoryFile out;
        out.writeBudget = 2;
        TestSerializer w;
        ASSERT_TRUE(w.SetFileHandle(&out));
        EXPECT_FALSE(w.WriteString("abc"));
        EXPECT_TRUE(log.Contains("Unable to write string's length!", LX_LOG_ERROR));
        out.writeBudget = 5;
        EXPECT_FALSE(w.WriteString("abc")) << "the characters do not fit";
    }
}

TEST(LxSerializer, ReadLineDelimitersEndOfFileAndLength)
{
    MemoryFile in("first\r\nsecond\r\n\r\nlast");
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(&in));
    LxString line;
    bool eof = true;
    ASSERT_TRUE(r.ReadLine(line, "\r\n", 100, &eof));
    EXPECT_STREQ("first", line.c_str());
    EXPECT_FALSE(eof);
    ASSERT_TRUE(r.ReadLine(line, "\r\n", 100, &eof));
    EXPECT_STREQ("second", line.c_str());
    ASSERT_TRUE(r.ReadLine(line, "\r\n", 100, &eof));
    EXPECT_TRUE(line.IsEmpty());
    EXPECT_FALSE(eof);
    ASSERT_TRUE(r.ReadLine(line, "\r\n", 100, &eof));
    EXPECT_STREQ("last", line.c_str()) << "the text after the last delimiter";
    EXPECT_TRUE(eof);
    ASSERT_TRUE(r.ReadLine(line, "\r\n", 100, nullptr));
    EXPECT_TRUE(line.IsEmpty());

    // A lone CR is text when the delimiter is CR LF; a partial delimiter match restarts correctly.
    MemoryFile in2("a\rb\r\r\nc;;;d");
    TestSerializer r2;
    ASSERT_TRUE(r2.SetFileHandle(&in2));
    ASSERT_TRUE(r2.ReadLine(line, "\r\n", 100, &eof));
    EXPECT_STREQ("a\rb\r", line.c_str());
    ASSERT_TRUE(r2.ReadLine(line, ";;", 100, &eof));
    EXPECT_STREQ("c", line.c_str());
    ASSERT_TRUE(r2.ReadLine(line, ";;", 100, &eof));
    EXPECT_STREQ(";d", line.c_str());
    EXPECT_TRUE(eof);

    // The line stops once it is longer than maxLength; the rest is the next call's.
    MemoryFile in3("abcdefgh\n");
    TestSerializer r3;
    ASSERT_TRUE(r3.SetFileHandle(&in3));
    ASSERT_TRUE(r3.ReadLine(line, "\n", 4, &eof));
    EXPECT_STREQ("abcde", line.c_str());
    EXPECT_FALSE(eof);
    EXPECT_EQ(5u, in3.Position());
    ASSERT_TRUE(r3.ReadLine(line, "\n", 4, &eof));
    EXPECT_STREQ("fgh", line.c_str());
}

TEST(LxSerializer, WriteLineAddsNothing)
{
    MemoryFile f;
    TestSerializer s;
    ASSERT_TRUE(s.SetFileHandle(&f));
    ASSERT_TRUE(s.WriteLine("one"));
    ASSERT_TRUE(s.WriteLine(""));
    ASSERT_TRUE(s.WriteLine("two\n"));
    EXPECT_EQ("onetwo\n", f.Bytes());
}

TEST(LxSerializer, EveryOperationNeedsAnOpenFile)
{
    LxTest::LogCapture log;
    TestSerializer s;
    unsigned int v = 0;
    bool b = false;
    LxString text;
    EXPECT_FALSE(s.ReadUInt32(&v, 1));
    EXPECT_FALSE(s.WriteUInt32(&v, 1));
    EXPECT_FALSE(s.WriteUInt8(nullptr, 0)) << "even a count of 0 needs a file";
    EXPECT_FALSE(s.ReadBool(&b, 1));
    EXPECT_FALSE(s.WriteBool(&b, 1));
    EXPECT_FALSE(s.ReadString(text));
    EXPECT_FALSE(s.WriteString("x"));
    EXPECT_FALSE(s.ReadLine(text, "\n", 10, nullptr));
    EXPECT_FALSE(s.WriteLine("x"));
    EXPECT_EQ(1, log.Count("File handle is invalid!", LX_LOG_ERROR)) << "reported once until the log is reset";

    // A file closed after attaching is refused the same way.
    MemoryFile f("abcd");
    ASSERT_TRUE(s.SetFileHandle(&f));
    f.Close();
    LxLogManager::ResetLumexErrorLog();
    log.Clear();
    EXPECT_FALSE(s.ReadUInt32(&v, 1));
    EXPECT_TRUE(log.Contains("File handle is invalid!"));

    s.ReleaseFileHandle();
    EXPECT_EQ(nullptr, s.GetFileHandle());
}

TEST(LxSerializer, NullBuffersEmptyDelimiterAndShortReads)
{
    LxTest::LogCapture log;
    MemoryFile f(std::string("\x01\x02\x03", 3));
    TestSerializer s;
    ASSERT_TRUE(s.SetFileHandle(&f));
    EXPECT_FALSE(s.ReadUInt16(nullptr, 1));
    EXPECT_FALSE(s.WriteFloat32(nullptr, 2));
    EXPECT_FALSE(s.ReadBool(nullptr, 1));
    EXPECT_FALSE(s.WriteBool(nullptr, 1));
    EXPECT_EQ(1, log.Count("Buffer pointer is NULL!", LX_LOG_ERROR));

    LxString line = "kept?";
    EXPECT_FALSE(s.ReadLine(line, "", 10, nullptr));
    EXPECT_TRUE(log.Contains("Delimiter string is empty!", LX_LOG_ERROR));
    EXPECT_EQ(0u, f.Position()) << "nothing was read";

    // A file that ends inside a 32-bit value: false, and no message of its own.
    log.Clear();
    unsigned int v = 0;
    EXPECT_FALSE(s.ReadUInt32(&v, 1));
    EXPECT_EQ(0, log.ErrorCount());
    EXPECT_EQ(3u, f.Position()) << "the position stays where the short read left it";

    // Counts whose byte size overflows 32 bits are refused, not wrapped.
    EXPECT_FALSE(s.ReadData(&v, 0x10000, 0x10000));
    EXPECT_TRUE(log.Contains("Element count is too large!"));
}

TEST(LxSerializer, DiskFileRoundTrip)
{
    const std::string path = LxTest::MakeTempDir("serializer") + "/values.bin";
    {
        LxFile* file = LxFile::Open(path.c_str(), "wb");
        ASSERT_TRUE(file->IsOpen());
        TestSerializer w;
        ASSERT_TRUE(w.SetFileHandle(file));
        const unsigned int count = 2;
        const double values[] = {0.5, 1e300};
        ASSERT_TRUE(w.WriteUInt32(&count, 1));
        ASSERT_TRUE(w.WriteFloat64(values, count));
        ASSERT_TRUE(w.WriteString("name"));
        ASSERT_TRUE(w.WriteLine("text line\n"));
        w.ReleaseFileHandle();
        delete file;
    }
    EXPECT_EQ(4u + 16u + 8u + 10u, LxTest::ReadBytes(path).size());
    LxFile* file = LxFile::Open(path.c_str(), "rb");
    ASSERT_TRUE(file->IsOpen());
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(file));
    unsigned int count = 0;
    double values[2] = {};
    LxString name, line;
    bool eof = false;
    EXPECT_TRUE(r.ReadUInt32(&count, 1));
    EXPECT_TRUE(r.ReadFloat64(values, count));
    EXPECT_TRUE(r.ReadString(name));
    EXPECT_TRUE(r.ReadLine(line, "\n", 1000, &eof));
    EXPECT_EQ(2u, count);
    EXPECT_EQ(1e300, values[1]);
    EXPECT_STREQ("name", name.c_str());
    EXPECT_STREQ("text line", line.c_str());
    EXPECT_FALSE(eof);
    delete file;
}
