#include "GPUResourceManager/LxGPUResource.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxGPUDepthStencilResourceView.h"
#include "GPUResourceManager/LxGPURenderableResourceView.h"
#include "GPUResourceManager/LxGPUSamplingResourceView.h"
#include "GPUResourceManager/LxGPUUnorderedAccessView.h"

#include <atomic>

namespace
{
// Read and incremented by every constructor, on any thread; IDs are never reused.
std::atomic<unsigned> g_nextAllocationID{0};

template <class View>
void DetachAll(LxArray<LxCountedPtr<View>>& views)
{
    for (LxCountedPtr<View>& view : views)
    {
        if (view)
        {
            view->DetachResource();
        }
    }
    views.Clear();
}

template <class View>
LxGPUResourceView* FindIn(const LxArray<LxCountedPtr<View>>& views, const LxGPUResourceViewDescription& desc)
{
    for (const LxCountedPtr<View>& view : views)
    {
        if (view && view->GetDescription() == desc)
        {
            return view.Get();
        }
    }
    return nullptr;
}

template <class View>
bool RemoveFrom(LxArray<LxCountedPtr<View>>& views, LxGPUResourceView* target)
{
    for (unsigned i = 0; i < views.GetCount(); ++i)
    {
        if (views[i].Get() == target)
        {
            views.RemoveAt(i);
            return true;
        }
    }
    return false;
}

template <class View>
bool AddTo(LxArray<LxCountedPtr<View>>& views, const LxCountedPtr<View>& view)
{
    if (!view)
    {
        LX_ERROR("Trying to add a resource view for a NULL resource view instance!");
        return false;
    }
    const unsigned before = views.GetCount();
    views.Add(view);
    if (views.GetCount() != before + 1)
    {
        LX_ERROR("Error trying to add a resource view to the view array stored in this GPU resource");
        return false;
    }
    return true;
}
} // namespace

LxGPUResource::LxGPUResource() : LxGPUResource(GPU_RESOURCE_STATIC, TYPE_UNKNOWN, BIND_SHADER_RESOURCE, 0, 0) {}

LxGPUResource::LxGPUResource(Behavior behavior, Type type, unsigned bindFlags, unsigned cpuAccessFlags,
                             unsigned miscHints)
    : m_behavior(behavior), m_type(type), m_nBindFlags(bindFlags), m_nCPUAccessFlags(cpuAccessFlags),
      m_nMiscHints(miscHints), m_nAllocationID(g_nextAllocationID.fetch_add(1))
{
}

LxGPUResource::~LxGPUResource()
{
    // Views that others still hold must not reach back into a dead resource.
    DetachAll(m_samplingViews);
    DetachAll(m_renderableViews);
    DetachAll(m_depthStencilViews);
    DetachAll(m_unorderedAccessViews);
    delete m_pHash;
}

void LxGPUResource::SetHash(const LxMD5Hash* hash)
{
    if (hash == nullptr)
    {
        delete m_pHash;
        m_pHash = nullptr;
        return;
    }
    if (m_pHash == nullptr)
    {
        m_pHash = new LxMD5Hash(*hash);
    }
    else
    {
        *m_pHash = *hash;
    }
}

unsigned LxGPUResource::PeekNextAllocationID()
{
    return g_nextAllocationID.load();
}

LxString LxGPUResource::GetLeakReportLine() const
{
    return LxString::Formatted("AllocID: %u  Name: %s", m_nAllocationID, m_name.c_str());
}

void LxGPUResource::ReportNotImplemented(const char* operation)
{
    LX_ERROR("%s ::: IMPLEMENT ME!", operation);
}

bool LxGPUResource::Transition(StateType, StateType)
{
    ReportNotImplemented("LxGPUResource::Transition");
    return false;
}

bool LxGPUResource::UAVBarrier()
{
    ReportNotImplemented("LxGPUResource::UAVBarrier");
    return false;
}

bool LxGPUResource::CopyResource(LxGPUResource*)
{
    ReportNotImplemented("LxGPUResource::CopyResource");
    return false;
}

LxGPUResourceDescription LxGPUResource::GetDefaultResourceDesc() const
{
    return LxGPUResourceDescription::Buffer(0, 0);
}

LxGPUResourceViewDescription LxGPUResource::GetDefaultViewDescription(LxGPUResourceViewType viewType) const
{
    return LxGPUResourceViewDescription(viewType, GetDefaultViewFormat(), m_type, GetDefaultResourceDesc());
}

