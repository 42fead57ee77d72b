// Cameras: the projection in both frustum forms and both depth conventions against hand-computed matrices, the
// refusals (and that a refusal changes nothing), look-at frames, cube faces checked against the cube-texture
// addressing rules, pick rays and sphere framing.
#include "support/LxTestSupport.h"

#include "Common/LxMatrix4.h"
#include "ObjectManager/LxCamera.h"

#include <gtest/gtest.h>

#include <cmath>

namespace
{
const float kEps = 1e-5f;

void ExpectVec(const LxVector3& v, float x, float y, float z, float eps = kEps)
{
    EXPECT_NEAR(v.x, x, eps);
    EXPECT_NEAR(v.y, y, eps);
    EXPECT_NEAR(v.z, z, eps);
}

// Frustum values as one array (near, far, left, right, bottom, top) for whole-state comparisons.
std::vector<float> FrustumOf(const LxCamera& c)
{
    std::vector<float> v(6);
    c.GetFrustum(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5]);
    return v;
}

// Signed distance of a point to a normalised frustum plane (positive outside).
float PlaneDistance(const LxVector4& plane, const LxPoint3& p)
{
    return plane.x * p.x + plane.y * p.y + plane.z * p.z - plane.w;
}
} // namespace

TEST(Camera, PerspectiveFromFieldOfViewBothDepthConventions)
{
    LxCamera c;
    ASSERT_TRUE(c.SetFrustum(90.0f, 2.0f, 1.0f, 100.0f));
    EXPECT_EQ(FrustumOf(c), (std::vector<float>{1.0f, 100.0f, -1.0f, 1.0f, -0.5f, 0.5f}));
    const LxVector4 params = c.GetFrustumParams();
    EXPECT_FLOAT_EQ(params.z, -0.5f);
    EXPECT_FLOAT_EQ(params.w, 0.5f);
    EXPECT_FALSE(c.IsOrthographic());

    LxMatrix4 expected;
    expected.MakeZero();
    expected(0, 0) = 1.0f;
    expected(1, 1) = 2.0f;
    expected(2, 2) = 100.0f / 99.0f;
    expected(2, 3) = -100.0f / 99.0f;
    expected(3, 2) = 1.0f;
    EXPECT_TRUE(c.GetProjMatrix().Equals(expected, kEps));
    // Near and far land on depth 0 and 1, the near-plane corner on the clip corner.
    EXPECT_NEAR(c.GetProjMatrix().TransformPointProjective(LxPoint3(0, 0, 1)).z, 0.0f, kEps);
    EXPECT_NEAR(c.GetProjMatrix().TransformPointProjective(LxPoint3(0, 0, 100)).z, 1.0f, kEps);
    ExpectVec(c.GetProjMatrix().TransformPointProjective(LxPoint3(1, 0.5f, 1)).AsVector(), 1, 1, 0);

    c.SetDepthZeroToOne(false);
    expected(2, 2) = 101.0f / 99.0f;
    expected(2, 3) = -200.0f / 99.0f;
    EXPECT_TRUE(c.GetProjMatrix().Equals(expected, kEps));
    EXPECT_NEAR(c.GetProjMatrix().TransformPointProjective(LxPoint3(0, 0, 1)).z, -1.0f, kEps);
    EXPECT_NEAR(c.GetProjMatrix().TransformPointProjective(LxPoint3(0, 0, 100)).z, 1.0f, kEps);
}

TEST(Camera, OffCentreAndOrthographicForms)
{
    LxCamera c;
    c.SetFrustum(-1.0f, 3.0f, -1.0f, 1.0f, 1.0f, 10.0f);
    EXPECT_FLOAT_EQ(c.GetAspect(), 2.0f);
    EXPECT_FALSE(c.IsOrthographic());
    EXPECT_NEAR(c.GetProjMatrix()(0, 0), 0.5f, kEps);
    EXPECT_NEAR(c.GetProjMatrix()(0, 2), -0.5f, kEps);
    // The off-centre rectangle maps onto the clip square.
    ExpectVec(c.GetProjMatrix().TransformPointProjective(LxPoint3(-2, -2, 2)).AsVector(), -1, -1,
              10.0f / 9.0f - 10.0f / 9.0f / 2.0f);

    c.SetOrthoFrustum(-2.0f, 2.0f, -1.0f, 1.0f, 0.0f, 10.0f);
    EXPECT_TRUE(c.IsOrthographic());
    EXPECT_FLOAT_EQ(c.GetAspect(), 2.0f);
    LxMatrix4 expected;
    expected.MakeDiagonal(0.5f, 1.0f, 0.1f, 1.0f);
    EXPECT_TRUE(c.GetProjMatrix().Equals(expected, kEps));
    c.SetDepthZeroToOne(false);
    expected(2, 2) = 0.2f;
    expected(2, 3) = -1.0f;
    EXPECT_TRUE(c.GetProjMatrix().Equals(expected, kEps));

    ASSERT_TRUE(c.SetOrthoFrustum(90.0f, 1.0f, 2.0f, 4.0f));
    EXPECT_TRUE(c.IsOrthographic());
    EXPECT_EQ(FrustumOf(c), (std::vector<float>{2.0f, 4.0f, -2.0f, 2.0f, -2.0f, 2.0f}));
    // A perspective form afterwards switches back.
    c.SetFrustum(60.0f, 1.0f, 1.0f, 2.0f);
    EXPECT_FALSE(c.IsOrthographic());
}

