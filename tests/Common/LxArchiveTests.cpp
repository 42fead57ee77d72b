// Archives: folders and zip files, name normalisation, the global archive fallback, search paths, writing zip
// files, and hostile zip input (truncated, wrong CRC, lying sizes, missing names).
#include "Common/LxArchive.h"
#include "Common/LxFile.h"
#include "Common/LxFileSystemArchive.h"
#include "Common/LxSearchPath.h"
#include "Common/LxZipArchive.h"
#include "Common/LxZippedInputFile.h"
#include "support/LxTestSupport.h"
#include "support/LxTestZip.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

namespace
{
LxString S(const std::string& s)
{
    return LxString(s.c_str(), static_cast<unsigned int>(s.size()));
}

std::string ReadAll(LxFile* file)
{
    if (!file)
        return "<null>";
    unsigned int size = 0;
    char* data = static_cast<char*>(LxFile::ReadFileToBuffer(*file, &size));
    if (!data)
        return "<error>";
    std::string s(data, size);
    LxFree(data);
    return s;
}

std::string ReadEntry(const LxArchive& archive, const std::string& name)
{
    std::unique_ptr<LxFile> f(archive.OpenFile(S(name), LxString("rb")));
    return ReadAll(f.get());
}

// A folder tree and a zip file with the same layout, made once per test.
class ArchiveTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_dir = LxTest::MakeTempDir("tree");
        std::filesystem::create_directories(m_dir + "/sub");
        LxTest::WriteBytes(m_dir + "/top.txt", "top level");
        LxTest::WriteBytes(m_dir + "/sub/inner.txt", "inner file");
        m_zip = LxTest::MakeTempDir("zip") + "/pack.zip";
        LxTest::WriteBytes(m_zip, LxTest::BuildZip({{"top.txt", "zipped top"},
                                                    {"sub/inner.txt", std::string(5000, 'z')},
                                                    {"stored.bin", "raw bytes", false}}));
    }
    void TearDown() override { LxSetGlobalArchive(nullptr); }

    std::string m_dir, m_zip;
};
} // namespace

TEST_F(ArchiveTest, CreatePicksTheKindByExtension)
{
    for (const auto& c : {std::make_pair(m_zip.substr(0, m_zip.size() - 4) + ".ZIP", true),
                          std::make_pair(std::string("models.Lmx"), true), std::make_pair(std::string("zip"), false),
                          std::make_pair(m_dir, false)})
    {
        std::unique_ptr<LxArchive> archive(LxArchive::Create(S(c.first)));
        EXPECT_EQ(c.second, dynamic_cast<LxZipArchive*>(archive.get()) != nullptr) << c.first;
        EXPECT_EQ(!c.second, dynamic_cast<LxFileSystemArchive*>(archive.get()) != nullptr) << c.first;
    }
}

TEST_F(ArchiveTest, FolderArchiveNamesAndFullPaths)
{
    LxFileSystemArchive archive(S(m_dir));
    EXPECT_STREQ(archive.GetName().c_str(), (m_dir + "/").c_str());
    LxString full;
    EXPECT_TRUE(archive.FileExists(LxString("sub\\inner.txt"), &full));
    EXPECT_STREQ(full.c_str(), (m_dir + "/sub/inner.txt").c_str());
    EXPECT_EQ(ReadEntry(archive, "sub\\inner.txt"), "inner file");
    EXPECT_FALSE(archive.FileExists(LxString("nope.txt"), nullptr));
    long long stamp = 0;
    EXPECT_TRUE(archive.GetFileTime(LxString("top.txt"), stamp));

    // Writing creates the file in the folder.
    std::unique_ptr<LxFile> out(archive.OpenFile(LxString("new.txt"), LxString("wb")));
    ASSERT_TRUE(out && out->Write(LxString("fresh")));
    out.reset();
    EXPECT_EQ(LxTest::ReadBytes(m_dir + "/new.txt"), "fresh");
    EXPECT_TRUE(LxFileSystemArchive(LxString("")).GetName().IsEmpty()) << "relative to the working folder";
}

