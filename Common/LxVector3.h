// LxVector3: three 32-bit floats (x, y, z), a direction or displacement (see LxPoint3 for positions). A plain value
// type: default construction gives (0, 0, 0); no operation allocates, logs or fails. Normalising the zero vector
// leaves it zero.
#pragma once

#include <cmath>

class LxVector3
{
public:
    float x, y, z;

    LxVector3() : x(0.0f), y(0.0f), z(0.0f) {}
    LxVector3(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}
    explicit LxVector3(const float* v) : x(v[0]), y(v[1]), z(v[2]) {}

    float& operator[](unsigned int i) { return (&x)[i]; }
    float operator[](unsigned int i) const { return (&x)[i]; }
    const float* GetData() const { return &x; }

    LxVector3 operator+(const LxVector3& o) const { return LxVector3(x + o.x, y + o.y, z + o.z); }
    LxVector3 operator-(const LxVector3& o) const { return LxVector3(x - o.x, y - o.y, z - o.z); }
    LxVector3 operator-() const { return LxVector3(-x, -y, -z); }
    LxVector3 operator*(float s) const { return LxVector3(x * s, y * s, z * s); }
    LxVector3 operator/(float s) const { return LxVector3(x / s, y / s, z / s); }
    // Component-wise product.
    LxVector3 operator*(const LxVector3& o) const { return LxVector3(x * o.x, y * o.y, z * o.z); }
    LxVector3& operator+=(const LxVector3& o) { return *this = *this + o; }
    LxVector3& operator-=(const LxVector3& o) { return *this = *this - o; }
    LxVector3& operator*=(float s) { return *this = *this * s; }
    LxVector3& operator/=(float s) { return *this = *this / s; }
    bool operator==(const LxVector3& o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(const LxVector3& o) const { return !(*this == o); }

    float Dot(const LxVector3& o) const { return x * o.x + y * o.y + z * o.z; }
    // Right-handed: X.Cross(Y) == Z.
    LxVector3 Cross(const LxVector3& o) const
    {
        return LxVector3(y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x);
    }
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
    LxVector3 Normalized() const
    {
        LxVector3 v(*this);
        v.Normalize();
        return v;
    }
};

inline LxVector3 operator*(float s, const LxVector3& v)
{
    return v * s;
}
