#include "GPUResourceManager/LxGPUResourceManager.h"

#include "Common/LxLogManager.h"

LxGPUResourceManager* LxGPUResourceManager::ms_pInstance = nullptr;
LxGPUResourceManager::CreateFunction LxGPUResourceManager::ms_pfnCreate = nullptr;

namespace
{
const char* const kNotImplemented = "THIS RESOURCE CREATION FUNCTION IS NOT IMPLEMENTED FOR THIS API.";
}

// One registered resource: the manager's own counted reference (typed, because counted pointers of different types
// cannot share a record) and what it was counted under in the statistics.
class LxGPUResourceManager::Entry
{
public:
    virtual ~Entry() = default;
    virtual LxGPUResource* GetResource() const = 0;
    // Stops observing the reference count (the manager lets go without being told about it).
    virtual void Detach() = 0;

    LxGPUResourceStatField countField = LX_STAT_NUM_FIELDS;
    unsigned bytes = 0;
};

template <class T>
class LxGPUResourceManager::TypedEntry : public LxGPUResourceManager::Entry, public LxCountedPtrObserver<T>
{
public:
    TypedEntry(LxGPUResourceManager* manager, const LxCountedPtr<T>& resource) : m_pManager(manager), m_ref(resource)
    {
        m_ref.SetObserver(this);
    }
    ~TypedEntry() override
    {
        // Releasing here may delete the resource; the observer must be gone first, or a release by someone else
        // after the manager has gone would call into freed memory.
        Detach();
    }
    LxGPUResource* GetResource() const override { return m_ref.Get(); }
    void Detach() override { m_ref.SetObserver(nullptr); }
    void OnOneReferenceLeft(T* object) override { m_pManager->NotifyLastReference(object); }

private:
    LxGPUResourceManager* m_pManager;
    LxCountedPtr<T> m_ref;
};

LxGPUResourceManager* LxGPUResourceManager::GetPtr()
{
    if (!ms_pInstance)
    {
        ms_pInstance = ms_pfnCreate ? ms_pfnCreate() : new LxGPUResourceManager();
    }
    return ms_pInstance;
}

void LxGPUResourceManager::ShutDown()
{
    LxGPUResourceManager* instance = ms_pInstance;
    if (instance)
    {
        instance->ReleaseAllResources();
        delete instance;
        ms_pInstance = nullptr;
    }
}

void LxGPUResourceManager::SetCreateFunction(CreateFunction create)
{
    ms_pfnCreate = create;
}

LxGPUResourceManager::LxGPUResourceManager() = default;

LxGPUResourceManager::~LxGPUResourceManager()
{
    ReleaseAllResources();
}

bool LxGPUResourceManager::Initialize(unsigned, unsigned)
{
    LX_ERROR("%s ::: IMPLEMENT ME!", "LxGPUResourceManager::Initialize");
    return false;
}

void LxGPUResourceManager::ReleaseAllResources()
{
    LxArray<Entry*> entries;
    {
        LxMutex::ScopedLock lock(m_lock);
        m_backBuffer = nullptr;
        m_depthBuffer = nullptr;
        if (!m_entries.IsEmpty())
        {
            LxString report("Possible resource leak:  Resources still referenced during GRM shutdown:\n");
            for (Entry* entry : m_entries)
            {
                report += entry->GetResource()->GetLeakReportLine();
                report += "\n";
            }
            LX_WARNING("%s", report.c_str());
        }
        entries = static_cast<LxArray<Entry*>&&>(m_entries);
        m_entries.Clear();
        m_named.Clear();
        m_hashed.Clear();
        m_textures.Clear();
        m_stats.Clear();
    }
    // Outside the lock: a release may delete a resource, whose destructor may release others.
    for (Entry* entry : entries)
    {
        delete entry;
    }
}

// --- validation --------------------------------------------------------------------------------------------------

