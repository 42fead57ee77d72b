// The serializer's byte-exact encodings, its line reader and every failure path, through a small derived
// reader/writer over an in-memory file (and one disk round trip).
#include "support/LxTestSupport.h"

#include "Common/LxFile.h"
#include "Common/LxMemory.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxSerializer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
// A file in memory; writes beyond `writeBudget` bytes fail (to reach the write-failure paths).
class MemoryFile : public LxFile
{
public:
    explicit MemoryFile(std::string bytes) : LxFile("memory"), m_bytes(std::move(bytes)) { m_bOpen = true; }
    void Close() override { m_bOpen = false; }
    unsigned int Read(void* buffer, unsigned int bytes) override
    {
        const size_t n = m_bOpen ? std::min<size_t>(bytes, m_bytes.size() - m_pos) : 0;
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
    bool Seek(long offset, SeekOrigin) override
    {
        m_pos = static_cast<size_t>(offset);
        return true;
    }
    unsigned int GetSize() const override { return static_cast<unsigned int>(m_bytes.size()); }
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

// A serializer attached to a memory file holding `bytes`.
struct Attached : TestSerializer
{
    explicit Attached(std::string bytes = std::string()) : file(std::move(bytes)) { SetFileHandle(&file); }
    std::string Hex() const
    {
        std::string out;
        char buf[4];
        for (unsigned char c : file.Bytes())
        {
            std::snprintf(buf, sizeof(buf), out.empty() ? "%02x" : " %02x", c);
            out += buf;
        }
        return out;
    }
    MemoryFile file;
};

LxString Line(TestSerializer& r, const char* delimiter, unsigned maxLength, bool* eof)
{
    LxString line = "stale";
    EXPECT_TRUE(r.ReadLine(line, delimiter, maxLength, eof));
    return line;
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

    MemoryFile good(""), closed("");
    ASSERT_TRUE(s.SetFileHandle(&good));
    closed.Close();
    LxLogManager::ResetLumexErrorLog();
    EXPECT_FALSE(s.SetFileHandle(&closed));
    EXPECT_EQ(2, log.Count("File object is invalid!"));
    EXPECT_EQ(&good, s.GetFileHandle()) << "a refused file must not replace the attached one";
    s.ReleaseFileHandle();
    EXPECT_EQ(nullptr, s.GetFileHandle());
}

TEST(LxSerializer, NumbersAndBoolsAreLittleEndianAndBackToBack)
{
    Attached w;
    const unsigned char u8[] = {0x01, 0xff};
    const unsigned short u16 = 0x1234;
    const unsigned int u32[] = {0x01020304u, 0xdeadbeefu};
    const unsigned long long u64 = 0x0102030405060708ull;
    const float f32 = 1.0f;
    const double f64 = -2.0;
    ASSERT_TRUE(w.WriteUInt8(u8, 2) && w.WriteUInt16(&u16, 1) && w.WriteUInt32(u32, 2) && w.WriteUInt64(&u64, 1) &&
                w.WriteFloat32(&f32, 1) && w.WriteFloat64(&f64, 1));
    EXPECT_EQ("01 ff 34 12 04 03 02 01 ef be ad de 08 07 06 05 04 03 02 01 00 00 80 3f 00 00 00 00 00 00 00 c0",
              w.Hex());
    EXPECT_EQ(6, w.file.writeCalls) << "one write per counted call";

    Attached r(w.file.Bytes());
    unsigned char b8[2];
    unsigned short b16;
    unsigned int b32[2];
    unsigned long long b64;
    float bf;
    double bd;
    ASSERT_TRUE(r.ReadUInt8(b8, 2) && r.ReadUInt16(&b16, 1) && r.ReadUInt32(b32, 2) && r.ReadUInt64(&b64, 1) &&
                r.ReadFloat32(&bf, 1) && r.ReadFloat64(&bd, 1));
    EXPECT_EQ(0xff, b8[1]);
    EXPECT_EQ(0x1234, b16);
    EXPECT_EQ(0xdeadbeefu, b32[1]);
    EXPECT_EQ(u64, b64);
    EXPECT_EQ(1.0f, bf);
    EXPECT_EQ(-2.0, bd);
    EXPECT_FALSE(r.ReadUInt8(b8, 1)) << "nothing is left";

    // Bools are one byte, 0 or 1: storage holding 2 (filled through raw memory) is still written as 1, and any
    // non-zero byte reads as true.
    Attached wb;
    bool values[] = {true, false, true, false};
    const unsigned char two = 2;
    std::memcpy(&values[3], &two, 1);
    ASSERT_TRUE(wb.WriteBool(values, 4));
    EXPECT_EQ("01 00 01 01", wb.Hex());
    Attached rb(std::string("\x00\x07\x01", 3));
    bool back[3] = {true, false, false};
    ASSERT_TRUE(rb.ReadBool(back, 3));
    EXPECT_EQ((std::vector<bool>{false, true, true}), std::vector<bool>(back, back + 3));
}

TEST(LxSerializer, ZeroCountsAndRawData)
{
    Attached w;
    EXPECT_TRUE(w.WriteUInt32(nullptr, 0) && w.WriteBool(nullptr, 0) && w.WriteData(nullptr, 12, 0));
    EXPECT_EQ(0, w.file.writeCalls);

    const short pairs[2][2] = {{1, 2}, {-1, 3}};
    ASSERT_TRUE(w.WriteData(pairs, sizeof(pairs[0]), 2));
    LxCountedPtr<LxMemoryBuffer> block(LxMemoryBuffer::Allocate(3));
    std::memcpy(block->GetData(), "xyz", 3);
    ASSERT_TRUE(w.WriteData(*block));
    EXPECT_EQ("01 00 02 00 ff ff 03 00 78 79 7a", w.Hex());

    Attached r(w.file.Bytes());
    short back[2][2];
    ASSERT_TRUE(r.ReadData(back, sizeof(back[0]), 2));
    EXPECT_EQ(-1, back[1][0]);
    EXPECT_TRUE(r.ReadData(nullptr, 4, 0));
    char rest[4];
    EXPECT_FALSE(r.ReadData(rest, 1, 4)) << "only 3 bytes are left";
}

TEST(LxSerializer, StringsAreCountedWithoutTerminator)
{
    Attached w;
    ASSERT_TRUE(w.WriteString("abc") && w.WriteString("") && w.WriteString(LxString("a\0b", 3)));
    EXPECT_EQ("03 00 00 00 61 62 63 00 00 00 00 03 00 00 00 61 00 62", w.Hex());

    Attached r(w.file.Bytes());
    LxString out = "stale";
    ASSERT_TRUE(r.ReadString(out));
    EXPECT_STREQ("abc", out.c_str());
    ASSERT_TRUE(r.ReadString(out));
    EXPECT_TRUE(out.IsEmpty());
    ASSERT_TRUE(r.ReadString(out));
    ASSERT_EQ(3u, out.GetLength());
    EXPECT_EQ(0, out[1]);

    // Longer than the piece size the reader uses for large counts.
    std::string big(3u << 20 | 5, 'q');
    for (size_t i = 0; i < big.size(); i += 4097)
        big[i] = static_cast<char>('a' + i % 26);
    Attached longWriter;
    ASSERT_TRUE(longWriter.WriteString(LxString(big.data(), static_cast<unsigned int>(big.size()))));
    Attached longReader(longWriter.file.Bytes());
    ASSERT_TRUE(longReader.ReadString(out));
    EXPECT_TRUE(big == std::string(out.c_str(), out.GetLength()));
}

TEST(LxSerializer, StringFailures)
{
    LxTest::LogCapture log;
    LxString out = "x";
    Attached noLength(std::string("\x02\x00", 2));
    EXPECT_FALSE(noLength.ReadString(out));
    EXPECT_TRUE(out.IsEmpty());
    EXPECT_TRUE(log.Contains("Can't get string's length!", LX_LOG_ERROR));

    Attached cut(std::string("\x05\x00\x00\x00"
                             "ab",
                             6));
    out = "x";
    EXPECT_FALSE(cut.ReadString(out));
    EXPECT_TRUE(out.IsEmpty());
    EXPECT_TRUE(log.Contains("Unexpected end of file while reading string!", LX_LOG_ERROR));

    // A corrupt count far beyond the file: fails as a short string without reserving gigabytes first.
    Attached lying(std::string("\xf0\xff\xff\xff"
                               "abcdef",
                               10));
    const unsigned long long before = LxMemoryStats::ms_nPeakMemUsage.load();
    EXPECT_FALSE(lying.ReadString(out));
    EXPECT_LT(LxMemoryStats::ms_nPeakMemUsage.load() - before, 8ull << 20);

    Attached w;
    w.file.writeBudget = 2;
    EXPECT_FALSE(w.WriteString("abc"));
    EXPECT_TRUE(log.Contains("Unable to write string's length!", LX_LOG_ERROR));
    w.file.writeBudget = 5;
    EXPECT_FALSE(w.WriteString("abc")) << "the characters do not fit";
}

TEST(LxSerializer, ReadLineDelimitersEndOfFileAndLength)
{
    Attached r("first\r\nsecond\r\n\r\nlast");
    bool eof = true;
    EXPECT_STREQ("first", Line(r, "\r\n", 100, &eof).c_str());
    EXPECT_FALSE(eof);
    EXPECT_STREQ("second", Line(r, "\r\n", 100, &eof).c_str());
    EXPECT_STREQ("", Line(r, "\r\n", 100, &eof).c_str());
    EXPECT_FALSE(eof);
    EXPECT_STREQ("last", Line(r, "\r\n", 100, &eof).c_str()) << "the text after the last delimiter";
    EXPECT_TRUE(eof);
    EXPECT_STREQ("", Line(r, "\r\n", 100, nullptr).c_str());

    // A lone CR is text when the delimiter is CR LF; a partial delimiter match restarts correctly.
    Attached r2("a\rb\r\r\nc;;;d");
    EXPECT_STREQ("a\rb\r", Line(r2, "\r\n", 100, &eof).c_str());
    EXPECT_STREQ("c", Line(r2, ";;", 100, &eof).c_str());
    EXPECT_STREQ(";d", Line(r2, ";;", 100, &eof).c_str());
    EXPECT_TRUE(eof);

    // The line stops once it is longer than maxLength; the rest is the next call's.
    Attached r3("abcdefgh\n");
    EXPECT_STREQ("abcde", Line(r3, "\n", 4, &eof).c_str());
    EXPECT_FALSE(eof);
    EXPECT_EQ(5u, r3.file.Position());
    EXPECT_STREQ("fgh", Line(r3, "\n", 4, &eof).c_str());

    // WriteLine writes the characters, nothing more.
    Attached w;
    ASSERT_TRUE(w.WriteLine("one") && w.WriteLine("") && w.WriteLine("two\n"));
    EXPECT_EQ("onetwo\n", w.file.Bytes());
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
    Attached closed("abcd");
    closed.file.Close();
    LxLogManager::ResetLumexErrorLog();
    EXPECT_FALSE(closed.ReadUInt32(&v, 1));
    EXPECT_EQ(2, log.Count("File handle is invalid!"));
}

TEST(LxSerializer, NullBuffersEmptyDelimiterAndShortReads)
{
    LxTest::LogCapture log;
    Attached s(std::string("\x01\x02\x03", 3));
    EXPECT_FALSE(s.ReadUInt16(nullptr, 1));
    EXPECT_FALSE(s.WriteFloat32(nullptr, 2));
    EXPECT_FALSE(s.ReadBool(nullptr, 1));
    EXPECT_FALSE(s.WriteBool(nullptr, 1));
    EXPECT_EQ(1, log.Count("Buffer pointer is NULL!", LX_LOG_ERROR));

    LxString line = "kept?";
    EXPECT_FALSE(s.ReadLine(line, "", 10, nullptr));
    EXPECT_TRUE(log.Contains("Delimiter string is empty!", LX_LOG_ERROR));
    EXPECT_EQ(0u, s.file.Position()) << "nothing was read";

    // A file that ends inside a 32-bit value: false, and no message of its own.
    log.Clear();
    unsigned int v = 0;
    EXPECT_FALSE(s.ReadUInt32(&v, 1));
    EXPECT_EQ(0, log.ErrorCount());
    EXPECT_EQ(3u, s.file.Position()) << "the position stays where the short read left it";

    // Counts whose byte size overflows 32 bits are refused, not wrapped.
    EXPECT_FALSE(s.ReadData(&v, 0x10000, 0x10000));
    EXPECT_TRUE(log.Contains("Element count is too large!"));
}

TEST(LxSerializer, DiskFileRoundTrip)
{
    const std::string path = LxTest::MakeTempDir("serializer") + "/values.bin";
    const double values[] = {0.5, 1e300};
    {
        std::unique_ptr<LxFile> file(LxFile::Open(path.c_str(), "wb"));
        TestSerializer w;
        ASSERT_TRUE(w.SetFileHandle(file.get()));
        ASSERT_TRUE(w.WriteFloat64(values, 2) && w.WriteString("name") && w.WriteLine("text line\n"));
    }
    EXPECT_EQ(16u + 8u + 10u, LxTest::ReadBytes(path).size());
    std::unique_ptr<LxFile> file(LxFile::Open(path.c_str(), "rb"));
    TestSerializer r;
    ASSERT_TRUE(r.SetFileHandle(file.get()));
    double back[2] = {};
    LxString name;
    bool eof = true;
    EXPECT_TRUE(r.ReadFloat64(back, 2) && r.ReadString(name));
    EXPECT_EQ(1e300, back[1]);
    EXPECT_STREQ("name", name.c_str());
    EXPECT_STREQ("text line", Line(r, "\n", 1000, &eof).c_str());
    EXPECT_FALSE(eof);
}
