// LxAnimationCurve: the abstract base of everything that maps a time in seconds to a value of one of fourteen data
// types (bone transforms, camera paths, material and effect parameters, visibility flags). Keyframe curves
// (LxKeyframeCurve) are the only class there is.
//
// Values travel as raw bytes (GetValueRaw, GetValueSize bytes) or through the typed accessors, which check the
// curve's data type first. Bool values are one byte per component; the typed bool accessors read any non-zero
// byte as true.
//
// Curve streams: ReadCurveStream / WriteCurveStream add the 8-byte stream prefix (version byte, curve class, two
// reserved bytes, the size of extra data to skip) around the class's own WriteToFile body. Streams are
// little-endian, like every file of the library.
//
// Ownership: curves are shared through LxCountedPtr<LxAnimationCurve>; ReadCurveStream returns a new curve the
// caller owns. Failure: every call that can fail logs an error and returns false or null, leaving its outputs
// untouched. Threading: evaluation moves a search cursor inside the curve, so one curve is used by one thread at
// a time, reads included.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxCountedPtr.h"

class LxFile;
class LxMatrix4;
class LxQuat;
class LxVector2;
class LxVector3;
class LxVector4;

class LX_API LxAnimationCurve
{
public:
    enum AnimationCurveClass : unsigned int
    {
        CLASS_KEYFRAME = 0
    };

    enum AnimationDataType : unsigned int
    {
        DATA_FLOAT = 0,
        DATA_INT = 1,
        DATA_BOOL = 2,
        DATA_VEC2 = 3,
        DATA_VEC3 = 4,
        DATA_VEC4 = 5,
        DATA_QUAT = 6,
        DATA_VEC2_INT = 7,
        DATA_VEC3_INT = 8,
        DATA_VEC4_INT = 9,
        DATA_VEC2_BOOL = 10,
        DATA_VEC3_BOOL = 11,
        DATA_VEC4_BOOL = 12,
        DATA_MATRIX = 13,
        DATA_TYPE_COUNT = 14
    };

    virtual ~LxAnimationCurve() = default;
    virtual AnimationCurveClass GetCurveClass() const = 0;
    virtual AnimationDataType GetDataType() const = 0;
    // The time of the last key (0 for an empty curve).
    virtual float GetAnimationLength() const = 0;
    // Writes GetValueSize() bytes of the value at time t. False (after an error) for an empty curve.
    virtual bool GetValueRaw(float t, void* out) const = 0;
    // The rate of change at t per second, GetValueSize() bytes of floats, computed with the step dt (> 0). Only
    // interpolated types have one; stepped types, an empty curve or a bad step give false after an error.
    virtual bool GetGradientRaw(float t, void* out, float dt) const = 0;
    // The class's own body, without the stream prefix.
    virtual bool WriteToFile(LxFile* file) const = 0;
    // Whether a cut (two keys at one time) lies at exactly time t; keyIndex (may be null) gets its first key.
    virtual bool HasCutAtTime(float t, unsigned int* keyIndex) const = 0;
    // Same class, type and mode, and key for key the same times and value bytes. A null curve is never equal.
    virtual bool Equals(const LxCountedPtr<LxAnimationCurve>& other) const = 0;
    // Whether a cut lies at a time T with min(t0, t1) < T <= max(t0, t1): the cuts that playback from t0 to t1
    // crosses (the value at T is already the value after the jump).
    virtual bool HasCutInTimeInterval(float t0, float t1) const = 0;

    // Bytes per value: 4 float, int; 1 bool; 8 vec2, vec2 int; 12 vec3, vec3 int; 16 vec4, quat, vec4 int;
    // 2, 3, 4 for the bool vectors; 64 matrix. 0 for a value outside the enumeration.
    static unsigned int GetValueSize(AnimationDataType type);
    unsigned int GetValueSize() const { return GetValueSize(GetDataType()); }
    // Stepped types (int, bool and their vectors) hold each key's value until the next key; never blended.
    static bool IsDiscreteType(AnimationDataType type);
    bool IsDiscrete() const { return IsDiscreteType(GetDataType()); }
    // "float", "int", ..., "matrix"; "unknown" outside the enumeration.
    static const char* GetDataTypeName(AnimationDataType type);

    // Typed values: false (after an error) when the curve's data type differs or the curve is empty. The vector
    // int and bool forms write 2, 3 or 4 elements.
    bool GetValueFloat(float t, float* out) const;
    bool GetValueInt(float t, int* out) const;
    bool GetValueBool(float t, bool* out) const;
    bool GetValueVec2(float t, LxVector2* out) const;
    bool GetValueVec3(float t, LxVector3* out) const;
    bool GetValueVec4(float t, LxVector4* out) const;
    bool GetValueVec2Int(float t, int* out) const;
    bool GetValueVec3Int(float t, int* out) const;
    bool GetValueVec4Int(float t, int* out) const;
    bool GetValueVec2Bool(float t, bool* out) const;
    bool GetValueVec3Bool(float t, bool* out) const;
    bool GetValueVec4Bool(float t, bool* out) const;
    bool GetValueQuat(float t, LxQuat* out) const;
    bool GetValueMatrix(float t, LxMatrix4* out) const;

    bool GetGradientFloat(float t, float* out, float dt) const;
    bool GetGradientVec2(float t, LxVector2* out, float dt) const;
    bool GetGradientVec3(float t, LxVector3* out, float dt) const;
    bool GetGradientVec4(float t, LxVector4* out, float dt) const;
    bool GetGradientQuat(float t, LxQuat* out, float dt) const;
    bool GetGradientMatrix(float t, LxMatrix4* out, float dt) const;

    // Reads one curve stream (prefix and body) from the file's current position; null after an error. A short
    // prefix: "Error reading curve file header."; a class other than 0: "Unsupported curve class.  You may have an
    // out-dated build of lumex.". The prefix's first byte (the writer's version) is not checked.
    static LxAnimationCurve* ReadCurveStream(LxFile* file);
    // Writes the prefix (version 1, the class, two zero bytes, no extra data) and the body.
    bool WriteCurveStream(LxFile* file) const;

protected:
    // The common check of the typed accessors: logs and returns false when the curve's type is not `wanted`.
    bool CheckType(AnimationDataType wanted, const char* accessor) const;
};