bool LxGPUResourceManager::ValidateBindFlags(unsigned bindFlags, unsigned cpuAccessFlags) const
{
    const unsigned gpuWritten =
        LxGPUResource::BIND_RENDER_TARGET | LxGPUResource::BIND_DEPTH_STENCIL | LxGPUResource::BIND_UNORDERED_ACCESS;
    const unsigned readable = LxGPUResource::CPU_ACCESS_READ | LxGPUResource::CPU_ACCESS_READBACK;
    if ((bindFlags & LxGPUResource::BIND_RENDER_TARGET) && (bindFlags & LxGPUResource::BIND_DEPTH_STENCIL))
    {
        LX_ERROR("LxGPUResourceManager::ValidateBindFlags.  A resource cannot be both a render target and a "
                 "depth-stencil buffer.");
        return false;
    }
    if ((cpuAccessFlags & LxGPUResource::CPU_ACCESS_WRITE) && (cpuAccessFlags & readable))
    {
        LX_ERROR("LxGPUResourceManager::ValidateBindFlags.  A resource cannot be both CPU-readable and CPU-writable.");
        return false;
    }
    if (cpuAccessFlags != 0 && (bindFlags & gpuWritten) != 0)
    {
        LX_ERROR("LxGPUResourceManager::ValidateBindFlags.  CPU-accessible resources cannot be render targets, "
                 "depth-stencil buffers or unordered-access resources.");
        return false;
    }
    return true;
}

bool LxGPUResourceManager::ValidateCommon(const LxString& name, unsigned bindFlags, unsigned cpuAccessFlags) const
{
    if (!name.IsEmpty())
    {
        LxMutex::ScopedLock lock(m_lock);
        if (m_named.Contains(name))
        {
            LX_ERROR("A resource with the name:%salready exists.", name.c_str());
            return false;
        }
    }
    return ValidateBindFlags(bindFlags, cpuAccessFlags);
}

bool LxGPUResourceManager::ValidateTexture(const char* who, unsigned width, unsigned height, unsigned depth,
                                           unsigned depthForMips, LxGPUResourceFormat format, unsigned mipCount) const
{
    if (width == 0 || height == 0 || depth == 0)
    {
        LX_ERROR("%s.  A texture needs a width, a height and a depth or array size of at least 1 (asked for %u x %u "
                 "x %u).",
                 who, width, height, depth);
        return false;
    }
    if (format == LX_FORMAT_UNKNOWN || LxGetFormatBitsPerElement(format) == 0)
    {
        LX_ERROR("%s.  A texture needs a known format.", who);
        return false;
    }
    if (mipCount > LxGPUTexture::GetMaxMipCount(width, height, depthForMips))
    {
        LX_ERROR("Mip chain size requested is larger than maximum mip chain size for this texture size.");
        return false;
    }
    return true;
}

bool LxGPUResourceManager::CheckBufferSize(const char* who, unsigned elementSize, unsigned elementCount)
{
    // Sizes are 32-bit: a product past 4 GB would wrap into a small buffer that the caller then overruns.
    if (static_cast<unsigned long long>(elementSize) * elementCount > 0xFFFFFFFFull)
    {
        LX_ERROR("%s.  %u elements of %u bytes make more than 4 GB.", who, elementCount, elementSize);
        return false;
    }
    return true;
}

// --- creation ----------------------------------------------------------------------------------------------------

LxCountedPtr<LxGPUVertexBuffer> LxGPUResourceManager::CreateResourceVertex(LxGPUResource::Behavior behavior,
                                                                           unsigned vertexSize, unsigned vertexCount,
                                                                           LxCountedPtr<LxMemoryBuffer> initialData,
                                                                           unsigned bindFlags, unsigned cpuAccessFlags,
                                                                           const LxString& name)
{
    if (!ValidateCommon(name, bindFlags, cpuAccessFlags))
    {
        return nullptr;
    }
    if (vertexSize == 0 || vertexCount == 0)
    {
        LX_ERROR("LxGPUResourceManager::CreateResourceVertex.  A vertex buffer needs a vertex size and a vertex "
                 "count.");
        return nullptr;
    }
    if (!CheckBufferSize("LxGPUResourceManager::CreateResourceVertex", vertexSize, vertexCount))
    {
        return nullptr;
    }
    return Register(APICreateResourceVertex(behavior, vertexSize, vertexCount, initialData, bindFlags, cpuAccessFlags),
                    name, LX_STAT_VERTEX_BUFFER_COUNT);
}

