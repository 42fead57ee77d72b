// Keyframe curves: evaluation against a reference computed here by a plain linear search over irregular keys, in
// every playback order; cuts, stepped types, the quaternion rules, key editing, compression, and the curve
// stream format byte for byte, with every truncation and damaged header refused.
#include "LxAnimationTestUtil.h"
#include "support/LxTestSupport.h"

#include "Common/LxMatrix4.h"
#include "Common/LxQuat.h"
#include "Common/LxVector2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>

using namespace LxAnimTest;
typedef LxAnimationCurve C;

namespace
{
// Keys as the test knows them: times and raw value bytes.
struct Keys
{
    std::vector<float> times;
    std::vector<std::string> values;
};

Keys MakeKeys(C::AnimationDataType type, unsigned int count, unsigned int seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> step(0.0005f, 0.7f), value(-10.0f, 10.0f);
    Keys keys;
    const unsigned int size = C::GetValueSize(type);
    float time = -0.3f;
    for (unsigned int k = 0; k < count; ++k)
    {
        std::string bytes(size, '\0');
        if (C::IsDiscreteType(type))
            for (char& b : bytes)
                b = static_cast<char>(random() & 0x7F);
        else
            for (unsigned int c = 0; c < size / 4; ++c)
            {
                const float v = value(random);
                std::memcpy(&bytes[4 * c], &v, 4);
            }
        keys.times.push_back(time);
        keys.values.push_back(bytes);
        // Cuts here and there; now and then a tiny segment.
        if (k % 17 != 5)
            time += (k % 11 == 3) ? 1e-4f : step(random);
    }
    return keys;
}

std::unique_ptr<LxKeyframeCurve> Build(C::AnimationDataType type, const Keys& keys, unsigned int mode = 0)
{
    std::unique_ptr<LxKeyframeCurve> curve(new LxKeyframeCurve(type, LxKeyframeCurve::InterpolationMode(mode)));
    for (size_t k = 0; k < keys.times.size(); ++k)
        EXPECT_TRUE(curve->AddKey(keys.times[k], keys.values[k].data()));
    return curve;
}

std::vector<float> Floats(const std::string& bytes)
{
    std::vector<float> f(bytes.size() / 4);
    std::memcpy(f.data(), bytes.data(), f.size() * 4);
    return f;
}

// The value at t by the evaluation rules, found by a linear search from the first key.
std::string Reference(C::AnimationDataType type, unsigned int mode, const Keys& keys, float t)
{
    const size_t n = keys.times.size();
    if (n == 1 || t <= keys.times[0])
        return keys.values[0];
    if (t >= keys.times[n - 1])
        return keys.values[n - 1];
    size_t i = 0;
    while (keys.times[i + 1] <= t)
        ++i;
    if (C::IsDiscreteType(type))
        return keys.values[i];
    const float u = (t - keys.times[i]) / (keys.times[i + 1] - keys.times[i]);
    std::vector<float> a = Floats(keys.values[i]), b = Floats(keys.values[i + 1]), r(a.size());
    if (mode != 0)
    {
        a.resize(16, 0.0f);
        b.resize(16, 0.0f);
        std::vector<float> q(16);
        for (size_t g = 0; g * 4 < r.size(); ++g)
        {
            const LxQuat s = LxQuat::Slerp(u, LxQuat(a[4 * g], a[4 * g + 1], a[4 * g + 2], a[4 * g + 3]),
                                           LxQuat(b[4 * g], b[4 * g + 1], b[4 * g + 2], b[4 * g + 3]));
            q[4 * g] = s.w, q[4 * g + 1] = s.x, q[4 * g + 2] = s.y, q[4 * g + 3] = s.z;
        }
        std::copy(q.begin(), q.begin() + r.size(), r.begin());
    }
    else
    {
        if (type == C::DATA_QUAT && a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3] < 0.0f)
            for (float& v : b)
                v = -v;
        for (size_t k = 0; k < r.size(); ++k)
            r[k] = (1.0f - u) * a[k] + u * b[k];
    }
    std::string bytes(r.size() * 4, '\0');
    std::memcpy(&bytes[0], r.data(), bytes.size());
    return bytes;
}

enum Order
{
    FORWARD,
    BACKWARD,
    RANDOM,
    FAR_JUMPS,
    KEY_TIMES
};