TEST_F(ArchiveTest, ZipArchiveReadsEntriesWithEitherSeparatorAndWritesNone)
{
    LxZipArchive zip(S(m_zip));
    ASSERT_TRUE(zip.IsValid());
    EXPECT_EQ(zip.GetEntryCount(), 3u);
    LxString full;
    EXPECT_TRUE(zip.FileExists(LxString("sub\\inner.txt"), &full));
    EXPECT_STREQ(full.c_str(), "sub/inner.txt");
    EXPECT_EQ(ReadEntry(zip, "sub\\inner.txt"), std::string(5000, 'z'));
    EXPECT_EQ(ReadEntry(zip, "stored.bin"), "raw bytes");
    long long stamp = 0;
    ASSERT_TRUE(zip.GetFileTime(LxString("top.txt"), stamp));
    EXPECT_EQ(stamp, 133604226000000000LL); // 2024-05-17 12:30:00 on the FILETIME scale

    // Several entries open at once, each with its own reader.
    std::unique_ptr<LxFile> a(zip.OpenFile(LxString("top.txt"), LxString("rb")));
    std::unique_ptr<LxFile> b(zip.OpenFile(LxString("stored.bin"), LxString("r")));
    char buf[16] = {};
    EXPECT_EQ(a->Read(buf, 6), 6u);
    EXPECT_EQ(b->Read(buf + 8, 3), 3u);
    EXPECT_EQ(a->Read(buf + 6, 4), 4u);
    EXPECT_EQ(std::string(buf, 10), "zipped top");
    EXPECT_EQ(std::string(buf + 8, 2), "op");

    // Entries are read-only, and a missing one is reported.
    LxTest::LogCapture log;
    for (const char* mode : {"wb", "r+b", "q"})
        EXPECT_EQ(zip.OpenFile(LxString("top.txt"), LxString(mode)), nullptr) << mode;
    EXPECT_EQ(zip.OpenFile(LxString("missing.txt"), LxString("rb")), nullptr);
    EXPECT_TRUE(log.Contains("Opening a file in a zip archive for reading and writing is not supported", LX_LOG_ERROR));
    EXPECT_TRUE(log.Contains("LxZipArchive::OpenFile(): Invalid access mode string"));
    EXPECT_TRUE(log.Contains("Couldn't open zip archive for reading!!  FileExists() fails!!"));
}

TEST_F(ArchiveTest, ZippedFilesSeekByReopening)
{
    LxZipArchive zip(S(m_zip));
    std::unique_ptr<LxFile> f(zip.OpenFile(LxString("top.txt"), LxString("rb")));
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(f->GetSize(), 10u);
    char buf[16] = {};
    EXPECT_TRUE(f->Seek(7, LxFile::SEEK_FROM_START));
    EXPECT_EQ(f->Read(buf, 3), 3u);
    EXPECT_EQ(std::string(buf, 3), "top");
    EXPECT_TRUE(f->Seek(-10, LxFile::SEEK_FROM_CURRENT)); // back past the end of the stream: reopened
    EXPECT_EQ(f->Read(buf, 6), 6u);
    EXPECT_EQ(std::string(buf, 6), "zipped");
    EXPECT_FALSE(f->Seek(1, LxFile::SEEK_FROM_END));
    EXPECT_FALSE(f->Write("x", 1));
    {
        // An entry's size is known: asking past its end is reported with both counts, and still hands back the rest.
        LxTest::LogCapture log;
        EXPECT_EQ(f->Read(buf, 16), 4u);
        EXPECT_EQ(f->Read(buf, 16), 0u);
        EXPECT_TRUE(log.Contains(
            "LxZippedInputFile::Read().  Tried to read: 16 bytes.  Only read: 4 bytes.  I/O error??", LX_LOG_ERROR));
        EXPECT_TRUE(log.Contains(
            "LxZippedInputFile::Read().  Tried to read: 16 bytes.  Only read: 0 bytes.  I/O error??", LX_LOG_ERROR));
    }
    // Whole-file and line readers ask for exactly what is left, so reaching the end is never an error.
    LxTest::LogCapture quiet;
    std::unique_ptr<LxFile> lines(zip.OpenFile(LxString("top.txt"), LxString("rb")));
    LxList<LxString> text;
    EXPECT_TRUE(lines->ReadTextLines(text));
    EXPECT_EQ(text.GetCount(), 1u);
    EXPECT_EQ(quiet.ErrorCount(), 0) << quiet.All();
}

