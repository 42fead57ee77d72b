#include "ObjectManager/LxCamera.h"

#include "Common/LxLogManager.h"

#include <cmath>

bool LxCamera::ms_bRenderToVertexBuffer = false;

namespace
{
// Per cube face: view, up and right, matching the face order and orientation of Direct3D cube textures.
struct CubeFace
{
    float view[3], up[3], right[3];
};
const CubeFace kCubeFaces[6] = {
    {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}},  // +X
    {{-1, 0, 0}, {0, 1, 0}, {0, 0, 1}},  // -X
    {{0, 1, 0}, {0, 0, -1}, {1, 0, 0}},  // +Y
    {{0, -1, 0}, {0, 0, 1}, {1, 0, 0}},  // -Y
    {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}},   // +Z
    {{0, 0, -1}, {0, 1, 0}, {-1, 0, 0}}, // -Z
};

// Half the near-plane width of a horizontal field of view (degrees): the value the frustum forms share.
float HalfWidth(float fov, float nearPlane)
{
    return std::tan(fov * 3.1415927f / 180.0f * 0.5f) * nearPlane;
}
} // namespace

LxCamera::LxCamera()
    : m_right(1, 0, 0), m_up(0, 1, 0), m_view(0, 0, 1), m_fov(90.0f), m_aspect(1.0f), m_near(1.0f), m_far(1000.0f),
      m_frLeft(-1.0f), m_frRight(1.0f), m_frBottom(-1.0f), m_frTop(1.0f), m_ortho(false), m_depthZeroToOne(true)
{
    SetFrustum(90.0f, 1.0f, 1.0f, 1000.0f);
    RebuildView();
}

void LxCamera::AddProperty(const LxString& property)
{
    if (!HasProperty(property))
        m_properties.Add(property);
}

bool LxCamera::HasProperty(const LxString& property) const
{
    for (const LxString& p : m_properties)
        if (p == property)
            return true;
    return false;
}

void LxCamera::SetPosition(const LxPoint3& position)
{
    m_position = position;
    RebuildView();
}

void LxCamera::SetOrientation(const LxQuat& orientation)
{
    const LxMatrix4 r = orientation.Normalized().ToRotationMatrix();
    SetOrientation(r.TransformVector(LxVector3(1, 0, 0)), r.TransformVector(LxVector3(0, 1, 0)),
                   r.TransformVector(LxVector3(0, 0, 1)));
}

void LxCamera::SetOrientation(const LxVector3& right, const LxVector3& up, const LxVector3& view)
{
    m_right = right.Normalized();
    m_up = up.Normalized();
    m_view = view.Normalized();
    RebuildView();
}

LxQuat LxCamera::GetOrientation() const
{
    LxMatrix4 r;
    r.SetColumn(0, LxVector4(m_right.x, m_right.y, m_right.z, 0.0f));
    r.SetColumn(1, LxVector4(m_up.x, m_up.y, m_up.z, 0.0f));
    r.SetColumn(2, LxVector4(m_view.x, m_view.y, m_view.z, 0.0f));
    LxQuat q;
    q.FromRotationMatrix(r);
    return q;
}

bool LxCamera::SetLookAt(const LxPoint3& target, const LxVector3& up)
{
    LxVector3 view = target - m_position;
    if (view.SquaredLength() < 1e-6f)
    {
        LX_ERROR("LxCamera::SetLookAt.  Lookat point too close to camera position");
        return false;
    }
    view.Normalize();
    const LxVector3 upDir = up.Normalized();
    if (std::fabs(std::fabs(view.Dot(upDir)) - 1.0f) < 1e-6f || upDir.SquaredLength() == 0.0f)
    {
        LX_ERROR("LxCamera::SetLookAt.  View direction and up direction are co-linear");
        return false;
    }
    m_view = view;
    m_right = upDir.Cross(view).Normalized();
    m_up = view.Cross(m_right);
    RebuildView();
    return true;
}

bool LxCamera::SetFrustum(float fov, float aspect, float nearPlane, float farPlane)
{
    if (!(aspect > 0.0f))
    {
        LX_ERROR("LxCamera::SetFrustum.  Invalid camera aspect ratio");
        return false;
    }
    if (!(fov > 0.0f) || fov > 180.0f)
    {
        LX_ERROR("LxCamera::SetFrustum.  Invalid camera field of view");
        return false;
    }
    m_fov = fov;
    m_aspect = aspect;
    m_near = nearPlane;
    m_far = farPlane;
    const float x = HalfWidth(fov, nearPlane);
    m_frLeft = -x;
    m_frRight = x;
    m_frBottom = -x / aspect;
    m_frTop = x / aspect;
    m_ortho = false;
    RebuildProjection();
    return true;
}

void LxCamera::SetFrustum(float left, float right, float bottom, float top, float nearPlane, float farPlane)
{
    m_frLeft = left;
    m_frRight = right;
    m_frBottom = bottom;
    m_frTop = top;
    m_near = nearPlane;
    m_far = farPlane;
    if (top != bottom)
        m_aspect = (right - left) / (top - bottom);
    if (nearPlane > 0.0f)
        m_fov = 2.0f * std::atan((right - left) * 0.5f / nearPlane) * 180.0f / 3.1415927f;
    m_ortho = false;
    RebuildProjection();
}

bool LxCamera::SetOrthoFrustum(float fov, float aspect, float nearPlane, float farPlane)
{
    if (!SetFrustum(fov, aspect, nearPlane, farPlane))
        return false;
    m_ortho = true;
    RebuildProjection();
    return true;
}

void LxCamera::SetOrthoFrustum(float left, float right, float bottom, float top, float nearPlane, float farPlane)
{
    SetFrustum(left, right, bottom, top, nearPlane, farPlane);
    m_ortho = true;
    RebuildProjection();
}

