// LxVector2: two 32-bit floats (x, y) with the usual component-wise arithmetic. A plain value type: default
// construction gives (0, 0); no operation allocates, logs or fails. Normalising the zero vector leaves it zero.
#pragma once

#include <cmath>

class LxVector2
{
public:
    float x, y;

    LxVector2() : x(0.0f), y(0.0f) {}
    LxVector2(float x_, float y_) : x(x_), y(y_) {}
    explicit LxVector2(const float* v) : x(v[0]), y(v[1]) {}

    float& operator[](unsigned int i) { return (&x)[i]; }
    float operator[](unsigned int i) const { return (&x)[i]; }
    const float* GetData() const { return &x; }

    LxVector2 operator+(const LxVector2& o) const { return LxVector2(x + o.x, y + o.y); }
    LxVector2 operator-(const LxVector2& o) const { return LxVector2(x - o.x, y - o.y); }
    LxVector2 operator-() const { return LxVector2(-x, -y); }
    LxVector2 operator*(float s) const { return LxVector2(x * s, y * s); }
    LxVector2 operator/(float s) const { return LxVector2(x / s, y / s); }
    // Component-wise product.
    LxVector2 operator*(const LxVector2& o) const { return LxVector2(x * o.x, y * o.y); }
    LxVector2& operator+=(const LxVector2& o) { return *this = *this + o; }
    LxVector2& operator-=(const LxVector2& o) { return *this = *this - o; }
    LxVector2& operator*=(float s) { return *this = *this * s; }
    LxVector2& operator/=(float s) { return *this = *this / s; }
    bool operator==(const LxVector2& o) const { return x == o.x && y == o.y; }
    bool operator!=(const LxVector2& o) const { return !(*this == o); }

    float Dot(const LxVector2& o) const { return x * o.x + y * o.y; }
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
    LxVector2 Normalized() const
    {
        LxVector2 v(*this);
        v.Normalize();
        return v;
    }
};

inline LxVector2 operator*(float s, const LxVector2& v)
{
    return v * s;
}