TEST_F(ArchiveTest, GlobalArchiveIsTheFallbackButNeverAsksItself)
{
    const std::string other = LxTest::MakeTempDir("global");
    LxTest::WriteBytes(other + "/only-global.txt", "from the global archive");
    LxSetGlobalArchive(new LxFileSystemArchive(S(other)));

    LxFileSystemArchive folder(S(m_dir));
    LxString full;
    EXPECT_TRUE(folder.FileExists(LxString("only-global.txt"), &full));
    EXPECT_STREQ(full.c_str(), (other + "/only-global.txt").c_str());
    EXPECT_EQ(ReadEntry(folder, "only-global.txt"), "from the global archive");
    long long stamp;
    EXPECT_TRUE(folder.GetFileTime(LxString("only-global.txt"), stamp));

    LxZipArchive zip(S(m_zip));
    EXPECT_TRUE(zip.FileExists(LxString("only-global.txt"), nullptr));
    EXPECT_EQ(ReadEntry(zip, "only-global.txt"), "from the global archive");

    // The global archive itself: a missing file is simply missing (no endless recursion).
    EXPECT_FALSE(LxGetGlobalArchive()->FileExists(LxString("absent.txt"), nullptr));
    EXPECT_EQ(LxGetGlobalArchive()->OpenFile(LxString("absent.txt"), LxString("rb")), nullptr);

    // Replacing it deletes the old one; setting the same one again keeps it.
    LxArchive* zipGlobal = new LxZipArchive(S(m_zip));
    LxSetGlobalArchive(zipGlobal);
    LxSetGlobalArchive(zipGlobal);
    EXPECT_EQ(LxGetGlobalArchive(), zipGlobal);
    EXPECT_FALSE(zipGlobal->FileExists(LxString("absent.txt"), nullptr));
}

TEST_F(ArchiveTest, SearchPathAsksArchivesInOrder)
{
    LxSearchPath path;
    path.AddToSearchPath(S(m_zip));
    path.AddToSearchPath(S(m_dir));
    EXPECT_EQ(path.GetArchiveCount(), 2u);
    EXPECT_EQ(ReadEntry(path, "top.txt"), "zipped top"); // the zip was added first
    EXPECT_EQ(ReadEntry(path, "sub/inner.txt"), std::string(5000, 'z'));
    LxString full;
    EXPECT_TRUE(path.FileExists(LxString("top.txt"), &full));
    EXPECT_STREQ(full.c_str(), "top.txt");
    long long stamp;
    EXPECT_TRUE(path.GetFileTime(LxString("sub\\inner.txt"), stamp));
    EXPECT_FALSE(path.FileExists(LxString("nowhere.txt"), nullptr));
    EXPECT_EQ(path.OpenFile(LxString("nowhere.txt"), LxString("rb")), nullptr);
    path.ClearSearchPaths();
    EXPECT_EQ(path.GetArchiveCount(), 0u);
    EXPECT_FALSE(path.FileExists(LxString("top.txt"), nullptr));
}

