#include "GPUResourceManager/LxGPUResourceView.h"

#include "Common/LxLogManager.h"

LxGPUResourceView::LxGPUResourceView(LxGPUResource* resource, const LxGPUResourceViewDescription& desc)
    : m_pResource(resource), m_desc(desc)
{
}

bool LxGPUResourceView::Create()
{
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxGPUResourceView::Create");
    return false;
}

void LxGPUResourceView::Destroy()
{
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxGPUResourceView::Destroy");
}