LxCountedPtr<LxGPUIndexBuffer> LxGPUResourceManager::CreateResourceIndex(LxGPUResource::Behavior behavior,
                                                                         unsigned indexSize, unsigned indexCount,
                                                                         LxCountedPtr<LxMemoryBuffer> initialData,
                                                                         unsigned bindFlags, unsigned cpuAccessFlags,
                                                                         const LxString& name)
{
    if (!ValidateCommon(name, bindFlags, cpuAccessFlags))
    {
        return nullptr;
    }
    if ((indexSize != 2 && indexSize != 4) || indexCount == 0)
    {
        LX_ERROR("LxGPUResourceManager::CreateResourceIndex.  Indices are 2 or 4 bytes (asked for %u) and an index "
                 "buffer needs at least one.",
                 indexSize);
        return nullptr;
    }
    if (!CheckBufferSize("LxGPUResourceManager::CreateResourceIndex", indexSize, indexCount))
    {
        return nullptr;
    }
    return Register(APICreateResourceIndex(behavior, indexSize, indexCount, initialData, bindFlags, cpuAccessFlags),
                    name, LX_STAT_INDEX_BUFFER_COUNT);
}

LxCountedPtr<LxConstantBuffer> LxGPUResourceManager::CreateConstantBuffer(LxGPUResource::Behavior behavior,
                                                                          unsigned size,
                                                                          LxCountedPtr<LxMemoryBuffer> initialData,
                                                                          bool cpuWritable, unsigned miscHints,
                                                                          const LxString& name)
{
    if (!ValidateCommon(name, 0, 0))
    {
        return nullptr;
    }
    if (size == 0)
    {
        LX_ERROR("LxGPUResourceManager::CreateConstantBuffer.  A constant buffer needs a size.");
        return nullptr;
    }
    return Register(APICreateConstantBuffer(behavior, size, initialData, cpuWritable, miscHints), name,
                    LX_STAT_CONSTANT_BUFFER_COUNT);
}

LxCountedPtr<LxGPUStructuredBuffer>
LxGPUResourceManager::CreateStructuredBuffer(unsigned structSize, unsigned structCount, unsigned bindFlags,
                                             LxCountedPtr<LxMemoryBuffer> initialData, const LxString& name,
                                             unsigned miscHints)
{
    if (!ValidateCommon(name, bindFlags, 0))
    {
        return nullptr;
    }
    if (structSize == 0 || structCount == 0)
    {
        LX_ERROR("LxGPUResourceManager::CreateStructuredBuffer.  A structured buffer needs a structure size and a "
                 "structure count.");
        return nullptr;
    }
    if (!CheckBufferSize("LxGPUResourceManager::CreateStructuredBuffer", structSize, structCount))
    {
        return nullptr;
    }
    return Register(APICreateStructuredBuffer(structSize, structCount, bindFlags, initialData, miscHints), name,
                    LX_STAT_DATA_BUFFER_COUNT);
}

LxCountedPtr<LxGPUVertexBuffer> LxGPUResourceManager::CreateRenderableVB(LxGPUResourceFormat format,
                                                                         unsigned vertexCount, unsigned bindFlags,
                                                                         const LxString& name)
{
    if (!ValidateCommon(name, bindFlags, 0))
    {
        return nullptr;
    }
    if (LxGetFormatBitsPerElement(format) % 8 != 0 || LxGetFormatBitsPerElement(format) == 0 ||
        LxIsFormatBlockCompressed(format) || vertexCount == 0)
    {
        LX_ERROR("LxGPUResourceManager::CreateRenderableVB.  A renderable vertex buffer needs an element format of "
                 "whole bytes and a vertex count.");
        return nullptr;
    }
    if (!CheckBufferSize("LxGPUResourceManager::CreateRenderableVB", LxGetFormatBitsPerElement(format) / 8,
                         vertexCount))
    {
        return nullptr;
    }
    return Register(APICreateRenderableVB(format, vertexCount, bindFlags), name, LX_STAT_VERTEX_BUFFER_COUNT);
}

