// LxGPUResourceManager: the process-wide factory and registry of GPU resources.
//
// Every creation call checks its arguments (names, sizes, mip chains, bind and CPU-access flags), then calls its
// protected API* counterpart, which the platform class (LxD3D12GPUResourceManager) implements; the base versions log
// "THIS RESOURCE CREATION FUNCTION IS NOT IMPLEMENTED FOR THIS API." and return null. A created resource is
// registered: in the live list (the leak report at shut-down), under its name when it has one, in the texture list
// when it is a texture, and in the statistics.
//
// Ownership: the caller gets an LxCountedPtr; the manager keeps one more reference of its own and observes the
// count. When only the manager's reference is left (NotifyLastReference), the manager drops the resource from its
// tables and releases it, so a resource lives exactly as long as someone outside holds it. The lookups
// (GetNamedResource, GetHashedResource, GetTexture) answer borrowed pointers, valid while an outside reference lives.
// ShutDown lists what is still referenced ("Possible resource leak:  ...") and lets go of it: those resources then
// die with their last outside reference, unregistered.
//
// Singleton: GetPtr()/GetRef() create it on first use through the registered create function (the platform's), or
// as this device-less base when none is registered; ShutDown() deletes it.
// Threading: creation and lookups may come from any thread (one recursive lock guards the tables); a resource's
// last reference may go on any thread that owns references. Failures are logged and answered with null or false.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxHashMap.h"
#include "Common/LxMD5Hash.h"
#include "Common/LxMemoryBuffer.h"
#include "Common/LxMutex.h"
#include "Common/LxString.h"
#include "GPUResourceManager/LxConstantBuffer.h"
#include "GPUResourceManager/LxGPUDataBuffer.h"
#include "GPUResourceManager/LxGPUIndexBuffer.h"
#include "GPUResourceManager/LxGPUResourceStats.h"
#include "GPUResourceManager/LxGPUStructuredBuffer.h"
#include "GPUResourceManager/LxGPUTexture2DArray.h"
#include "GPUResourceManager/LxGPUTexture3D.h"
#include "GPUResourceManager/LxGPUTextureCubeArray.h"
#include "GPUResourceManager/LxGPUVertexBuffer.h"

class LX_API LxGPUResourceManager
{
public:
    typedef LxGPUResourceManager* (*CreateFunction)();
    static LxGPUResourceManager* GetPtr();
    static LxGPUResourceManager& GetRef() { return *GetPtr(); }
    // Null when no instance exists (never creates one): for resources that outlive the manager.
    static LxGPUResourceManager* GetExistingPtr() { return ms_pInstance; }
    static void ShutDown();
    // The factory GetPtr uses (the platform registers its manager); null restores the device-less base class.
    static void SetCreateFunction(CreateFunction create);

    LxGPUResourceManager();
    virtual ~LxGPUResourceManager();
    LxGPUResourceManager(const LxGPUResourceManager&) = delete;
    LxGPUResourceManager& operator=(const LxGPUResourceManager&) = delete;

    // Creates the platform's upload heap (bytes) and descriptor heaps (descriptors per heap). Base: IMPLEMENT ME.
    virtual bool Initialize(unsigned uploadHeapSize, unsigned descriptorsPerHeap);
    // Touches the platform's heaps once so that the first frame does not pay for it. Base: nothing to do.
    virtual void WarmGPUCaches() {}

