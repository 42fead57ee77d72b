// LxGPUDepthStencilResourceView: a depth-stencil view of a texture; its description's flags may make depth or
// stencil read-only. See LxGPUResourceView.
#pragma once

#include "GPUResourceManager/LxGPUResourceView.h"

class LX_API LxGPUDepthStencilResourceView : public LxGPUResourceView
{
public:
    LxGPUDepthStencilResourceView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc);
    // Builds the description with the depth-stencil view type.
    LxGPUDepthStencilResourceView(LxGPUResource* resource, LxGPUResourceFormat format, unsigned resourceType,
                                  const LxGPUResourceDescription& resourceDesc);

    bool IsDepthReadOnly() const { return (m_desc.flags & LxGPUResourceViewDescription::FLAG_READ_ONLY_DEPTH) != 0; }
    bool IsStencilReadOnly() const
    {
        return (m_desc.flags & LxGPUResourceViewDescription::FLAG_READ_ONLY_STENCIL) != 0;
    }
};
