// LxPoint3: a position, three 32-bit floats (x, y, z). Points and vectors are kept apart: point - point is an
// LxVector3, point +/- vector is a point, and a matrix moves a point with its translation (LxMatrix4::
// TransformPoint) but a vector without. A vector converts to a point implicitly (a position held as a vector). A plain
// value type: default construction gives the origin.
#pragma once

#include "Common/LxVector3.h"

#include <cmath>

class LxPoint3
{
public:
    float x, y, z;

    LxPoint3() : x(0.0f), y(0.0f), z(0.0f) {}
    LxPoint3(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}
    explicit LxPoint3(const float* v) : x(v[0]), y(v[1]), z(v[2]) {}
    // The point at `v` from the origin. Implicit, so that positions kept as vectors (what the rest of the math and
    // the shaders use) go straight into bounding volumes, culling and TransformPoint; the other way stays explicit
    // (AsVector), so point - point is still a vector and point + point does not compile.
    LxPoint3(const LxVector3& v) : x(v.x), y(v.y), z(v.z) {}

    float& operator[](unsigned int i) { return (&x)[i]; }
    float operator[](unsigned int i) const { return (&x)[i]; }
    const float* GetData() const { return &x; }
    // The displacement from the origin.
    LxVector3 AsVector() const { return LxVector3(x, y, z); }

    LxVector3 operator-(const LxPoint3& o) const { return LxVector3(x - o.x, y - o.y, z - o.z); }
    LxPoint3 operator+(const LxVector3& v) const { return LxPoint3(x + v.x, y + v.y, z + v.z); }
    LxPoint3 operator-(const LxVector3& v) const { return LxPoint3(x - v.x, y - v.y, z - v.z); }
    LxPoint3& operator+=(const LxVector3& v) { return *this = *this + v; }
    LxPoint3& operator-=(const LxVector3& v) { return *this = *this - v; }
    bool operator==(const LxPoint3& o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(const LxPoint3& o) const { return !(*this == o); }

    float SquaredDistance(const LxPoint3& o) const { return (*this - o).SquaredLength(); }
    float Distance(const LxPoint3& o) const { return (*this - o).Length(); }

    // a + t (b - a).
    static LxPoint3 Lerp(const LxPoint3& a, const LxPoint3& b, float t) { return a + (b - a) * t; }
    static LxPoint3 Min(const LxPoint3& a, const LxPoint3& b)
    {
        return LxPoint3(a.x < b.x ? a.x : b.x, a.y < b.y ? a.y : b.y, a.z < b.z ? a.z : b.z);
    }
    static LxPoint3 Max(const LxPoint3& a, const LxPoint3& b)
    {
        return LxPoint3(a.x > b.x ? a.x : b.x, a.y > b.y ? a.y : b.y, a.z > b.z ? a.z : b.z);
    }
};
