// LxFile and LxStandardFile: the stream operations, the whole-file helpers with their exact line splitting, their
// failure messages, and the file-access log.
#include "Common/LxFile.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxStandardFile.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{
std::unique_ptr<LxFile> OpenFile(const std::string& path, const char* mode)
{
    return std::unique_ptr<LxFile>(LxFile::Open(LxString(path.c_str()), LxString(mode)));
}

std::vector<std::string> Lines(const std::string& bytes)
{
    LxList<LxString> lines;
    LxFile::SplitTextLines(bytes.data(), static_cast<unsigned int>(bytes.size()), lines);
    std::vector<std::string> out;
    for (const LxString& l : lines)
        out.emplace_back(l.c_str(), l.GetLength());
    return out;
}
} // namespace

TEST(LxStandardFile, ReadWriteSeekAndSize)
{
    const std::string path = LxTest::MakeTempDir("std") + "/data.bin";
    {
        auto f = OpenFile(path, "wb");
        ASSERT_TRUE(f->IsOpen());
        EXPECT_TRUE(f->Write("0123456789", 10));
        EXPECT_TRUE(f->Write(LxString("abc")));
        EXPECT_TRUE(f->Flush());
        EXPECT_EQ(f->GetSize(), 13u);
    }
    auto f = OpenFile(path, "rb");
    ASSERT_TRUE(f->IsOpen());
    EXPECT_EQ(f->GetSize(), 13u);
    char buf[32] = {};
    EXPECT_EQ(f->Read(buf, 4), 4u);
    EXPECT_EQ(std::string(buf, 4), "0123");
    EXPECT_EQ(f->GetSize(), 13u); // sizing keeps the position
    EXPECT_TRUE(f->Seek(0, LxFile::SEEK_FROM_CURRENT));
    EXPECT_EQ(f->Read(buf, 1), 1u);
    EXPECT_EQ(buf[0], '4');
    EXPECT_TRUE(f->Seek(-3, LxFile::SEEK_FROM_END));
    EXPECT_EQ(f->Read(buf, 3), 3u);
    EXPECT_EQ(std::string(buf, 3), "abc");
    EXPECT_TRUE(f->Seek(2, LxFile::SEEK_FROM_START));
    {
        // Reading past the end is a short count, not an error, and says nothing.
        LxTest::LogCapture log;
        EXPECT_EQ(f->Read(buf, 32), 11u);
        EXPECT_EQ(f->Read(buf, 32), 0u);
        EXPECT_EQ(log.ErrorCount(), 0);
    }
    f->Close();
    EXPECT_FALSE(f->IsOpen());
    EXPECT_EQ(f->Read(buf, 1), 0u);
    EXPECT_FALSE(f->Write("x", 1));
    EXPECT_FALSE(f->Seek(0, LxFile::SEEK_FROM_START));
    EXPECT_EQ(f->GetSize(), 0u);
    EXPECT_FALSE(f->Flush());
}

TEST(LxStandardFile, ExistenceTimeStampsAndFailedOpens)
{
    const std::string path = LxTest::MakeTempDir("stamp") + "/t.txt";
    LxTest::WriteBytes(path, "x");
    long long stamp = 0;
    ASSERT_TRUE(LxFile::GetTimeStamp(LxString(path.c_str()), stamp));
    // 100-ns ticks since 1601: 2020-01-01 is 132223104000000000.
    EXPECT_GT(stamp, 132223104000000000LL);
    EXPECT_TRUE(LxFile::Exists(LxString(path.c_str())));
    EXPECT_FALSE(LxFile::Exists(LxString("missing-file.txt")));
    EXPECT_FALSE(LxFile::GetTimeStamp(LxString("missing-file.txt"), stamp));
    // A failed open still returns a file, a closed one.
    auto f = OpenFile(LxTest::ScratchDir() + "/missing/nothing.txt", "rb");
    ASSERT_NE(f, nullptr);
    EXPECT_FALSE(f->IsOpen());
}

TEST(LxStandardFile, TextModeTranslatesLineEndsOnWindowsOnly)
{
    const std::string path = LxTest::MakeTempDir("text") + "/t.txt";
    {
        auto f = OpenFile(path, "wt");
        f->Write(LxString("one\ntwo\n"));
    }
#if defined(_WIN32)
    EXPECT_EQ(LxTest::ReadBytes(path), "one\r\ntwo\r\n");
#else
    EXPECT_EQ(LxTest::ReadBytes(path), "one\ntwo\n");
#endif
    auto f = OpenFile(path, "rt");
    unsigned int size = 0;
    char* data = static_cast<char*>(LxFile::ReadFileToBuffer(*f, &size));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(std::string(data, size), "one\ntwo\n"); // the text-mode read is shorter than the size on Windows
    EXPECT_EQ(data[size], '\0');
    LxFree(data);
}