LxCountedPtr<LxGPUTexture2DArray>
LxGPUResourceManager::CreateTexture2DArray(LxGPUResource::Behavior behavior, unsigned width, unsigned height,
                                           LxGPUResourceFormat format, LxGPUTexture::MipType mipType, unsigned mipCount,
                                           unsigned arraySize, unsigned bindFlags, unsigned cpuAccessFlags,
                                           LxCountedPtr<LxMemoryBuffer> initialData, const LxString& name,
                                           unsigned sampleCount, const LxGPUClearValue* clearValue)
{
    if (!ValidateCommon(name, bindFlags, cpuAccessFlags) ||
        !ValidateTexture("LxGPUResourceManager::CreateTexture2DArray", width, height, arraySize, 1, format, mipCount))
    {
        return nullptr;
    }
    if (sampleCount > 1 && (mipCount > 1 || initialData))
    {
        LX_ERROR("LxGPUResourceManager::CreateTexture2DArray.  A multisampled texture has one mip level and no "
                 "initial data.");
        return nullptr;
    }
    return Register(APICreateTexture2DArray(behavior, width, height, format, mipType, mipCount, arraySize, bindFlags,
                                            cpuAccessFlags, initialData, sampleCount ? sampleCount : 1, clearValue),
                    name, LX_STAT_TEXTURE_2D_COUNT);
}

LxCountedPtr<LxGPUTexture3D>
LxGPUResourceManager::CreateTexture3D(LxGPUResource::Behavior behavior, unsigned width, unsigned height, unsigned depth,
                                      LxGPUResourceFormat format, LxGPUTexture::MipType mipType, unsigned mipCount,
                                      unsigned bindFlags, unsigned cpuAccessFlags,
                                      LxCountedPtr<LxMemoryBuffer> initialData, const LxString& name)
{
    if (!ValidateCommon(name, bindFlags, cpuAccessFlags) ||
        !ValidateTexture("LxGPUResourceManager::CreateTexture3D", width, height, depth, depth, format, mipCount))
    {
        return nullptr;
    }
    return Register(APICreateTexture3D(behavior, width, height, depth, format, mipType, mipCount, bindFlags,
                                       cpuAccessFlags, initialData),
                    name, LX_STAT_TEXTURE_3D_COUNT);
}

LxCountedPtr<LxGPUTextureCubeArray>
LxGPUResourceManager::CreateCubemapArray(LxGPUResource::Behavior behavior, unsigned edgeLength, unsigned cubeCount,
                                         LxGPUResourceFormat format, LxGPUTexture::MipType mipType, unsigned mipCount,
                                         unsigned bindFlags, unsigned cpuAccessFlags,
                                         LxCountedPtr<LxMemoryBuffer> initialData, const LxString& name)
{
    if (!ValidateCommon(name, bindFlags, cpuAccessFlags) ||
        !ValidateTexture("LxGPUResourceManager::CreateCubemapArray", edgeLength, edgeLength, cubeCount, 1, format,
                         mipCount))
    {
        return nullptr;
    }
    return Register(APICreateCubemapArray(behavior, edgeLength, cubeCount, format, mipType, mipCount, bindFlags,
                                          cpuAccessFlags, initialData),
                    name, LX_STAT_TEXTURE_CUBE_COUNT);
}

// --- platform creation (base) --------------------------------------------------------------------------------------

LxGPUVertexBuffer* LxGPUResourceManager::APICreateResourceVertex(LxGPUResource::Behavior, unsigned, unsigned,
                                                                 LxCountedPtr<LxMemoryBuffer>, unsigned, unsigned)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

LxGPUIndexBuffer* LxGPUResourceManager::APICreateResourceIndex(LxGPUResource::Behavior, unsigned, unsigned,
                                                               LxCountedPtr<LxMemoryBuffer>, unsigned, unsigned)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

LxConstantBuffer* LxGPUResourceManager::APICreateConstantBuffer(LxGPUResource::Behavior, unsigned,
                                                                LxCountedPtr<LxMemoryBuffer>, bool, unsigned)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

LxGPUStructuredBuffer* LxGPUResourceManager::APICreateStructuredBuffer(unsigned, unsigned, unsigned,
                                                                       LxCountedPtr<LxMemoryBuffer>, unsigned)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

LxGPUVertexBuffer* LxGPUResourceManager::APICreateRenderableVB(LxGPUResourceFormat, unsigned, unsigned)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

LxGPUTexture2DArray* LxGPUResourceManager::APICreateTexture2DArray(LxGPUResource::Behavior, unsigned, unsigned,
                                                                   LxGPUResourceFormat, LxGPUTexture::MipType, unsigned,
                                                                   unsigned, unsigned, unsigned,
                                                                   LxCountedPtr<LxMemoryBuffer>, unsigned,
                                                                   const LxGPUClearValue*)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

