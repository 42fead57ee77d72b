// Animation sets (the curve map, both manifest versions in folders and zips, byte-exact round trips, damaged
// archives), the set utilities and the bone animator.
#include "LxAnimationTestUtil.h"
#include "support/LxTestSupport.h"
#include "support/LxTestZip.h"

#include "Common/LxMatrix4.h"
#include "Common/LxQuat.h"
#include "Common/LxZipArchive.h"
#include "ObjectManager/LxAnimationSet.h"
#include "ObjectManager/LxAnimationUtils.h"
#include "ObjectManager/LxBone.h"
#include "ObjectManager/LxBoneAnimator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <memory>

using namespace LxAnimTest;
typedef LxAnimationCurve C;
typedef LxCountedPtr<LxAnimationCurve> CurvePtr;

namespace
{
CurvePtr Sample(C::AnimationDataType type, unsigned int keys, unsigned int seed)
{
    return CurvePtr(MakeSampleCurve(type, keys, seed));
}

// A set with one curve of every data type (and an empty one).
void FillSet(LxAnimationSet& set)
{
    for (unsigned int type = 0; type < C::DATA_TYPE_COUNT; ++type)
        ASSERT_TRUE(
            set.AddCurve(S("curve." + std::to_string(type)), Sample(C::AnimationDataType(type), 3 + type, type)));
    ASSERT_TRUE(set.AddCurve("empty", CurvePtr(new LxKeyframeCurve(C::DATA_FLOAT))));
}

// The library's own messages, without what the archive layer says on the way.
Lines OwnErrors(const Messages& log)
{
    Lines own;
    for (const std::string& e : log.Errors())
        if (e.compare(0, 12, "LxZipArchive") != 0 && e.compare(0, 17, "LxZippedInputFile") != 0 &&
            e.compare(0, 26, "Couldn't open zip archive ") != 0)
            own.push_back(e);
    return own;
}

std::string ReadEntry(const LxArchive& archive, const std::string& name)
{
    std::unique_ptr<LxFile> file(archive.OpenFile(S(name), "rb"));
    if (!file)
        return "<missing " + name + ">";
    std::string bytes(file->GetSize(), '\0');
    if (!bytes.empty())
        file->Read(&bytes[0], static_cast<unsigned int>(bytes.size()));
    return bytes;
}

// The files a saved set consists of, by name.
std::map<std::string, std::string> SetFiles(const std::string& path, bool packed, unsigned int curves)
{
    std::unique_ptr<LxArchive> archive(LxArchive::Create(S(path)));
    std::map<std::string, std::string> files;
    files["manifest.txt"] = ReadEntry(*archive, "manifest.txt");
    if (packed)
        files["PackedAnimation"] = ReadEntry(*archive, "PackedAnimation");
    else
        for (unsigned int i = 0; i < curves; ++i)
            files["curve" + std::to_string(i) + ".crv"] = ReadEntry(*archive, "curve" + std::to_string(i) + ".crv");
    return files;
}

void ExpectSameCurves(const LxAnimationSet& a, const LxAnimationSet& b)
{
    LxArray<LxString> names;
    a.GetAllCurveNames(names);
    ASSERT_EQ(a.GetCount(), b.GetCount());
    for (const LxString& name : names)
        EXPECT_TRUE(a.GetCurve(name)->Equals(b.GetCurve(name))) << name.c_str();
}

// A curve of another class, for the utilities' class checks.
class ForeignCurve : public LxAnimationCurve
{
public:
    explicit ForeignCurve(unsigned int curveClass) : m_nClass(curveClass) {}
    AnimationCurveClass GetCurveClass() const override { return AnimationCurveClass(m_nClass); }
    AnimationDataType GetDataType() const override { return DATA_FLOAT; }
    float GetAnimationLength() const override { return 1.0f; }
    bool GetValueRaw(float, void*) const override { return false; }
    bool GetGradientRaw(float, void*, float) const override { return false; }
    bool WriteToFile(LxFile*) const override { return false; }
    bool HasCutAtTime(float, unsigned int*) const override { return false; }
    bool Equals(const LxCountedPtr<LxAnimationCurve>&) const override { return false; }
    bool HasCutInTimeInterval(float, float) const override { return false; }

private:
    unsigned int m_nClass;
};

CurvePtr Floats(std::initializer_list<std::pair<float, float>> keys)
{
    LxKeyframeCurve* curve = new LxKeyframeCurve(C::DATA_FLOAT);
    for (const auto& key : keys)
        curve->AddKey(key.first, key.second);
    return CurvePtr(curve);
}
} // namespace

