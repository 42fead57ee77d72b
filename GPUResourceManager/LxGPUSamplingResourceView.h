// LxGPUSamplingResourceView: a shader-resource view (textures and buffers read by shaders). See LxGPUResourceView.
#pragma once

#include "GPUResourceManager/LxGPUResourceView.h"

class LX_API LxGPUSamplingResourceView : public LxGPUResourceView
{
public:
    LxGPUSamplingResourceView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc);
    // Builds the description with the sampling view type.
    LxGPUSamplingResourceView(LxGPUResource* resource, LxGPUResourceFormat format, unsigned resourceType,
                              const LxGPUResourceDescription& resourceDesc);
};
