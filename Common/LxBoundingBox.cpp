#include "Common/LxBoundingBox.h"

#include "Common/LxMatrix4.h"

#include <cfloat>

LxBoundingBox::LxBoundingBox() : LxBoundingVolume(LX_BV_BOX)
{
    SetEmpty();
}

void LxBoundingBox::SetEmpty()
{
    m_min = LxPoint3(FLT_MAX, FLT_MAX, FLT_MAX);
    m_max = LxPoint3(-FLT_MAX, -FLT_MAX, -FLT_MAX);
}

bool LxBoundingBox::IsEmpty() const
{
    return m_min.x > m_max.x || m_min.y > m_max.y || m_min.z > m_max.z;
}

LxPoint3 LxBoundingBox::GetCorner(unsigned int i) const
{
    return LxPoint3((i & 1) ? m_max.x : m_min.x, (i & 2) ? m_max.y : m_min.y, (i & 4) ? m_max.z : m_min.z);
}

void LxBoundingBox::AddPoint(const LxPoint3& p)
{
    m_min = LxPoint3::Min(m_min, p);
    m_max = LxPoint3::Max(m_max, p);
}

void LxBoundingBox::AddBox(const LxBoundingBox& box)
{
    if (box.IsEmpty())
        return;
    m_min = LxPoint3::Min(m_min, box.m_min);
    m_max = LxPoint3::Max(m_max, box.m_max);
}

bool LxBoundingBox::Contains(const LxPoint3& p) const
{
    return p.x >= m_min.x && p.x <= m_max.x && p.y >= m_min.y && p.y <= m_max.y && p.z >= m_min.z && p.z <= m_max.z;
}

bool LxBoundingBox::Intersects(const LxBoundingBox& o) const
{
    return !IsEmpty() && !o.IsEmpty() && m_min.x <= o.m_max.x && m_max.x >= o.m_min.x && m_min.y <= o.m_max.y &&
           m_max.y >= o.m_min.y && m_min.z <= o.m_max.z && m_max.z >= o.m_min.z;
}

void LxBoundingBox::Transform(const LxMatrix4& m, LxBoundingBox* out) const
{
    LxBoundingBox result;
    if (IsEmpty())
    {
        *out = result;
        return;
    }
    if (m[3] == 0.0f && m[7] == 0.0f && m[11] == 0.0f && m[15] == 1.0f)
    {
        // Each output axis is the translation plus, per input axis, the smaller and larger of the two products.
        LxPoint3 lo(m[12], m[13], m[14]);
        LxPoint3 hi = lo;
        for (unsigned int r = 0; r < 3; ++r)
        {
            for (unsigned int c = 0; c < 3; ++c)
            {
                const float a = m(r, c) * m_min[c];
                const float b = m(r, c) * m_max[c];
                lo[r] += a < b ? a : b;
                hi[r] += a < b ? b : a;
            }
        }
        result.Set(lo, hi);
    }
    else
    {
        for (unsigned int i = 0; i < 8; ++i)
            result.AddPoint(m.TransformPointProjective(GetCorner(i)));
    }
    *out = result;
}