TEST(LxAnimationSet, CurveMapOperations)
{
    Messages log;
    LxAnimationSet set;
    const CurvePtr a = Floats({{0, 0}, {2, 1}}), b = Floats({{0, 0}, {5, 1}});
    EXPECT_TRUE(set.AddCurve("b", b));
    EXPECT_TRUE(set.AddCurve("a", a));
    EXPECT_FALSE(set.AddCurve("a", b));
    EXPECT_FALSE(set.AddCurve("c", CurvePtr()));
    EXPECT_EQ(log.Errors(), (Lines{"Attempted to add a second curve named: a to the animation set.",
                                   "LxAnimationSet::AddCurve.  The curve for c is null."}));
    EXPECT_EQ(set.GetCurve("a"), a);
    EXPECT_FALSE(set.GetCurve("zz"));
    EXPECT_FLOAT_EQ(set.GetMaxAnimationLength(), 5.0f);
    LxArray<LxString> names;
    names.Add("first");
    set.GetAllCurveNames(names);
    ASSERT_EQ(names.GetCount(), 3u);
    EXPECT_TRUE(names[0] == "first" && names[1] == "a" && names[2] == "b");

    LxAnimationSet other;
    other.AddCurve("a", b);
    other.AddCurve("d", a);
    log.Clear();
    EXPECT_FALSE(set.AddCurvesFromSet(other));
    EXPECT_EQ(log.Errors(), Lines{"Attempted to add a second curve named: a to the animation set."});
    EXPECT_EQ(set.GetCurve("d"), a); // shared, not copied
    EXPECT_EQ(set.GetCurve("a"), a);
    EXPECT_TRUE(set.RemoveCurve("a"));
    EXPECT_FALSE(set.RemoveCurve("a"));
    EXPECT_EQ(set.GetCount(), 2u);
    set.Clear();
    EXPECT_TRUE(set.IsEmpty());
    EXPECT_EQ(set.GetMaxAnimationLength(), 0.0f);
}

TEST(LxAnimationSet, BothManifestVersionsRoundTripByteForByteThroughFoldersAndZips)
{
    LxAnimationSet original;
    FillSet(original);
    const unsigned int count = original.GetCount();
    for (bool packed : {false, true})
    {
        SCOPED_TRACE(packed ? "packed" : "one file per curve");
        const std::string dir = LxTest::MakeTempDir("set-roundtrip");
        const std::string folderA = LxTest::MakeTempDir("set-folder-a");
        const std::string zip1 = dir + "/first.zip", zip2 = dir + "/second.LMX";
        Messages log;
        ASSERT_TRUE(original.SaveToFile(S(zip1), packed));
        // zip -> set -> folder -> set -> zip -> set
        std::unique_ptr<LxAnimationSet> fromZip(LxAnimationSet::CreateFromFile(S(zip1)));
        ASSERT_TRUE(fromZip);
        ExpectSameCurves(original, *fromZip);
        ASSERT_TRUE(fromZip->SaveToFile(S(folderA), packed));
        std::unique_ptr<LxAnimationSet> fromFolder(LxAnimationSet::CreateFromFile(S(folderA)));
        ASSERT_TRUE(fromFolder);
        ExpectSameCurves(original, *fromFolder);
        ASSERT_TRUE(fromFolder->SaveToFile(S(zip2), packed));
        std::unique_ptr<LxAnimationSet> again(LxAnimationSet::CreateFromFile(S(zip2)));
        ASSERT_TRUE(again);
        ExpectSameCurves(original, *again);
        EXPECT_TRUE(log.Errors().empty()) << log.Errors().front();

        const std::map<std::string, std::string> files = SetFiles(zip1, packed, count);
        EXPECT_EQ(SetFiles(folderA, packed, count), files);
        EXPECT_EQ(SetFiles(zip2, packed, count), files);
        // The manifest lists the curves in name order.
        const std::string manifest = files.at("manifest.txt");
        const std::string start = packed ? "[LxAnimationSet Manifest v1.1]\ncurve.0\ncurve.1\ncurve.10\n"
                                         : "[LxAnimationSet Manifest v1.0]\ncurve.0 curve0.crv\ncurve.1 curve1.crv\n";
        EXPECT_EQ(manifest.substr(0, start.size()), start);
        EXPECT_EQ(std::unique_ptr<LxZipArchive>(new LxZipArchive(S(zip1)))->GetEntryCount(), packed ? 2u : count + 1);
    }
}

