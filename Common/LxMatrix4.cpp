#include "Common/LxMatrix4.h"

#include "Common/LxQuat.h"

#include <cmath>
#include <cstring>

namespace
{
// Writes the 3x3 matrix r (r[row][col]) into the upper-left block of m and makes the rest identity.
void SetRotation3x3(float* m, const float r[3][3])
{
    for (int c = 0; c < 4; ++c)
        for (int row = 0; row < 4; ++row)
            m[c * 4 + row] = (row < 3 && c < 3) ? r[row][c] : (row == c ? 1.0f : 0.0f);
}
} // namespace

void LxMatrix4::SetColumn(unsigned int c, const LxVector4& v)
{
    for (unsigned int r = 0; r < 4; ++r)
        m_m[c * 4 + r] = v[r];
}

void LxMatrix4::SetRow(unsigned int r, const LxVector4& v)
{
    for (unsigned int c = 0; c < 4; ++c)
        m_m[c * 4 + r] = v[c];
}

void LxMatrix4::SetTranslation(const LxVector3& t)
{
    m_m[12] = t.x;
    m_m[13] = t.y;
    m_m[14] = t.z;
}

void LxMatrix4::GetColumnMajor(float* out) const
{
    std::memcpy(out, m_m, sizeof(m_m));
}

void LxMatrix4::SetColumnMajor(const float* in)
{
    std::memcpy(m_m, in, sizeof(m_m));
}

void LxMatrix4::GetRowMajor(float* out) const
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            out[r * 4 + c] = m_m[c * 4 + r];
}

void LxMatrix4::GetRowMajor4x3(float* out) const
{
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c)
            out[r * 4 + c] = m_m[c * 4 + r];
}

LxMatrix4& LxMatrix4::MakeIdentity()
{
    return MakeDiagonal(1.0f, 1.0f, 1.0f, 1.0f);
}

LxMatrix4& LxMatrix4::MakeZero()
{
    for (float& f : m_m)
        f = 0.0f;
    return *this;
}

LxMatrix4& LxMatrix4::MakeDiagonal(float a, float b, float c, float d)
{
    MakeZero();
    m_m[0] = a;
    m_m[5] = b;
    m_m[10] = c;
    m_m[15] = d;
    return *this;
}

LxMatrix4& LxMatrix4::MakeTranslation(float x, float y, float z)
{
    MakeIdentity();
    m_m[12] = x;
    m_m[13] = y;
    m_m[14] = z;
    return *this;
}

LxMatrix4& LxMatrix4::MakeScaling(float x, float y, float z)
{
    return MakeDiagonal(x, y, z, 1.0f);
}

LxMatrix4& LxMatrix4::MakeFromAxisAngle(const LxVector3& axis, float radians)
{
    const LxVector3 a = axis.Normalized();
    if (a.SquaredLength() == 0.0f)
        return MakeIdentity();
    const float c = std::cos(radians), s = std::sin(radians), t = 1.0f - c;
    const float r[3][3] = {{c + t * a.x * a.x, t * a.x * a.y - s * a.z, t * a.x * a.z + s * a.y},
                           {t * a.x * a.y + s * a.z, c + t * a.y * a.y, t * a.y * a.z - s * a.x},
                           {t * a.x * a.z - s * a.y, t * a.y * a.z + s * a.x, c + t * a.z * a.z}};
    SetRotation3x3(m_m, r);
    return *this;
}

LxMatrix4& LxMatrix4::MakeFromArbitraryAxis(const LxVector3& axis)
{
    const LxVector3 zAxis = axis.Normalized();
    if (zAxis.SquaredLength() == 0.0f)
        return MakeIdentity();
    // Cross with the coordinate axis least aligned with z: the result is never close to zero.
    const float ax = std::fabs(zAxis.x), ay = std::fabs(zAxis.y), az = std::fabs(zAxis.z);
    const LxVector3 helper = (ax <= ay && ax <= az) ? LxVector3(1, 0, 0)
                             : (ay <= az)           ? LxVector3(0, 1, 0)
                                                    : LxVector3(0, 0, 1);
    const LxVector3 xAxis = helper.Cross(zAxis).Normalized();
    const LxVector3 yAxis = zAxis.Cross(xAxis);
    MakeIdentity();
    SetColumn(0, LxVector4(xAxis, 0.0f));
    SetColumn(1, LxVector4(yAxis, 0.0f));
    SetColumn(2, LxVector4(zAxis, 0.0f));
    return *this;
}