TEST(Camera, RefusedFrustumsChangeNothing)
{
    struct Case
    {
        float fov, aspect;
        bool accepted;
        const char* message;
    } cases[] = {
        {180.0f, 1.0f, true, nullptr},
        {1.0f, 0.001f, true, nullptr},
        {180.5f, 1.0f, false, "LxCamera::SetFrustum.  Invalid camera field of view"},
        {0.0f, 1.0f, false, "Invalid camera field of view"},
        {-30.0f, 1.0f, false, "Invalid camera field of view"},
        {NAN, 1.0f, false, "Invalid camera field of view"},
        {60.0f, 0.0f, false, "Invalid camera aspect ratio"},
        {60.0f, -1.0f, false, "Invalid camera aspect ratio"},
        // The aspect ratio is checked first.
        {500.0f, 0.0f, false, "Invalid camera aspect ratio"},
    };
    for (const Case& k : cases)
    {
        SCOPED_TRACE(k.fov);
        LxTest::LogCapture log;
        LxCamera c;
        c.SetFrustum(60.0f, 1.5f, 0.5f, 50.0f);
        const std::vector<float> before = FrustumOf(c);
        const LxMatrix4 proj = c.GetProjMatrix();
        EXPECT_EQ(c.SetFrustum(k.fov, k.aspect, 2.0f, 20.0f), k.accepted);
        EXPECT_EQ(c.SetOrthoFrustum(k.fov, k.aspect, 2.0f, 20.0f), k.accepted);
        if (k.accepted)
        {
            EXPECT_EQ(log.ErrorCount(), 0);
            EXPECT_FLOAT_EQ(c.GetFOV(), k.fov);
            continue;
        }
        EXPECT_TRUE(log.Contains(k.message, LX_LOG_ERROR)) << log.All();
        EXPECT_EQ(FrustumOf(c), before);
        EXPECT_TRUE(c.GetProjMatrix() == proj);
        EXPECT_FLOAT_EQ(c.GetFOV(), 60.0f);
        EXPECT_FLOAT_EQ(c.GetAspect(), 1.5f);
        EXPECT_FALSE(c.IsOrthographic());
    }
}

TEST(Camera, LookAtBuildsFrameAndViewMatrix)
{
    LxCamera c;
    c.SetPosition(LxPoint3(1, 2, 3));
    ASSERT_TRUE(c.SetLookAt(LxPoint3(5, 2, 3), LxVector3(0, 2, 0)));
    ExpectVec(c.GetView(), 1, 0, 0);
    ExpectVec(c.GetUp(), 0, 1, 0);
    ExpectVec(c.GetRight(), 0, 0, -1);
    ExpectVec(c.GetViewMatrix().TransformPoint(LxPoint3(5, 2, 3)).AsVector(), 0, 0, 4);
    ExpectVec(c.GetViewMatrix().TransformPoint(LxPoint3(1, 3, 3)).AsVector(), 0, 1, 0);
    ExpectVec(c.GetViewMatrix().TransformPoint(LxPoint3(1, 2, 2)).AsVector(), 1, 0, 0);

    // A slanted up vector is straightened against the view direction.
    ASSERT_TRUE(c.SetLookAt(LxPoint3(1, 2, 13), LxVector3(0, 1, 1)));
    ExpectVec(c.GetView(), 0, 0, 1);
    ExpectVec(c.GetUp(), 0, 1, 0);
    ExpectVec(c.GetRight(), 1, 0, 0);
    // The orientation round-trips through a quaternion.
    LxCamera d;
    d.SetOrientation(c.GetOrientation());
    EXPECT_TRUE(d.GetViewMatrix().Equals(LxMatrix4(), kEps));
    LxQuat turn;
    turn.FromAxisAngle(LxVector3(0, 1, 0), 3.1415927f / 2);
    d.SetOrientation(turn);
    ExpectVec(d.GetView(), 1, 0, 0);
    ExpectVec(d.GetRight(), 0, 0, -1);
}