TEST(LxFileLines, CarriageReturnsAndLineFeedsAppendedOrJoined)
{
    EXPECT_EQ(Lines("a\r\nb\n\rc"), (std::vector<std::string>{"a", "b", "", "c"}));
    EXPECT_EQ(Lines("one\ntwo\n"), (std::vector<std::string>{"one", "two"})); // no empty last line
    EXPECT_EQ(Lines("\n\n"), (std::vector<std::string>{"", ""}));
    EXPECT_EQ(Lines("\r"), (std::vector<std::string>{""}));
    EXPECT_EQ(Lines("tail"), (std::vector<std::string>{"tail"}));
    EXPECT_EQ(Lines(""), (std::vector<std::string>{}));
    EXPECT_EQ(Lines("x\r\r\ny"), (std::vector<std::string>{"x", "", "y"}));

    // ReadTextLines appends to the list; ReadFileToString joins with LF.
    const std::string path = LxTest::MakeTempDir("lines") + "/l.txt";
    LxTest::WriteBytes(path, std::string("a\r\nb\n\rc", 7));
    auto f = OpenFile(path, "rb");
    LxList<LxString> lines;
    lines.Add(LxString("kept"));
    ASSERT_TRUE(f->ReadTextLines(lines));
    ASSERT_EQ(lines.GetCount(), 5u);
    EXPECT_STREQ(lines.GetFirst().c_str(), "kept"); // the list is not cleared
    EXPECT_STREQ(lines.GetLast().c_str(), "c");

    f->Seek(0, LxFile::SEEK_FROM_START);
    EXPECT_STREQ(LxFile::ReadFileToString(*f).c_str(), "a\nb\n\nc\n");
}

TEST(LxFileWhole, HelpersReportTheirFailures)
{
    LxTest::LogCapture log;
    auto closed = OpenFile(LxTest::ScratchDir() + "/missing/x.bin", "rb");
    unsigned int size = 0;
    EXPECT_EQ(LxFile::ReadFileToBuffer(*closed, &size), nullptr);
    EXPECT_TRUE(log.Contains("LxFile::ReadFileToBuffer() Attempted to read from an invalid LxFile?!?", LX_LOG_ERROR));
    EXPECT_EQ(LxFile::ReadFileToMemoryBuffer(*closed), nullptr);
    EXPECT_TRUE(log.Contains("LxFile::ReadFileToMemoryBuffer().  Attempted to read from an invalid LxFile?!?"));
    LxList<LxString> lines;
    EXPECT_FALSE(closed->ReadTextLines(lines));
    EXPECT_TRUE(log.Contains("LxFile::ReadTextLines().  Error returned from LxFile::ReadFileToBuffer()"));
    EXPECT_TRUE(LxFile::ReadFileToString(*closed).IsEmpty());
    EXPECT_TRUE(log.Contains("LxFile::ReadFileToString().  Error returned LxFile::ReadTextLines()"));

    const std::string missing = LxTest::ScratchDir() + "/missing/y.bin";
    EXPECT_FALSE(LxFile::LoadBinaryFile(LxString(missing.c_str())));
    EXPECT_TRUE(log.Contains("LxFile::LoadBinaryFile().  Failed to open file: " + missing));
}

TEST(LxFileWhole, LoadBinaryFileAndMemoryBuffers)
{
    const std::string path = LxTest::MakeTempDir("bin") + "/b.bin";
    std::string bytes("\x00\x01\xff\r\n", 5);
    LxTest::WriteBytes(path, bytes);
    LxCountedPtr<LxMemoryBuffer> buffer = LxFile::LoadBinaryFile(LxString(path.c_str()));
    ASSERT_TRUE(buffer);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer->GetData()), buffer->GetSize()), bytes);

    auto f = OpenFile(path, "rb");
    std::unique_ptr<LxMemoryBuffer> mb(LxFile::ReadFileToMemoryBuffer(*f));
    ASSERT_NE(mb, nullptr);
    EXPECT_EQ(mb->GetSize(), 5u);

    const std::string empty = LxTest::MakeTempDir("empty") + "/e.bin";
    LxTest::WriteBytes(empty, "");
    LxCountedPtr<LxMemoryBuffer> none = LxFile::LoadBinaryFile(LxString(empty.c_str()));
    ASSERT_TRUE(none);
    EXPECT_EQ(none->GetSize(), 0u);
}

TEST(LxFileAccessLog, RecordsSuccessfulOpensOnly)
{
    const std::string dir = LxTest::MakeTempDir("access");
    const std::string logPath = dir + "/access.txt";
    const std::string present = dir + "/present.txt";
    LxTest::WriteBytes(present, "x");
    LxFile::EnableFileAccessLogging(LxString(logPath.c_str()));
    OpenFile(present, "rb");
    OpenFile(dir + "/absent.txt", "rb");
    OpenFile(dir + "/written.txt", "wb");
    // Flushed per line: complete while still open.
    const std::string text = LxTest::ReadBytes(logPath);
    LxFile::CloseFileAccessLog();
    OpenFile(present, "rt");
#if defined(_WIN32)
    const char* eol = "\r\n";
#else
    const char* eol = "\n";
#endif
    EXPECT_EQ(text, "rb " + present + eol + "wb " + dir + "/written.txt" + eol);
    EXPECT_EQ(LxTest::ReadBytes(logPath), text);

    LxTest::LogCapture log;
    LxFile::EnableFileAccessLogging(LxString((dir + "/no/such/folder.txt").c_str()));
    EXPECT_TRUE(log.Contains("Error opening file access log file " + dir + "/no/such/folder.txt"));
    LxFile::CloseFileAccessLog();
}