std::vector<float> Times(Order order, const Keys& keys, unsigned int seed)
{
    if (order == KEY_TIMES)
    {
        std::vector<float> t = keys.times;
        t.insert(t.end(), keys.times.rbegin(), keys.times.rend());
        return t;
    }
    const float first = keys.times.front() - 0.2f, last = keys.times.back() + 0.2f;
    std::vector<float> t;
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> anywhere(first, last);
    for (unsigned int s = 0; s <= 4000; ++s)
    {
        if (order == FORWARD || order == BACKWARD)
            t.push_back(order == FORWARD ? first + (last - first) * s / 4000 : last - (last - first) * s / 4000);
        else if (order == RANDOM)
            t.push_back(anywhere(random));
        else
            t.push_back(s % 2 ? keys.times.front() + 0.001f * s : keys.times.back() - 0.001f * s);
    }
    return t;
}

void ExpectSameValue(C::AnimationDataType type, const std::string& expected, const std::string& actual, float t)
{
    if (C::IsDiscreteType(type))
    {
        ASSERT_EQ(expected, actual) << "t = " << t;
        return;
    }
    const std::vector<float> e = Floats(expected), a = Floats(actual);
    for (size_t k = 0; k < e.size(); ++k)
        ASSERT_NEAR(e[k], a[k], 1e-5f * (1.0f + std::fabs(e[k]))) << "t = " << t << ", component " << k;
}
} // namespace

TEST(LxKeyframeCurve, EveryTypeAndModeMatchesTheReferenceInEveryPlaybackOrder)
{
    const Order orders[] = {FORWARD, BACKWARD, RANDOM, FAR_JUMPS, KEY_TIMES};
    for (unsigned int type = 0; type < C::DATA_TYPE_COUNT; ++type)
    {
        for (unsigned int mode : {0u, 1u, 7u})
        {
            const C::AnimationDataType dataType = C::AnimationDataType(type);
            const Keys keys = MakeKeys(dataType, 61, type * 10 + mode);
            const std::unique_ptr<LxKeyframeCurve> curve = Build(dataType, keys, mode);
            for (Order order : orders)
            {
                SCOPED_TRACE(testing::Message()
                             << C::GetDataTypeName(dataType) << ", mode " << mode << ", order " << order);
                for (float t : Times(order, keys, type + 100 * order))
                {
                    std::string actual(C::GetValueSize(dataType), '\0');
                    ASSERT_TRUE(curve->GetValueRaw(t, &actual[0]));
                    ExpectSameValue(dataType, Reference(dataType, mode, keys, t), actual, t);
                }
            }
        }
    }
}

TEST(LxKeyframeCurve, CutsJumpAtTheirTimeFromEitherDirection)
{
    LxKeyframeCurve curve(C::DATA_FLOAT);
    for (auto key : {std::make_pair(0.0f, 0.0f), {1.0f, 10.0f}, {1.0f, 20.0f}, {2.0f, 30.0f}, {3.0f, 0.0f}})
        ASSERT_TRUE(curve.AddKey(key.first, key.second));
    float v = -1;
    // Arriving from before, from after, and after a far jump: the value after the jump.
    for (float from : {0.5f, 1.5f, 2.9f, 0.0f})
    {
        ASSERT_TRUE(curve.GetValueFloat(from, &v));
        ASSERT_TRUE(curve.GetValueFloat(1.0f, &v));
        EXPECT_EQ(v, 20.0f) << "from " << from;
    }
    ASSERT_TRUE(curve.GetValueFloat(std::nextafter(1.0f, 0.0f), &v));
    EXPECT_NEAR(v, 10.0f, 1e-4f);
    ASSERT_TRUE(curve.GetValueFloat(1.5f, &v));
    EXPECT_FLOAT_EQ(v, 25.0f);

    const int cutTypes[] = {0, 1, 2, 0};
    for (unsigned int key = 0; key < 4; ++key)
        EXPECT_EQ(curve.GetCutTypeAtKey(key), cutTypes[key]) << key;
    EXPECT_EQ(curve.GetCutTypeAtKey(99), 0);
    unsigned int index = 99;
    EXPECT_TRUE(curve.HasCutAtTime(1.0f, &index));
    EXPECT_EQ(index, 1u);
    EXPECT_TRUE(curve.HasCutAtTime(1.0f, nullptr));
    EXPECT_FALSE(curve.HasCutAtTime(2.0f, &index));
    EXPECT_FALSE(curve.HasCutAtTime(0.5f, &index));
    // Playback from t0 to t1 crosses the cut when t0 < 1 <= t1, in either direction.
    EXPECT_TRUE(curve.HasCutInTimeInterval(0.5f, 1.0f));
    EXPECT_TRUE(curve.HasCutInTimeInterval(1.5f, 0.5f));
    EXPECT_FALSE(curve.HasCutInTimeInterval(1.0f, 2.5f));
    EXPECT_FALSE(curve.HasCutInTimeInterval(0.0f, 0.9f));
    EXPECT_FALSE(curve.HasCutInTimeInterval(1.0f, 1.0f));
}