LxMatrix4& LxMatrix4::MakeFromToRotation(const LxVector3& fromDirection, const LxVector3& toDirection)
{
    const LxVector3 f = fromDirection.Normalized();
    const LxVector3 t = toDirection.Normalized();
    const float e = f.Dot(t);
    float r[3][3];
    if (std::fabs(e) > 0.9999f)
    {
        // Nearly parallel or opposite: the product of two reflections (through the planes normal to x - f and
        // x - t, x a coordinate axis far from f) stays exact where the cross product vanishes.
        const float ax = std::fabs(f.x), ay = std::fabs(f.y), az = std::fabs(f.z);
        const LxVector3 x = (ax < ay && ax < az) ? LxVector3(1, 0, 0)
                            : (ay < az)          ? LxVector3(0, 1, 0)
                                                 : LxVector3(0, 0, 1);
        const LxVector3 u = x - f, v = x - t;
        const float c1 = 2.0f / u.Dot(u), c2 = 2.0f / v.Dot(v), c3 = c1 * c2 * u.Dot(v);
        for (int i = 0; i < 3; ++i)
        {
            for (int j = 0; j < 3; ++j)
                r[i][j] = -c1 * u[i] * u[j] - c2 * v[i] * v[j] + c3 * v[i] * u[j];
            r[i][i] += 1.0f;
        }
    }
    else
    {
        const LxVector3 v = f.Cross(t);
        const float h = 1.0f / (1.0f + e);
        r[0][0] = e + h * v.x * v.x;
        r[0][1] = h * v.x * v.y - v.z;
        r[0][2] = h * v.x * v.z + v.y;
        r[1][0] = h * v.x * v.y + v.z;
        r[1][1] = e + h * v.y * v.y;
        r[1][2] = h * v.y * v.z - v.x;
        r[2][0] = h * v.x * v.z - v.y;
        r[2][1] = h * v.y * v.z + v.x;
        r[2][2] = e + h * v.z * v.z;
    }
    SetRotation3x3(m_m, r);
    return *this;
}

LxMatrix4& LxMatrix4::MakeTransform(const LxVector3& translation, const LxQuat& rotation, const LxVector3& scale)
{
    *this = rotation.ToRotationMatrix();
    for (int i = 0; i < 3; ++i)
    {
        m_m[i] *= scale.x;
        m_m[4 + i] *= scale.y;
        m_m[8 + i] *= scale.z;
    }
    m_m[12] = translation.x;
    m_m[13] = translation.y;
    m_m[14] = translation.z;
    return *this;
}

