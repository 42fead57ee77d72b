// LxGPUResourceView: the base of the four view kinds, a description of how shaders or the output merger see a
// range of a resource.
//
// Ownership: the resource owns its views (counted); the view's pointer back to the resource is raw and becomes null
// when the resource is destroyed first. Create() and Destroy() make and release the platform object; their base
// versions log IMPLEMENT ME and fail. One thread at a time.
#pragma once

#include "Common/LxApi.h"
#include "GPUResourceManager/LxGPUResourceViewDescription.h"

class LxGPUResource;

class LX_API LxGPUResourceView
{
public:
    LxGPUResourceView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc);
    virtual ~LxGPUResourceView() = default;
    LxGPUResourceView(const LxGPUResourceView&) = delete;
    LxGPUResourceView& operator=(const LxGPUResourceView&) = delete;

    // Null once the resource is gone.
    LxGPUResource* GetResource() const { return m_pResource; }
    const LxGPUResourceViewDescription& GetDescription() const { return m_desc; }
    LxGPUResourceViewType GetViewType() const { return m_desc.viewType; }
    LxGPUResourceFormat GetFormat() const { return m_desc.format; }

    virtual bool Create();
    virtual void Destroy();

    // For the owning resource only, when it dies or drops the view: GetResource() answers null from then on.
    void DetachResource() { m_pResource = nullptr; }

protected:
    friend class LxGPUResource;

    LxGPUResource* m_pResource;
    LxGPUResourceViewDescription m_desc;
};