// The reference comparison covers the raw bytes of stepped types; the typed bool getters must read any non-zero
// byte as true.
TEST(LxKeyframeCurve, SteppedBoolsReadAnyNonZeroByteAsTrue)
{
    LxKeyframeCurve quads(C::DATA_VEC4_BOOL);
    const unsigned char q0[4] = {0, 2, 0, 1}, q1[4] = {1, 0, 0, 0};
    ASSERT_TRUE(quads.AddKey(0.0f, q0) && quads.AddKey(1.0f, q1));
    bool q[4];
    ASSERT_TRUE(quads.GetValueVec4Bool(0.999f, q));
    EXPECT_TRUE(!q[0] && q[1] && !q[2] && q[3]);
}

TEST(LxKeyframeCurve, QuaternionsTakeTheShorterArcLinearlyAndSlerpOtherwise)
{
    const LxQuat a(1, 0, 0, 0);
    const LxQuat b(-0.8f, 0.0f, 0.6f, 0.0f); // a . b < 0
    LxKeyframeCurve linear(C::DATA_QUAT), spherical(C::DATA_QUAT, LxKeyframeCurve::INTERPOLATE_SPHERICAL);
    ASSERT_TRUE(linear.AddKey(0.0f, a) && linear.AddKey(2.0f, b));
    ASSERT_TRUE(spherical.AddKey(0.0f, a) && spherical.AddKey(2.0f, b));
    LxQuat q;
    ASSERT_TRUE(linear.GetValueQuat(0.5f, &q));
    // (1 - u) a + u (-b), not renormalised.
    EXPECT_FLOAT_EQ(q.w, 0.75f + 0.25f * 0.8f);
    EXPECT_FLOAT_EQ(q.y, 0.25f * -0.6f);
    EXPECT_FLOAT_EQ(q.x, 0.0f);
    EXPECT_LT(q.Length(), 1.0f);
    // The end key itself keeps its sign.
    ASSERT_TRUE(linear.GetValueQuat(2.0f, &q));
    EXPECT_EQ(q, b);
    ASSERT_TRUE(spherical.GetValueQuat(0.5f, &q));
    EXPECT_EQ(q, LxQuat::Slerp(0.25f, a, b)); // the long way round: no flip in slerp mode
    // q and -q as neighbours: linear mode stays at the same rotation throughout.
    LxKeyframeCurve same(C::DATA_QUAT);
    ASSERT_TRUE(same.AddKey(0.0f, b) && same.AddKey(1.0f, -b));
    ASSERT_TRUE(same.GetValueQuat(0.5f, &q));
    EXPECT_EQ(q, b);
    LxQuat rate;
    ASSERT_TRUE(same.GetGradientQuat(0.5f, &rate, 0.1f));
    EXPECT_NEAR(rate.Length(), 0.0f, 1e-6f);
}

