#include "ObjectManager/LxKeyframeCurve.h"

#include "Common/LxFile.h"
#include "Common/LxLogManager.h"
#include "Common/LxMatrix4.h"
#include "Common/LxQuat.h"
#include "Common/LxVector2.h"
#include "ObjectManager/LxCurveIO.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

namespace
{
const unsigned int kCurveFileVersion = 1;
const unsigned int kMaxValueSize = 64;
// Longest run of consecutive keys Compress drops before it keeps one: each candidate is checked against every
// key dropped since the last kept one, so the run length bounds the cost per key.
const unsigned int kMaxCompressRun = 1024;
// Keys and pool bytes are read in slices of these sizes: memory follows the data that actually arrives.
const unsigned int kKeySlice = 8192;
const unsigned int kPoolSlice = 65536;

// Grows `array` to hold `count` elements, doubling its capacity so that slice-wise reading stays linear.
template <class T>
void GrowForSlice(LxArray<T>& array, unsigned int count)
{
    if (count > array.GetCapacity())
    {
        const unsigned long long doubled = 2ull * array.GetCapacity();
        array.Reserve(doubled > count && doubled <= 0xFFFFFFFFull ? static_cast<unsigned int>(doubled) : count);
    }
    array.Resize(count);
}

// Linear blend of `count` floats: (1 - u) a + u b, the form the evaluation rules fix.
inline void LerpFloats(const float* a, const float* b, float u, unsigned int count, float* out)
{
    const float w = 1.0f - u;
    for (unsigned int k = 0; k < count; ++k)
        out[k] = w * a[k] + u * b[k];
}
} // namespace

LxKeyframeCurve::LxKeyframeCurve(AnimationDataType type, InterpolationMode mode) : m_eMode(mode), m_eType(type) {}

float LxKeyframeCurve::GetAnimationLength() const
{
    return m_keys.IsEmpty() ? 0.0f : m_keys.GetLast().time;
}

unsigned int LxKeyframeCurve::FindSegment(float t) const
{
    // The caller guarantees time(0) < t < time(n - 1) with n >= 2, so both walks stop inside the key array:
    // no bounds tests in the loops. A cursor left beyond the keys (after Clear or Compress) restarts at 0.
    const Key* keys = m_keys.GetData();
    unsigned int c = m_nCursor;
    if (c + 1 >= m_keys.GetCount())
        c = 0;
    if (t >= keys[c + 1].time)
    {
        do
            ++c;
        while (t >= keys[c + 1].time);
    }
    else
    {
        while (keys[c].time > t)
            --c;
    }
    m_nCursor = c;
    return c;
}

void LxKeyframeCurve::Blend(const unsigned char* pa, const unsigned char* pb, float u, unsigned char* out) const
{
    const unsigned int size = GetValueSize();
    if (m_eType == DATA_FLOAT && m_eMode == INTERPOLATE_LINEAR)
    {
        // The common case on its own: two loads, one blend.
        float a, b;
        std::memcpy(&a, pa, 4);
        std::memcpy(&b, pb, 4);
        const float r = (1.0f - u) * a + u * b;
        std::memcpy(out, &r, 4);
        return;
    }
    // Pool offsets carry no alignment promise: values are copied out before they are read as floats.
    float a[16] = {}, b[16] = {}, r[16];
    std::memcpy(a, pa, size);
    std::memcpy(b, pb, size);
    if (m_eMode != INTERPOLATE_LINEAR)
    {
        // Spherical mode treats every value as quaternions, four floats at a time; shorter values are zero-padded
        // and only their own bytes are written back.
        for (unsigned int g = 0; g * 16 < size; ++g)
        {
            const float* qa = a + 4 * g;
            const float* qb = b + 4 * g;
            const LxQuat q = LxQuat::Slerp(u, LxQuat(qa[0], qa[1], qa[2], qa[3]), LxQuat(qb[0], qb[1], qb[2], qb[3]));
            r[4 * g + 0] = q.w;
            r[4 * g + 1] = q.x;
            r[4 * g + 2] = q.y;
            r[4 * g + 3] = q.z;
        }
    }
    else
    {
        if (m_eType == DATA_QUAT && a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3] < 0.0f)
        {
            // q and -q are the same rotation: blend towards the one on the shorter arc.
            for (unsigned int k = 0; k < 4; ++k)
                b[k] = -b[k];
        }
        LerpFloats(a, b, u, size / 4, r);
    }
    std::memcpy(out, r, size);
}

