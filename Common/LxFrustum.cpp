#include "Common/LxFrustum.h"

#include "Common/LxBoundingBox.h"
#include "Common/LxBoundingSphere.h"
#include "Common/LxMatrix4.h"

namespace
{
// A clip-space inequality "l . (p, 1) >= 0" (inside) as an outward plane: outside is -n . p - l.w > 0, so the
// plane is (-n, l.w); then scaled to a unit normal.
LxVector4 OutwardPlane(const LxVector4& inside)
{
    LxVector4 plane(-inside.x, -inside.y, -inside.z, inside.w);
    const float length = plane.XYZ().Length();
    if (length > 0.0f)
        plane /= length;
    return plane;
}
} // namespace

void LxFrustum::SetFromMatrix(const LxMatrix4& m, bool zeroToOneDepth)
{
    const LxVector4 x = m.GetRow(0), y = m.GetRow(1), z = m.GetRow(2), w = m.GetRow(3);
    m_planes[LX_PLANE_LEFT] = OutwardPlane(w + x);
    m_planes[LX_PLANE_RIGHT] = OutwardPlane(w - x);
    m_planes[LX_PLANE_BOTTOM] = OutwardPlane(w + y);
    m_planes[LX_PLANE_TOP] = OutwardPlane(w - y);
    m_planes[LX_PLANE_NEAR] = OutwardPlane(zeroToOneDepth ? z : w + z);
    m_planes[LX_PLANE_FAR] = OutwardPlane(w - z);
}

void LxFrustum::SetFromMatrixD3D(const LxMatrix4& m)
{
    SetFromMatrix(m, true);
}

void LxFrustum::SetFromMatrixOGL(const LxMatrix4& m)
{
    SetFromMatrix(m, false);
}

LxFrustum::CullResult LxFrustum::CullAxisAlignedBox(const LxBoundingBox& box) const
{
    return CullAxisAlignedBox(box.GetMin(), box.GetMax());
}

LxFrustum::CullResult LxFrustum::CullAxisAlignedBox(const LxPoint3& min, const LxPoint3& max) const
{
    bool straddle = false;
    for (const LxVector4& p : m_planes)
    {
        // The corner that minimises the plane function: if even it is outside, the whole box is.
        const LxPoint3 nearCorner(p.x >= 0.0f ? min.x : max.x, p.y >= 0.0f ? min.y : max.y,
                                  p.z >= 0.0f ? min.z : max.z);
        if (p.x * nearCorner.x + p.y * nearCorner.y + p.z * nearCorner.z - p.w > 0.0f)
            return LX_CULL_OUTSIDE;
        if (!straddle)
        {
            const LxPoint3 farCorner(p.x >= 0.0f ? max.x : min.x, p.y >= 0.0f ? max.y : min.y,
                                     p.z >= 0.0f ? max.z : min.z);
            if (p.x * farCorner.x + p.y * farCorner.y + p.z * farCorner.z - p.w >= 0.0f)
                straddle = true;
        }
    }
    return straddle ? LX_CULL_INTERSECT : LX_CULL_INSIDE;
}

LxFrustum::CullResult LxFrustum::CullSphere(const LxBoundingSphere& sphere) const
{
    return CullSphere(sphere.GetCenter(), sphere.GetRadius());
}

LxFrustum::CullResult LxFrustum::CullSphere(const LxPoint3& center, float radius) const
{
    bool straddle = false;
    for (const LxVector4& p : m_planes)
    {
        const float distance = p.x * center.x + p.y * center.y + p.z * center.z - p.w;
        if (distance > radius)
            return LX_CULL_OUTSIDE;
        if (distance > -radius)
            straddle = true;
    }
    return straddle ? LX_CULL_INTERSECT : LX_CULL_INSIDE;
}