TEST(LxAnimationSet, DamagedArchivesFailWholeAndKeepWhatWasLoaded)
{
    LxKeyframeCurve good(C::DATA_VEC3);
    good.AddKey(0.0f, LxVector3(1, 2, 3));
    const std::string curve = StreamBytes(good);
    const std::string v10 = "[LxAnimationSet Manifest v1.0]\n", v11 = "[LxAnimationSet Manifest v1.1]\r\n";
    typedef std::map<std::string, std::string> Files;
    const Lines syntax = {"Syntax error in manifest file for: @"},
                version = {"Missing or illegal manifest file version string. (You might need a new engine build)"},
                secondCurve = {"Error reading curve file header.", "Error reading animation curve named: b in: @"};
    // A set loads when no error is expected ("@" stands for the archive's name, "#" for the path).
    const struct
    {
        const char* what;
        Files files;
        Lines errors;
    } cases[] = {
        {"no manifest", {{"a.crv", curve}}, {"Couldn't find manifest file in: #"}},
        {"wrong version", {{"manifest.txt", "[LxAnimationSet Manifest v1.2]\n"}}, version},
        {"header missing", {{"manifest.txt", "a a.crv\n"}, {"a.crv", curve}}, version},
        {"one token", {{"manifest.txt", v10 + "a a.crv\nb\n"}, {"a.crv", curve}}, syntax},
        {"empty line in 1.0", {{"manifest.txt", v10 + "\na a.crv\n"}, {"a.crv", curve}}, syntax},
        {"every broken line reported",
         {{"manifest.txt", v10 + "a gone.crv\nb bad.crv\nc c.crv\n"},
          {"bad.crv", curve.substr(0, 30)},
          {"c.crv", curve}},
         {"Error opening animation curve file: gone.crv in: @", "Error reading curve file header.",
          "Error reading animation curve file: bad.crv in: @"}},
        {"curve class 1",
         {{"manifest.txt", v10 + "a a.crv\n"}, {"a.crv", "\x01\x01" + curve.substr(2)}},
         {"Unsupported curve class.  You may have an out-dated build of lumex.",
          "Error reading animation curve file: a.crv in: @"}},
        {"no packed file", {{"manifest.txt", v11 + "a\n"}}, {"Unable to open packed animation file in animation set."}},
        {"empty line in 1.1", {{"manifest.txt", v11 + "a\n\nb\n"}, {"PackedAnimation", curve + curve}}, syntax},
        {"more names than curves", {{"manifest.txt", v11 + "a\nb\n"}, {"PackedAnimation", curve}}, secondCurve},
        {"packed curve cut short",
         {{"manifest.txt", v11 + "a\nb\n"}, {"PackedAnimation", curve + curve.substr(0, 21)}},
         secondCurve},
        {"duplicates in 1.0", {{"manifest.txt", v10 + "a a.crv\na a.crv\nkeep a.crv\n"}, {"a.crv", curve}}, {}},
        {"duplicates in 1.1", {{"manifest.txt", v11 + "a\na\n"}, {"PackedAnimation", curve + curve}}, {}},
        {"only a header", {{"manifest.txt", v11}}, {}},
    };
    const std::map<std::string, Lines> warnings = {
        {"duplicates in 1.0", {"Multiple curves found with name: a", "Multiple curves found with name: keep"}},
        {"duplicates in 1.1", {"Multiple curves found with name: a"}}};
    for (bool zip : {false, true})
    {
        for (const auto& c : cases)
        {
            SCOPED_TRACE(std::string(c.what) + (zip ? " (zip)" : " (folder)"));
            const std::string dir = LxTest::MakeTempDir("set-damaged");
            std::string path = dir, name = dir + "/";
            if (zip)
            {
                std::vector<LxTest::ZipEntry> entries;
                for (const auto& f : c.files)
                    entries.push_back(LxTest::ZipEntry{f.first, f.second});
                path = name = dir + "/set.zip";
                LxTest::WriteBytes(path, LxTest::BuildZip(entries));
            }
            else
                for (const auto& f : c.files)
                    LxTest::WriteBytes(dir + "/" + f.first, f.second);
            LxAnimationSet set;
            const CurvePtr kept = Floats({{0, 1}});
            set.AddCurve("keep", kept);
            Messages log;
            EXPECT_EQ(set.LoadFile(S(path)), c.errors.empty());
            Lines expected;
            for (std::string e : c.errors)
            {
                for (size_t at; (at = e.find('@')) != std::string::npos;)
                    e.replace(at, 1, name);
                for (size_t at; (at = e.find('#')) != std::string::npos;)
                    e.replace(at, 1, path);
                expected.push_back(e);
            }
            EXPECT_EQ(OwnErrors(log), expected);
            EXPECT_EQ(set.GetCurve("keep"), kept);
            const auto warned = warnings.find(c.what);
            EXPECT_EQ(log.Warnings(), warned == warnings.end() ? Lines{} : warned->second);
            if (!c.errors.empty())
                EXPECT_EQ(set.GetCount(), 1u);
            else if (warned != warnings.end())
            {
                // The first curve of a name wins.
                EXPECT_EQ(set.GetCount(), 2u);
                ASSERT_TRUE(set.GetCurve("a"));
                EXPECT_TRUE(set.GetCurve("a")->Equals(CurvePtr(new LxKeyframeCurve(good))));
            }
        }
    }
}