TEST(Camera, LookAtRefusals)
{
    struct Case
    {
        LxPoint3 target;
        LxVector3 up;
        const char* message;
    } cases[] = {
        {LxPoint3(1, 2, 3), LxVector3(0, 1, 0), "LxCamera::SetLookAt.  Lookat point too close to camera position"},
        {LxPoint3(1, 2, 3.0005f), LxVector3(0, 1, 0), "Lookat point too close to camera position"},
        {LxPoint3(1, 7, 3), LxVector3(0, 3, 0), "LxCamera::SetLookAt.  View direction and up direction are co-linear"},
        {LxPoint3(1, -7, 3), LxVector3(0, 1, 0), "View direction and up direction are co-linear"},
        {LxPoint3(4, 5, 6), LxVector3(-1, -1, -1), "View direction and up direction are co-linear"},
    };
    for (const Case& k : cases)
    {
        LxTest::LogCapture log;
        LxCamera c;
        c.SetPosition(LxPoint3(1, 2, 3));
        const LxMatrix4 view = c.GetViewMatrix();
        EXPECT_FALSE(c.SetLookAt(k.target, k.up));
        EXPECT_TRUE(log.Contains(k.message, LX_LOG_ERROR)) << log.All();
        EXPECT_TRUE(c.GetViewMatrix() == view);
        ExpectVec(c.GetView(), 0, 0, 1);
    }
}

TEST(Camera, CubeFacesFollowCubeTextureAddressing)
{
    // Direction -> (face, u, v) as cube textures address it; the camera of that face must project the direction
    // to the same texture coordinates.
    struct Case
    {
        LxVector3 dir;
        unsigned int face;
        float u, v;
    } cases[] = {
        {LxVector3(1, 0.5f, -0.5f), 0, 0.75f, 0.25f}, {LxVector3(-2, 0.5f, -0.5f), 1, 0.375f, 0.375f},
        {LxVector3(0.3f, 1, 0.2f), 2, 0.65f, 0.6f},   {LxVector3(0.3f, -1, 0.2f), 3, 0.65f, 0.4f},
        {LxVector3(0.3f, 0.4f, 1), 4, 0.65f, 0.3f},   {LxVector3(0.3f, 0.4f, -1), 5, 0.35f, 0.3f},
    };
    const LxPoint3 position(5, -2, 1);
    for (const Case& k : cases)
    {
        SCOPED_TRACE(k.face);
        LxCamera c;
        ASSERT_TRUE(c.SetCubemapCamera(k.face, position, 0.1f, 100.0f));
        EXPECT_FLOAT_EQ(c.GetFOV(), 90.0f);
        EXPECT_FLOAT_EQ(c.GetAspect(), 1.0f);
        // Left-handed orthonormal frame.
        const LxVector3 r = c.GetUp().Cross(c.GetView());
        ExpectVec(r, c.GetRight().x, c.GetRight().y, c.GetRight().z);
        const LxPoint3 tex = c.GetViewProjTextureMatrix().TransformPointProjective(position + k.dir);
        EXPECT_NEAR(tex.x, k.u, kEps);
        EXPECT_NEAR(tex.y, k.v, kEps);
    }

    LxCamera c;
    LxCamera::SetRenderToVertexBufferSupported(true);
    c.SetCubemapCamera(4, position, 0.1f, 100.0f);
    LxCamera::SetRenderToVertexBufferSupported(false);
    ExpectVec(c.GetUp(), 0, -1, 0);
    ExpectVec(c.GetView(), 0, 0, 1);

    LxTest::LogCapture log;
    const LxMatrix4 view = c.GetViewMatrix();
    EXPECT_FALSE(c.SetCubemapCamera(6, LxPoint3(), 0.1f, 1.0f));
    EXPECT_TRUE(log.Contains("Invalid cube face", LX_LOG_ERROR));
    EXPECT_TRUE(c.GetViewMatrix() == view);
}