LxCountedPtr<LxGPUSamplingResourceView> LxGPUResource::GetDefaultSamplingView()
{
    return GetSamplingView(GetDefaultViewDescription(LX_VIEW_SAMPLING));
}

LxGPUSamplingResourceView* LxGPUResource::CreateSamplingView(const LxGPUResourceViewDescription&)
{
    ReportNotImplemented("LxGPUResource::CreateSamplingView");
    return nullptr;
}

LxGPURenderableResourceView* LxGPUResource::CreateRenderableView(const LxGPUResourceViewDescription&)
{
    ReportNotImplemented("LxGPUResource::CreateRenderableView");
    return nullptr;
}

LxGPUDepthStencilResourceView* LxGPUResource::CreateDepthStencilView(const LxGPUResourceViewDescription&)
{
    ReportNotImplemented("LxGPUResource::CreateDepthStencilView");
    return nullptr;
}

LxGPUUnorderedAccessView* LxGPUResource::CreateUnorderedAccessView(const LxGPUResourceViewDescription&)
{
    LX_ERROR("UAV CREATION IS NOT SUPPORTED FOR THIS API");
    return nullptr;
}

template <class View>
LxCountedPtr<View> LxGPUResource::GetOrCreateView(const LxGPUResourceViewDescription& desc,
                                                  LxArray<LxCountedPtr<View>>& views,
                                                  View* (LxGPUResource::*factory)(const LxGPUResourceViewDescription&),
                                                  const char* failureMessage)
{
    for (const LxCountedPtr<View>& view : views)
    {
        if (view && view->GetDescription() == desc)
        {
            return view;
        }
    }
    if (!IsViewValid(desc))
    {
        return LxCountedPtr<View>();
    }
    LxCountedPtr<View> view((this->*factory)(desc));
    if (!view)
    {
        LX_ERROR("%s", failureMessage);
        return view;
    }
    if (!view->Create())
    {
        // The platform view reported its own reason; the caller learns that the view is not there.
        LX_ERROR("%s", failureMessage);
        view->DetachResource();
        return LxCountedPtr<View>();
    }
    if (!AddResourceView(view))
    {
        view->Destroy();
        view->DetachResource();
        return LxCountedPtr<View>();
    }
    return view;
}

LxCountedPtr<LxGPUSamplingResourceView> LxGPUResource::GetSamplingView(const LxGPUResourceViewDescription& desc)
{
    return GetOrCreateView(desc, m_samplingViews, &LxGPUResource::CreateSamplingView, "Sampling view creation failed.");
}

LxCountedPtr<LxGPURenderableResourceView> LxGPUResource::GetRenderableView(const LxGPUResourceViewDescription& desc)
{
    return GetOrCreateView(desc, m_renderableViews, &LxGPUResource::CreateRenderableView,
                           "Renderable view creation failed.");
}

LxCountedPtr<LxGPUDepthStencilResourceView>
LxGPUResource::GetDepthStencilViewImpl(const LxGPUResourceViewDescription& desc)
{
    return GetOrCreateView(desc, m_depthStencilViews, &LxGPUResource::CreateDepthStencilView,
                           "Depth-stencil view creation failed.");
}

LxCountedPtr<LxGPUUnorderedAccessView> LxGPUResource::GetUnorderedAccessView(const LxGPUResourceViewDescription& desc)
{
    return GetOrCreateView(desc, m_unorderedAccessViews, &LxGPUResource::CreateUnorderedAccessView,
                           "UAV creation failed.");
}

bool LxGPUResource::AddResourceView(const LxCountedPtr<LxGPUSamplingResourceView>& view)
{
    return AddTo(m_samplingViews, view);
}

bool LxGPUResource::AddResourceView(const LxCountedPtr<LxGPURenderableResourceView>& view)
{
    return AddTo(m_renderableViews, view);
}

bool LxGPUResource::AddResourceView(const LxCountedPtr<LxGPUDepthStencilResourceView>& view)
{
    return AddTo(m_depthStencilViews, view);
}

bool LxGPUResource::AddResourceView(const LxCountedPtr<LxGPUUnorderedAccessView>& view)
{
    return AddTo(m_unorderedAccessViews, view);
}

