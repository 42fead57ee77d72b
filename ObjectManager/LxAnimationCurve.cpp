#include "ObjectManager/LxAnimationCurve.h"

#include "Common/LxLogManager.h"
#include "Common/LxMatrix4.h"
#include "Common/LxQuat.h"
#include "Common/LxVector2.h"
#include "ObjectManager/LxCurveIO.h"
#include "ObjectManager/LxKeyframeCurve.h"

#include <cstring>

namespace
{
struct TypeInfo
{
    unsigned int size;
    bool discrete;
    const char* name;
};

const TypeInfo kTypes[LxAnimationCurve::DATA_TYPE_COUNT] = {
    {4, false, "float"},    {4, true, "int"},       {1, true, "bool"},      {8, false, "vec2"},
    {12, false, "vec3"},    {16, false, "vec4"},    {16, false, "quat"},    {8, true, "vec2 int"},
    {12, true, "vec3 int"}, {16, true, "vec4 int"}, {2, true, "vec2 bool"}, {3, true, "vec3 bool"},
    {4, true, "vec4 bool"}, {64, false, "matrix"},
};

// Bool values are stored as bytes; any non-zero byte reads as true (a bool object must only ever hold 0 or 1).
void BytesToBools(const unsigned char* bytes, unsigned int count, bool* out)
{
    for (unsigned int i = 0; i < count; ++i)
        out[i] = bytes[i] != 0;
}
} // namespace

unsigned int LxAnimationCurve::GetValueSize(AnimationDataType type)
{
    return type < DATA_TYPE_COUNT ? kTypes[type].size : 0u;
}

bool LxAnimationCurve::IsDiscreteType(AnimationDataType type)
{
    return type < DATA_TYPE_COUNT && kTypes[type].discrete;
}

const char* LxAnimationCurve::GetDataTypeName(AnimationDataType type)
{
    return type < DATA_TYPE_COUNT ? kTypes[type].name : "unknown";
}

bool LxAnimationCurve::CheckType(AnimationDataType wanted, const char* accessor) const
{
    if (GetDataType() == wanted)
        return true;
    LX_ERROR("LxAnimationCurve::%s.  The curve holds %s values, not %s.", accessor, GetDataTypeName(GetDataType()),
             GetDataTypeName(wanted));
    return false;
}