TEST(Camera, PickRaysPassThroughTheViewPoint)
{
    LxCamera c;
    c.SetFrustum(90.0f, 2.0f, 1.0f, 100.0f);
    LxCameraRay ray = c.GetPickRay(1.0f, 0.0f);
    ExpectVec(ray.origin.AsVector(), 0, 0, 0);
    ExpectVec(ray.direction, std::sqrt(0.5f), 0, std::sqrt(0.5f));

    c.SetPosition(LxPoint3(3, 1, -2));
    c.SetLookAt(LxPoint3(0, 4, 7), LxVector3(0, 1, 0));
    const float points[][2] = {{0, 0}, {0.5f, -0.25f}, {-1, 1}, {0.9f, 0.8f}};
    for (const auto& p : points)
    {
        ray = c.GetPickRay(p[0], p[1]);
        EXPECT_NEAR(ray.direction.Length(), 1.0f, kEps);
        const LxPoint3 ndc = c.GetViewProjMatrix().TransformPointProjective(ray.origin + ray.direction * 10.0f);
        EXPECT_NEAR(ndc.x, p[0], 1e-4f);
        EXPECT_NEAR(ndc.y, p[1], 1e-4f);
    }

    // Orthographic rays are parallel and start on the near plane.
    c.SetOrthoFrustum(-2.0f, 2.0f, -1.0f, 1.0f, 0.5f, 10.0f);
    ray = c.GetPickRay(0.5f, -1.0f);
    ExpectVec(ray.direction, c.GetView().x, c.GetView().y, c.GetView().z);
    ExpectVec(c.GetViewMatrix().TransformPoint(ray.origin).AsVector(), 1.0f, -1.0f, 0.5f);
}

TEST(Camera, ZoomOnSphereTouchesTheNarrowerSides)
{
    LxCamera c;
    c.SetFrustum(90.0f, 1.0f, 0.1f, 100.0f);
    c.SetLookAt(LxPoint3(0, 0, 1), LxVector3(0, 1, 0));
    c.ZoomOnSphere(LxPoint3(0, 0, 10), 1.0f);
    ExpectVec(c.GetPosition().AsVector(), 0, 0, 10.0f - std::sqrt(2.0f));
    ExpectVec(c.GetView(), 0, 0, 1);

    // Wide view: the sphere touches top and bottom and stays clear of left and right.
    c.SetFrustum(90.0f, 2.0f, 0.1f, 100.0f);
    c.SetPosition(LxPoint3(4, 4, 4));
    ASSERT_TRUE(c.SetLookAt(LxPoint3(0, 0, 0), LxVector3(0, 1, 0)));
    const LxPoint3 center(1, 2, 3);
    c.ZoomOnSphere(center, 2.0f);
    const LxFrustum f = c.GetWorldFrustum();
    EXPECT_NEAR(PlaneDistance(f.GetPlane(LxFrustum::LX_PLANE_TOP), center), -2.0f, 1e-4f);
    EXPECT_NEAR(PlaneDistance(f.GetPlane(LxFrustum::LX_PLANE_BOTTOM), center), -2.0f, 1e-4f);
    EXPECT_LT(PlaneDistance(f.GetPlane(LxFrustum::LX_PLANE_LEFT), center), -2.1f);
    EXPECT_LT(PlaneDistance(f.GetPlane(LxFrustum::LX_PLANE_NEAR), center), -2.0f);
}

TEST(Camera, WorldFrustumFollowsDepthConvention)
{
    for (bool zeroToOne : {true, false})
    {
        LxCamera c;
        c.SetDepthZeroToOne(zeroToOne);
        c.SetFrustum(60.0f, 1.0f, 2.0f, 20.0f);
        c.SetPosition(LxPoint3(0, 0, -5));
        const LxFrustum f = c.GetWorldFrustum();
        EXPECT_NEAR(PlaneDistance(f.GetPlane(LxFrustum::LX_PLANE_NEAR), LxPoint3(0, 0, -3)), 0.0f, 1e-4f);
        EXPECT_NEAR(PlaneDistance(f.GetPlane(LxFrustum::LX_PLANE_FAR), LxPoint3(0, 0, 15)), 0.0f, 1e-3f);
        EXPECT_EQ(f.CullSphere(LxPoint3(0, 0, 5), 1.0f), LxFrustum::LX_CULL_INSIDE);
        EXPECT_EQ(f.CullSphere(LxPoint3(0, 0, -4), 0.5f), LxFrustum::LX_CULL_OUTSIDE);
    }
}

TEST(Camera, Properties)
{
    LxCamera c;
    EXPECT_FALSE(c.HasProperty("Shadow"));
    c.AddProperty("Shadow");
    c.AddProperty("Shadow");
    EXPECT_TRUE(c.HasProperty("Shadow"));
    EXPECT_FALSE(c.HasProperty("Shado"));
}
