// LxGPUResource: the API-neutral base of every GPU resource (buffers and textures), its usage flags and the views
// made on it.
//
// Ownership: resources are shared through LxCountedPtr (not thread-safe, like every counted pointer). A resource
// owns its views through counted pointers; a view points back at its resource with a raw pointer, which the
// resource clears when it dies, so a view that outlives its resource answers GetResource() with null.
// Threading: a resource and its views are used by one thread at a time; only the allocation ID counter is shared.
// Failure: operations log through LxLogManager and return false, 0 or null; nothing throws. Operations a platform
// class does not implement log "<qualified name> ::: IMPLEMENT ME!" and fail.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMD5Hash.h"
#include "Common/LxString.h"
#include "GPUResourceManager/LxGPUDepthStencilResourceView.h"
#include "GPUResourceManager/LxGPURenderableResourceView.h"
#include "GPUResourceManager/LxGPUResourceFormat.h"
#include "GPUResourceManager/LxGPUResourceViewDescription.h"
#include "GPUResourceManager/LxGPUSamplingResourceView.h"
#include "GPUResourceManager/LxGPUUnorderedAccessView.h"

class LX_API LxGPUResource
{
public:
    // Only a resource whose behaviour is exactly GPU_RESOURCE_DYNAMIC may be mapped.
    enum Behavior : unsigned
    {
        GPU_RESOURCE_STATIC = 0,
        GPU_RESOURCE_DYNAMIC = 1,
    };
    enum Type : unsigned
    {
        TYPE_UNKNOWN = 0,
        BUFFER = 1,
        TEXTURE_2D_ARRAY = 2, // 2D textures are arrays of size 1
        TEXTURE_3D = 3,
        TEXTURE_CUBE_ARRAY = 4,
    };
    // Bind flags as stored. The buffer subclasses OR their own flag into what the caller passes.
    enum BindType : unsigned
    {
        BIND_VERTEX_BUFFER = 0x1,
        BIND_INDEX_BUFFER = 0x2,
        BIND_CONSTANT_BUFFER = 0x4,
        BIND_SHADER_RESOURCE = 0x8,
        BIND_RENDER_TARGET = 0x20,
        BIND_DEPTH_STENCIL = 0x40,
        BIND_UNORDERED_ACCESS = 0x80,
    };
    enum CPUAccessType : unsigned
    {
        CPU_ACCESS_WRITE = 0x10000,
        CPU_ACCESS_READ = 0x20000,
        // A staging copy kept for readback; counts as readable when mapping.
        CPU_ACCESS_READBACK = 0x40000,
    };
    // Passed through to the platform layer untouched.
    enum MiscHint : unsigned
    {
        MISC_NONE = 0,
        MISC_GENERATE_MIPS = 0x1,
        MISC_SHARED = 0x2,
        MISC_TEXTURECUBE = 0x4,
        MISC_DRAWINDIRECT_ARGS = 0x10,
        MISC_BUFFER_ALLOW_RAW_VIEWS = 0x20,
        MISC_BUFFER_STRUCTURED = 0x40,
        MISC_TILED = 0x80,
    };
    // MAP_READ and MAP_READ_WRITE read; every kind but MAP_READ writes.
    enum MapType : unsigned
    {
        MAP_READ = 1,
        MAP_WRITE = 2,
        MAP_READ_WRITE = 3,
        MAP_WRITE_DISCARD = 4,
        MAP_WRITE_NO_OVERWRITE = 5,
    };
    // Resource states, valued as the Direct3D 12 state bits so the platform layer passes them through.
    enum StateType : unsigned
    {
        STATE_COMMON = 0,
        STATE_PRESENT = 0,
        STATE_VERTEX_AND_CONSTANT_BUFFER = 0x1,
        STATE_INDEX_BUFFER = 0x2,
        STATE_RENDER_TARGET = 0x4,
        STATE_UNORDERED_ACCESS = 0x8,
        STATE_DEPTH_WRITE = 0x10,
        STATE_DEPTH_READ = 0x20,
        STATE_NON_PIXEL_SHADER_RESOURCE = 0x40,
        STATE_PIXEL_SHADER_RESOURCE = 0x80,
        STATE_STREAM_OUT = 0x100,
        STATE_INDIRECT_ARGUMENT = 0x200,
        STATE_COPY_DEST = 0x400,
        STATE_COPY_SOURCE = 0x800,
        STATE_RESOLVE_DEST = 0x1000,
        STATE_RESOLVE_SOURCE = 0x2000,
        STATE_GENERIC_READ = 0xAC3,
    };

    // Behaviour static, type unknown, BIND_SHADER_RESOURCE only, no CPU access, no hints.
    LxGPUResource();
    LxGPUResource(Behavior behavior, Type type, unsigned bindFlags, unsigned cpuAccessFlags, unsigned miscHints);
    virtual ~LxGPUResource();
    LxGPUResource(const LxGPUResource&) = delete;
    LxGPUResource& operator=(const LxGPUResource&) = delete;

    Behavior GetBehavior() const { return m_behavior; }
    Type GetType() const { return m_type; }
    unsigned GetBindFlags() const { return m_nBindFlags; }
    unsigned GetCPUAccessFlags() const { return m_nCPUAccessFlags; }
    unsigned GetMiscHints() const { return m_nMiscHints; }

    // True when `flags` has any bit of `usage`.
    static bool QueryBindUsage(unsigned usage, unsigned flags) { return (usage & flags) != 0; }
    bool QueryUsage(unsigned usage) const { return QueryBindUsage(usage, m_nBindFlags); }
    bool QueryCPUAccess(unsigned access) const { return (access & m_nCPUAccessFlags) != 0; }
    bool QueryMiscHint(unsigned hint) const { return (hint & m_nMiscHints) != 0; }

