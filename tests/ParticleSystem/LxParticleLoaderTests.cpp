// Group loading from archives: a folder and a zip file with texture remapping, and every way an archive can be
// damaged or incomplete, each with its message.
#include "ParticleSystem/LxParticleTestUtil.h"

#include "Common/LxArchive.h"
#include "ParticleSystem/LxParticleGroupLoader.h"
#include "ParticleSystem/LxParticleSystemDesc.h"
#include "support/LxTestZip.h"

#include <gtest/gtest.h>

using LxPxTest::ErrorMessages;

namespace
{
const std::string kParticleText = "Lumex Particle Editor Project 1.0\n"
                                  "ParticleSystem GPUBillboard Fire\n"
                                  "    Effect \"fire.fx\"\n"
                                  "    Texture Main { tDiffuse \"art\\flame.tga\" tNoise \"noise.png\" }\n"
                                  "EndParticleSystem\n";
const std::string kMapping = "// written by the exporter\n"
                             "\n"
                             "art/flame.tga = \"flame.png\"\r\n";

// A folder archive holding `files` (name -> contents); returns its path.
std::string MakeFolder(const std::string& hint, const std::map<std::string, std::string>& files)
{
    const std::string dir = LxTest::MakeTempDir(hint);
    for (const auto& f : files)
        LxTest::WriteBytes(dir + "/" + f.first, f.second);
    return dir;
}

std::string MakeZip(const std::string& hint, const std::vector<LxTest::ZipEntry>& entries, size_t cut = 0)
{
    std::string bytes = LxTest::BuildZip(entries);
    bytes.resize(bytes.size() - cut);
    const std::string path = LxTest::MakeTempDir(hint) + "/group.zip";
    LxTest::WriteBytes(path, bytes);
    return path;
}
} // namespace

TEST(LxParticleGroupLoader, LoadsFromFolderAndZipWithRemappedTextures)
{
    const std::map<std::string, std::string> files = {{"particleFile.txt", kParticleText},
                                                      {"texturemapping.txt", kMapping},
                                                      {"flame.png", "png"},
                                                      {"noise.png", "png"}};
    std::vector<LxTest::ZipEntry> entries;
    for (const auto& f : files)
        entries.push_back(LxTest::ZipEntry{f.first, f.second});
    const std::string sources[] = {MakeFolder("px-folder", files), MakeZip("px-zip", entries)};
    for (const std::string& source : sources)
    {
        SCOPED_TRACE(source);
        LxTest::LogCapture capture;
        LxPxTest::TestBuilder builder;
        std::unique_ptr<LxParticleGroupDesc> group(LxParticleGroupLoader::Load(LxPxTest::Lx(source), builder));
        ASSERT_TRUE(group) << capture.All();
        EXPECT_EQ(0, capture.ErrorCount()) << capture.All();
        const LxParticleTextureSet& set = group->GetSystem(0).GetTextureSet(0);
        EXPECT_STREQ("flame.png", set.FindFile("tDiffuse")->c_str());
        EXPECT_STREQ("noise.png", set.FindFile("tNoise")->c_str());
        EXPECT_EQ((std::vector<std::string>{"Fire:flame.png", "Fire:noise.png"}), builder.textures);
    }
}