// Values are read into a local buffer first: the output type may be stricter (bool) or differently aligned than
// the raw bytes.
#define LX_CURVE_VALUE(Method, Type, OutType, Count)                                                                   \
    bool LxAnimationCurve::Method(float t, OutType* out) const                                                         \
    {                                                                                                                  \
        if (!CheckType(Type, #Method))                                                                                 \
            return false;                                                                                              \
        OutType value[Count];                                                                                          \
        if (!GetValueRaw(t, value))                                                                                    \
            return false;                                                                                              \
        std::memcpy(out, value, sizeof(value));                                                                        \
        return true;                                                                                                   \
    }

LX_CURVE_VALUE(GetValueFloat, DATA_FLOAT, float, 1)
LX_CURVE_VALUE(GetValueInt, DATA_INT, int, 1)
LX_CURVE_VALUE(GetValueVec2, DATA_VEC2, LxVector2, 1)
LX_CURVE_VALUE(GetValueVec3, DATA_VEC3, LxVector3, 1)
LX_CURVE_VALUE(GetValueVec4, DATA_VEC4, LxVector4, 1)
LX_CURVE_VALUE(GetValueVec2Int, DATA_VEC2_INT, int, 2)
LX_CURVE_VALUE(GetValueVec3Int, DATA_VEC3_INT, int, 3)
LX_CURVE_VALUE(GetValueVec4Int, DATA_VEC4_INT, int, 4)
LX_CURVE_VALUE(GetValueQuat, DATA_QUAT, LxQuat, 1)
#undef LX_CURVE_VALUE

bool LxAnimationCurve::GetValueMatrix(float t, LxMatrix4* out) const
{
    if (!CheckType(DATA_MATRIX, "GetValueMatrix"))
        return false;
    float value[16];
    if (!GetValueRaw(t, value))
        return false;
    out->SetColumnMajor(value);
    return true;
}

#define LX_CURVE_BOOLS(Method, Type, Count)                                                                            \
    bool LxAnimationCurve::Method(float t, bool* out) const                                                            \
    {                                                                                                                  \
        if (!CheckType(Type, #Method))                                                                                 \
            return false;                                                                                              \
        unsigned char bytes[Count];                                                                                    \
        if (!GetValueRaw(t, bytes))                                                                                    \
            return false;                                                                                              \
        BytesToBools(bytes, Count, out);                                                                               \
        return true;                                                                                                   \
    }

LX_CURVE_BOOLS(GetValueBool, DATA_BOOL, 1)
LX_CURVE_BOOLS(GetValueVec2Bool, DATA_VEC2_BOOL, 2)
LX_CURVE_BOOLS(GetValueVec3Bool, DATA_VEC3_BOOL, 3)
LX_CURVE_BOOLS(GetValueVec4Bool, DATA_VEC4_BOOL, 4)
#undef LX_CURVE_BOOLS

#define LX_CURVE_GRADIENT(Method, Type, OutType)                                                                       \
    bool LxAnimationCurve::Method(float t, OutType* out, float dt) const                                               \
    {                                                                                                                  \
        if (!CheckType(Type, #Method))                                                                                 \
            return false;                                                                                              \
        OutType value;                                                                                                 \
        if (!GetGradientRaw(t, &value, dt))                                                                            \
            return false;                                                                                              \
        *out = value;                                                                                                  \
        return true;                                                                                                   \
    }

LX_CURVE_GRADIENT(GetGradientFloat, DATA_FLOAT, float)
LX_CURVE_GRADIENT(GetGradientVec2, DATA_VEC2, LxVector2)
LX_CURVE_GRADIENT(GetGradientVec3, DATA_VEC3, LxVector3)
LX_CURVE_GRADIENT(GetGradientVec4, DATA_VEC4, LxVector4)
LX_CURVE_GRADIENT(GetGradientQuat, DATA_QUAT, LxQuat)
#undef LX_CURVE_GRADIENT

bool LxAnimationCurve::GetGradientMatrix(float t, LxMatrix4* out, float dt) const
{
    if (!CheckType(DATA_MATRIX, "GetGradientMatrix"))
        return false;
    float value[16];
    if (!GetGradientRaw(t, value, dt))
        return false;
    out->SetColumnMajor(value);
    return true;
}

LxAnimationCurve* LxAnimationCurve::ReadCurveStream(LxFile* file)
{
    LxCurveIO io(file);
    if (!io.IsAttached())
        return nullptr;
    // version (not checked: any writer's stream is read), class, two reserved bytes, extra-data size
    unsigned char prefix[4];
    unsigned int extra = 0;
    if (!io.ReadUInt8(prefix, 4) || !io.ReadUInt32(&extra, 1))
    {
        LX_ERROR("Error reading curve file header.");
        return nullptr;
    }
    if (prefix[1] != CLASS_KEYFRAME)
    {
        LX_ERROR("Unsupported curve class.  You may have an out-dated build of lumex.");
        return nullptr;
    }
    // Extra data belongs to newer writers; skip it in small steps so that a lying size costs no allocation.
    unsigned char skip[256];
    while (extra > 0)
    {
        const unsigned int n = extra < sizeof(skip) ? extra : static_cast<unsigned int>(sizeof(skip));
        if (!io.ReadUInt8(skip, n))
        {
            LX_ERROR("Error reading curve file header.");
            return nullptr;
        }
        extra -= n;
    }
    return LxKeyframeCurve::CreateFromFile(file);
}

bool LxAnimationCurve::WriteCurveStream(LxFile* file) const
{
    LxCurveIO io(file);
    if (!io.IsAttached())
        return false;
    const unsigned char prefix[4] = {1, static_cast<unsigned char>(GetCurveClass()), 0, 0};
    const unsigned int extra = 0;
    if (!io.WriteUInt8(prefix, 4) || !io.WriteUInt32(&extra, 1))
    {
        LX_ERROR("I/O error writing curve file.");
        return false;
    }
    return WriteToFile(file);
}
