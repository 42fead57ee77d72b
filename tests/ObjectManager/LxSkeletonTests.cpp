// Skeletons: bone lookup, the world-space conversion against matrices worked out by hand, the skeleton file in
// both versions (exact text of what is written) and every way a skeleton file can be wrong.
#include "Common/LxFile.h"
#include "Common/LxFileSystemArchive.h"
#include "LxModelTestUtil.h"
#include "ObjectManager/LxModelData.h"
#include "ObjectManager/LxSkeleton.h"
#include "support/LxTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using LxModelTest::Messages;
using LxModelTest::S;

namespace
{
LxMatrix4 M(std::initializer_list<float> columnMajor)
{
    return LxMatrix4(columnMajor.begin());
}

LxMatrix4 RotZ90()
{
    return M({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

LxMatrix4 Translation(float x, float y, float z)
{
    LxMatrix4 m;
    return m.MakeTranslation(x, y, z);
}

// root (bind offset identity) -> arm (offset: translation 0 0 3) -> hand (offset: uniform scale 2).
LxSkeleton MakeArm()
{
    LxSkeleton s;
    LxMatrix4 scale;
    scale.MakeScaling(2, 2, 2);
    EXPECT_TRUE(s.AddBone(LxBone("root", LxMatrix4()), ""));
    EXPECT_TRUE(s.AddBone(LxBone("arm", Translation(0, 0, 3)), "root"));
    EXPECT_TRUE(s.AddBone(LxBone("hand", scale), "arm"));
    return s;
}

std::unique_ptr<LxSkeleton> ReadSkeleton(const std::string& text)
{
    const std::string path = LxTest::MakeTempDir("skeleton") + "/skeleton.txt";
    LxTest::WriteBytes(path, text);
    std::unique_ptr<LxFile> file(LxFile::Open(S(path), "rb"));
    return std::unique_ptr<LxSkeleton>(LxSkeleton::CreateFromFile(*file));
}

std::string WriteSkeleton(const LxSkeleton& skeleton)
{
    const std::string path = LxTest::MakeTempDir("skeleton") + "/out.txt";
    {
        std::unique_ptr<LxFile> file(LxFile::Open(S(path), "wb"));
        EXPECT_TRUE(skeleton.WriteToFile(*file));
    }
    return LxTest::ReadBytes(path);
}

const char* const kArmV2 = "[LxSkeleton v2]\n3\n"
                           "root\n\n"
                           "1.000000 0.000000 0.000000 0.000000 0.000000 1.000000 0.000000 0.000000 0.000000 0.000000 "
                           "1.000000 0.000000 0.000000 0.000000 0.000000 1.000000 \n"
                           "arm\nroot\n"
                           "1.000000 0.000000 0.000000 0.000000 0.000000 1.000000 0.000000 0.000000 0.000000 0.000000 "
                           "1.000000 0.000000 0.000000 0.000000 3.000000 1.000000 \n"
                           "hand\narm\n"
                           "2.000000 0.000000 0.000000 0.000000 0.000000 2.000000 0.000000 0.000000 0.000000 0.000000 "
                           "2.000000 0.000000 0.000000 0.000000 0.000000 1.000000 \n";
} // namespace

TEST(Skeleton, LooksUpBonesAndRefusesUnknownParentsAndTakenNames)
{
    LxSkeleton s = MakeArm();
    ASSERT_EQ(3u, s.GetNumBones());
    EXPECT_STREQ("arm", s.GetBoneByIndex(1)->GetName().c_str());
    EXPECT_EQ(s.GetBoneByIndex(2), s.GetBoneByName("hand"));
    EXPECT_EQ(nullptr, s.GetBoneByIndex(3));
    EXPECT_EQ(nullptr, s.GetBoneByName("leg"));
    EXPECT_EQ(-1, s.GetParentIndex(0));
    EXPECT_EQ(1, s.GetParentIndex(2));
    Messages log;
    EXPECT_FALSE(s.AddBone(LxBone("finger", LxMatrix4()), "palm"));
    EXPECT_FALSE(s.AddBone(LxBone("arm", LxMatrix4()), "root"));
    EXPECT_EQ(3u, s.GetNumBones());
    EXPECT_EQ((std::vector<std::string>{"LxSkeleton::AddBone.  Parent bone 'palm' of bone 'finger' not found.",
                                        "LxSkeleton::AddBone.  A bone named 'arm' already exists."}),
              log.Errors());
}

TEST(Skeleton, ConvertsBonesToWorldSpaceGivenOneMatrixPerBone)
{
    const LxSkeleton s = MakeArm();
    // Parent-relative poses: root moved 1 along x, arm turned 90 degrees about z, hand 2 along the arm's y.
    LxArray<LxMatrix4> m;
    m.Add(Translation(1, 0, 0));
    m.Add(RotZ90());
    m.Add(Translation(0, 2, 0));
    ASSERT_TRUE(s.ConvertBonesToWorldSpace(m));
    // root: T(1,0,0) x I.
    EXPECT_EQ(M({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1}), m[0]);
    // arm: T(1,0,0) Rz T(0,0,3): rotated axes, translation (1, 0, 3).
    EXPECT_EQ(M({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 3, 1}), m[1]);
    // hand: T(1,0,0) Rz T(0,2,0) S(2): Rz takes (0,2,0) to (-2,0,0), so the origin lands at (-1,0,0).
    EXPECT_EQ(M({0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, -1, 0, 0, 1}), m[2]);

    // A wrong matrix count is refused and leaves the matrices alone.
    m.RemoveLast();
    Messages log;
    EXPECT_FALSE(s.ConvertBonesToWorldSpace(m));
    EXPECT_EQ(M({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 3, 1}), m[1]);
    EXPECT_EQ(std::vector<std::string>{"LxSkeleton::ConvertBonesToWorldSpace.  Got 2 matrices for 3 bones."},
              log.Errors());
}

TEST(Skeleton, WritesVersion2AndReadsBothVersions)
{
    const std::string text = WriteSkeleton(MakeArm());
    EXPECT_EQ(kArmV2, text);
    std::unique_ptr<LxSkeleton> back = ReadSkeleton(text);
    ASSERT_TRUE(back);
    EXPECT_EQ(text, WriteSkeleton(*back));
    EXPECT_EQ(Translation(0, 0, 3), back->GetBoneByName("arm")->GetMatrix());

    // Version 1 holds the transpose: the translation sits at the end of each of the first three rows.
    std::unique_ptr<LxSkeleton> s = ReadSkeleton("[LxSkeleton v1]\r\n1\r\nroot\r\n\r\n"
                                                 "1 0 0 4 0 1 0 5 0 0 1 6 0 0 0 1\r\n");
    ASSERT_TRUE(s);
    EXPECT_EQ(Translation(4, 5, 6), s->GetBoneByIndex(0)->GetMatrix());
}

TEST(Skeleton, RejectsBrokenFiles)
{
    const std::string identity = "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n";
    const struct
    {
        std::string text;
        std::string message;
    } cases[] = {
        {"", "Not enough lines in Skeleton file!"},
        {"[LxSkeleton v3]\n1\n", "Unsupported skeleton file version!  You may need to re-build Lumex."},
        {"[LxSkeleton v2] \n0\n", "Unsupported skeleton file version!  You may need to re-build Lumex."},
        {"[LxSkeleton v2]\n", "Not enough lines in Skeleton file!"},
        {"[LxSkeleton v2]\nthree\n", "Syntax error in skeleton file."},
        {"[LxSkeleton v2]\n-1\n", "Syntax error in skeleton file."},
        {"[LxSkeleton v2]\n2\nroot\n\n" + identity + "arm\nroot\n", "Not enough lines in skeleton file."},
        {"[LxSkeleton v2]\n4000000000\n", "Not enough lines in skeleton file."},
        {"[LxSkeleton v2]\n1\nroot\n\n1 0 0 0 0 1 0 0 0 0 1 0 0 0 0\n", "Syntax error in skeleton file."},
        {"[LxSkeleton v2]\n1\nroot\n\n1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 1\n", "Syntax error in skeleton file."},
        {"[LxSkeleton v2]\n1\nroot\n\n1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 x\n", "Syntax error in skeleton file."},
        {"[LxSkeleton v2]\n1\n\n\n" + identity, "Syntax error in skeleton file."},
        {"[LxSkeleton v2]\n1\narm\nroot\n" + identity,
         "LxSkeleton::AddBone.  Parent bone 'root' of bone 'arm' not found."},
        // A child listed before its parent would break the one-pass conversion.
        {"[LxSkeleton v2]\n2\narm\nroot\n" + identity + "root\n\n" + identity,
         "LxSkeleton::AddBone.  Parent bone 'root' of bone 'arm' not found."},
        {"[LxSkeleton v2]\n2\nroot\n\n" + identity + "root\n\n" + identity,
         "LxSkeleton::AddBone.  A bone named 'root' already exists."},
    };
    for (const auto& c : cases)
    {
        Messages log;
        EXPECT_FALSE(ReadSkeleton(c.text)) << c.text;
        EXPECT_EQ(std::vector<std::string>{c.message}, log.Errors()) << c.text;
    }
}

TEST(Skeleton, ModelArchivesLoadWithoutSkeletonButNotWithABrokenOne)
{
    const std::string dir = LxTest::MakeTempDir("noskeleton");
    LxTest::WriteBytes(dir + "/manifest.txt", "[LxModelData Manifest v1]\n");
    std::unique_ptr<LxModelData> model(LxModelData::LoadFromPath(S(dir), true));
    ASSERT_TRUE(model);
    EXPECT_EQ(nullptr, model->GetSkeleton());

    LxTest::WriteBytes(dir + "/skeleton.txt", "[LxSkeleton v2]\n5\n");
    Messages log;
    EXPECT_FALSE(LxModelData::LoadFromPath(S(dir), true));
    EXPECT_EQ((std::vector<std::string>{"Not enough lines in skeleton file.",
                                        "Problems reading skeleton from file: skeleton.txt in archive: " +
                                            LxModelTest::ArchiveName(dir)}),
              log.Errors());
}