LxGPUTexture3D* LxGPUResourceManager::APICreateTexture3D(LxGPUResource::Behavior, unsigned, unsigned, unsigned,
                                                         LxGPUResourceFormat, LxGPUTexture::MipType, unsigned, unsigned,
                                                         unsigned, LxCountedPtr<LxMemoryBuffer>)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

LxGPUTextureCubeArray* LxGPUResourceManager::APICreateCubemapArray(LxGPUResource::Behavior, unsigned, unsigned,
                                                                   LxGPUResourceFormat, LxGPUTexture::MipType, unsigned,
                                                                   unsigned, unsigned, LxCountedPtr<LxMemoryBuffer>)
{
    LX_ERROR("%s", kNotImplemented);
    return nullptr;
}

// --- registry ------------------------------------------------------------------------------------------------------

template <class T>
LxCountedPtr<T> LxGPUResourceManager::Register(T* resource, const LxString& name, LxGPUResourceStatField countField)
{
    if (!resource)
    {
        return nullptr;
    }
    LxCountedPtr<T> ref(resource);
    LxMutex::ScopedLock lock(m_lock);
    // The name was free when checked; another thread may have taken it since.
    if (!name.IsEmpty() && m_named.Contains(name))
    {
        LX_ERROR("A resource with the name:%salready exists.", name.c_str());
        return nullptr;
    }
    Entry* entry = new TypedEntry<T>(this, ref);
    entry->countField = countField;
    m_entries.Add(entry);
    if (!name.IsEmpty())
    {
        resource->SetName(name);
        m_named.Insert(name, resource);
    }
    if (resource->GetType() == LxGPUResource::BUFFER)
    {
        entry->bytes = static_cast<LxGPUBuffer*>(static_cast<LxGPUResource*>(resource))->GetSize();
    }
    else
    {
        LxGPUTexture* texture = static_cast<LxGPUTexture*>(static_cast<LxGPUResource*>(resource));
        entry->bytes = texture->GetSizeInBytes();
        m_textures.Add(texture);
    }
    Count(*entry, true);
    return ref;
}

void LxGPUResourceManager::Count(const Entry& entry, bool add)
{
    auto apply = [&](LxGPUResourceStatField countField)
    {
        const LxGPUResourceStatField bytesField = static_cast<LxGPUResourceStatField>(countField + 1);
        if (add)
        {
            m_stats.IncrementValue(countField, 1);
            m_stats.IncrementValue(bytesField, entry.bytes);
        }
        else
        {
            m_stats.DecrementValue(countField, 1);
            m_stats.DecrementValue(bytesField, entry.bytes);
        }
    };
    apply(entry.countField);
    // Render targets and depth buffers are counted once more in their own pairs (left out of the memory total).
    const LxGPUResource* resource = entry.GetResource();
    if (resource->GetType() != LxGPUResource::BUFFER)
    {
        if (resource->QueryUsage(LxGPUResource::BIND_RENDER_TARGET))
        {
            apply(LX_STAT_RENDER_TARGET_COUNT);
        }
        if (resource->QueryUsage(LxGPUResource::BIND_DEPTH_STENCIL))
        {
            apply(LX_STAT_DEPTH_STENCIL_COUNT);
        }
    }
}

