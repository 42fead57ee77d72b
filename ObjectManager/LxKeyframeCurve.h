// LxKeyframeCurve: a curve given by keys sorted by time, each holding one value in a byte pool.
//
// Evaluation: before the first key or with one key, the first value; at or after the last key, the last value;
// between keys the segment is found by walking a cursor from the segment used last, so playback in either
// direction costs constant time per step and a far jump costs the keys it crosses. Stepped types return the
// earlier key's value. Interpolated types blend with u = (t - t0) / (t1 - t0): in linear mode each float is
// (1 - u) a + u b, quaternions taking the shorter arc (b negated when a . b < 0, no renormalisation); any other
// mode slerps the values as quaternions (LxQuat::Slerp), four floats at a time, a value shorter than a quaternion
// zero-padded. Two keys at one time form a cut: at exactly that time the value after the jump is returned.
//
// Body format (WriteToFile / CreateFromFile): version byte 1, a zero byte, the data type byte, the mode byte, the
// key count (u32), the pool size (u32: largest key offset plus the value size, 0 without keys), 8 bytes per key
// (time as float, value offset as u32), then the pool. Reading validates before it trusts: keys must be in time
// order and their values inside the pool, and the arrays grow only as fast as the data arrives, so an absurd
// count costs nothing but the error.
//
// Ownership: CreateFromFile returns a new curve the caller owns (usually into a LxCountedPtr). Failure: logged,
// false or null, the curve unchanged. Threading: one thread at a time per curve, evaluation included (the
// cursor is mutable state).
#pragma once

#include "ObjectManager/LxAnimationCurve.h"

#include "Common/LxArray.h"
#include "Common/LxString.h"

class LX_API LxKeyframeCurve : public LxAnimationCurve
{
public:
    enum InterpolationMode : unsigned int
    {
        INTERPOLATE_LINEAR = 0,
        INTERPOLATE_SPHERICAL = 1 // any value other than 0 slerps
    };

    explicit LxKeyframeCurve(AnimationDataType type, InterpolationMode mode = INTERPOLATE_LINEAR);

    AnimationCurveClass GetCurveClass() const override { return CLASS_KEYFRAME; }
    AnimationDataType GetDataType() const override { return m_eType; }
    float GetAnimationLength() const override;
    bool GetValueRaw(float t, void* out) const override;
    bool GetGradientRaw(float t, void* out, float dt) const override;
    bool WriteToFile(LxFile* file) const override;
    bool HasCutAtTime(float t, unsigned int* keyIndex) const override;
    bool Equals(const LxCountedPtr<LxAnimationCurve>& other) const override;
    bool HasCutInTimeInterval(float t0, float t1) const override;

    InterpolationMode GetInterpolationMode() const { return m_eMode; }
    void SetInterpolationMode(InterpolationMode mode) { m_eMode = mode; }

    // Appends a key holding GetValueSize() bytes from `value`. A time below the last key's is refused ("Attempted
    // to add a keyframe to a curve out of order.  Keyframes must be added in increasing order by time."), as is
    // a time that is not a number; an equal time makes a cut. The value goes to offset value size x key index
    // (or the end of the pool, if a loaded pool reaches further); the pool doubles when full.
    bool AddKey(float time, const void* value);
    // Typed forms: refused with an error when the curve's data type differs.
    bool AddKey(float time, float value);
    bool AddKey(float time, int value);
    bool AddKey(float time, bool value);
    bool AddKey(float time, const LxVector2& value);
    bool AddKey(float time, const LxVector3& value);
    bool AddKey(float time, const LxVector4& value);
    bool AddKey(float time, const LxQuat& value);
    bool AddKey(float time, const LxMatrix4& value);

    // Removes keys that the curve can do without: a key is dropped when, with it gone, evaluation at its time and
    // at the times of the keys dropped since the last kept key still gives values within `tolerance` of theirs
    // (every float component; stepped types must match exactly). The first and last keys and both keys of a cut
    // stay. Runs of dropped keys are limited to 1024 so the cost stays linear. Returns the number of keys removed;
    // the pool is rebuilt compactly.
    unsigned int Compress(float tolerance);
    // Removes every key; type and mode stay.
    void Clear();

    unsigned int GetNumKeys() const { return m_keys.GetCount(); }
    // 0 for an index out of range.
    float GetKeyTime(unsigned int index) const;
    // The key's GetValueSize() bytes; null for an index out of range.
    const void* GetKeyData(unsigned int index) const;
    // 1 when key index+1 has the same time, else 2 when key index-1 has, else 0.
    int GetCutTypeAtKey(unsigned int index) const;

    // Typed key readers: false (after an error) for an index out of range or a data type that differs.
    bool GetKeyValueFloat(unsigned int index, float* out) const;
    bool GetKeyValueInt(unsigned int index, int* out) const;
    bool GetKeyValueBool(unsigned int index, bool* out) const;
    bool GetKeyValueVec2(unsigned int index, LxVector2* out) const;
    bool GetKeyValueVec3(unsigned int index, LxVector3* out) const;
    bool GetKeyValueVec4(unsigned int index, LxVector4* out) const;
    bool GetKeyValueVec2Int(unsigned int index, int* out) const;
    bool GetKeyValueVec3Int(unsigned int index, int* out) const;
    bool GetKeyValueVec4Int(unsigned int index, int* out) const;
    bool GetKeyValueVec2Bool(unsigned int index, bool* out) const;
    bool GetKeyValueVec3Bool(unsigned int index, bool* out) const;
    bool GetKeyValueVec4Bool(unsigned int index, bool* out) const;
    bool GetKeyValueQuat(unsigned int index, LxQuat* out) const;
    bool GetKeyValueMatrix(unsigned int index, LxMatrix4* out) const;

    // Reads a body (no stream prefix) from the file's current position. A short read anywhere: "Error reading
    // curve file header."; a version other than 1: "Unsupported curve file version.  You may need to re-build
    // lumex.". Null after an error, with nothing kept.
    static LxKeyframeCurve* CreateFromFile(LxFile* file);
    // Opens the named disk file ("rb") and reads one curve stream (prefix and body) that holds a keyframe curve.
    static LxKeyframeCurve* CreateFromFile(const LxString& name);
    // Writes one curve stream (prefix and body) to a new disk file ("wb").
    bool SaveToFile(const LxString& name) const;

private:
    struct Key
    {
        float time;
        unsigned int offset;
    };
    static_assert(sizeof(Key) == 8, "a key record is 8 bytes on disk and in memory");

    const unsigned char* ValueAt(unsigned int index) const { return m_values.GetData() + m_keys[index].offset; }
    // The value at fraction u between the values a and b, by the rules of the type and mode.
    void Blend(const unsigned char* a, const unsigned char* b, float u, unsigned char* out) const;
    // Finds the segment i with time(i) <= t < time(i+1), t strictly inside the key range.
    unsigned int FindSegment(float t) const;
    bool CheckKeyType(unsigned int index, AnimationDataType wanted, const char* accessor) const;
    bool AddTypedKey(float time, const void* value, AnimationDataType type, const char* what);
    // The largest key offset plus the value size: the part of the pool that the file holds.
    unsigned int GetUsedPoolSize() const;

    mutable unsigned int m_nCursor = 0;
    InterpolationMode m_eMode;
    LxArray<Key> m_keys;
    AnimationDataType m_eType;
    LxArray<unsigned char> m_values;
};