TEST(LxKeyframeCurve, AddKeyRefusesEarlierTimesAndWrongTypesAndMakesCutsAtEqualTimes)
{
    Messages log;
    LxKeyframeCurve curve(C::DATA_FLOAT);
    ASSERT_TRUE(curve.AddKey(1.0f, 1.0f));
    ASSERT_TRUE(curve.AddKey(2.0f, 2.0f));
    EXPECT_FALSE(curve.AddKey(1.5f, 9.0f));
    EXPECT_EQ(log.Errors(), Lines{"Attempted to add a keyframe to a curve out of order.  Keyframes must be added in "
                                  "increasing order by time."});
    EXPECT_EQ(curve.GetNumKeys(), 2u);
    log.Clear();
    EXPECT_FALSE(curve.AddKey(3.0f, 3));
    EXPECT_FALSE(curve.AddKey(std::nanf(""), 3.0f));
    EXPECT_EQ(log.Errors(), (Lines{"LxKeyframeCurve::AddKey.  A int key cannot be added to a float curve.",
                                   "LxKeyframeCurve::AddKey.  A key needs a value and a time that is a number."}));
    EXPECT_EQ(curve.GetNumKeys(), 2u);
    ASSERT_TRUE(curve.AddKey(2.0f, 5.0f));
    EXPECT_EQ(curve.GetCutTypeAtKey(1), 1);
    float v = 0;
    ASSERT_TRUE(curve.GetKeyValueFloat(2, &v));
    EXPECT_EQ(v, 5.0f);
    // A key's value may come from the curve's own pool, even while the pool grows.
    for (int k = 0; k < 40; ++k)
        ASSERT_TRUE(curve.AddKey(3.0f + k, curve.GetKeyData(0)));
    ASSERT_TRUE(curve.GetKeyValueFloat(42, &v));
    EXPECT_EQ(v, 1.0f);
}

TEST(LxKeyframeCurve, AccessorsRefuseWrongTypesEmptyCurvesAndMissingKeys)
{
    Messages log;
    LxKeyframeCurve empty(C::DATA_MATRIX);
    LxMatrix4 m;
    m.MakeZero();
    EXPECT_FALSE(empty.GetValueMatrix(0.0f, &m));
    EXPECT_EQ(m, LxMatrix4().MakeZero()); // untouched
    float f = 7;
    EXPECT_FALSE(empty.GetValueFloat(0.0f, &f));
    EXPECT_FALSE(empty.GetKeyValueMatrix(0, &m));
    EXPECT_EQ(f, 7.0f);
    EXPECT_EQ(empty.GetKeyData(0), nullptr);
    EXPECT_FALSE(empty.GetGradientMatrix(0.0f, &m, 0.0f));
    LxKeyframeCurve ints(C::DATA_INT);
    ints.AddKey(0.0f, 1);
    EXPECT_FALSE(ints.GetGradientRaw(0.0f, &f, 0.1f));
    EXPECT_EQ(log.Errors(), (Lines{"Attempted to extract a value from an empty animation curve.",
                                   "LxAnimationCurve::GetValueFloat.  The curve holds matrix values, not float.",
                                   "LxKeyframeCurve::GetKeyValueMatrix.  Key 0 does not exist; the curve has 0 keys.",
                                   "LxKeyframeCurve::GetGradientRaw.  The step must be a positive number of seconds.",
                                   "LxKeyframeCurve::GetGradientRaw.  int curves are stepped and have no gradient."}));
}

TEST(LxKeyframeCurve, ASingleKeyHoldsEverywhereAndGradientsAreTheSlopeBetweenKeys)
{
    LxKeyframeCurve single(C::DATA_VEC2);
    ASSERT_TRUE(single.AddKey(1.0f, LxVector2(1, 2)));
    LxVector2 v;
    for (float t : {-5.0f, 1.0f, 9.0f})
        EXPECT_TRUE(single.GetValueVec2(t, &v) && v == LxVector2(1, 2)) << t;

    LxKeyframeCurve curve(C::DATA_VEC3);
    ASSERT_TRUE(curve.AddKey(0.0f, LxVector3(0, 0, 0)) && curve.AddKey(2.0f, LxVector3(2, -4, 8)) &&
                curve.AddKey(3.0f, LxVector3(2, -4, 8)));
    LxVector3 g;
    ASSERT_TRUE(curve.GetGradientVec3(1.0f, &g, 0.01f));
    EXPECT_NEAR(g.x, 1.0f, 1e-3f);
    EXPECT_NEAR(g.y, -2.0f, 1e-3f);
    EXPECT_NEAR(g.z, 4.0f, 1e-3f);
    ASSERT_TRUE(curve.GetGradientVec3(2.5f, &g, 0.01f));
    EXPECT_NEAR(g.Length(), 0.0f, 1e-5f);
}