    // --- creation ---------------------------------------------------------------------------------------------------
    // `initialData` may be null (contents undefined); when given it must hold the whole resource (textures: every
    // mip level of slice 0, then every level of slice 1, ...; cube faces in CubeMapFace order). A non-empty name
    // must be unique. A texture mip count of 0 means the whole chain.
    LxCountedPtr<LxGPUVertexBuffer> CreateResourceVertex(LxGPUResource::Behavior behavior, unsigned vertexSize,
                                                         unsigned vertexCount, LxCountedPtr<LxMemoryBuffer> initialData,
                                                         unsigned bindFlags = 0, unsigned cpuAccessFlags = 0,
                                                         const LxString& name = LxString());
    LxCountedPtr<LxGPUIndexBuffer> CreateResourceIndex(LxGPUResource::Behavior behavior, unsigned indexSize,
                                                       unsigned indexCount, LxCountedPtr<LxMemoryBuffer> initialData,
                                                       unsigned bindFlags = 0, unsigned cpuAccessFlags = 0,
                                                       const LxString& name = LxString());
    // A dynamic constant buffer is CPU-writable (mapped and rewritten per frame) when `cpuWritable` is true.
    LxCountedPtr<LxConstantBuffer> CreateConstantBuffer(LxGPUResource::Behavior behavior, unsigned size,
                                                        LxCountedPtr<LxMemoryBuffer> initialData,
                                                        bool cpuWritable = true, unsigned miscHints = 0,
                                                        const LxString& name = LxString());
    LxCountedPtr<LxGPUStructuredBuffer> CreateStructuredBuffer(unsigned structSize, unsigned structCount,
                                                               unsigned bindFlags,
                                                               LxCountedPtr<LxMemoryBuffer> initialData,
                                                               const LxString& name = LxString(),
                                                               unsigned miscHints = 0);
    // A vertex buffer shaders write (unordered access) and read, of `vertexCount` elements of `format`.
    LxCountedPtr<LxGPUVertexBuffer> CreateRenderableVB(LxGPUResourceFormat format, unsigned vertexCount,
                                                       unsigned bindFlags = 0, const LxString& name = LxString());
    LxCountedPtr<LxGPUTexture2DArray>
    CreateTexture2DArray(LxGPUResource::Behavior behavior, unsigned width, unsigned height, LxGPUResourceFormat format,
                         LxGPUTexture::MipType mipType, unsigned mipCount, unsigned arraySize, unsigned bindFlags,
                         unsigned cpuAccessFlags, LxCountedPtr<LxMemoryBuffer> initialData,
                         const LxString& name = LxString(), unsigned sampleCount = 1,
                         const LxGPUClearValue* clearValue = nullptr);
    LxCountedPtr<LxGPUTexture3D> CreateTexture3D(LxGPUResource::Behavior behavior, unsigned width, unsigned height,
                                                 unsigned depth, LxGPUResourceFormat format,
                                                 LxGPUTexture::MipType mipType, unsigned mipCount, unsigned bindFlags,
                                                 unsigned cpuAccessFlags, LxCountedPtr<LxMemoryBuffer> initialData,
                                                 const LxString& name = LxString());
    LxCountedPtr<LxGPUTextureCubeArray> CreateCubemapArray(LxGPUResource::Behavior behavior, unsigned edgeLength,
                                                           unsigned cubeCount, LxGPUResourceFormat format,
                                                           LxGPUTexture::MipType mipType, unsigned mipCount,
                                                           unsigned bindFlags, unsigned cpuAccessFlags,
                                                           LxCountedPtr<LxMemoryBuffer> initialData,
                                                           const LxString& name = LxString());

    // --- registry ---------------------------------------------------------------------------------------------------
    LxGPUResource* GetNamedResource(const LxString& name) const;
    LxGPUResource* GetHashedResource(const LxMD5Hash& hash) const;
    // Gives a registered resource its content hash and files it under it; false (logged) when another resource
    // already has that hash or the resource is not registered.
    bool SetResourceHash(LxGPUResource* resource, const LxMD5Hash& hash);
    unsigned GetTextureCount() const;
    LxGPUTexture* GetTexture(unsigned index) const;
    // Resources alive (registered and referenced from outside).
    unsigned GetResourceCount() const;
    const LxGPUResourceStats& GetStats() const { return m_stats; }

    // The swap chain's back buffer and the default depth buffer, registered by the render manager.
    void SetDefaultResources(const LxCountedPtr<LxGPUTexture2DArray>& backBuffer,
                             const LxCountedPtr<LxGPUTexture2DArray>& depthBuffer, LxGPUResourceFormat backBufferFormat,
                             LxGPUResourceFormat depthFormat);
    const LxCountedPtr<LxGPUTexture2DArray>& GetBackBuffer() const { return m_backBuffer; }
    const LxCountedPtr<LxGPUTexture2DArray>& GetDefaultZBuffer() const { return m_depthBuffer; }
    LxCountedPtr<LxGPURenderableResourceView> GetBackBufferView();
    LxCountedPtr<LxGPUDepthStencilResourceView> GetDefaultZBufferView();
    // The view of one eye's slice of a stereo back buffer (eye 0 or 1); null (logged) without that slice.
    LxCountedPtr<LxGPURenderableResourceView> GetStereoBackBufferView(unsigned eye);