bool LxMatrix4::Inverse(LxMatrix4* out) const
{
    // Cofactors in double: single precision loses too much on ill-conditioned camera matrices.
    double a[16];
    for (int i = 0; i < 16; ++i)
        a[i] = m_m[i];
    double inv[16];
    inv[0] = a[5] * a[10] * a[15] - a[5] * a[11] * a[14] - a[9] * a[6] * a[15] + a[9] * a[7] * a[14] +
             a[13] * a[6] * a[11] - a[13] * a[7] * a[10];
    inv[4] = -a[4] * a[10] * a[15] + a[4] * a[11] * a[14] + a[8] * a[6] * a[15] - a[8] * a[7] * a[14] -
             a[12] * a[6] * a[11] + a[12] * a[7] * a[10];
    inv[8] = a[4] * a[9] * a[15] - a[4] * a[11] * a[13] - a[8] * a[5] * a[15] + a[8] * a[7] * a[13] +
             a[12] * a[5] * a[11] - a[12] * a[7] * a[9];
    inv[12] = -a[4] * a[9] * a[14] + a[4] * a[10] * a[13] + a[8] * a[5] * a[14] - a[8] * a[6] * a[13] -
              a[12] * a[5] * a[10] + a[12] * a[6] * a[9];
    inv[1] = -a[1] * a[10] * a[15] + a[1] * a[11] * a[14] + a[9] * a[2] * a[15] - a[9] * a[3] * a[14] -
             a[13] * a[2] * a[11] + a[13] * a[3] * a[10];
    inv[5] = a[0] * a[10] * a[15] - a[0] * a[11] * a[14] - a[8] * a[2] * a[15] + a[8] * a[3] * a[14] +
             a[12] * a[2] * a[11] - a[12] * a[3] * a[10];
    inv[9] = -a[0] * a[9] * a[15] + a[0] * a[11] * a[13] + a[8] * a[1] * a[15] - a[8] * a[3] * a[13] -
             a[12] * a[1] * a[11] + a[12] * a[3] * a[9];
    inv[13] = a[0] * a[9] * a[14] - a[0] * a[10] * a[13] - a[8] * a[1] * a[14] + a[8] * a[2] * a[13] +
              a[12] * a[1] * a[10] - a[12] * a[2] * a[9];
    inv[2] = a[1] * a[6] * a[15] - a[1] * a[7] * a[14] - a[5] * a[2] * a[15] + a[5] * a[3] * a[14] +
             a[13] * a[2] * a[7] - a[13] * a[3] * a[6];
    inv[6] = -a[0] * a[6] * a[15] + a[0] * a[7] * a[14] + a[4] * a[2] * a[15] - a[4] * a[3] * a[14] -
             a[12] * a[2] * a[7] + a[12] * a[3] * a[6];
    inv[10] = a[0] * a[5] * a[15] - a[0] * a[7] * a[13] - a[4] * a[1] * a[15] + a[4] * a[3] * a[13] +
              a[12] * a[1] * a[7] - a[12] * a[3] * a[5];
    inv[14] = -a[0] * a[5] * a[14] + a[0] * a[6] * a[13] + a[4] * a[1] * a[14] - a[4] * a[2] * a[13] -
              a[12] * a[1] * a[6] + a[12] * a[2] * a[5];
    inv[3] = -a[1] * a[6] * a[11] + a[1] * a[7] * a[10] + a[5] * a[2] * a[11] - a[5] * a[3] * a[10] -
             a[9] * a[2] * a[7] + a[9] * a[3] * a[6];
    inv[7] = a[0] * a[6] * a[11] - a[0] * a[7] * a[10] - a[4] * a[2] * a[11] + a[4] * a[3] * a[10] +
             a[8] * a[2] * a[7] - a[8] * a[3] * a[6];
    inv[11] = -a[0] * a[5] * a[11] + a[0] * a[7] * a[9] + a[4] * a[1] * a[11] - a[4] * a[3] * a[9] -
              a[8] * a[1] * a[7] + a[8] * a[3] * a[5];
    inv[15] = a[0] * a[5] * a[10] - a[0] * a[6] * a[9] - a[4] * a[1] * a[10] + a[4] * a[2] * a[9] + a[8] * a[1] * a[6] -
              a[8] * a[2] * a[5];
    const double det = a[0] * inv[0] + a[1] * inv[4] + a[2] * inv[8] + a[3] * inv[12];
    if (det == 0.0 || !std::isfinite(det))
        return false;
    const double scale = 1.0 / det;
    for (int i = 0; i < 16; ++i)
        out->m_m[i] = static_cast<float>(inv[i] * scale);
    return true;
}

LxMatrix4 LxMatrix4::RigidInverse() const
{
    LxMatrix4 out;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            out.m_m[c * 4 + r] = m_m[r * 4 + c];
    for (int r = 0; r < 3; ++r)
        out.m_m[12 + r] = -(out.m_m[r] * m_m[12] + out.m_m[4 + r] * m_m[13] + out.m_m[8 + r] * m_m[14]);
    return out;
}

LxMatrix4 LxMatrix4::Transpose() const
{
    LxMatrix4 out;
    GetRowMajor(out.m_m);
    return out;
}

LxMatrix4& LxMatrix4::TransposeSelf()
{
    return *this = Transpose();
}

float LxMatrix4::Determinant() const
{
    const float* a = m_m;
    // Laplace expansion by 2x2 minors of the first two and last two columns.
    const float s0 = a[0] * a[5] - a[1] * a[4], s1 = a[0] * a[6] - a[2] * a[4], s2 = a[0] * a[7] - a[3] * a[4];
    const float s3 = a[1] * a[6] - a[2] * a[5], s4 = a[1] * a[7] - a[3] * a[5], s5 = a[2] * a[7] - a[3] * a[6];
    const float c5 = a[10] * a[15] - a[11] * a[14], c4 = a[9] * a[15] - a[11] * a[13];
    const float c3 = a[9] * a[14] - a[10] * a[13], c2 = a[8] * a[15] - a[11] * a[12];
    const float c1 = a[8] * a[14] - a[10] * a[12], c0 = a[8] * a[13] - a[9] * a[12];
    return s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
}