TEST(LxParticleGroupLoader, DamagedArchivesAreReported)
{
    const std::string good = kParticleText;
    const std::string noTextures = "Lumex Particle Editor Project 1.0\n";
    struct Case
    {
        const char* what;
        std::string path;
        std::vector<std::string> messages; // "%a" stands for the archive's path
    };
    std::vector<Case> cases = {
        {"no path", "", {"rParticleFile is is invalid"}},
        {"no particle file",
         MakeFolder("px-none", {{"texturemapping.txt", kMapping}}),
         {"Error opening particle file in archive \"%a\""}},
        {"empty particle file",
         MakeFolder("px-empty", {{"particleFile.txt", ""}}),
         {"%a/particleFile.txt(1) : syntax error, unexpected end of file, expecting Lumex Particle Editor "
          "Project",
          "Invalid particle group file \"%a/particleFile.txt\""}},
        {"truncated particle file",
         MakeFolder("px-cut", {{"particleFile.txt", good.substr(0, good.find("EndParticleSystem"))}}),
         {"%a/particleFile.txt(5) : syntax error, unexpected end of file",
          "Invalid particle group file \"%a/particleFile.txt\""}},
        {"shader that does not load",
         MakeFolder("px-shader", {{"particleFile.txt", "Lumex Particle Editor Project 1.0\nParticleSystem "
                                                       "GPUBillboard F\nEffect \"missing.fx\"\nEndParticleSystem\n"}}),
         {"%a/particleFile.txt(3) : Unable to load particle shader: missing.fx",
          "Invalid particle group file \"%a/particleFile.txt\""}},
        {"malformed texture mapping",
         MakeFolder("px-badmap", {{"particleFile.txt", noTextures}, {"texturemapping.txt", "flame.png\n"}}),
         {"Error reading texture remapping data from \"%a/texturemapping.txt\""}},
        {"missing texture",
         MakeFolder("px-notex", {{"particleFile.txt", good}, {"texturemapping.txt", kMapping}, {"flame.png", "x"}}),
         {"Can't find referenced texture \"noise.png\" in archive \"%a\"", "Error loading textures from \"%a\""}},
        {"texture that cannot be created",
         MakeFolder("px-broken", {{"particleFile.txt", good}, {"flame.png", "x"}, {"noise.png", "x"}}),
         {"Can't find referenced texture \"art/flame.tga\" in archive \"%a\"", "Error loading textures from \"%a\""}},
        {"empty zip", MakeZip("px-zip0", {}, 0), {"Error opening particle file in archive \"%a\""}},
        {"truncated zip",
         MakeZip("px-zipcut", {{"particleFile.txt", good}}, 30),
         {"LxZipArchive.  Errors initializing directory cache!", "Error opening particle file in archive \"%a\""}},
        {"corrupt particle file in a zip",
         MakeZip("px-zipcrc", {LxTest::ZipEntry{"particleFile.txt", good, true, true}}),
         {"LxZippedInputFile::Read()  Error reported was: CRC error",
          "LxZippedInputFile::Read()  unzReadCurrentFile failed.", "LxFile::ReadFileToBuffer()  I/O error?!?",
          "Error reading particle file \"%a/particleFile.txt\""}},
        {"texture mapping that cannot be opened",
         MakeZip("px-zipmap", {{"particleFile.txt", noTextures},
                               LxTest::ZipEntry{"texturemapping.txt", kMapping, true, false, -1, 1 << 30}}),
         {"LxZipArchive::OpenFile.  Entry texturemapping.txt of %a declares sizes that cannot fit the archive",
          "Error opening texture remapping file in archive \"%a\""}},
    };
    // An empty zip file is zero bytes, not an archive without entries.
    LxTest::WriteBytes(cases[8].path, "");
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.what);
        LxTest::LogCapture capture;
        LxPxTest::TestBuilder builder;
        EXPECT_FALSE(LxParticleGroupLoader::Load(LxPxTest::Lx(c.path), builder));
        const std::multiset<std::string> logged = ErrorMessages(capture);
        for (std::string message : c.messages)
        {
            for (size_t at; (at = message.find("%a")) != std::string::npos;)
                message.replace(at, 2, c.path);
            bool found = false;
            for (const std::string& line : logged)
                found = found || line.rfind(message, 0) == 0;
            EXPECT_TRUE(found) << "missing: " << message << "\nlogged:\n" << capture.All();
        }
    }
}

TEST(LxParticleGroupLoader, TextureCreationFailureNamesTheSystem)
{
    const std::string dir =
        MakeFolder("px-create", {{"particleFile.txt", "Lumex Particle Editor Project 1.0\nParticleSystem GPUBillboard "
                                                      "Sparks Effect \"s.fx\" Texture T { t \"broken.png\" }\n"
                                                      "EndParticleSystem\n"},
                                 {"broken.png", "x"}});
    LxTest::LogCapture capture;
    LxPxTest::TestBuilder builder;
    std::unique_ptr<LxArchive> archive(LxArchive::Create(LxPxTest::Lx(dir)));
    EXPECT_FALSE(LxParticleGroupLoader::LoadFromArchive(*archive, builder));
    const std::multiset<std::string> expected = {"Could not create texture for particle system \"Sparks\": broken.png",
                                                 "Error loading textures from \"" + dir + "\""};
    EXPECT_EQ(expected, ErrorMessages(capture)) << capture.All();
}

TEST(LxParticleGroupLoader, TextureMappingLines)
{
    LxParticleGroupLoader::TextureMapping mapping;
    EXPECT_TRUE(
        LxParticleGroupLoader::ParseTextureMapping("a.tga=b.png\n  \"dir\\c d.tga\" = \"e f.png\"  \n", mapping));
    EXPECT_EQ(2u, mapping.GetCount());
    EXPECT_STREQ("b.png", mapping.FindValue("a.tga")->c_str());
    EXPECT_STREQ("e f.png", mapping.FindValue("dir/c d.tga")->c_str());
    for (const char* bad : {"x.tga =", "= y.png", "just a name"})
        EXPECT_FALSE(LxParticleGroupLoader::ParseTextureMapping(bad, mapping)) << bad;
}