    // The last outside reference of `resource` went: drop it from every table and release it.
    void NotifyLastReference(LxGPUResource* resource);

protected:
    // Platform creation: a new, created resource, or null after logging. Base: logs and answers null.
    virtual LxGPUVertexBuffer* APICreateResourceVertex(LxGPUResource::Behavior behavior, unsigned vertexSize,
                                                       unsigned vertexCount, LxCountedPtr<LxMemoryBuffer> initialData,
                                                       unsigned bindFlags, unsigned cpuAccessFlags);
    virtual LxGPUIndexBuffer* APICreateResourceIndex(LxGPUResource::Behavior behavior, unsigned indexSize,
                                                     unsigned indexCount, LxCountedPtr<LxMemoryBuffer> initialData,
                                                     unsigned bindFlags, unsigned cpuAccessFlags);
    virtual LxConstantBuffer* APICreateConstantBuffer(LxGPUResource::Behavior behavior, unsigned size,
                                                      LxCountedPtr<LxMemoryBuffer> initialData, bool cpuWritable,
                                                      unsigned miscHints);
    virtual LxGPUStructuredBuffer* APICreateStructuredBuffer(unsigned structSize, unsigned structCount,
                                                             unsigned bindFlags,
                                                             LxCountedPtr<LxMemoryBuffer> initialData,
                                                             unsigned miscHints);
    virtual LxGPUVertexBuffer* APICreateRenderableVB(LxGPUResourceFormat format, unsigned vertexCount,
                                                     unsigned bindFlags);
    virtual LxGPUTexture2DArray* APICreateTexture2DArray(LxGPUResource::Behavior behavior, unsigned width,
                                                         unsigned height, LxGPUResourceFormat format,
                                                         LxGPUTexture::MipType mipType, unsigned mipCount,
                                                         unsigned arraySize, unsigned bindFlags,
                                                         unsigned cpuAccessFlags,
                                                         LxCountedPtr<LxMemoryBuffer> initialData, unsigned sampleCount,
                                                         const LxGPUClearValue* clearValue);
    virtual LxGPUTexture3D* APICreateTexture3D(LxGPUResource::Behavior behavior, unsigned width, unsigned height,
                                               unsigned depth, LxGPUResourceFormat format,
                                               LxGPUTexture::MipType mipType, unsigned mipCount, unsigned bindFlags,
                                               unsigned cpuAccessFlags, LxCountedPtr<LxMemoryBuffer> initialData);
    virtual LxGPUTextureCubeArray* APICreateCubemapArray(LxGPUResource::Behavior behavior, unsigned edgeLength,
                                                         unsigned cubeCount, LxGPUResourceFormat format,
                                                         LxGPUTexture::MipType mipType, unsigned mipCount,
                                                         unsigned bindFlags, unsigned cpuAccessFlags,
                                                         LxCountedPtr<LxMemoryBuffer> initialData);

    // Bind and CPU-access flags that no platform resource can have together; false after logging.
    bool ValidateBindFlags(unsigned bindFlags, unsigned cpuAccessFlags) const;

    // Lists what is still registered (the leak report) and lets go of it. Platform managers call it first in their
    // destructor, before their heaps go.
    void ReleaseAllResources();

private:
    class Entry;
    template <class T>
    class TypedEntry;

    // The checks every creation call shares: a free name, then the flags.
    bool ValidateCommon(const LxString& name, unsigned bindFlags, unsigned cpuAccessFlags) const;
    static bool CheckBufferSize(const char* who, unsigned elementSize, unsigned elementCount);
    bool ValidateTexture(const char* who, unsigned width, unsigned height, unsigned depth, unsigned depthForMips,
                         LxGPUResourceFormat format, unsigned mipCount) const;
    // Registers a new resource (null: nothing) and answers the caller's reference.
    template <class T>
    LxCountedPtr<T> Register(T* resource, const LxString& name, LxGPUResourceStatField countField);
    void Count(const Entry& entry, bool add);
    int FindEntry(const LxGPUResource* resource) const;

    mutable LxMutex m_lock;
    LxArray<Entry*> m_entries;
    LxHashMap<LxString, LxGPUResource*, LxStringHasher> m_named;
    LxHashMap<LxMD5Hash, LxGPUResource*, LxMD5Hash::Hasher> m_hashed;
    LxArray<LxGPUTexture*> m_textures;
    LxGPUResourceStats m_stats;

    LxCountedPtr<LxGPUTexture2DArray> m_backBuffer;
    LxCountedPtr<LxGPUTexture2DArray> m_depthBuffer;
    LxGPUResourceFormat m_backBufferFormat = LX_FORMAT_UNKNOWN;
    LxGPUResourceFormat m_depthFormat = LX_FORMAT_UNKNOWN;

    static LxGPUResourceManager* ms_pInstance;
    static CreateFunction ms_pfnCreate;
};