TEST(LxAnimationSet, SaveFailuresAreReportedAndLeaveNothingBehind)
{
    const std::string dir = LxTest::MakeTempDir("set-save-fail");
    LxAnimationSet set;
    set.AddCurve("a", Floats({{0, 1}}));
    Messages log;
    EXPECT_FALSE(set.SaveToFile(S(dir + "/missing/set.zip"), true));
    EXPECT_FALSE(set.SaveToFile(S(dir + "/missing-folder"), false));
    EXPECT_EQ(OwnErrors(log), (Lines{"Couldn't open animation set file " + dir + "/missing/set.zip for writing",
                                     "Couldn't open animation set file " + dir + "/missing-folder for writing"}));
    log.Clear();
    set.AddCurve("two words", Floats({{0, 1}}));
    EXPECT_FALSE(set.SaveToFile(S(dir + "/blank.zip"), false));
    EXPECT_EQ(log.Errors(),
              Lines{"LxAnimationSet::SaveToFile.  The curve name \"two words\" cannot be stored in a manifest."});
    EXPECT_FALSE(LxTest::PathExists(dir + "/blank.zip"));
}

// ------------------------------------------------------------------------------------------------ utilities

TEST(LxAnimationUtils, AppendShiftsByTheLengthAndMakesACutAtTheSeam)
{
    const CurvePtr dst = Floats({{0, 0}, {2, 10}}), src = Floats({{0, 100}, {1, 200}});
    ASSERT_TRUE(LxAppendAnimationCurve(dst, src));
    const LxKeyframeCurve& k = static_cast<const LxKeyframeCurve&>(*dst);
    ASSERT_EQ(k.GetNumKeys(), 4u);
    EXPECT_EQ(k.GetKeyTime(2), 2.0f);
    EXPECT_EQ(k.GetKeyTime(3), 3.0f);
    EXPECT_TRUE(dst->HasCutAtTime(2.0f, nullptr));
    float v = 0;
    ASSERT_TRUE(dst->GetValueFloat(2.5f, &v));
    EXPECT_FLOAT_EQ(v, 150.0f);
    // Appending a curve to itself doubles it.
    ASSERT_TRUE(LxAppendAnimationCurve(src, src));
    ASSERT_EQ(static_cast<const LxKeyframeCurve&>(*src).GetNumKeys(), 4u);
    ASSERT_TRUE(src->GetValueFloat(1.5f, &v));
    EXPECT_FLOAT_EQ(v, 150.0f);
}

