// LxGPURenderableResourceView: a render-target view. It tells the render manager what kind of target it is, so
// the back buffer and buffers written as render targets can be told from ordinary textures. See LxGPUResourceView.
#pragma once

#include "GPUResourceManager/LxGPUResourceView.h"

class LX_API LxGPURenderableResourceView : public LxGPUResourceView
{
public:
    enum RMTargetType : unsigned
    {
        RM_TARGET_TEXTURE = 0,
        RM_TARGET_BACK_BUFFER = 1,
        RM_TARGET_BUFFER = 2,
    };

    LxGPURenderableResourceView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc);
    // Builds the description with the renderable view type.
    LxGPURenderableResourceView(LxGPUResource* resource, LxGPUResourceFormat format, unsigned resourceType,
                                const LxGPUResourceDescription& resourceDesc);

    // A buffer's view is a buffer target, anything else a texture target; the platform's back-buffer view says so.
    virtual RMTargetType GetRMTargetType() const;
};