int LxGPUResourceManager::FindEntry(const LxGPUResource* resource) const
{
    for (unsigned i = 0; i < m_entries.GetCount(); ++i)
    {
        if (m_entries[i]->GetResource() == resource)
        {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void LxGPUResourceManager::NotifyLastReference(LxGPUResource* resource)
{
    Entry* entry = nullptr;
    {
        LxMutex::ScopedLock lock(m_lock);
        const int index = FindEntry(resource);
        if (index < 0)
        {
            return;
        }
        entry = m_entries[static_cast<unsigned>(index)];
        m_entries.RemoveAtSwap(static_cast<unsigned>(index));
        if (!resource->GetName().IsEmpty())
        {
            LxGPUResource** named = m_named.FindValue(resource->GetName());
            if (named && *named == resource)
            {
                m_named.Erase(resource->GetName());
            }
        }
        if (resource->GetHash())
        {
            LxGPUResource** hashed = m_hashed.FindValue(*resource->GetHash());
            if (hashed && *hashed == resource)
            {
                m_hashed.Erase(*resource->GetHash());
            }
        }
        if (resource->GetType() != LxGPUResource::BUFFER)
        {
            m_textures.Remove(static_cast<LxGPUTexture*>(resource));
        }
        Count(*entry, false);
    }
    delete entry; // releases the last reference: the resource goes
}

LxGPUResource* LxGPUResourceManager::GetNamedResource(const LxString& name) const
{
    LxMutex::ScopedLock lock(m_lock);
    LxGPUResource* const* found = m_named.FindValue(name);
    return found ? *found : nullptr;
}

LxGPUResource* LxGPUResourceManager::GetHashedResource(const LxMD5Hash& hash) const
{
    LxMutex::ScopedLock lock(m_lock);
    LxGPUResource* const* found = m_hashed.FindValue(hash);
    return found ? *found : nullptr;
}

bool LxGPUResourceManager::SetResourceHash(LxGPUResource* resource, const LxMD5Hash& hash)
{
    LxMutex::ScopedLock lock(m_lock);
    if (!resource || FindEntry(resource) < 0)
    {
        LX_ERROR("LxGPUResourceManager::SetResourceHash.  The resource is not registered with the manager.");
        return false;
    }
    LxGPUResource* const* found = m_hashed.FindValue(hash);
    if (found && *found != resource)
    {
        LX_ERROR("LxGPUResourceManager::SetResourceHash.  Another resource already has this content hash.");
        return false;
    }
    if (resource->GetHash())
    {
        m_hashed.Erase(*resource->GetHash());
    }
    resource->SetHash(&hash);
    m_hashed.Insert(hash, resource);
    return true;
}

unsigned LxGPUResourceManager::GetTextureCount() const
{
    LxMutex::ScopedLock lock(m_lock);
    return m_textures.GetCount();
}

LxGPUTexture* LxGPUResourceManager::GetTexture(unsigned index) const
{
    LxMutex::ScopedLock lock(m_lock);
    return index < m_textures.GetCount() ? m_textures[index] : nullptr;
}

unsigned LxGPUResourceManager::GetResourceCount() const
{
    LxMutex::ScopedLock lock(m_lock);
    return m_entries.GetCount();
}

// --- default resources ---------------------------------------------------------------------------------------------

void LxGPUResourceManager::SetDefaultResources(const LxCountedPtr<LxGPUTexture2DArray>& backBuffer,
                                               const LxCountedPtr<LxGPUTexture2DArray>& depthBuffer,
                                               LxGPUResourceFormat backBufferFormat, LxGPUResourceFormat depthFormat)
{
    LxMutex::ScopedLock lock(m_lock);
    m_backBuffer = backBuffer;
    m_depthBuffer = depthBuffer;
    m_backBufferFormat = backBufferFormat;
    m_depthFormat = depthFormat;
}

LxCountedPtr<LxGPURenderableResourceView> LxGPUResourceManager::GetBackBufferView()
{
    return GetStereoBackBufferView(0);
}

LxCountedPtr<LxGPURenderableResourceView> LxGPUResourceManager::GetStereoBackBufferView(unsigned eye)
{
    if (!m_backBuffer || eye >= m_backBuffer->GetArraySize())
    {
        LX_ERROR("LxGPUResourceManager::GetStereoBackBufferView.  No back buffer slice for eye %u.", eye);
        return nullptr;
    }
    LxGPUResourceViewDescription desc = m_backBuffer->GetDefaultViewDescription(LX_VIEW_RENDERABLE);
    desc.format = m_backBufferFormat;
    desc.resourceDesc = LxGPUResourceDescription::Texture(0, 1, static_cast<unsigned short>(eye), 1);
    return m_backBuffer->GetRenderableView(desc);
}

LxCountedPtr<LxGPUDepthStencilResourceView> LxGPUResourceManager::GetDefaultZBufferView()
{
    if (!m_depthBuffer)
    {
        LX_ERROR("LxGPUResourceManager::GetDefaultZBufferView.  No default depth buffer.");
        return nullptr;
    }
    LxGPUResourceViewDescription desc = m_depthBuffer->GetDefaultViewDescription(LX_VIEW_DEPTH_STENCIL);
    desc.format = m_depthFormat;
    desc.resourceDesc = LxGPUResourceDescription::Texture(0, 1, 0, 1);
    return m_depthBuffer->GetDepthStencilView(desc);
}