bool LxKeyframeCurve::GetValueRaw(float t, void* out) const
{
    const unsigned int n = m_keys.GetCount();
    if (n == 0)
    {
        LX_ERROR("Attempted to extract a value from an empty animation curve.");
        return false;
    }
    const unsigned int size = GetValueSize();
    const Key* keys = m_keys.GetData();
    if (n == 1 || t <= keys[0].time)
    {
        std::memcpy(out, ValueAt(0), size);
        return true;
    }
    if (t >= keys[n - 1].time)
    {
        std::memcpy(out, ValueAt(n - 1), size);
        return true;
    }
    const unsigned int i = FindSegment(t);
    if (IsDiscreteType(m_eType))
    {
        std::memcpy(out, ValueAt(i), size);
        return true;
    }
    const float u = (t - keys[i].time) / (keys[i + 1].time - keys[i].time);
    Blend(ValueAt(i), ValueAt(i + 1), u, static_cast<unsigned char*>(out));
    return true;
}

bool LxKeyframeCurve::GetGradientRaw(float t, void* out, float dt) const
{
    if (IsDiscreteType(m_eType))
    {
        LX_ERROR("LxKeyframeCurve::GetGradientRaw.  %s curves are stepped and have no gradient.",
                 GetDataTypeName(m_eType));
        return false;
    }
    if (!(dt > 0.0f) || !std::isfinite(dt))
    {
        LX_ERROR("LxKeyframeCurve::GetGradientRaw.  The step must be a positive number of seconds.");
        return false;
    }
    // Central difference over [t - dt, t + dt].
    float before[16], after[16], r[16];
    if (!GetValueRaw(t - dt, before) || !GetValueRaw(t + dt, after))
        return false;
    const unsigned int count = GetValueSize() / 4;
    if (m_eType == DATA_QUAT &&
        before[0] * after[0] + before[1] * after[1] + before[2] * after[2] + before[3] * after[3] < 0.0f)
    {
        // Linear quaternion blending may hand back -q across a key: difference the same rotation's sign.
        for (unsigned int k = 0; k < 4; ++k)
            before[k] = -before[k];
    }
    for (unsigned int k = 0; k < count; ++k)
        r[k] = (after[k] - before[k]) / (2.0f * dt);
    std::memcpy(out, r, count * 4);
    return true;
}

bool LxKeyframeCurve::HasCutAtTime(float t, unsigned int* keyIndex) const
{
    // The first key at or after t.
    unsigned int lo = 0, hi = m_keys.GetCount();
    while (lo < hi)
    {
        const unsigned int mid = lo + (hi - lo) / 2;
        if (m_keys[mid].time < t)
            lo = mid + 1;
        else
            hi = mid;
    }
    if (lo + 1 < m_keys.GetCount() && m_keys[lo].time == t && m_keys[lo + 1].time == t)
    {
        if (keyIndex)
            *keyIndex = lo;
        return true;
    }
    return false;
}

bool LxKeyframeCurve::HasCutInTimeInterval(float t0, float t1) const
{
    const float lo = t0 < t1 ? t0 : t1;
    const float hi = t0 < t1 ? t1 : t0;
    // The first key after lo, then the keys up to hi.
    unsigned int a = 0, b = m_keys.GetCount();
    while (a < b)
    {
        const unsigned int mid = a + (b - a) / 2;
        if (m_keys[mid].time <= lo)
            a = mid + 1;
        else
            b = mid;
    }
    for (unsigned int i = a; i + 1 < m_keys.GetCount() && m_keys[i].time <= hi; ++i)
    {
        if (m_keys[i].time == m_keys[i + 1].time)
            return true;
    }
    return false;
}

