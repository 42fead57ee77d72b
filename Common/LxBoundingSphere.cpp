#include "Common/LxBoundingSphere.h"

#include "Common/LxBoundingBox.h"
#include "Common/LxMatrix4.h"

#include <cmath>

LxBoundingSphere::LxBoundingSphere(const LxBoundingBox& box) : LxBoundingVolume(LX_BV_SPHERE), m_radius(-1.0f)
{
    if (!box.IsEmpty())
    {
        m_center = box.GetCenter();
        m_radius = box.GetExtents().Length();
    }
}

bool LxBoundingSphere::Intersects(const LxBoundingSphere& o) const
{
    if (IsEmpty() || o.IsEmpty())
        return false;
    const float r = m_radius + o.m_radius;
    return m_center.SquaredDistance(o.m_center) <= r * r;
}

void LxBoundingSphere::AddPoint(const LxPoint3& p)
{
    if (IsEmpty())
    {
        m_center = p;
        m_radius = 0.0f;
        return;
    }
    const float distance = m_center.Distance(p);
    if (distance <= m_radius)
        return;
    // The new sphere touches the far side of the old one and the point.
    const float radius = 0.5f * (m_radius + distance);
    m_center = m_center + (p - m_center) * ((radius - m_radius) / distance);
    m_radius = radius;
}

void LxBoundingSphere::Transform(const LxMatrix4& m, LxBoundingSphere* out) const
{
    if (IsEmpty())
    {
        *out = LxBoundingSphere();
        return;
    }
    const float sx = LxVector3(m.GetData()).SquaredLength();
    const float sy = LxVector3(m.GetData() + 4).SquaredLength();
    const float sz = LxVector3(m.GetData() + 8).SquaredLength();
    const float largest = std::sqrt(sx > sy ? (sx > sz ? sx : sz) : (sy > sz ? sy : sz));
    out->Set(m.TransformPoint(m_center), m_radius * largest);
}