TEST(LxKeyframeCurve, CompressDropsOnlyWhatEvaluationCanDoWithout)
{
    // A straight line with a bump, a cut and a flat stepped run.
    LxKeyframeCurve line(C::DATA_FLOAT);
    for (int k = 0; k <= 100; ++k)
        ASSERT_TRUE(line.AddKey(k * 0.125f, k == 50 ? 100.0f : k * 0.5f));
    ASSERT_TRUE(line.AddKey(12.5f, 0.0f)); // cut near the end
    ASSERT_TRUE(line.AddKey(13.5f, 0.0f));
    std::unique_ptr<LxKeyframeCurve> copy(static_cast<LxKeyframeCurve*>(
        LxAnimationCurve::ReadCurveStream(std::unique_ptr<MemoryFile>(new MemoryFile(StreamBytes(line))).get())));
    ASSERT_TRUE(copy);
    const unsigned int removed = line.Compress(1e-3f);
    EXPECT_EQ(removed + line.GetNumKeys(), copy->GetNumKeys());
    EXPECT_LE(line.GetNumKeys(), 8u);
    for (float t = -1.0f; t < 14.0f; t += 0.0123f)
    {
        float a = 0, b = 0;
        ASSERT_TRUE(line.GetValueFloat(t, &a) && copy->GetValueFloat(t, &b));
        ASSERT_NEAR(a, b, 2e-3f) << t;
    }
    EXPECT_TRUE(line.HasCutAtTime(12.5f, nullptr));
    EXPECT_EQ(line.Compress(1e-3f), 0u);

    LxKeyframeCurve steps(C::DATA_INT);
    for (int k = 0; k < 10; ++k)
        ASSERT_TRUE(steps.AddKey(float(k), k < 5 ? 1 : 2));
    EXPECT_EQ(steps.Compress(0.0f), 7u); // 0, 5 and 9 stay
    EXPECT_EQ(steps.GetKeyTime(1), 5.0f);
    int v = 0;
    ASSERT_TRUE(steps.GetValueInt(4.9f, &v));
    EXPECT_EQ(v, 1);
    // Rebuilt pool: a saved compressed curve has offsets value size x index again.
    EXPECT_EQ(StreamBytes(steps).size(), 8u + 12u + 3u * 8u + 3u * 4u);
    steps.Clear();
    EXPECT_EQ(steps.GetNumKeys(), 0u);
    EXPECT_EQ(steps.GetAnimationLength(), 0.0f);
}

TEST(LxKeyframeCurve, EqualsComparesKeysValuesTypeAndMode)
{
    std::unique_ptr<LxKeyframeCurve> a(MakeSampleCurve(C::DATA_VEC4, 9, 1));
    LxCountedPtr<LxAnimationCurve> b(MakeSampleCurve(C::DATA_VEC4, 9, 1));
    LxCountedPtr<LxAnimationCurve> other(MakeSampleCurve(C::DATA_VEC4, 9, 2));
    LxCountedPtr<LxAnimationCurve> slerp(MakeSampleCurve(C::DATA_VEC4, 9, 1, LxKeyframeCurve::INTERPOLATE_SPHERICAL));
    EXPECT_TRUE(a->Equals(b));
    EXPECT_FALSE(a->Equals(other));
    EXPECT_FALSE(a->Equals(slerp));
    EXPECT_FALSE(a->Equals(LxCountedPtr<LxAnimationCurve>()));
    static_cast<LxKeyframeCurve*>(b.Get())->AddKey(100.0f, a->GetKeyData(0));
    EXPECT_FALSE(a->Equals(b));
}

// ------------------------------------------------------------------------------------------------ curve streams

TEST(LxKeyframeCurve, StreamLayoutIsExact)
{
    LxKeyframeCurve curve(C::DATA_VEC2, LxKeyframeCurve::INTERPOLATE_SPHERICAL);
    ASSERT_TRUE(curve.AddKey(0.0f, LxVector2(1.0f, 3.0f)));
    ASSERT_TRUE(curve.AddKey(2.0f, LxVector2(-2.0f, 0.5f)));
    const std::string expected("\x01\x00\x00\x00"
                               "\x00\x00\x00\x00" // prefix: version 1, class 0, extra size 0
                               "\x01\x00\x03\x01" // body: version 1, 0, vec2, spherical
                               "\x02\x00\x00\x00"
                               "\x10\x00\x00\x00" // 2 keys, 16 pool bytes
                               "\x00\x00\x00\x00\x00\x00\x00\x00"
                               "\x00\x00\x00\x40\x08\x00\x00\x00" // (0, 0), (2.0f, 8)
                               "\x00\x00\x80\x3f\x00\x00\x40\x40"
                               "\x00\x00\x00\xc0\x00\x00\x00\x3f",
                               52);
    EXPECT_EQ(StreamBytes(curve), expected);
    LxKeyframeCurve empty(C::DATA_MATRIX);
    EXPECT_EQ(StreamBytes(empty),
              std::string("\x01\x00\x00\x00\x00\x00\x00\x00\x01\x00\x0d\x00", 12) + std::string(8, '\0'));
}

