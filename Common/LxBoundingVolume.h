// LxBoundingVolume: the base of the bounding volumes (LxBoundingBox, LxBoundingSphere). It carries only the type
// tag, so code holding a base pointer can tell which volume it has without a cast that may fail.
#pragma once

#include "Common/LxApi.h"

class LX_API LxBoundingVolume
{
public:
    enum BVType
    {
        LX_BV_BOX = 0,
        LX_BV_SPHERE = 1
    };

    virtual ~LxBoundingVolume() = default;
    BVType GetBVType() const { return m_type; }

protected:
    explicit LxBoundingVolume(BVType type) : m_type(type) {}
    LxBoundingVolume(const LxBoundingVolume&) = default;
    LxBoundingVolume& operator=(const LxBoundingVolume&) = default;

private:
    BVType m_type;
};
