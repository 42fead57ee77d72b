// LxQuat: a quaternion of four 32-bit floats stored scalar part first: w, x, y, z.
//
// Rotations use unit quaternions. Products follow the matrices: (a * b).ToRotationMatrix() equals
// a.ToRotationMatrix() * b.ToRotationMatrix(), so a * b rotates by b first. Slerp is the plain formula: no flip to
// the shorter arc and no renormalisation (callers that want the shorter arc negate one input first).
// A plain value type: default construction gives the identity rotation (1, 0, 0, 0); nothing allocates or logs.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxMatrix4.h"
#include "Common/LxVector3.h"

class LX_API LxQuat
{
public:
    float w, x, y, z;

    LxQuat() : w(1.0f), x(0.0f), y(0.0f), z(0.0f) {}
    LxQuat(float w_, float x_, float y_, float z_) : w(w_), x(x_), y(y_), z(z_) {}

    LxQuat operator+(const LxQuat& o) const { return LxQuat(w + o.w, x + o.x, y + o.y, z + o.z); }
    LxQuat operator-(const LxQuat& o) const { return LxQuat(w - o.w, x - o.x, y - o.y, z - o.z); }
    LxQuat operator-() const { return LxQuat(-w, -x, -y, -z); }
    LxQuat operator*(float s) const { return LxQuat(w * s, x * s, y * s, z * s); }
    LxQuat operator/(float s) const { return LxQuat(w / s, x / s, y / s, z / s); }
    // The Hamilton product.
    LxQuat operator*(const LxQuat& o) const;
    LxQuat& operator+=(const LxQuat& o) { return *this = *this + o; }
    LxQuat& operator-=(const LxQuat& o) { return *this = *this - o; }
    LxQuat& operator*=(const LxQuat& o) { return *this = *this * o; }
    LxQuat& operator*=(float s) { return *this = *this * s; }
    bool operator==(const LxQuat& o) const { return w == o.w && x == o.x && y == o.y && z == o.z; }
    bool operator!=(const LxQuat& o) const { return !(*this == o); }

    float Dot(const LxQuat& o) const { return w * o.w + x * o.x + y * o.y + z * o.z; }
    float SquaredLength() const { return Dot(*this); }
    float Length() const;
    // Scales to unit length and returns the length it had; the zero quaternion stays zero.
    float Normalize();
    LxQuat Normalized() const;
    LxQuat Conjugate() const { return LxQuat(w, -x, -y, -z); }
    // Conjugate divided by the squared length; the zero quaternion stays zero.
    LxQuat Inverse() const;

    // Rotation by `radians` about `axis` (normalised here; a zero axis gives the identity). Returns *this.
    LxQuat& FromAxisAngle(const LxVector3& axis, float radians);
    // With s = x² + y² + z²: when s > 0 the angle is 2 acos(w) and the axis (x, y, z) / sqrt(s); otherwise the
    // angle is 0 and the axis (1, 0, 0). Either pointer may be null.
    void ToAxisAngle(LxVector3* axis, float* radians) const;
    // From the upper 3x3 of a rotation matrix (orthonormal, determinant +1). Returns *this.
    LxQuat& FromRotationMatrix(const LxMatrix4& m);
    // The rotation matrix (translation 0, bottom row 0 0 0 1). A non-unit quaternion is treated as its normalised
    // self; the zero quaternion gives the identity.
    LxMatrix4 ToRotationMatrix() const;
    void ToRotationMatrix(LxMatrix4* out) const { *out = ToRotationMatrix(); }
    // q v q* for a unit quaternion.
    LxVector3 Rotate(const LxVector3& v) const;

    // theta = acos(q0 . q1), the dot product neither clamped nor made positive. When |theta| > 0 the result is
    // q0 sin((1 - t) theta) / sin theta + q1 sin(t theta) / sin theta, else q0 (a dot product that rounds above 1
    // makes theta NaN and also gives q0). Slerp(0.5, q, -q) is the zero quaternion.
    static LxQuat Slerp(float t, const LxQuat& q0, const LxQuat& q1);
};

inline LxQuat operator*(float s, const LxQuat& q)
{
    return q * s;
}