bool LxKeyframeCurve::Equals(const LxCountedPtr<LxAnimationCurve>& other) const
{
    // dynamic_cast, not the class tag: a foreign curve may claim any class.
    const LxKeyframeCurve* keyframes = dynamic_cast<const LxKeyframeCurve*>(other.Get());
    if (!keyframes)
        return false;
    const LxKeyframeCurve& o = *keyframes;
    if (o.m_eType != m_eType || o.m_eMode != m_eMode || o.m_keys.GetCount() != m_keys.GetCount())
        return false;
    const unsigned int size = GetValueSize();
    for (unsigned int i = 0; i < m_keys.GetCount(); ++i)
    {
        if (std::memcmp(&m_keys[i].time, &o.m_keys[i].time, 4) != 0 || std::memcmp(ValueAt(i), o.ValueAt(i), size) != 0)
            return false;
    }
    return true;
}

bool LxKeyframeCurve::AddKey(float time, const void* value)
{
    if (!value || std::isnan(time))
    {
        LX_ERROR("LxKeyframeCurve::AddKey.  A key needs a value and a time that is a number.");
        return false;
    }
    const unsigned int n = m_keys.GetCount();
    if (n > 0 && time < m_keys.GetLast().time)
    {
        LX_ERROR("Attempted to add a keyframe to a curve out of order.  Keyframes must be added in increasing order "
                 "by time.");
        return false;
    }
    const unsigned int size = GetValueSize();
    unsigned long long offset = static_cast<unsigned long long>(size) * n;
    if (offset < m_values.GetCount())
        offset = m_values.GetCount(); // a loaded pool may place values anywhere: never overwrite one
    const unsigned long long end = offset + size;
    if (end > 0xFFFFFFFFull || n == 0xFFFFFFFFu)
    {
        LX_ERROR("LxKeyframeCurve::AddKey.  The curve cannot hold more keys.");
        return false;
    }
    unsigned char copy[kMaxValueSize];
    std::memcpy(copy, value, size); // the value may live in this curve's own pool, which may move
    if (end > m_values.GetCapacity())
    {
        unsigned long long capacity = m_values.GetCapacity() ? m_values.GetCapacity() : size;
        while (capacity < end)
            capacity *= 2;
        m_values.Reserve(static_cast<unsigned int>(capacity > 0xFFFFFFFFull ? end : capacity));
    }
    if (end > m_values.GetCount())
        m_values.Resize(static_cast<unsigned int>(end));
    std::memcpy(m_values.GetData() + offset, copy, size);
    m_keys.Add(Key{time, static_cast<unsigned int>(offset)});
    return true;
}

bool LxKeyframeCurve::AddTypedKey(float time, const void* value, AnimationDataType type, const char* what)
{
    if (m_eType != type)
    {
        LX_ERROR("LxKeyframeCurve::AddKey.  A %s key cannot be added to a %s curve.", what, GetDataTypeName(m_eType));
        return false;
    }
    return AddKey(time, value);
}

bool LxKeyframeCurve::AddKey(float time, float value)
{
    return AddTypedKey(time, &value, DATA_FLOAT, "float");
}

bool LxKeyframeCurve::AddKey(float time, int value)
{
    return AddTypedKey(time, &value, DATA_INT, "int");
}

bool LxKeyframeCurve::AddKey(float time, bool value)
{
    const unsigned char byte = value ? 1 : 0;
    return AddTypedKey(time, &byte, DATA_BOOL, "bool");
}

bool LxKeyframeCurve::AddKey(float time, const LxVector2& value)
{
    return AddTypedKey(time, value.GetData(), DATA_VEC2, "vec2");
}