TEST(LxKeyframeCurve, EveryTypeRoundTripsByteForByte)
{
    for (unsigned int type = 0; type < C::DATA_TYPE_COUNT; ++type)
    {
        for (unsigned int keys : {0u, 1u, 7u})
        {
            LxCountedPtr<LxAnimationCurve> curve(MakeSampleCurve(C::AnimationDataType(type), keys, type + keys));
            const std::string bytes = StreamBytes(*curve);
            MemoryFile file(bytes + "tail");
            LxCountedPtr<LxAnimationCurve> read(LxAnimationCurve::ReadCurveStream(&file));
            ASSERT_TRUE(read) << type;
            EXPECT_EQ(file.Position(), bytes.size()); // stops at its own end: streams can be packed
            EXPECT_TRUE(read->Equals(curve));
            EXPECT_EQ(StreamBytes(*read), bytes);
        }
    }
}

TEST(LxKeyframeCurve, ForeignButValidStreamsLoad)
{
    LxKeyframeCurve curve(C::DATA_FLOAT);
    curve.AddKey(0.0f, 1.0f);
    curve.AddKey(1.0f, 2.0f);
    std::string bytes = StreamBytes(curve);
    // Writer version 7, reserved bytes set, three bytes of extra data, values stored in reverse order with a gap.
    std::string foreign = bytes;
    foreign[0] = 7;
    foreign[2] = foreign[3] = '\x55';
    foreign[4] = 3;
    foreign.insert(8, "xyz");
    MemoryFile f1(foreign);
    LxCountedPtr<LxAnimationCurve> read(LxAnimationCurve::ReadCurveStream(&f1));
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->Equals(LxCountedPtr<LxAnimationCurve>(new LxKeyframeCurve(curve))));

    // Values placed in reverse order with a gap: key 0 reads offset 8, key 1 offset 0.
    auto u32 = [](unsigned int v) { return std::string(reinterpret_cast<const char*>(&v), 4); };
    auto f32 = [](float v) { return std::string(reinterpret_cast<const char*>(&v), 4); };
    const std::string reversed = bytes.substr(0, 12) + u32(2) + u32(12) + f32(0.0f) + u32(8) + f32(1.0f) + u32(0) +
                                 f32(2.0f) + "gap!" + f32(1.0f);
    MemoryFile f2(reversed);
    std::unique_ptr<LxAnimationCurve> odd(LxAnimationCurve::ReadCurveStream(&f2));
    ASSERT_TRUE(odd);
    float v = 0;
    ASSERT_TRUE(odd->GetValueFloat(0.5f, &v));
    EXPECT_FLOAT_EQ(v, 1.5f);
    // Keys added later never overwrite the values the file placed.
    ASSERT_TRUE(static_cast<LxKeyframeCurve*>(odd.get())->AddKey(2.0f, 3.0f));
    ASSERT_TRUE(odd->GetValueFloat(0.0f, &v));
    EXPECT_EQ(v, 1.0f);
    ASSERT_TRUE(odd->GetValueFloat(2.0f, &v));
    EXPECT_EQ(v, 3.0f);
}

