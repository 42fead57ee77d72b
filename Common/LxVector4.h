// LxVector4: four 32-bit floats (x, y, z, w): homogeneous coordinates, colours, planes (a, b, c, d) and effect
// parameter values. A plain value type: default construction gives (0, 0, 0, 0); no operation allocates, logs or
// fails. Normalising the zero vector leaves it zero.
#pragma once

#include "Common/LxPoint3.h"
#include "Common/LxVector3.h"

#include <cmath>

class LxVector4
{
public:
    float x, y, z, w;

    LxVector4() : x(0.0f), y(0.0f), z(0.0f), w(0.0f) {}
    LxVector4(float x_, float y_, float z_, float w_) : x(x_), y(y_), z(z_), w(w_) {}
    LxVector4(const LxVector3& v, float w_) : x(v.x), y(v.y), z(v.z), w(w_) {}
    // A position: w = 1.
    explicit LxVector4(const LxPoint3& p) : x(p.x), y(p.y), z(p.z), w(1.0f) {}
    explicit LxVector4(const float* v) : x(v[0]), y(v[1]), z(v[2]), w(v[3]) {}

    float& operator[](unsigned int i) { return (&x)[i]; }
    float operator[](unsigned int i) const { return (&x)[i]; }
    const float* GetData() const { return &x; }
    LxVector3 XYZ() const { return LxVector3(x, y, z); }

    LxVector4 operator+(const LxVector4& o) const { return LxVector4(x + o.x, y + o.y, z + o.z, w + o.w); }
    LxVector4 operator-(const LxVector4& o) const { return LxVector4(x - o.x, y - o.y, z - o.z, w - o.w); }
    LxVector4 operator-() const { return LxVector4(-x, -y, -z, -w); }
    LxVector4 operator*(float s) const { return LxVector4(x * s, y * s, z * s, w * s); }
    LxVector4 operator/(float s) const { return LxVector4(x / s, y / s, z / s, w / s); }
    // Component-wise product.
    LxVector4 operator*(const LxVector4& o) const { return LxVector4(x * o.x, y * o.y, z * o.z, w * o.w); }
    LxVector4& operator+=(const LxVector4& o) { return *this = *this + o; }
    LxVector4& operator-=(const LxVector4& o) { return *this = *this - o; }
    LxVector4& operator*=(float s) { return *this = *this * s; }
    LxVector4& operator/=(float s) { return *this = *this / s; }
    bool operator==(const LxVector4& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
    bool operator!=(const LxVector4& o) const { return !(*this == o); }

    float Dot(const LxVector4& o) const { return x * o.x + y * o.y + z * o.z + w * o.w; }
    float SquaredLength() const { return Dot(*this); }
    float Length() const { return std::sqrt(SquaredLength()); }
    // Scales to unit length and returns the length it had.
    float Normalize()
    {
        const float length = Length();
        if (length > 0.0f)
            *this /= length;
        return length;
    }
    LxVector4 Normalized() const
    {
        LxVector4 v(*this);
        v.Normalize();
        return v;
    }
};

inline LxVector4 operator*(float s, const LxVector4& v)
{
    return v * s;
}
