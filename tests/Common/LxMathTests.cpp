// Math types: storage and multiplication conventions of matrices, quaternions and their slerp, pitch and yaw,
// frustum extraction and culling, bounding volumes, half floats and the MT19937 generator.
#include "Common/LxBoundingBox.h"
#include "Common/LxBoundingSphere.h"
#include "Common/LxFrustum.h"
#include "Common/LxHalf.h"
#include "Common/LxMatrix4.h"
#include "Common/LxMersenneTwister.h"
#include "Common/LxPitchYaw.h"
#include "Common/LxQuat.h"
#include "Common/LxVector2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace
{
const float kPi = 3.14159265358979f;

// Vectors and quaternions alike: the difference is (almost) nothing.
template <class T>
void ExpectNear(const T& expected, const T& actual, float eps = 1e-5f)
{
    EXPECT_LT((expected - actual).Length(), eps);
}

// Orthonormal upper 3x3 with determinant +1.
void ExpectRotation(const LxMatrix4& m)
{
    const LxVector3 x(m.GetData()), y(m.GetData() + 4), z(m.GetData() + 8);
    EXPECT_NEAR(1.0f, x.Length(), 1e-5f);
    EXPECT_NEAR(1.0f, y.Length(), 1e-5f);
    EXPECT_NEAR(0.0f, x.Dot(y), 1e-5f);
    EXPECT_NEAR(0.0f, y.Dot(z), 1e-5f);
    ExpectNear(x.Cross(y), z);
}

// A left-handed perspective (looking down +z) for column vectors: x, y scaled, w = z.
LxMatrix4 Perspective(float n, float f, bool zeroToOne)
{
    LxMatrix4 m;
    m.MakeDiagonal(1, 1, (zeroToOne ? f : f + n) / (f - n), 0);
    m(2, 3) = (zeroToOne ? -n : -2.0f * n) * f / (f - n);
    m(3, 2) = 1.0f;
    return m;
}

float Bits(unsigned int bits)
{
    float f;
    std::memcpy(&f, &bits, 4);
    return f;
}
} // namespace

TEST(LxVector, ArithmeticAndNormalising)
{
    const LxVector3 x(1, 0, 0), y(0, 1, 0);
    EXPECT_EQ(LxVector3(0, 0, 1), x.Cross(y)) << "right-handed";
    LxVector3 v(3, 0, 4);
    EXPECT_EQ(5.0f, v.Normalize());
    EXPECT_EQ(LxVector3(0.6f, 0, 0.8f), v);
    LxVector3 zero;
    EXPECT_EQ(0.0f, zero.Normalize());
    EXPECT_EQ(LxVector3(), zero) << "the zero vector stays zero, no NaN";
    EXPECT_EQ(LxVector2(2, 3), LxVector2(1, 1) + LxVector2(1, 2));
    EXPECT_EQ(LxVector4(2, 4, 6, 8), 2.0f * LxVector4(1, 2, 3, 4));
    EXPECT_EQ(1.0f, LxVector4(LxPoint3(1, 2, 3)).w);

    const LxPoint3 a(1, 2, 3), b(4, 6, 3);
    EXPECT_EQ(LxVector3(3, 4, 0), b - a);
    EXPECT_EQ(5.0f, a.Distance(b));
    EXPECT_EQ(b, a + (b - a));
    EXPECT_EQ(LxPoint3(1, 2, 3), LxPoint3::Min(a, b));
    EXPECT_EQ(LxPoint3(2.5f, 4, 3), LxPoint3::Lerp(a, b, 0.5f));
}