TEST(LxAnimationUtils, MismatchesAreRefusedBeforeAnythingChanges)
{
    const CurvePtr floats = Floats({{0, 0}, {1, 1}});
    const CurvePtr ints(new LxKeyframeCurve(C::DATA_INT));
    const CurvePtr otherClass(new ForeignCurve(1)), sameClass(new ForeignCurve(0));
    Messages log;
    EXPECT_FALSE(LxAppendAnimationCurve(floats, ints));
    EXPECT_FALSE(LxAppendAnimationCurve(floats, otherClass));
    EXPECT_FALSE(LxAppendAnimationCurve(sameClass, floats));
    EXPECT_FALSE(LxExtendAnimationCurve(sameClass, 1.0f));
    EXPECT_FALSE(LxExtendAnimationCurve(ints, 1.0f));
    EXPECT_EQ(
        log.Errors(),
        (Lines{"Animation curve data type doesn't match", "Animation curve type doesn't match",
               "Concatenation is only supported for keyframe curves", "Extension is only supported for keyframe curves",
               "LxExtendAnimationCurve.  Only a curve with keys can be extended, and only by a time >= 0."}));
    EXPECT_EQ(static_cast<const LxKeyframeCurve&>(*floats).GetNumKeys(), 2u);
    EXPECT_FALSE(floats->Equals(sameClass));

    LxAnimationSet a, b;
    a.AddCurve("x", floats);
    a.AddCurve("only.a", Floats({{0, 0}}));
    b.AddCurve("x", Floats({{0, 5}}));
    b.AddCurve("only.b", Floats({{0, 0}}));
    log.Clear();
    EXPECT_FALSE(LxAppendAnimationSet(a, b));
    EXPECT_EQ(log.Errors(), (Lines{"Cannot concatenate animation sets: Curve \"only.a\" not present in all sets",
                                   "Cannot concatenate animation sets: Curve \"only.b\" not present in all sets"}));
    EXPECT_EQ(static_cast<const LxKeyframeCurve&>(*floats).GetNumKeys(), 2u);
}

TEST(LxAnimationUtils, SetsAppendAndExtendCurveByCurve)
{
    LxAnimationSet a, b;
    a.AddCurve("x", Floats({{0, 0}, {1, 1}}));
    a.AddCurve("y", Floats({{0, 5}, {3, 5}}));
    b.AddCurve("x", Floats({{0, 7}}));
    b.AddCurve("y", Floats({{1, 9}}));
    ASSERT_TRUE(LxAppendAnimationSet(a, b));
    EXPECT_FLOAT_EQ(a.GetCurve("x")->GetAnimationLength(), 1.0f);
    EXPECT_FLOAT_EQ(a.GetCurve("y")->GetAnimationLength(), 4.0f);
    ASSERT_TRUE(LxExtendAnimationSet(a, 0.5f));
    EXPECT_FLOAT_EQ(a.GetCurve("x")->GetAnimationLength(), 1.5f);
    EXPECT_FLOAT_EQ(a.GetCurve("y")->GetAnimationLength(), 4.5f);
    float v = 0;
    ASSERT_TRUE(a.GetCurve("x")->GetValueFloat(1.25f, &v));
    EXPECT_EQ(v, 7.0f); // held still
    a.AddCurve("foreign", CurvePtr(new ForeignCurve(0)));
    Messages log;
    EXPECT_FALSE(LxExtendAnimationSet(a, 1.0f));
    EXPECT_EQ(log.Errors(), Lines{"Extension is only supported for keyframe curves"});
    EXPECT_FLOAT_EQ(a.GetCurve("x")->GetAnimationLength(), 1.5f);
}

// ------------------------------------------------------------------------------------------------ bone animator

TEST(LxBoneAnimator, FindsItsCurvesAndRefusesWrongTypes)
{
    const LxBone hip("hip", LxMatrix4());
    LxKeyframeCurve* rotate = new LxKeyframeCurve(C::DATA_QUAT);
    rotate->AddKey(0.0f, LxQuat());
    const CurvePtr vec3 = Sample(C::DATA_VEC3, 3, 1), quat(rotate), matrix = Sample(C::DATA_MATRIX, 3, 2);
    const struct
    {
        const char* curve;
        CurvePtr value;
        const char* error;
    } cases[] = {
        {"bone.hip", vec3, "Wrong data type for bone curve for bone named: hip"},
        {"bone.hip.translate", quat, "Wrong data type for translation curve for bone named: hip"},
        {"bone.hip.rotate", vec3, "Wrong data type for rotation curve for bone named: hip"},
        {"bone.hip.scale", matrix, "Wrong data type for scale curve for bone named: hip"},
        {"bone.hips.rotate", quat,
         "Unable to create animator for bone named: hip.  The appropriate curves could not be found."},
    };
    for (const auto& c : cases)
    {
        LxAnimationSet set;
        set.AddCurve(c.curve, c.value);
        Messages log;
        EXPECT_EQ(std::unique_ptr<LxBoneAnimator>(LxBoneAnimator::Create(hip, set)), nullptr) << c.curve;
        EXPECT_EQ(log.Errors(), Lines{c.error});
    }
}

