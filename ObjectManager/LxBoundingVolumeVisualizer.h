// LxBoundingVolumeVisualizer: draws bounding volumes for debugging (a line renderer supplied by the application or a
// tool). LxObject::DrawBoundingVolumes hands it the object's volumes in world space; it owns nothing of the object.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxBoundingBox.h"
#include "Common/LxBoundingSphere.h"

class LX_API LxBoundingVolumeVisualizer
{
public:
    virtual ~LxBoundingVolumeVisualizer() = default;
    virtual void DrawBox(const LxBoundingBox& box) const = 0;
    virtual void DrawSphere(const LxBoundingSphere& sphere) const = 0;
};