void LxCamera::GetFrustum(float* nearPlane, float* farPlane, float* left, float* right, float* bottom, float* top) const
{
    if (nearPlane)
        *nearPlane = m_near;
    if (farPlane)
        *farPlane = m_far;
    if (left)
        *left = m_frLeft;
    if (right)
        *right = m_frRight;
    if (bottom)
        *bottom = m_frBottom;
    if (top)
        *top = m_frTop;
}

LxVector4 LxCamera::GetFrustumParams() const
{
    return LxVector4(m_frLeft, m_frRight, m_frBottom, m_frTop);
}

void LxCamera::SetDepthZeroToOne(bool zeroToOne)
{
    m_depthZeroToOne = zeroToOne;
    RebuildProjection();
}

bool LxCamera::SetCubemapCamera(unsigned int face, const LxPoint3& position, float nearPlane, float farPlane)
{
    if (face >= 6)
    {
        LX_ERROR("LxCamera::SetCubemapCamera.  Invalid cube face %u", face);
        return false;
    }
    const CubeFace& f = kCubeFaces[face];
    LxVector3 up(f.up[0], f.up[1], f.up[2]);
    if (ms_bRenderToVertexBuffer)
        up = -up;
    m_position = position;
    SetOrientation(LxVector3(f.right[0], f.right[1], f.right[2]), up, LxVector3(f.view[0], f.view[1], f.view[2]));
    return SetFrustum(90.0f, 1.0f, nearPlane, farPlane);
}

LxMatrix4 LxCamera::GetViewProjTextureMatrix() const
{
    LxMatrix4 t;
    t(0, 0) = 0.5f;
    t(0, 3) = 0.5f;
    t(1, 1) = -0.5f;
    t(1, 3) = 0.5f;
    return t * GetViewProjMatrix();
}

LxVector4 LxCamera::GetProjParams() const
{
    return LxVector4(m_near, m_far, m_near != 0.0f ? 1.0f / m_near : 0.0f, m_far != 0.0f ? 1.0f / m_far : 0.0f);
}

LxFrustum LxCamera::GetWorldFrustum() const
{
    LxFrustum frustum;
    if (m_depthZeroToOne)
        frustum.SetFromMatrixD3D(GetViewProjMatrix());
    else
        frustum.SetFromMatrixOGL(GetViewProjMatrix());
    return frustum;
}

LxCameraRay LxCamera::GetPickRay(float x, float y) const
{
    const float nx = m_frLeft + (x + 1.0f) * 0.5f * (m_frRight - m_frLeft);
    const float ny = m_frBottom + (y + 1.0f) * 0.5f * (m_frTop - m_frBottom);
    const LxVector3 onNear = m_right * nx + m_up * ny + m_view * m_near;
    LxCameraRay ray;
    if (m_ortho)
    {
        ray.origin = m_position + onNear;
        ray.direction = m_view;
    }
    else
    {
        ray.origin = m_position;
        ray.direction = onNear.Normalized();
    }
    return ray;
}

void LxCamera::ZoomOnSphere(const LxPoint3& center, float radius)
{
    float distance = 0.0f;
    if (radius > 0.0f)
    {
        if (m_ortho || !(m_near > 0.0f))
            distance = radius + m_near;
        else
        {
            const float halfX = std::atan((m_frRight - m_frLeft) * 0.5f / m_near);
            const float halfY = std::atan((m_frTop - m_frBottom) * 0.5f / m_near);
            const float half = halfX < halfY ? halfX : halfY;
            distance = half > 0.0f ? radius / std::sin(half) : radius + m_near;
        }
    }
    SetPosition(center - m_view * distance);
}

void LxCamera::RebuildView()
{
    LxMatrix4& m = m_viewMatrix;
    m.MakeIdentity();
    const LxVector3 p = m_position.AsVector();
    m.SetRow(0, LxVector4(m_right.x, m_right.y, m_right.z, -m_right.Dot(p)));
    m.SetRow(1, LxVector4(m_up.x, m_up.y, m_up.z, -m_up.Dot(p)));
    m.SetRow(2, LxVector4(m_view.x, m_view.y, m_view.z, -m_view.Dot(p)));
}

void LxCamera::RebuildProjection()
{
    LxMatrix4& m = m_projMatrix;
    m.MakeZero();
    const float w = m_frRight - m_frLeft, h = m_frTop - m_frBottom, d = m_far - m_near;
    if (w == 0.0f || h == 0.0f || d == 0.0f)
    {
        // Degenerate box: keep a harmless identity rather than infinities in every matrix derived from it.
        m.MakeIdentity();
        return;
    }
    if (m_ortho)
    {
        m(0, 0) = 2.0f / w;
        m(0, 3) = -(m_frRight + m_frLeft) / w;
        m(1, 1) = 2.0f / h;
        m(1, 3) = -(m_frTop + m_frBottom) / h;
        m(2, 2) = m_depthZeroToOne ? 1.0f / d : 2.0f / d;
        m(2, 3) = m_depthZeroToOne ? -m_near / d : -(m_far + m_near) / d;
        m(3, 3) = 1.0f;
    }
    else
    {
        m(0, 0) = 2.0f * m_near / w;
        m(0, 2) = -(m_frRight + m_frLeft) / w;
        m(1, 1) = 2.0f * m_near / h;
        m(1, 2) = -(m_frTop + m_frBottom) / h;
        m(2, 2) = m_depthZeroToOne ? m_far / d : (m_far + m_near) / d;
        m(2, 3) = m_depthZeroToOne ? -m_near * m_far / d : -2.0f * m_near * m_far / d;
        m(3, 2) = 1.0f;
    }
}