bool LxKeyframeCurve::AddKey(float time, const LxVector3& value)
{
    const float v[3] = {value.x, value.y, value.z};
    return AddTypedKey(time, v, DATA_VEC3, "vec3");
}

bool LxKeyframeCurve::AddKey(float time, const LxVector4& value)
{
    return AddTypedKey(time, value.GetData(), DATA_VEC4, "vec4");
}

bool LxKeyframeCurve::AddKey(float time, const LxQuat& value)
{
    const float v[4] = {value.w, value.x, value.y, value.z};
    return AddTypedKey(time, v, DATA_QUAT, "quat");
}

bool LxKeyframeCurve::AddKey(float time, const LxMatrix4& value)
{
    return AddTypedKey(time, value.GetData(), DATA_MATRIX, "matrix");
}

unsigned int LxKeyframeCurve::Compress(float tolerance)
{
    const unsigned int n = m_keys.GetCount();
    if (n < 3)
        return 0;
    const unsigned int size = GetValueSize();
    const bool discrete = IsDiscreteType(m_eType);
    LxArray<unsigned int> kept;
    kept.Reserve(n);
    kept.Add(0);
    for (unsigned int i = 1; i + 1 < n; ++i)
    {
        const unsigned int a = kept.GetLast();
        const unsigned int j = i + 1;
        bool drop = GetCutTypeAtKey(i) == 0 && i - a <= kMaxCompressRun;
        if (drop && discrete)
            drop = std::memcmp(ValueAt(i), ValueAt(a), size) == 0;
        else if (drop)
        {
            // With key i gone, the segment a..j must still pass through every key dropped since a.
            const float span = m_keys[j].time - m_keys[a].time;
            drop = span > 0.0f;
            float blended[16], original[16];
            for (unsigned int m = a + 1; drop && m <= i; ++m)
            {
                const float u = (m_keys[m].time - m_keys[a].time) / span;
                Blend(ValueAt(a), ValueAt(j), u, reinterpret_cast<unsigned char*>(blended));
                std::memcpy(original, ValueAt(m), size);
                for (unsigned int k = 0; k < size / 4; ++k)
                {
                    if (!(std::fabs(blended[k] - original[k]) <= tolerance))
                        drop = false;
                }
            }
        }
        if (!drop)
            kept.Add(i);
    }
    kept.Add(n - 1);
    const unsigned int removed = n - kept.GetCount();
    if (removed == 0)
        return 0;
    LxArray<Key> keys;
    LxArray<unsigned char> values;
    keys.Reserve(kept.GetCount());
    values.Resize(kept.GetCount() * size);
    for (unsigned int k = 0; k < kept.GetCount(); ++k)
    {
        std::memcpy(values.GetData() + k * size, ValueAt(kept[k]), size);
        keys.Add(Key{m_keys[kept[k]].time, k * size});
    }
    m_keys = std::move(keys);
    m_values = std::move(values);
    m_nCursor = 0;
    return removed;
}

void LxKeyframeCurve::Clear()
{
    m_keys.Clear();
    m_values.Clear();
    m_nCursor = 0;
}

float LxKeyframeCurve::GetKeyTime(unsigned int index) const
{
    return index < m_keys.GetCount() ? m_keys[index].time : 0.0f;
}

const void* LxKeyframeCurve::GetKeyData(unsigned int index) const
{
    return index < m_keys.GetCount() ? ValueAt(index) : nullptr;
}

int LxKeyframeCurve::GetCutTypeAtKey(unsigned int index) const
{
    const unsigned int n = m_keys.GetCount();
    if (index >= n)
        return 0;
    if (index + 1 < n && m_keys[index + 1].time == m_keys[index].time)
        return 1;
    if (index > 0 && m_keys[index - 1].time == m_keys[index].time)
        return 2;
    return 0;
}

bool LxKeyframeCurve::CheckKeyType(unsigned int index, AnimationDataType wanted, const char* accessor) const
{
    if (index >= m_keys.GetCount())
    {
        LX_ERROR("LxKeyframeCurve::%s.  Key %u does not exist; the curve has %u keys.", accessor, index,
                 m_keys.GetCount());
        return false;
    }
    return CheckType(wanted, accessor);
}