TEST(LxBoneAnimator, BuildsTheTransformFromItsCurvesAndLoopsByRemainder)
{
    LxAnimationSet set;
    LxKeyframeCurve* translate = new LxKeyframeCurve(C::DATA_VEC3);
    translate->AddKey(0.0f, LxVector3(0, 0, 0));
    translate->AddKey(2.0f, LxVector3(4, 0, 0));
    LxKeyframeCurve* rotate = new LxKeyframeCurve(C::DATA_QUAT);
    LxQuat quarter;
    quarter.FromAxisAngle(LxVector3(0, 0, 1), 1.5707964f);
    rotate->AddKey(0.0f, quarter);
    rotate->AddKey(1.0f, quarter);
    rotate->AddKey(1.0f, LxQuat()); // a cut at 1
    set.AddCurve("bone.arm.translate", CurvePtr(translate));
    set.AddCurve("bone.arm.rotate", CurvePtr(rotate));
    std::unique_ptr<LxBoneAnimator> animator(LxBoneAnimator::Create(LxBone("arm", LxMatrix4()), set));
    ASSERT_TRUE(animator);
    EXPECT_FLOAT_EQ(animator->GetAnimationLength(), 2.0f);
    LxMatrix4 m, expected;
    animator->GetTransform(0.5f, &m);
    expected.MakeTransform(LxVector3(1, 0, 0), quarter, LxVector3(1, 1, 1));
    EXPECT_TRUE(m.Equals(expected, 1e-6f));
    animator->GetTransform(4.5f, &m); // 4.5 mod 2 = 0.5
    EXPECT_TRUE(m.Equals(expected, 1e-6f));
    animator->GetTransform(3.5f, &m); // 1.5: after the cut
    expected.MakeTransform(LxVector3(3, 0, 0), LxQuat(), LxVector3(1, 1, 1));
    EXPECT_TRUE(m.Equals(expected, 1e-6f));
    animator->ExtrapolateTransform(1.5f, 0.25f, &m);
    expected.MakeTransform(LxVector3(3.5f, 0, 0), LxQuat(), LxVector3(1, 1, 1));
    EXPECT_TRUE(m.Equals(expected, 1e-5f));

    EXPECT_TRUE(animator->HasCutInTimeInterval(0.5f, 1.5f));
    EXPECT_TRUE(animator->HasCutInTimeInterval(2.5f, 3.25f)); // 0.5 .. 1.25 after wrapping
    EXPECT_FALSE(animator->HasCutInTimeInterval(1.25f, 1.75f));
    EXPECT_TRUE(animator->HasCutInTimeInterval(1.5f, 3.0f)); // round the end to 1.0
    EXPECT_FALSE(animator->HasCutInTimeInterval(1.5f, 2.5f));

    // A whole-matrix curve is used alone, whatever else the set holds.
    LxKeyframeCurve* whole = new LxKeyframeCurve(C::DATA_MATRIX);
    LxMatrix4 a, b;
    a.MakeTranslation(0, 0, 0);
    b.MakeTranslation(0, 8, 0);
    whole->AddKey(0.0f, a);
    whole->AddKey(4.0f, b);
    set.AddCurve("bone.arm", CurvePtr(whole));
    animator.reset(LxBoneAnimator::Create(LxBone("arm", LxMatrix4()), set));
    ASSERT_TRUE(animator);
    EXPECT_FLOAT_EQ(animator->GetAnimationLength(), 4.0f);
    animator->GetTransform(5.0f, &m);
    EXPECT_TRUE(m.Equals(LxMatrix4().MakeTranslation(0, 2, 0), 1e-6f));
}