TEST(LxKeyframeCurve, EveryTruncationIsRefusedAndEveryShortWriteReported)
{
    std::unique_ptr<LxKeyframeCurve> curve(MakeSampleCurve(C::DATA_QUAT, 6, 3));
    const std::string bytes = StreamBytes(*curve);
    Messages log;
    for (size_t length = 0; length < bytes.size(); ++length)
    {
        log.Clear();
        MemoryFile out;
        out.writeBudget = length;
        EXPECT_FALSE(curve->WriteCurveStream(&out)) << length;
        EXPECT_EQ(log.Errors(), Lines{"I/O error writing curve file."}) << length;
        log.Clear();
        MemoryFile file(bytes.substr(0, length));
        EXPECT_EQ(LxAnimationCurve::ReadCurveStream(&file), nullptr) << length;
        EXPECT_EQ(log.Errors(), Lines{"Error reading curve file header."}) << length;
        // The body on its own, too.
        log.Clear();
        MemoryFile body(bytes.substr(8, length < 8 ? 0 : length - 8));
        EXPECT_EQ(LxKeyframeCurve::CreateFromFile(&body), nullptr) << length;
        EXPECT_EQ(log.Errors(), Lines{"Error reading curve file header."}) << length;
    }
}

TEST(LxKeyframeCurve, DamagedStreamsAreRefusedWithTheirMessage)
{
    LxKeyframeCurve curve(C::DATA_FLOAT);
    curve.AddKey(0.0f, 1.0f);
    curve.AddKey(1.0f, 2.0f);
    const std::string good = StreamBytes(curve);
    auto patch = [&](size_t at, const std::string& bytes)
    {
        std::string s = good;
        s.replace(at, bytes.size(), bytes);
        return s;
    };
    const std::string header = "Error reading curve file header.";
    const std::string layout = "LxKeyframeCurve::CreateFromFile.  The keys are out of time order or their values "
                               "lie outside the value pool.";
    const struct
    {
        const char* what;
        std::string bytes;
        std::string message;
    } cases[] = {
        {"curve class 1", patch(1, "\x01"), "Unsupported curve class.  You may have an out-dated build of lumex."},
        {"file version 2", patch(8, "\x02"), "Unsupported curve file version.  You may need to re-build lumex."},
        {"file version 0", patch(8, std::string(1, '\0')),
         "Unsupported curve file version.  You may need to re-build lumex."},
        {"data type 14", patch(10, "\x0e"), "LxKeyframeCurve::CreateFromFile.  Unknown curve data type 14."},
        {"absurd extra size", patch(4, "\xff\xff\xff\xff"), header},
        {"absurd key count", patch(12, "\xff\xff\xff\xff"), header},
        {"more keys than stored", patch(12, "\x05"), header},
        {"absurd pool size", patch(16, "\xf0\xff\xff\xff"), header},
        {"pool too small", patch(16, "\x07"), layout},
        {"offset outside the pool", patch(32, "\x05"), layout},
        {"keys out of order", patch(20, std::string("\x00\x00\x00\x40", 4)), layout},
        {"NaN time", patch(20, std::string("\x00\x00\xc0\x7f", 4)), layout},
        {"pool without keys", patch(12, std::string(4, '\0')), layout},
    };
    Messages log;
    for (const auto& c : cases)
    {
        log.Clear();
        MemoryFile file(c.bytes);
        EXPECT_EQ(LxAnimationCurve::ReadCurveStream(&file), nullptr) << c.what;
        EXPECT_EQ(log.Errors(), Lines{c.message}) << c.what;
    }
}

TEST(LxKeyframeCurve, DiskFilesRoundTrip)
{
    const std::string dir = LxTest::MakeTempDir("curve-files");
    std::unique_ptr<LxKeyframeCurve> curve(MakeSampleCurve(C::DATA_MATRIX, 5, 8));
    ASSERT_TRUE(curve->SaveToFile(S(dir + "/m.crv")));
    EXPECT_EQ(LxTest::ReadBytes(dir + "/m.crv"), StreamBytes(*curve));
    LxCountedPtr<LxAnimationCurve> read(LxKeyframeCurve::CreateFromFile(S(dir + "/m.crv")));
    ASSERT_TRUE(read);
    EXPECT_TRUE(curve->Equals(read));
    Messages log;
    EXPECT_EQ(LxKeyframeCurve::CreateFromFile(S(dir + "/missing.crv")), nullptr);
    EXPECT_FALSE(curve->SaveToFile(S(dir + "/no/such/dir.crv")));
    EXPECT_EQ(log.Errors(),
              (Lines{"LxKeyframeCurve::CreateFromFile.  Couldn't open curve file: " + dir + "/missing.crv",
                     "LxKeyframeCurve::SaveToFile.  Couldn't open " + dir +
                         "/no/such/dir.crv for "
                         "writing."}));
}