LxMatrix4& LxMatrix4::UnitizeAxes()
{
    for (int c = 0; c < 3; ++c)
    {
        LxVector3 axis(m_m + c * 4);
        axis.Normalize();
        m_m[c * 4] = axis.x;
        m_m[c * 4 + 1] = axis.y;
        m_m[c * 4 + 2] = axis.z;
    }
    return *this;
}

bool LxMatrix4::IsIdentity(float epsilon) const
{
    for (int i = 0; i < 16; ++i)
    {
        const float expected = (i % 5 == 0) ? 1.0f : 0.0f;
        if (!(std::fabs(m_m[i] - expected) <= epsilon))
            return false;
    }
    return true;
}

bool LxMatrix4::Decompose(LxVector3* translation, LxQuat* rotation, LxVector3* scale) const
{
    if (translation)
        *translation = GetTranslation();
    LxVector3 axes[3] = {LxVector3(m_m), LxVector3(m_m + 4), LxVector3(m_m + 8)};
    LxVector3 s(axes[0].Normalize(), axes[1].Normalize(), axes[2].Normalize());
    if (s.x == 0.0f || s.y == 0.0f || s.z == 0.0f)
    {
        if (rotation)
            *rotation = LxQuat();
        if (scale)
            *scale = s;
        return false;
    }
    // A mirror has no rotation: fold it into the x scale.
    if (axes[0].Cross(axes[1]).Dot(axes[2]) < 0.0f)
    {
        s.x = -s.x;
        axes[0] = -axes[0];
    }
    if (scale)
        *scale = s;
    if (rotation)
    {
        LxMatrix4 r;
        for (int c = 0; c < 3; ++c)
            r.SetColumn(c, LxVector4(axes[c], 0.0f));
        rotation->FromRotationMatrix(r);
    }
    return true;
}

LxMatrix4 LxMatrix4::operator*(const LxMatrix4& o) const
{
    LxMatrix4 out;
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            out.m_m[c * 4 + r] = m_m[r] * o.m_m[c * 4] + m_m[4 + r] * o.m_m[c * 4 + 1] + m_m[8 + r] * o.m_m[c * 4 + 2] +
                                 m_m[12 + r] * o.m_m[c * 4 + 3];
    return out;
}

LxVector4 LxMatrix4::operator*(const LxVector4& v) const
{
    LxVector4 out;
    for (int r = 0; r < 4; ++r)
        out[r] = m_m[r] * v.x + m_m[4 + r] * v.y + m_m[8 + r] * v.z + m_m[12 + r] * v.w;
    return out;
}

LxPoint3 LxMatrix4::TransformPoint(const LxPoint3& p) const
{
    return LxPoint3(m_m[0] * p.x + m_m[4] * p.y + m_m[8] * p.z + m_m[12],
                    m_m[1] * p.x + m_m[5] * p.y + m_m[9] * p.z + m_m[13],
                    m_m[2] * p.x + m_m[6] * p.y + m_m[10] * p.z + m_m[14]);
}

LxPoint3 LxMatrix4::TransformPointProjective(const LxPoint3& p) const
{
    const LxVector4 h = *this * LxVector4(p);
    return LxPoint3(h.x / h.w, h.y / h.w, h.z / h.w);
}

LxVector3 LxMatrix4::TransformVector(const LxVector3& v) const
{
    return LxVector3(m_m[0] * v.x + m_m[4] * v.y + m_m[8] * v.z, m_m[1] * v.x + m_m[5] * v.y + m_m[9] * v.z,
                     m_m[2] * v.x + m_m[6] * v.y + m_m[10] * v.z);
}

bool LxMatrix4::operator==(const LxMatrix4& o) const
{
    for (int i = 0; i < 16; ++i)
        if (m_m[i] != o.m_m[i])
            return false;
    return true;
}

bool LxMatrix4::Equals(const LxMatrix4& o, float epsilon) const
{
    for (int i = 0; i < 16; ++i)
        if (!(std::fabs(m_m[i] - o.m_m[i]) <= epsilon))
            return false;
    return true;
}
