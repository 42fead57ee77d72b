// LxBoundingBox: an axis-aligned box given by its minimum and maximum corners.
//
// A default box is empty (minimum +FLT_MAX, maximum -FLT_MAX), so that adding points or boxes grows it from
// nothing; an empty box contains nothing and transforms to an empty box. A plain value type; nothing allocates or
// logs.
#pragma once

#include "Common/LxBoundingVolume.h"
#include "Common/LxPoint3.h"

class LxMatrix4;

class LX_API LxBoundingBox : public LxBoundingVolume
{
public:
    LxBoundingBox();
    // The corners are taken as given (min must not exceed max for a non-empty box).
    LxBoundingBox(const LxPoint3& min, const LxPoint3& max) : LxBoundingVolume(LX_BV_BOX), m_min(min), m_max(max) {}

    const LxPoint3& GetMin() const { return m_min; }
    const LxPoint3& GetMax() const { return m_max; }
    void Set(const LxPoint3& min, const LxPoint3& max)
    {
        m_min = min;
        m_max = max;
    }
    void SetEmpty();
    // True when min exceeds max on any axis (a single point is not empty).
    bool IsEmpty() const;
    LxPoint3 GetCenter() const { return LxPoint3::Lerp(m_min, m_max, 0.5f); }
    // Half the size on each axis.
    LxVector3 GetExtents() const { return (m_max - m_min) * 0.5f; }
    // Corner i: bit 0 picks max.x, bit 1 max.y, bit 2 max.z.
    LxPoint3 GetCorner(unsigned int i) const;

    void AddPoint(const LxPoint3& p);
    void AddBox(const LxBoundingBox& box);
    // Boundaries included.
    bool Contains(const LxPoint3& p) const;
    bool Intersects(const LxBoundingBox& other) const;

    // The axis-aligned box around this box moved by `m` (out may be this box). An affine matrix is applied per
    // axis (Arvo's method); a projective one through its eight corners, each divided by its w.
    void Transform(const LxMatrix4& m, LxBoundingBox* out) const;

private:
    LxPoint3 m_min;
    LxPoint3 m_max;
};