TEST(LxMatrix4, StorageIsColumnMajorWithColumnVectors)
{
    LxMatrix4 t;
    t.MakeTranslation(5, 6, 7);
    EXPECT_EQ(LxVector4(5, 6, 7, 1), LxVector4(t.GetData() + 12)) << "the translation is the last column";
    EXPECT_EQ(LxPoint3(6, 6, 7), t.TransformPoint(LxPoint3(1, 0, 0)));
    EXPECT_EQ(LxVector3(1, 0, 0), t.TransformVector(LxVector3(1, 0, 0))) << "vectors ignore translation";
    EXPECT_EQ(LxVector4(5, 6, 7, 1), t * LxVector4(0, 0, 0, 1));

    float values[16];
    for (int i = 0; i < 16; ++i)
        values[i] = static_cast<float>(i);
    LxMatrix4 m(values);
    EXPECT_EQ(4.0f, m(0, 1)) << "row 0, column 1 is index 4";
    float out[16];
    m.GetColumnMajor(out);
    EXPECT_EQ(0, std::memcmp(values, out, sizeof(out)));
    m.GetRowMajor(out);
    const float rowMajor[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
    EXPECT_EQ(0, std::memcmp(rowMajor, out, sizeof(out)));
    float palette[13];
    palette[12] = -1.0f;
    m.GetRowMajor4x3(palette);
    EXPECT_EQ(0, std::memcmp(rowMajor, palette, 12 * sizeof(float)));
    EXPECT_EQ(-1.0f, palette[12]) << "exactly twelve floats";
    EXPECT_EQ(m.Transpose(), LxMatrix4(rowMajor));
    LxMatrix4 n = m;
    n.TransposeSelf();
    EXPECT_EQ(m.Transpose(), n);
    n.SetColumnMajor(values);
    EXPECT_EQ(m, n);

    // A * B applies B first.
    LxMatrix4 s;
    s.MakeScaling(2, 3, 4);
    EXPECT_EQ(LxPoint3(7, 6, 7), (t * s).TransformPoint(LxPoint3(1, 0, 0)));
    EXPECT_EQ(LxPoint3(12, 18, 28), (s * t).TransformPoint(LxPoint3(1, 0, 0)));
    EXPECT_TRUE(LxMatrix4().IsIdentity());
    LxMatrix4 d;
    d.MakeDiagonal(1, 2, 3, 4);
    EXPECT_EQ(24.0f, d.Determinant());
}

TEST(LxMatrix4, RotationsAreRightHandedAndOrthonormal)
{
    LxMatrix4 r;
    r.MakeFromAxisAngle(LxVector3(0, 0, 2), kPi / 2);
    ExpectNear(LxVector3(0, 1, 0), r.TransformVector(LxVector3(1, 0, 0)));
    ExpectRotation(r);
    EXPECT_TRUE(r.MakeFromAxisAngle(LxVector3(), 1.0f).IsIdentity()) << "zero axis";

    const LxVector3 dirs[] = {LxVector3(1, 0, 0),  LxVector3(0, 0, 1),      LxVector3(0.3f, -0.5f, 0.8f),
                              LxVector3(-1, 0, 0), LxVector3(0, -1, 1e-4f), LxVector3(2, 2, 2)};
    for (const LxVector3& from : dirs)
    {
        for (const LxVector3& to : dirs)
        {
            r.MakeFromToRotation(from, to);
            ExpectRotation(r);
            ExpectNear(to.Normalized(), r.TransformVector(from.Normalized()), 1e-4f);
        }
        // Opposite directions: an exact half turn.
        r.MakeFromToRotation(from, -from);
        ExpectNear(-from.Normalized(), r.TransformVector(from.Normalized()), 1e-4f);
        ExpectRotation(r);

        r.MakeFromArbitraryAxis(from);
        ExpectRotation(r);
        ExpectNear(from.Normalized(), LxVector3(r.GetData() + 8));
    }
    EXPECT_TRUE(r.MakeFromToRotation(LxVector3(0, 1, 0), LxVector3(0, 1, 0)).IsIdentity(1e-6f));

    LxMatrix4 skew;
    skew.MakeScaling(3, 0.5f, 1);
    skew = r * skew;
    skew.UnitizeAxes();
    ExpectRotation(skew);
}

TEST(LxMatrix4, MakeTransformIsTranslationRotationScale)
{
    LxQuat q;
    q.FromAxisAngle(LxVector3(1, 2, 3), 0.7f);
    LxMatrix4 m;
    m.MakeTransform(LxVector3(4, 5, 6), q, LxVector3(2, 3, 0.5f));
    LxMatrix4 t, s;
    t.MakeTranslation(4, 5, 6);
    s.MakeScaling(2, 3, 0.5f);
    EXPECT_TRUE(m.Equals(t * q.ToRotationMatrix() * s, 1e-6f));

    // Decompose gives the parts back.
    LxVector3 translation, scale;
    LxQuat rotation;
    ASSERT_TRUE(m.Decompose(&translation, &rotation, &scale));
    ExpectNear(LxVector3(4, 5, 6), translation);
    ExpectNear(LxVector3(2, 3, 0.5f), scale);
    if (rotation.Dot(q) < 0)
        rotation = -rotation;
    ExpectNear(q, rotation);

    // A mirror ends up in a negative x scale and still rebuilds the matrix.
    m.MakeTransform(LxVector3(), q, LxVector3(1, 1, -2));
    ASSERT_TRUE(m.Decompose(&translation, &rotation, &scale));
    EXPECT_LT(scale.x, 0.0f);
    EXPECT_TRUE(m.Equals(LxMatrix4().MakeTransform(translation, rotation, scale), 1e-5f));

    LxMatrix4 flat;
    flat.MakeScaling(1, 0, 1);
    EXPECT_FALSE(flat.Decompose(nullptr, &rotation, nullptr));
    EXPECT_EQ(LxQuat(), rotation);
}

TEST(LxMatrix4, InversesUndoTheirMatrix)
{
    LxQuat q;
    q.FromAxisAngle(LxVector3(-1, 2, 0.5f), 2.1f);
    LxMatrix4 rigid;
    rigid.MakeTransform(LxVector3(10, -3, 7), q, LxVector3(1, 1, 1));
    EXPECT_TRUE((rigid * rigid.RigidInverse()).IsIdentity(1e-5f));

    LxMatrix4 general = Perspective(0.5f, 100.0f, true) * rigid;
    general[3] = 0.25f;
    LxMatrix4 inverse;
    ASSERT_TRUE(general.Inverse(&inverse));
    EXPECT_TRUE((general * inverse).IsIdentity(1e-4f));
    EXPECT_TRUE((inverse * general).IsIdentity(1e-4f));

    LxMatrix4 singular;
    singular.MakeScaling(1, 1, 0);
    LxMatrix4 untouched;
    EXPECT_FALSE(singular.Inverse(&untouched));
    EXPECT_TRUE(untouched.IsIdentity());
}

TEST(LxQuat, MatchesMatricesAndAxisAngles)
{
    EXPECT_EQ(1.0f, LxQuat().w) << "w is first and the default is the identity";
    LxQuat a, b;
    a.FromAxisAngle(LxVector3(0, 0, 1), kPi / 2);
    b.FromAxisAngle(LxVector3(1, 0, 0), kPi / 2);
    EXPECT_TRUE((a * b).ToRotationMatrix().Equals(a.ToRotationMatrix() * b.ToRotationMatrix(), 1e-6f));
    ExpectNear(LxVector3(0, 1, 0), a.Rotate(LxVector3(1, 0, 0)));
    // b first: y turns to z, which a leaves alone.
    ExpectNear(LxVector3(0, 0, 1), (a * b).Rotate(LxVector3(0, 1, 0)));

    // Round trips through the matrix, across all four branches of the extraction (w, x, y or z largest).
    const LxVector3 axes[] = {LxVector3(1, 0, 0), LxVector3(0, 1, 0), LxVector3(0, 0, 1), LxVector3(1, -2, 3)};
    const float angles[] = {0.0f, 0.3f, 3.1f, -2.5f};
    for (const LxVector3& axis : axes)
    {
        for (float angle : angles)
        {
            LxQuat q;
            q.FromAxisAngle(axis, angle);
            EXPECT_NEAR(1.0f, q.Length(), 1e-6f);
            LxQuat back;
            back.FromRotationMatrix(q.ToRotationMatrix());
            if (back.Dot(q) < 0)
                back = -back;
            ExpectNear(q, back);
            const LxVector3 v(0.2f, -0.7f, 1.5f);
            ExpectNear(q.ToRotationMatrix().TransformVector(v), q.Rotate(v));
            if (angle > 0)
            {
                LxVector3 gotAxis;
                float gotAngle = 0;
                q.ToAxisAngle(&gotAxis, &gotAngle);
                EXPECT_NEAR(angle, gotAngle, 1e-5f);
                ExpectNear(axis.Normalized(), gotAxis);
            }
        }
    }
    LxVector3 axis(0, 5, 0);
    float angle = 9;
    LxQuat().ToAxisAngle(&axis, &angle);
    EXPECT_EQ(LxVector3(1, 0, 0), axis);
    EXPECT_EQ(0.0f, angle);

    LxQuat n(2, 0, 0, 0);
    EXPECT_EQ(2.0f, n.Normalize());
    EXPECT_EQ(LxQuat(), n);
    EXPECT_TRUE(LxQuat(2, 0, 0, 0).ToRotationMatrix().IsIdentity()) << "scale is ignored";
    ExpectNear(LxQuat(), a * a.Inverse());
    EXPECT_EQ(LxQuat(0.5f, -1, -1, -1), LxQuat(0.5f, 1, 1, 1).Conjugate());
}

TEST(LxQuat, SlerpIsThePlainFormula)
{
    const LxQuat q(0.5f, 0.5f, 0.5f, 0.5f);
    EXPECT_EQ(q, LxQuat::Slerp(0.3f, q, q)) << "identical inputs give the first exactly";
    EXPECT_EQ(LxQuat(0, 0, 0, 0), LxQuat::Slerp(0.5f, q, -q)) << "opposite inputs cancel out exactly";

    // A dot product rounded above 1 makes acos NaN, and the result is q0 as it is.
    const LxQuat big(1.0000001f, 0, 0, 0);
    EXPECT_EQ(big, LxQuat::Slerp(0.5f, big, LxQuat()));

    LxQuat q0, q1, half;
    q0.FromAxisAngle(LxVector3(0, 1, 0), 0.2f);
    q1.FromAxisAngle(LxVector3(0, 1, 0), 1.4f);
    half.FromAxisAngle(LxVector3(0, 1, 0), 0.8f);
    ExpectNear(half, LxQuat::Slerp(0.5f, q0, q1));
    ExpectNear(q0, LxQuat::Slerp(0.0f, q0, q1));
    ExpectNear(q1, LxQuat::Slerp(1.0f, q0, q1));
    // No flip to the shorter arc: with -q1 the path runs the long way round (through w = 0 on the other side).
    const LxQuat longWay = LxQuat::Slerp(0.5f, q0, -q1);
    EXPECT_NEAR(0.0f, longWay.Dot(half), 1e-5f);
    EXPECT_NEAR(1.0f, longWay.Length(), 1e-5f);
    // Outside [0, 1] the formula extrapolates.
    LxQuat beyond;
    beyond.FromAxisAngle(LxVector3(0, 1, 0), 2.6f);
    ExpectNear(beyond, LxQuat::Slerp(2.0f, q0, q1));
}

TEST(LxPitchYaw, IdentityRoundTripsAndStraightUp)
{
    float pitch = 1, yaw = 1;
    LxGetPitchYawFromMatrix(LxMatrix4(), &pitch, &yaw);
    EXPECT_EQ(0.0f, pitch);
    EXPECT_EQ(0.0f, yaw);

    // The builder gives the camera's orientation; the reader takes the view matrix, its transpose.
    const float cases[][2] = {{0, 90}, {30, 0}, {-45, 120}, {10, -170}, {89, 45}, {-60, -30}};
    for (const auto& c : cases)
    {
        const LxMatrix4 orientation = LxMakeRotationMatrixFromPitchYaw(c[0], c[1]);
        ExpectRotation(orientation);
        LxGetPitchYawFromMatrix(orientation.Transpose(), &pitch, &yaw);
        EXPECT_NEAR(c[0], pitch, 1e-3f);
        EXPECT_NEAR(c[1], yaw, 1e-3f);
    }

    // Yaw alone turns the forward axis (+z) towards +x; pitch alone tilts it down (towards -y).
    ExpectNear(LxVector3(1, 0, 0), LxMakeRotationMatrixFromPitchYaw(0, 90).TransformVector(LxVector3(0, 0, 1)));
    ExpectNear(LxVector3(0, -1, 0), LxMakeRotationMatrixFromPitchYaw(90, 0).TransformVector(LxVector3(0, 0, 1)));

    // Looking straight down: the yaw comes from the right axis.
    const LxMatrix4 down = LxMakeRotationMatrixFromPitchYaw(90, 30).Transpose();
    LxGetPitchYawFromMatrix(down, &pitch, &yaw);
    EXPECT_NEAR(90.0f, pitch, 1e-3f);
    EXPECT_NEAR(30.0f, yaw, 1e-3f);
    LxMatrix4 exactlyUp;
    exactlyUp.MakeZero();
    exactlyUp(0, 0) = 1; // right = +x
    exactlyUp(2, 1) = 1; // forward = +y
    exactlyUp(1, 2) = -1;
    exactlyUp(3, 3) = 1;
    LxGetPitchYawFromMatrix(exactlyUp, &pitch, &yaw);
    EXPECT_NEAR(-90.0f, pitch, 1e-4f);
    EXPECT_NEAR(0.0f, yaw, 1e-4f) << "atan2(1, 0) - 1.5707964";
}

TEST(LxFrustum, PlanesFromBothDepthRanges)
{
    // The identity as a Direct3D projection: the clip box -1..1, -1..1, 0..1.
    LxFrustum f;
    f.SetFromMatrixD3D(LxMatrix4());
    EXPECT_EQ(LxVector4(-1, 0, 0, 1), f.GetPlane(LxFrustum::LX_PLANE_LEFT));
    EXPECT_EQ(LxVector4(1, 0, 0, 1), f.GetPlane(LxFrustum::LX_PLANE_RIGHT));
    EXPECT_EQ(LxVector4(0, 0, -1, 0), f.GetPlane(LxFrustum::LX_PLANE_NEAR));
    EXPECT_EQ(LxVector4(0, 0, 1, 1), f.GetPlane(LxFrustum::LX_PLANE_FAR));
    f.SetFromMatrixOGL(LxMatrix4());
    EXPECT_EQ(LxVector4(0, 0, -1, 1), f.GetPlane(LxFrustum::LX_PLANE_NEAR));

    // Perspective projections: depth runs from 2 to 50 in both conventions.
    const float n = 2.0f, fz = 50.0f;
    LxFrustum d3d, ogl, wrong;
    d3d.SetFromMatrixD3D(Perspective(n, fz, true));
    ogl.SetFromMatrixOGL(Perspective(n, fz, false));
    wrong.SetFromMatrixD3D(Perspective(n, fz, false));
    for (const LxFrustum* fr : {&d3d, &ogl})
    {
        EXPECT_EQ(LxFrustum::LX_CULL_INSIDE, fr->CullSphere(LxPoint3(0, 0, 10), 1.0f));
        EXPECT_EQ(LxFrustum::LX_CULL_OUTSIDE, fr->CullSphere(LxPoint3(0, 0, n - 0.01f), 0.0f));
        EXPECT_EQ(LxFrustum::LX_CULL_INSIDE, fr->CullSphere(LxPoint3(0, 0, n + 0.01f), 0.0f));
        EXPECT_EQ(LxFrustum::LX_CULL_INSIDE, fr->CullSphere(LxPoint3(0, 0, fz - 0.05f), 0.0f));
        EXPECT_EQ(LxFrustum::LX_CULL_OUTSIDE, fr->CullSphere(LxPoint3(0, 0, fz + 0.05f), 0.0f));
        // Planes are unit length, so radii compare in world units: a sphere 1 unit beyond the 45-degree right
        // plane, measured along its normal.
        const float s = std::sqrt(0.5f);
        EXPECT_EQ(LxFrustum::LX_CULL_OUTSIDE, fr->CullSphere(LxPoint3(10 + 1.1f / s, 0, 10), 1.0f));
        EXPECT_EQ(LxFrustum::LX_CULL_INTERSECT, fr->CullSphere(LxPoint3(10 + 0.9f / s, 0, 10), 1.0f));
        EXPECT_EQ(LxFrustum::LX_CULL_INSIDE, fr->CullSphere(LxPoint3(10 - 1.1f / s, 0, 10), 1.0f));
        EXPECT_NEAR(1.0f, fr->GetPlane(LxFrustum::LX_PLANE_TOP).XYZ().Length(), 1e-6f);
    }
    // Reading a -1..1 projection as 0..1 puts the near plane too far out.
    EXPECT_EQ(LxFrustum::LX_CULL_OUTSIDE, wrong.CullSphere(LxPoint3(0, 0, n + 0.01f), 0.0f));

    // A view-projection gives the frustum in world space: the camera moved to z = -10.
    LxMatrix4 view;
    view.MakeTranslation(0, 0, 10);
    LxFrustum world;
    world.SetFromMatrixD3D(Perspective(n, fz, true) * view);
    EXPECT_EQ(LxFrustum::LX_CULL_INSIDE, world.CullSphere(LxPoint3(0, 0, 0), 1.0f));
    EXPECT_EQ(LxFrustum::LX_CULL_OUTSIDE, world.CullSphere(LxPoint3(0, 0, -9), 0.5f));
}

TEST(LxFrustum, BoxAndSphereCullingRules)
{
    LxFrustum f; // the box -1..1, -1..1, 0..1
    f.SetFromMatrixD3D(LxMatrix4());
    typedef LxFrustum F;
    EXPECT_EQ(F::LX_CULL_INSIDE, f.CullAxisAlignedBox(LxPoint3(-0.5f, -0.5f, 0.25f), LxPoint3(0.5f, 0.5f, 0.75f)));
    EXPECT_EQ(F::LX_CULL_INTERSECT, f.CullAxisAlignedBox(LxPoint3(0.5f, 0, 0.25f), LxPoint3(1.5f, 0.5f, 0.75f)));
    EXPECT_EQ(F::LX_CULL_OUTSIDE, f.CullAxisAlignedBox(LxPoint3(1.5f, 0, 0.25f), LxPoint3(2, 0.5f, 0.75f)));
    EXPECT_EQ(F::LX_CULL_OUTSIDE, f.CullAxisAlignedBox(LxBoundingBox(LxPoint3(0, 0, -2), LxPoint3(0.1f, 0.1f, -1))));
    // Touching from inside: the farthest corner exactly on the far plane counts as intersecting.
    EXPECT_EQ(F::LX_CULL_INTERSECT, f.CullAxisAlignedBox(LxPoint3(-0.5f, -0.5f, 0.25f), LxPoint3(0.5f, 0.5f, 1)));
    // Touching from outside: the nearest corner on the plane is not outside either.
    EXPECT_EQ(F::LX_CULL_INTERSECT, f.CullAxisAlignedBox(LxPoint3(1, 0, 0.25f), LxPoint3(2, 0.5f, 0.75f)));
    // A box around the whole frustum straddles.
    EXPECT_EQ(F::LX_CULL_INTERSECT, f.CullAxisAlignedBox(LxPoint3(-5, -5, -5), LxPoint3(5, 5, 5)));

    const float r = 0.25f;
    EXPECT_EQ(F::LX_CULL_INSIDE, f.CullSphere(LxBoundingSphere(LxPoint3(0, 0, 0.5f), r)));
    EXPECT_EQ(F::LX_CULL_INTERSECT, f.CullSphere(LxPoint3(1 + r, 0, 0.5f), r)) << "centre exactly r outside";
    EXPECT_EQ(F::LX_CULL_OUTSIDE, f.CullSphere(LxPoint3(1.25f + 1.0f / 1024, 0, 0.5f), r));
    EXPECT_EQ(F::LX_CULL_INSIDE, f.CullSphere(LxPoint3(1 - r, 0, 0.5f), r)) << "touching from inside";
    EXPECT_EQ(F::LX_CULL_INTERSECT, f.CullSphere(LxPoint3(0.8f, 0, 0.5f), r));

    // The result does not depend on the order of the planes.
    LxFrustum reversed;
    for (unsigned int i = 0; i < F::LX_PLANE_COUNT; ++i)
        reversed.SetPlane(i, f.GetPlane(F::LX_PLANE_COUNT - 1 - i));
    EXPECT_EQ(F::LX_CULL_INTERSECT, reversed.CullAxisAlignedBox(LxPoint3(0.5f, 0, 0.25f), LxPoint3(1.5f, 0.5f, 1)));
    EXPECT_EQ(F::LX_CULL_OUTSIDE, reversed.CullAxisAlignedBox(LxPoint3(0.5f, 0, 1.25f), LxPoint3(1.5f, 0.5f, 2)));

    EXPECT_EQ(F::LX_CULL_INTERSECT, LxFrustum().CullSphere(LxPoint3(1e6f, 0, 0), 1.0f)) << "a default frustum";

    // Positions kept as vectors go in as they are.
    const LxVector3 centre(0, 0, 0.5f), lo(-0.5f, -0.5f, 0.25f), hi(0.5f, 0.5f, 0.75f);
    EXPECT_EQ(F::LX_CULL_INSIDE, f.CullSphere(centre, r));
    EXPECT_EQ(F::LX_CULL_INSIDE, f.CullAxisAlignedBox(lo, hi));
    LxBoundingBox fromVectors(lo, hi);
    fromVectors.AddPoint(LxVector3(2, 0, 0.5f));
    EXPECT_EQ(F::LX_CULL_INTERSECT, f.CullAxisAlignedBox(fromVectors));
    EXPECT_TRUE(fromVectors.Contains(centre));
}

TEST(LxBoundingVolumes, TransformAndGrow)
{
    LxBoundingBox box(LxPoint3(0, 0, 0), LxPoint3(1, 2, 3));
    LxQuat q;
    q.FromAxisAngle(LxVector3(0, 0, 1), kPi / 2);
    LxMatrix4 m;
    m.MakeTransform(LxVector3(10, 0, 0), q, LxVector3(1, 1, 1));
    LxBoundingBox out;
    box.Transform(m, &out);
    ExpectNear(LxVector3(8, 0, 0), out.GetMin().AsVector());
    ExpectNear(LxVector3(10, 1, 3), out.GetMax().AsVector());

    // A 45-degree turn: the box around the turned box is larger; same answer as the eight corners.
    q.FromAxisAngle(LxVector3(1, 1, 0), 0.785f);
    m.MakeTransform(LxVector3(1, 2, 3), q, LxVector3(2, 1, 1));
    box.Transform(m, &out);
    LxBoundingBox corners;
    for (unsigned int i = 0; i < 8; ++i)
        corners.AddPoint(m.TransformPoint(box.GetCorner(i)));
    ExpectNear(corners.GetMin().AsVector(), out.GetMin().AsVector());
    ExpectNear(corners.GetMax().AsVector(), out.GetMax().AsVector());

    box.Transform(m, &box); // in place
    ExpectNear(corners.GetMax().AsVector(), box.GetMax().AsVector());

    // A projective matrix goes through the corners with the division by w.
    const LxMatrix4 p = Perspective(1, 10, true);
    LxBoundingBox far(LxPoint3(-1, -1, 2), LxPoint3(1, 1, 4));
    far.Transform(p, &out);
    ExpectNear(LxVector3(-0.5f, -0.5f, p.TransformPointProjective(LxPoint3(0, 0, 2)).z), out.GetMin().AsVector());
    ExpectNear(LxVector3(0.5f, 0.5f, p.TransformPointProjective(LxPoint3(0, 0, 4)).z), out.GetMax().AsVector());

    LxBoundingBox empty;
    EXPECT_TRUE(empty.IsEmpty());
    empty.Transform(m, &out);
    EXPECT_TRUE(out.IsEmpty());
    empty.AddPoint(LxPoint3(1, 1, 1));
    EXPECT_FALSE(empty.IsEmpty());
    EXPECT_TRUE(empty.Contains(LxPoint3(1, 1, 1)));

    LxBoundingSphere sphere;
    EXPECT_TRUE(sphere.IsEmpty());
    sphere.AddPoint(LxPoint3(0, 0, 0));
    sphere.AddPoint(LxPoint3(4, 0, 0));
    EXPECT_EQ(LxPoint3(2, 0, 0), sphere.GetCenter());
    EXPECT_EQ(2.0f, sphere.GetRadius());
    m.MakeTransform(LxVector3(0, 1, 0), LxQuat(), LxVector3(1, 3, 1));
    sphere.Transform(m, &sphere);
    EXPECT_EQ(LxPoint3(2, 1, 0), sphere.GetCenter());
    EXPECT_EQ(6.0f, sphere.GetRadius());
    EXPECT_NEAR(std::sqrt(14.0f) / 2, LxBoundingSphere(LxBoundingBox(LxPoint3(), LxPoint3(1, 2, 3))).GetRadius(),
                1e-6f);
}

TEST(LxHalf, KnownValuesRoundingAndSpecials)
{
    // Rounding between neighbours is pinned down by the exhaustive test below; these are absolute anchors and
    // what lies beyond its range (overflow, underflow, NaN).
    EXPECT_EQ(0x3c00, LxHalf(1.0f).GetBits());
    EXPECT_EQ(0xc000, LxHalf(-2.0f).GetBits());
    EXPECT_EQ(0x8000, LxHalf(-0.0f).GetBits());
    EXPECT_EQ(0x7bff, LxHalf(65504.0f).GetBits());
    EXPECT_EQ(0x7bff, LxHalf(65519.996f).GetBits());
    EXPECT_EQ(0x7c00, LxHalf(65520.0f).GetBits()) << "the tie above the largest half overflows";
    EXPECT_EQ(0xfc00, LxHalf(-1e9f).GetBits());
    EXPECT_EQ(0xfc00, LxHalf(-std::numeric_limits<float>::infinity()).GetBits());
    EXPECT_EQ(0x0400, LxHalf(std::ldexp(1.0f, -14)).GetBits()) << "smallest normal";
    EXPECT_EQ(0x8000, LxHalf(-1e-30f).GetBits());

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const unsigned short nanBits = LxHalf(nan).GetBits();
    EXPECT_EQ(0x7c00, nanBits & 0x7c00);
    EXPECT_NE(0, nanBits & 0x3ff);
    EXPECT_TRUE(std::isnan(LxHalf(nan).ToFloat()));
    EXPECT_TRUE(std::isnan(LxHalf(Bits(0xff800001u)).ToFloat())) << "a signalling NaN with a low payload";
    EXPECT_EQ(0x8000, LxHalf(Bits(0xff800001u)).GetBits() & 0x8000);

    EXPECT_EQ(std::ldexp(1.0f, -24), LxHalf::FromBits(0x0001).ToFloat());
    EXPECT_EQ(std::ldexp(1023.0f, -24), LxHalf::FromBits(0x03ff).ToFloat());
    EXPECT_EQ(-65504.0f, LxHalf::FromBits(0xfbff).ToFloat());
    float f4[2];
    unsigned short h4[2];
    const float in[2] = {0.5f, -0.25f};
    LxHalf::FloatToHalf(in, h4, 2);
    LxHalf::HalfToFloat(h4, f4, 2);
    EXPECT_EQ(-0.25f, f4[1]);
}

TEST(LxHalf, EveryHalfRoundTripsAndEveryMidpointTiesToEven)
{
    int failures = 0;
    for (unsigned int bits = 0; bits < 0x10000 && failures < 10; ++bits)
    {
        const float f = LxHalf::HalfToFloat(static_cast<unsigned short>(bits));
        if ((bits & 0x7c00) == 0x7c00 && (bits & 0x3ff))
        {
            failures += !std::isnan(f);
            continue;
        }
        if (LxHalf::FloatToHalf(f) != bits)
        {
            ADD_FAILURE() << std::hex << bits;
            ++failures;
        }
        // Between this half and the next one up in magnitude (below infinity): the midpoint goes to the even one,
        // a hair either side to the nearer one.
        if ((bits & 0x7fff) >= 0x7bff)
            continue;
        const float next = LxHalf::HalfToFloat(static_cast<unsigned short>(bits + 1));
        const float mid = (f + next) / 2; // exact in single precision
        const unsigned int even = (bits & 1) ? bits + 1 : bits;
        if (LxHalf::FloatToHalf(mid) != even || LxHalf::FloatToHalf(std::nextafter(mid, f)) != bits ||
            LxHalf::FloatToHalf(std::nextafter(mid, next)) != bits + 1)
        {
            ADD_FAILURE() << "midpoint after " << std::hex << bits;
            ++failures;
        }
    }
    EXPECT_EQ(0, failures);
}

TEST(LxMersenneTwister, MatchesTheReference)
{
    LxMersenneTwister mt;
    mt.init_genrand(5489);
    std::mt19937 reference;
    for (int i = 0; i < 2000; ++i)
        ASSERT_EQ(reference(), mt.genrand_int32()) << "output " << i;

    LxMersenneTwister unseeded; // seeds itself with 5489
    EXPECT_EQ(3499211612u, unseeded.genrand_int32());
    LxMersenneTwister seeded(5489);
    EXPECT_EQ(3499211612u, seeded.genrand_int32());

    // The reference program's key.
    const unsigned int key[] = {0x123, 0x234, 0x345, 0x456};
    mt.init_by_array(key, 4);
    const unsigned int expected[] = {1067595299u, 955945823u, 477289528u, 4107218783u, 4228976476u};
    for (unsigned int e : expected)
        EXPECT_EQ(e, mt.genrand_int32());

    // The real-valued variants are their definitions over the integer stream.
    LxMersenneTwister a(42), b(42);
    for (int i = 0; i < 1000; ++i)
    {
        const double x = static_cast<double>(b.genrand_int32());
        ASSERT_EQ(x * (1.0 / 4294967295.0), a.genrand_real1());
        const double y = static_cast<double>(b.genrand_int32());
        ASSERT_EQ(y * (1.0 / 4294967296.0), a.genrand_real2());
        const double z = static_cast<double>(b.genrand_int32());
        ASSERT_EQ((z + 0.5) * (1.0 / 4294967296.0), a.genrand_real3());
        const unsigned int hi = b.genrand_int32() >> 5, lo = b.genrand_int32() >> 6;
        const double r53 = a.genrand_res53();
        ASSERT_EQ((hi * 67108864.0 + lo) * (1.0 / 9007199254740992.0), r53);
        ASSERT_LT(r53, 1.0);
        ASSERT_EQ(static_cast<int>(b.genrand_int32() >> 1), a.genrand_int31());
    }
}
