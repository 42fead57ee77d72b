// LxBoundingSphere: a sphere given by its centre and radius (a negative radius marks an empty sphere, the default).
// A plain value type; nothing allocates or logs.
#pragma once

#include "Common/LxBoundingVolume.h"
#include "Common/LxPoint3.h"

class LxBoundingBox;
class LxMatrix4;

class LX_API LxBoundingSphere : public LxBoundingVolume
{
public:
    LxBoundingSphere() : LxBoundingVolume(LX_BV_SPHERE), m_radius(-1.0f) {}
    LxBoundingSphere(const LxPoint3& center, float radius)
        : LxBoundingVolume(LX_BV_SPHERE), m_center(center), m_radius(radius)
    {
    }
    // The sphere through the box's corners (empty for an empty box).
    explicit LxBoundingSphere(const LxBoundingBox& box);

    const LxPoint3& GetCenter() const { return m_center; }
    float GetRadius() const { return m_radius; }
    void Set(const LxPoint3& center, float radius)
    {
        m_center = center;
        m_radius = radius;
    }
    bool IsEmpty() const { return m_radius < 0.0f; }
    // Boundary included.
    bool Contains(const LxPoint3& p) const { return !IsEmpty() && p.SquaredDistance(m_center) <= m_radius * m_radius; }
    bool Intersects(const LxBoundingSphere& o) const;
    // Grows the sphere just enough to hold `p` (an empty sphere becomes the point).
    void AddPoint(const LxPoint3& p);

    // The sphere around this sphere moved by an affine matrix: the centre transformed, the radius scaled by the
    // longest axis column (out may be this sphere).
    void Transform(const LxMatrix4& m, LxBoundingSphere* out) const;

private:
    LxPoint3 m_center;
    float m_radius;
};