bool LxGPUResource::RemoveResourceView(LxGPUResourceView* view)
{
    if (view == nullptr)
    {
        return false;
    }
    // Detach first: removing may drop the last reference and destroy the view.
    LxGPUResource* owner = view->GetResource();
    if (owner == this)
    {
        view->DetachResource();
    }
    if (RemoveFrom(m_samplingViews, view) || RemoveFrom(m_renderableViews, view) ||
        RemoveFrom(m_depthStencilViews, view) || RemoveFrom(m_unorderedAccessViews, view))
    {
        return true;
    }
    if (owner == this)
    {
        view->m_pResource = this; // it was not ours to detach after all
    }
    return false;
}

LxGPUResourceView* LxGPUResource::FindResourceView(const LxGPUResourceViewDescription& desc) const
{
    switch (desc.viewType)
    {
    case LX_VIEW_SAMPLING:
        return FindIn(m_samplingViews, desc);
    case LX_VIEW_RENDERABLE:
        return FindIn(m_renderableViews, desc);
    case LX_VIEW_DEPTH_STENCIL:
        return FindIn(m_depthStencilViews, desc);
    case LX_VIEW_UNORDERED_ACCESS:
        return FindIn(m_unorderedAccessViews, desc);
    }
    return nullptr;
}

unsigned LxGPUResource::GetNumViews() const
{
    return m_samplingViews.GetCount() + m_renderableViews.GetCount() + m_depthStencilViews.GetCount() +
           m_unorderedAccessViews.GetCount();
}

bool LxGPUResource::IsViewValid(const LxGPUResourceViewDescription& desc) const
{
    switch (desc.viewType)
    {
    case LX_VIEW_SAMPLING:
        if (!QueryUsage(BIND_SHADER_RESOURCE))
        {
            LX_ERROR("Tried to create sampling view of a resource without BIND_SHADER_RESOURCE usage flag.");
            return false;
        }
        break;
    case LX_VIEW_RENDERABLE:
        if (!QueryUsage(BIND_RENDER_TARGET))
        {
            LX_ERROR("Tried to create a renderable view of a resource without BIND_RENDER_TARGET usage flag.");
            return false;
        }
        break;
    case LX_VIEW_DEPTH_STENCIL:
        if (!QueryUsage(BIND_DEPTH_STENCIL))
        {
            LX_ERROR("Tried to create a depth-stencil view of a resource without BIND_DEPTH_STENCIL usage flag.");
            return false;
        }
        break;
    case LX_VIEW_UNORDERED_ACCESS:
        if (!QueryUsage(BIND_UNORDERED_ACCESS))
        {
            LX_ERROR("Tried to create an Unordered Access View of a resource without BIND_UNORDERED_ACCESS usage "
                     "flag.");
            return false;
        }
        break;
    default:
        LX_ERROR("Unknown view type %u.", static_cast<unsigned>(desc.viewType));
        return false;
    }
    const unsigned readOnly =
        LxGPUResourceViewDescription::FLAG_READ_ONLY_DEPTH | LxGPUResourceViewDescription::FLAG_READ_ONLY_STENCIL;
    if ((desc.flags & readOnly) != 0 && desc.viewType != LX_VIEW_DEPTH_STENCIL)
    {
        LX_ERROR("Read only depth/stencil view flags are only valid for depth-stencil views!");
        return false;
    }
    if ((desc.flags & LxGPUResourceViewDescription::FLAG_APPEND) != 0)
    {
        if (desc.viewType != LX_VIEW_UNORDERED_ACCESS)
        {
            LX_ERROR("Only UAVs may have the append buffer view flag");
            return false;
        }
        if (m_type != BUFFER)
        {
            LX_ERROR("Append buffer views are supported only for buffer resources!");
            return false;
        }
    }
    return true;
}

bool LxGPUResource::ValidateMapType(MapType type) const
{
    if (m_behavior != GPU_RESOURCE_DYNAMIC)
    {
        LX_ERROR("Non-dynamic resources may not be mapped.");
        return false;
    }
    if (type < MAP_READ || type > MAP_WRITE_NO_OVERWRITE)
    {
        LX_ERROR("Invalid map type %u.", static_cast<unsigned>(type));
        return false;
    }
    const bool reads = type == MAP_READ || type == MAP_READ_WRITE;
    const bool writes = type != MAP_READ;
    if (reads && !QueryCPUAccess(CPU_ACCESS_READ | CPU_ACCESS_READBACK))
    {
        LX_ERROR("Attempted readable lock on a non-CPU-readable resource.");
        return false;
    }
    if (writes && !QueryCPUAccess(CPU_ACCESS_WRITE))
    {
        LX_ERROR("Attempted writeable lock on a non-CPU-writable resource.");
        return false;
    }
    return true;
}