TEST_F(ArchiveTest, NewZipFilesAreWrittenEntryByEntry)
{
    const std::string path = LxTest::MakeTempDir("newzip") + "/made.zip";
    {
        std::unique_ptr<LxZipArchive> zip(LxZipArchive::CreateNewZipFile(S(path)));
        ASSERT_NE(zip, nullptr);
        EXPECT_TRUE(zip->IsWriting());
        std::unique_ptr<LxFile> first(zip->OpenFile(LxString("dir\\first.txt"), LxString("wb")));
        ASSERT_NE(first, nullptr);
        {
            LxTest::LogCapture log;
            EXPECT_EQ(zip->OpenFile(LxString("second.txt"), LxString("wb")), nullptr); // one entry at a time
            EXPECT_TRUE(log.Contains("is still open for writing"));
            EXPECT_EQ(zip->OpenFile(LxString("dir/first.txt"), LxString("rb")), nullptr);
        }
        EXPECT_TRUE(first->Write(LxString("first entry ")));
        EXPECT_TRUE(first->Write(std::string(3000, 'f').c_str(), 3000));
        EXPECT_EQ(first->GetSize(), 3012u);
        first.reset();
        EXPECT_TRUE(zip->FileExists(LxString("dir/first.txt"), nullptr));
        std::unique_ptr<LxFile> second(zip->OpenFile(LxString("second.txt"), LxString("w")));
        ASSERT_NE(second, nullptr);
        second->Write(LxString("2"));
        // The archive is deleted with the entry still open: the entry is finished with it.
    }
    LxZipArchive zip(S(path));
    ASSERT_TRUE(zip.IsValid());
    EXPECT_EQ(zip.GetEntryCount(), 2u);
    EXPECT_EQ(ReadEntry(zip, "dir/first.txt"), "first entry " + std::string(3000, 'f'));
    EXPECT_EQ(ReadEntry(zip, "second.txt"), "2");

    LxTest::LogCapture log;
    EXPECT_EQ(LxZipArchive::CreateNewZipFile(S(LxTest::ScratchDir() + "/no/such/dir/x.zip")), nullptr);
    EXPECT_TRUE(log.Contains("LxZipArchive::CreateNewZipFile."));
}

TEST(LxZipHostile, TruncatedArchiveFailsTheDirectoryCache)
{
    const std::string dir = LxTest::MakeTempDir("hostile");
    const std::string good = LxTest::BuildZip({{"a.txt", "alpha"}, {"b.txt", "beta"}});
    // Cut short at several points, and not there at all.
    for (size_t keep : {size_t(0), size_t(10), good.size() / 2, good.size() - 5, std::string::npos})
    {
        const std::string path = dir + "/cut" + std::to_string(keep) + ".zip";
        if (keep != std::string::npos)
            LxTest::WriteBytes(path, good.substr(0, keep));
        LxTest::LogCapture log;
        LxZipArchive zip(S(path));
        EXPECT_FALSE(zip.IsValid()) << keep;
        EXPECT_TRUE(log.Contains("LxZipArchive.  Errors initializing directory cache!", LX_LOG_ERROR)) << keep;
        EXPECT_FALSE(zip.FileExists(LxString("a.txt"), nullptr));
        EXPECT_EQ(zip.OpenFile(LxString("a.txt"), LxString("rb")), nullptr);
    }
}

TEST(LxZipHostile, WrongCrcIsAReadError)
{
    for (bool deflate : {true, false})
    {
        const std::string path = LxTest::MakeTempDir("crc") + "/crc.zip";
        LxTest::ZipEntry e{"bad.txt", std::string(2000, 'c')};
        e.deflate = deflate;
        e.corruptCrc = true;
        LxTest::WriteBytes(path, LxTest::BuildZip({e, {"good.txt", "fine"}}));
        LxZipArchive zip(S(path));
        ASSERT_TRUE(zip.IsValid());
        LxTest::LogCapture log;
        EXPECT_EQ(ReadEntry(zip, "bad.txt"), "<error>");
        EXPECT_TRUE(log.Contains("LxZippedInputFile::Read()  unzReadCurrentFile failed."));
        EXPECT_TRUE(log.Contains("LxZippedInputFile::Read()  Error reported was: CRC error"));
        EXPECT_TRUE(log.Contains("LxFile::ReadFileToBuffer()  I/O error?!?"));
        EXPECT_EQ(ReadEntry(zip, "good.txt"), "fine"); // the rest of the archive is unharmed
    }
}

