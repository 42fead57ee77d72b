#include "Common/LxQuat.h"

#include <cmath>

LxQuat LxQuat::operator*(const LxQuat& o) const
{
    return LxQuat(w * o.w - x * o.x - y * o.y - z * o.z, w * o.x + x * o.w + y * o.z - z * o.y,
                  w * o.y - x * o.z + y * o.w + z * o.x, w * o.z + x * o.y - y * o.x + z * o.w);
}

float LxQuat::Length() const
{
    return std::sqrt(SquaredLength());
}

float LxQuat::Normalize()
{
    const float length = Length();
    if (length > 0.0f)
        *this = *this / length;
    return length;
}

LxQuat LxQuat::Normalized() const
{
    LxQuat q(*this);
    q.Normalize();
    return q;
}

LxQuat LxQuat::Inverse() const
{
    const float n = SquaredLength();
    return n > 0.0f ? Conjugate() / n : LxQuat(0.0f, 0.0f, 0.0f, 0.0f);
}

LxQuat& LxQuat::FromAxisAngle(const LxVector3& axis, float radians)
{
    const LxVector3 a = axis.Normalized();
    if (a.SquaredLength() == 0.0f)
        return *this = LxQuat();
    const float s = std::sin(0.5f * radians);
    w = std::cos(0.5f * radians);
    x = a.x * s;
    y = a.y * s;
    z = a.z * s;
    return *this;
}

void LxQuat::ToAxisAngle(LxVector3* axis, float* radians) const
{
    const float s = x * x + y * y + z * z;
    if (s > 0.0f)
    {
        const float inv = 1.0f / std::sqrt(s);
        if (radians)
            *radians = 2.0f * std::acos(w);
        if (axis)
            *axis = LxVector3(x * inv, y * inv, z * inv);
    }
    else
    {
        if (radians)
            *radians = 0.0f;
        if (axis)
            *axis = LxVector3(1.0f, 0.0f, 0.0f);
    }
}

LxQuat& LxQuat::FromRotationMatrix(const LxMatrix4& m)
{
    // Shoemake: take the square root of the largest of the four diagonal combinations, so it is never near zero.
    const float m00 = m(0, 0), m11 = m(1, 1), m22 = m(2, 2);
    const float trace = m00 + m11 + m22;
    if (trace > 0.0f)
    {
        const float s = std::sqrt(trace + 1.0f) * 2.0f;
        w = 0.25f * s;
        x = (m(2, 1) - m(1, 2)) / s;
        y = (m(0, 2) - m(2, 0)) / s;
        z = (m(1, 0) - m(0, 1)) / s;
    }
    else if (m00 > m11 && m00 > m22)
    {
        const float s = std::sqrt(1.0f + m00 - m11 - m22) * 2.0f;
        w = (m(2, 1) - m(1, 2)) / s;
        x = 0.25f * s;
        y = (m(0, 1) + m(1, 0)) / s;
        z = (m(0, 2) + m(2, 0)) / s;
    }
    else if (m11 > m22)
    {
        const float s = std::sqrt(1.0f + m11 - m00 - m22) * 2.0f;
        w = (m(0, 2) - m(2, 0)) / s;
        x = (m(0, 1) + m(1, 0)) / s;
        y = 0.25f * s;
        z = (m(1, 2) + m(2, 1)) / s;
    }
    else
    {
        const float s = std::sqrt(1.0f + m22 - m00 - m11) * 2.0f;
        w = (m(1, 0) - m(0, 1)) / s;
        x = (m(0, 2) + m(2, 0)) / s;
        y = (m(1, 2) + m(2, 1)) / s;
        z = 0.25f * s;
    }
    return *this;
}

LxMatrix4 LxQuat::ToRotationMatrix() const
{
    const float n = SquaredLength();
    const float s = n > 0.0f ? 2.0f / n : 0.0f;
    const float xs = x * s, ys = y * s, zs = z * s;
    const float wx = w * xs, wy = w * ys, wz = w * zs;
    const float xx = x * xs, xy = x * ys, xz = x * zs;
    const float yy = y * ys, yz = y * zs, zz = z * zs;
    LxMatrix4 m;
    m(0, 0) = 1.0f - (yy + zz);
    m(0, 1) = xy - wz;
    m(0, 2) = xz + wy;
    m(1, 0) = xy + wz;
    m(1, 1) = 1.0f - (xx + zz);
    m(1, 2) = yz - wx;
    m(2, 0) = xz - wy;
    m(2, 1) = yz + wx;
    m(2, 2) = 1.0f - (xx + yy);
    return m;
}

LxVector3 LxQuat::Rotate(const LxVector3& v) const
{
    // v + 2w (u x v) + 2 u x (u x v), u the vector part.
    const LxVector3 u(x, y, z);
    const LxVector3 t = u.Cross(v) * 2.0f;
    return v + t * w + u.Cross(t);
}

LxQuat LxQuat::Slerp(float t, const LxQuat& q0, const LxQuat& q1)
{
    const float theta = std::acos(q0.Dot(q1));
    if (std::fabs(theta) > 0.0f)
    {
        const float sinTheta = std::sin(theta);
        return q0 * (std::sin((1.0f - t) * theta) / sinTheta) + q1 * (std::sin(t * theta) / sinTheta);
    }
    return q0;
}
