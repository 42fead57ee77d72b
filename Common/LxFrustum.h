// LxFrustum: six planes for view-frustum culling, each (a, b, c, d) with an outward normal: a point p lies
// outside a plane when a p.x + b p.y + c p.z - d > 0. The planes extracted from a matrix are normalised (unit
// normal), so sphere radii and plane distances share one unit.
//
// Culling answers LX_CULL_INSIDE (0) when the volume is inside every plane, LX_CULL_OUTSIDE (1) as soon as it lies
// wholly outside one plane, and LX_CULL_INTERSECT (2) when it straddles at least one plane. Touching counts as
// straddling: a box whose farthest corner lies exactly on a plane, or a sphere whose centre is exactly its radius
// outside a plane, intersects. Outside is conservative in the usual way: a volume near a frustum corner may be
// reported as intersecting though it misses the frustum.
//
// A default frustum has six zero planes: nothing is outside it and everything intersects. A plain value type.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxPoint3.h"
#include "Common/LxVector4.h"

class LxBoundingBox;
class LxBoundingSphere;
class LxMatrix4;

class LX_API LxFrustum
{
public:
    enum CullResult
    {
        LX_CULL_INSIDE = 0,
        LX_CULL_OUTSIDE = 1,
        LX_CULL_INTERSECT = 2
    };
    enum PlaneIndex
    {
        LX_PLANE_LEFT = 0,
        LX_PLANE_RIGHT = 1,
        LX_PLANE_BOTTOM = 2,
        LX_PLANE_TOP = 3,
        LX_PLANE_NEAR = 4,
        LX_PLANE_FAR = 5,
        LX_PLANE_COUNT = 6
    };

    LxFrustum() = default;

    // The planes of the clip volume of `m` (a projection or view-projection matrix taking column vectors to clip
    // space): -w <= x, y <= w and 0 <= z <= w (Direct3D) or -w <= z <= w (OpenGL). The frustum is then in the space
    // `m` maps from (view space for a projection, world space for a view-projection).
    void SetFromMatrixD3D(const LxMatrix4& m);
    void SetFromMatrixOGL(const LxMatrix4& m);

    const LxVector4& GetPlane(unsigned int index) const { return m_planes[index]; }
    // Stored as given (not normalised).
    void SetPlane(unsigned int index, const LxVector4& plane) { m_planes[index] = plane; }

    CullResult CullAxisAlignedBox(const LxBoundingBox& box) const;
    CullResult CullAxisAlignedBox(const LxPoint3& min, const LxPoint3& max) const;
    CullResult CullSphere(const LxBoundingSphere& sphere) const;
    CullResult CullSphere(const LxPoint3& center, float radius) const;

private:
    void SetFromMatrix(const LxMatrix4& m, bool zeroToOneDepth);

    LxVector4 m_planes[LX_PLANE_COUNT];
};