TEST(LxZipHostile, EntriesWhoseSizesLie)
{
    const std::string dir = LxTest::MakeTempDir("sizes");
    const std::string data(4000, 's');
    struct Case
    {
        const char* what;
        LxTest::ZipEntry entry;
        const char* message;
    } cases[] = {
        {"deflated, claims 3 GB", {"e", data, true, false, 3000000000LL, -1}, "declares sizes that cannot fit"},
        {"deflated, claims more than it holds", {"e", data, true, false, 4100, -1}, "Only read:"},
        {"stored, claims more than stored", {"e", data, false, false, 5000, -1}, "declares sizes that cannot fit"},
        {"stored, compressed size past the file",
         {"e", data, false, false, 900000, 900000},
         "declares sizes that cannot fit"},
    };
    for (const Case& c : cases)
    {
        const std::string path = dir + "/lie.zip";
        LxTest::WriteBytes(path, LxTest::BuildZip({c.entry}));
        LxTest::LogCapture log;
        LxZipArchive zip(S(path));
        if (!zip.IsValid())
        {
            EXPECT_TRUE(log.Contains("Errors initializing directory cache!")) << c.what;
            continue;
        }
        const std::string got = ReadEntry(zip, "e");
        // Refused, failed, or (a deflated entry claiming more than it holds) what it holds, with the short read.
        EXPECT_TRUE(got == "<null>" || got == "<error>" || got == data) << c.what << ": " << got.size() << " bytes";
        EXPECT_TRUE(log.Contains(c.message)) << c.what << "\n" << log.All();
    }
}

TEST(LxZipHostile, UnsupportedCompressionMethodsAreNamed)
{
    // What Python's zipfile writes with ZIP_BZIP2 and ZIP_LZMA: readable directories, methods minizip cannot inflate.
    const std::string path = LxTest::MakeTempDir("method") + "/method.zip";
    LxTest::ZipEntry bzip2{"b.txt", "BZh91AY&SY"}, lzma{"l.txt", "lzma bytes"};
    bzip2.method = 12;
    lzma.method = 14;
    LxTest::WriteBytes(path, LxTest::BuildZip({bzip2, lzma, {"ok.txt", "fine"}}));
    LxZipArchive zip(S(path));
    ASSERT_TRUE(zip.IsValid());
    LxTest::LogCapture log;
    EXPECT_EQ(ReadEntry(zip, "b.txt"), "<null>");
    EXPECT_EQ(ReadEntry(zip, "l.txt"), "<null>");
    EXPECT_TRUE(log.Contains("LxZipArchive::OpenFile.  Entry b.txt of " + path +
                             " is compressed with method 12 (bzip2), which is not supported: only stored (0) and "
                             "deflate (8) entries can be read."))
        << log.All();
    EXPECT_TRUE(log.Contains("method 14 (LZMA), which is not supported"));
    EXPECT_FALSE(log.Contains("declares sizes"));
    EXPECT_EQ(ReadEntry(zip, "ok.txt"), "fine");
}

TEST(LxZipHostile, DirectoryWithManyEntriesIsFoundByName)
{
    std::vector<LxTest::ZipEntry> entries;
    for (int i = 0; i < 2000; ++i)
        entries.push_back({"file" + std::to_string(i) + ".txt", std::to_string(i * 7), false});
    const std::string path = LxTest::MakeTempDir("many") + "/many.zip";
    LxTest::WriteBytes(path, LxTest::BuildZip(entries));
    LxZipArchive zip(S(path));
    ASSERT_EQ(zip.GetEntryCount(), 2000u);
    EXPECT_EQ(ReadEntry(zip, "file1999.txt"), std::to_string(1999 * 7));
    EXPECT_EQ(ReadEntry(zip, "file0.txt"), "0");
}