#define LX_KEY_VALUE(Method, Type, OutType, Count)                                                                     \
    bool LxKeyframeCurve::Method(unsigned int index, OutType* out) const                                               \
    {                                                                                                                  \
        if (!CheckKeyType(index, Type, #Method))                                                                       \
            return false;                                                                                              \
        std::memcpy(static_cast<void*>(out), ValueAt(index), sizeof(OutType) * (Count));                               \
        return true;                                                                                                   \
    }

LX_KEY_VALUE(GetKeyValueFloat, DATA_FLOAT, float, 1)
LX_KEY_VALUE(GetKeyValueInt, DATA_INT, int, 1)
LX_KEY_VALUE(GetKeyValueVec2, DATA_VEC2, LxVector2, 1)
LX_KEY_VALUE(GetKeyValueVec3, DATA_VEC3, LxVector3, 1)
LX_KEY_VALUE(GetKeyValueVec4, DATA_VEC4, LxVector4, 1)
LX_KEY_VALUE(GetKeyValueVec2Int, DATA_VEC2_INT, int, 2)
LX_KEY_VALUE(GetKeyValueVec3Int, DATA_VEC3_INT, int, 3)
LX_KEY_VALUE(GetKeyValueVec4Int, DATA_VEC4_INT, int, 4)
LX_KEY_VALUE(GetKeyValueQuat, DATA_QUAT, LxQuat, 1)
#undef LX_KEY_VALUE

#define LX_KEY_BOOLS(Method, Type, Count)                                                                              \
    bool LxKeyframeCurve::Method(unsigned int index, bool* out) const                                                  \
    {                                                                                                                  \
        if (!CheckKeyType(index, Type, #Method))                                                                       \
            return false;                                                                                              \
        const unsigned char* bytes = ValueAt(index);                                                                   \
        for (unsigned int k = 0; k < (Count); ++k)                                                                     \
            out[k] = bytes[k] != 0;                                                                                    \
        return true;                                                                                                   \
    }

LX_KEY_BOOLS(GetKeyValueBool, DATA_BOOL, 1)
LX_KEY_BOOLS(GetKeyValueVec2Bool, DATA_VEC2_BOOL, 2)
LX_KEY_BOOLS(GetKeyValueVec3Bool, DATA_VEC3_BOOL, 3)
LX_KEY_BOOLS(GetKeyValueVec4Bool, DATA_VEC4_BOOL, 4)
#undef LX_KEY_BOOLS

bool LxKeyframeCurve::GetKeyValueMatrix(unsigned int index, LxMatrix4* out) const
{
    if (!CheckKeyType(index, DATA_MATRIX, "GetKeyValueMatrix"))
        return false;
    float m[16];
    std::memcpy(m, ValueAt(index), sizeof(m));
    out->SetColumnMajor(m);
    return true;
}

unsigned int LxKeyframeCurve::GetUsedPoolSize() const
{
    if (m_keys.IsEmpty())
        return 0;
    unsigned int largest = 0;
    for (const Key& key : m_keys)
        largest = key.offset > largest ? key.offset : largest;
    return largest + GetValueSize();
}

bool LxKeyframeCurve::WriteToFile(LxFile* file) const
{
    LxCurveIO io(file);
    // The mode travels as one byte: any spherical mode must stay non-zero on the way.
    const unsigned char mode = m_eMode == INTERPOLATE_LINEAR ? 0
                               : (m_eMode & 0xFFu) != 0      ? static_cast<unsigned char>(m_eMode)
                                                             : 1;
    const unsigned char head[4] = {kCurveFileVersion, 0, static_cast<unsigned char>(m_eType), mode};
    const unsigned int counts[2] = {m_keys.GetCount(), GetUsedPoolSize()};
    if (!io.IsAttached() || !io.WriteUInt8(head, 4) || !io.WriteUInt32(counts, 2) ||
        !io.WriteData(m_keys.GetData(), sizeof(Key), counts[0]) || !io.WriteData(m_values.GetData(), 1, counts[1]))
    {
        LX_ERROR("I/O error writing curve file.");
        return false;
    }
    return true;
}

LxKeyframeCurve* LxKeyframeCurve::CreateFromFile(LxFile* file)
{
    LxCurveIO io(file);
    if (!io.IsAttached())
        return nullptr;
    unsigned char head[4];
    unsigned int counts[2];
    if (!io.ReadUInt8(head, 4) || !io.ReadUInt32(counts, 2))
    {
        LX_ERROR("Error reading curve file header.");
        return nullptr;
    }
    if (head[0] != kCurveFileVersion)
    {
        LX_ERROR("Unsupported curve file version.  You may need to re-build lumex.");
        return nullptr;
    }
    if (head[2] >= DATA_TYPE_COUNT)
    {
        LX_ERROR("LxKeyframeCurve::CreateFromFile.  Unknown curve data type %u.", head[2]);
        return nullptr;
    }
    const unsigned int keyCount = counts[0];
    const unsigned int poolSize = counts[1];
    std::unique_ptr<LxKeyframeCurve> curve(
        new LxKeyframeCurve(static_cast<AnimationDataType>(head[2]), static_cast<InterpolationMode>(head[3])));
    for (unsigned int done = 0; done < keyCount;)
    {
        const unsigned int n = keyCount - done < kKeySlice ? keyCount - done : kKeySlice;
        GrowForSlice(curve->m_keys, done + n);
        if (!io.ReadData(curve->m_keys.GetData() + done, sizeof(Key), n))
        {
            LX_ERROR("Error reading curve file header.");
            return nullptr;
        }
        done += n;
    }
    // Evaluation trusts the keys blindly, so they are checked here: in time order, values inside the pool.
    const unsigned long long size = curve->GetValueSize();
    bool valid = keyCount > 0 || poolSize == 0;
    for (unsigned int i = 0; valid && i < keyCount; ++i)
    {
        const Key& key = curve->m_keys[i];
        valid =
            !std::isnan(key.time) && (i == 0 || key.time >= curve->m_keys[i - 1].time) && key.offset + size <= poolSize;
    }
    if (!valid)
    {
        LX_ERROR("LxKeyframeCurve::CreateFromFile.  The keys are out of time order or their values lie outside "
                 "the value pool.");
        return nullptr;
    }
    for (unsigned int done = 0; done < poolSize;)
    {
        const unsigned int n = poolSize - done < kPoolSlice ? poolSize - done : kPoolSlice;
        GrowForSlice(curve->m_values, done + n);
        if (!io.ReadData(curve->m_values.GetData() + done, 1, n))
        {
            LX_ERROR("Error reading curve file header.");
            return nullptr;
        }
        done += n;
    }
    return curve.release();
}

LxKeyframeCurve* LxKeyframeCurve::CreateFromFile(const LxString& name)
{
    std::unique_ptr<LxFile> file(LxFile::Open(name, "rb"));
    if (!file->IsOpen())
    {
        LX_ERROR("LxKeyframeCurve::CreateFromFile.  Couldn't open curve file: %s", name.c_str());
        return nullptr;
    }
    // Keyframe curves are the only class a stream can hold.
    return static_cast<LxKeyframeCurve*>(ReadCurveStream(file.get()));
}

bool LxKeyframeCurve::SaveToFile(const LxString& name) const
{
    std::unique_ptr<LxFile> file(LxFile::Open(name, "wb"));
    if (!file->IsOpen())
    {
        LX_ERROR("LxKeyframeCurve::SaveToFile.  Couldn't open %s for writing.", name.c_str());
        return false;
    }
    const bool written = WriteCurveStream(file.get()) && file->Flush();
    file.reset();
    if (!written)
        std::remove(name.c_str()); // no half-written curve file stays behind
    return written;
}