    // Empty unless the resource was created under a name.
    const LxString& GetName() const { return m_name; }
    void SetName(const LxString& name) { m_name = name; }
    // The content hash the manager finds shared resources by; null until set. The resource keeps its own copy.
    const LxMD5Hash* GetHash() const { return m_pHash; }
    void SetHash(const LxMD5Hash* hash);

    // Process-wide, taken by every constructor, never reused.
    unsigned GetAllocationID() const { return m_nAllocationID; }
    // The ID the next resource constructed will get.
    static unsigned PeekNextAllocationID();
    // One line of the manager's leak report: "AllocID: %u  Name: %s" (no line break).
    LxString GetLeakReportLine() const;

    // --- platform operations (base versions log IMPLEMENT ME and fail) ----------------------------------------
    virtual bool Transition(StateType before, StateType after);
    virtual bool UAVBarrier();
    virtual bool CopyResource(LxGPUResource* source);

    // The range covering the whole resource (all elements, or all mips and slices).
    virtual LxGPUResourceDescription GetDefaultResourceDesc() const;
    // The format views take when the caller names none (the texture's format; unknown for buffers).
    virtual LxGPUResourceFormat GetDefaultViewFormat() const { return LX_FORMAT_UNKNOWN; }
    // A description of the given kind over the whole resource in the default format.
    LxGPUResourceViewDescription GetDefaultViewDescription(LxGPUResourceViewType viewType) const;
    virtual LxCountedPtr<LxGPUSamplingResourceView> GetDefaultSamplingView();

    // --- views -------------------------------------------------------------------------------------------------
    // Each returns the registered view with an equal description, or checks the description (IsViewValid), makes
    // the view, creates it and registers it. Null after an error.
    LxCountedPtr<LxGPUSamplingResourceView> GetSamplingView(const LxGPUResourceViewDescription& desc);
    LxCountedPtr<LxGPURenderableResourceView> GetRenderableView(const LxGPUResourceViewDescription& desc);
    LxCountedPtr<LxGPUUnorderedAccessView> GetUnorderedAccessView(const LxGPUResourceViewDescription& desc);

    // Whether a view of this description may be made on this resource; logs why not. Subclasses add their own
    // checks after the base ones.
    virtual bool IsViewValid(const LxGPUResourceViewDescription& desc) const;

    unsigned GetNumViews() const;

protected:
    // Factories of the platform view classes; each returns a new, not yet created view, or null.
    virtual LxGPUSamplingResourceView* CreateSamplingView(const LxGPUResourceViewDescription& desc);
    virtual LxGPURenderableResourceView* CreateRenderableView(const LxGPUResourceViewDescription& desc);
    virtual LxGPUDepthStencilResourceView* CreateDepthStencilView(const LxGPUResourceViewDescription& desc);
    // The base class has no UAVs: logs "UAV CREATION IS NOT SUPPORTED FOR THIS API".
    virtual LxGPUUnorderedAccessView* CreateUnorderedAccessView(const LxGPUResourceViewDescription& desc);

    // The view registry. A resource keeps one array per view kind (a counted pointer is typed, so views of
    // different kinds cannot share one array of base pointers without losing their own type).
    bool AddResourceView(const LxCountedPtr<LxGPUSamplingResourceView>& view);
    bool AddResourceView(const LxCountedPtr<LxGPURenderableResourceView>& view);
    bool AddResourceView(const LxCountedPtr<LxGPUDepthStencilResourceView>& view);
    bool AddResourceView(const LxCountedPtr<LxGPUUnorderedAccessView>& view);
    // Drops the registry's reference to `view` (detaching it from this resource); false when not registered.
    bool RemoveResourceView(LxGPUResourceView* view);
    // The first registered view whose description equals `desc`, or null.
    LxGPUResourceView* FindResourceView(const LxGPUResourceViewDescription& desc) const;

    // Whether a map of this kind is allowed: dynamic behaviour, and CPU read/write access matching the kind.
    bool ValidateMapType(MapType type) const;

    // Logs "<operation> ::: IMPLEMENT ME!" as an error; for the base versions of platform operations.
    static void ReportNotImplemented(const char* operation);

    LxArray<LxCountedPtr<LxGPUSamplingResourceView>> m_samplingViews;
    LxArray<LxCountedPtr<LxGPURenderableResourceView>> m_renderableViews;
    LxArray<LxCountedPtr<LxGPUDepthStencilResourceView>> m_depthStencilViews;
    LxArray<LxCountedPtr<LxGPUUnorderedAccessView>> m_unorderedAccessViews;

    // Makes the depth-stencil getter of textures share the lookup of the other kinds.
    LxCountedPtr<LxGPUDepthStencilResourceView> GetDepthStencilViewImpl(const LxGPUResourceViewDescription& desc);

private:
    // The lookup-or-create sequence shared by the four view getters.
    template <class View>
    LxCountedPtr<View> GetOrCreateView(const LxGPUResourceViewDescription& desc, LxArray<LxCountedPtr<View>>& views,
                                       View* (LxGPUResource::*factory)(const LxGPUResourceViewDescription&),
                                       const char* failureMessage);

    Behavior m_behavior;
    Type m_type;
    unsigned m_nBindFlags;
    unsigned m_nCPUAccessFlags;
    unsigned m_nMiscHints;
    LxString m_name;
    LxMD5Hash* m_pHash = nullptr;
    unsigned m_nAllocationID;
};
