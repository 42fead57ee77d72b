// LxMatrix4: a 4x4 matrix of 32-bit floats stored column by column: the element in row r and column c is at index
// c * 4 + r. Vectors are columns multiplied on the right (v' = M * v), so a translation lives in indices 12, 13 and
// 14, an affine matrix has the bottom row (indices 3, 7, 11, 15) 0, 0, 0, 1, and A * B applies B first.
// The sixteen floats travel unchanged into effect parameters; GetRowMajor4x3 gives the bone-palette layout.
//
// Rotations are right-handed (a positive angle about Z turns X towards Y). A plain value type: default
// construction gives the identity; nothing allocates, logs or throws.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxPoint3.h"
#include "Common/LxVector3.h"
#include "Common/LxVector4.h"

class LxQuat;

class LX_API LxMatrix4
{
public:
    LxMatrix4() { MakeIdentity(); }
    // Sixteen floats in storage (column-major) order.
    explicit LxMatrix4(const float* columnMajor) { SetColumnMajor(columnMajor); }

    // --- element access -----------------------------------------------------------------------------------------
    float& operator[](unsigned int index) { return m_m[index]; }
    float operator[](unsigned int index) const { return m_m[index]; }
    float& operator()(unsigned int row, unsigned int column) { return m_m[column * 4 + row]; }
    float operator()(unsigned int row, unsigned int column) const { return m_m[column * 4 + row]; }
    const float* GetData() const { return m_m; }
    LxVector4 GetColumn(unsigned int c) const { return LxVector4(m_m + c * 4); }
    void SetColumn(unsigned int c, const LxVector4& v);
    LxVector4 GetRow(unsigned int r) const { return LxVector4(m_m[r], m_m[4 + r], m_m[8 + r], m_m[12 + r]); }
    void SetRow(unsigned int r, const LxVector4& v);
    LxVector3 GetTranslation() const { return LxVector3(m_m[12], m_m[13], m_m[14]); }
    void SetTranslation(const LxVector3& t);

    // The sixteen floats as stored; SetColumnMajor stores them as given.
    void GetColumnMajor(float* out) const;
    void SetColumnMajor(const float* in);
    // The transpose: row by row.
    void GetRowMajor(float* out) const;
    // Twelve floats: rows 0, 1 and 2, each as four floats (row r = indices r, 4 + r, 8 + r, 12 + r).
    void GetRowMajor4x3(float* out) const;

    // --- construction (each replaces the whole matrix and returns it) --------------------------------------------
    LxMatrix4& MakeIdentity();
    LxMatrix4& MakeZero();
    LxMatrix4& MakeDiagonal(float a, float b, float c, float d);
    LxMatrix4& MakeTranslation(float x, float y, float z);
    LxMatrix4& MakeTranslation(const LxVector3& t) { return MakeTranslation(t.x, t.y, t.z); }
    LxMatrix4& MakeScaling(float x, float y, float z);
    // Rotation by `radians` about `axis` (normalised here; a zero axis gives the identity).
    LxMatrix4& MakeFromAxisAngle(const LxVector3& axis, float radians);
    // A rotation whose third column (the image of Z) is the normalised `axis`, completed to a right-handed
    // orthonormal frame with the two other axes chosen arbitrarily but stably. A zero axis gives the identity.
    LxMatrix4& MakeFromArbitraryAxis(const LxVector3& axis);
    // The shortest rotation taking the direction `from` onto the direction `to` (both normalised here), exact
    // for parallel and opposite directions too.
    LxMatrix4& MakeFromToRotation(const LxVector3& from, const LxVector3& to);
    // translation * rotation(q) * scaling(s): the rotation's columns 0, 1, 2 scaled by s.x, s.y, s.z and indices
    // 12 to 14 set to t.
    LxMatrix4& MakeTransform(const LxVector3& translation, const LxQuat& rotation, const LxVector3& scale);

    // --- derived matrices ---------------------------------------------------------------------------------------
    // The general inverse. A singular matrix (determinant 0 or not finite) has none: the first form returns the
    // zero matrix, the second returns false and leaves `out` untouched.
    bool Inverse(LxMatrix4* out) const;
    // The inverse of a rotation plus translation (orthonormal upper 3x3, bottom row 0 0 0 1): cheap and exact.
    LxMatrix4 RigidInverse() const;
    LxMatrix4 Transpose() const;
    LxMatrix4& TransposeSelf();
    float Determinant() const;
    // Scales columns 0, 1 and 2 (their x, y, z parts) to unit length; zero columns stay zero.
    LxMatrix4& UnitizeAxes();
    // Every element within `epsilon` of the identity's (exactly equal by default).
    bool IsIdentity(float epsilon = 0.0f) const;
    // Splits an affine matrix into translation * rotation * scale. The scale is the length of each axis column;
    // a mirroring matrix gets a negative x scale. Fails (returning false, rotation identity) when an axis has
    // length 0. Any pointer may be null.
    bool Decompose(LxVector3* translation, LxQuat* rotation, LxVector3* scale) const;

    // --- products -----------------------------------------------------------------------------------------------
    LxMatrix4 operator*(const LxMatrix4& o) const;
    LxMatrix4& operator*=(const LxMatrix4& o) { return *this = *this * o; }
    LxVector4 operator*(const LxVector4& v) const;
    // M * (p, 1) without the division by w (an affine matrix keeps w at 1).
    LxPoint3 TransformPoint(const LxPoint3& p) const;
    // M * (p, 1) divided by the resulting w (for projections).
    LxPoint3 TransformPointProjective(const LxPoint3& p) const;
    // M * (v, 0): the upper 3x3 only.
    LxVector3 TransformVector(const LxVector3& v) const;

    // Exact element-wise comparison; Equals allows a tolerance.
    bool operator==(const LxMatrix4& o) const;
    bool operator!=(const LxMatrix4& o) const { return !(*this == o); }
    bool Equals(const LxMatrix4& o, float epsilon) const;

private:
    float m_m[16];
};
