// LxRenderManager: the process-wide singleton through which the framework records GPU work: frames (begin, end,
// present) over a ring of frames in flight, per-thread command lists and their submission, render-target, viewport
// and scissor state, draws and dispatches with their statistics, clear values.
//
// This class holds every platform-free rule: primitive types and their topologies, the statistics of each draw
// kind (draw blocking counts but issues nothing), the conversion to patch lists under tessellation, the frame ring
// with its fence, the per-worker command-list arrays. The platform class (LxD3D12RenderManager) adds only the
// device calls, through the protected API* hooks; their base versions log "<name> ::: IMPLEMENT ME!" and fail, so
// the base class runs, without a device, everything but the GPU work itself.
//
// Singleton: GetPtr()/GetRef() create it on first use through the registered create function (the platform's),
// or as this device-less base when none is registered; ShutDown() deletes it.
// Threading: up to 32 worker threads record in parallel, each after SetWorkerIndex(i) (a thread that never calls it
// is worker 0); each records only into its own current list. Frame begin and end, state setters and submission of
// the frame belong to the main thread. A closed list handed over with CloseAndAppendCommandList must not be copied
// or released by the worker afterwards while the main thread may submit it (counted pointers are not atomic).
#pragma once

#include "Common/LxApi.h"
#include "Common/LxArray.h"
#include "Common/LxCountedPtr.h"
#include "Common/LxMutex.h"
#include "Common/LxVector4.h"
#include "GPUResourceManager/LxGPUDepthStencilResourceView.h"
#include "GPUResourceManager/LxGPURenderableResourceView.h"
#include "GPUResourceManager/LxGPUResource.h"
#include "RenderManager/include/LxCommandList.h"
#include "RenderManager/include/LxCommandQueue.h"
#include "RenderManager/include/LxFence.h"
#include "RenderManager/include/LxFrameRing.h"
#include "RenderManager/include/LxFrameStats.h"
#include "RenderManager/include/LxGPUQueries.h"
#include "RenderManager/include/LxGPUTimerResults.h"

class LxGPUBuffer;
class LxUploadHeap;
struct LxUploadAllocation;

class LX_API LxRenderManager
{
public:
    // Primitive types; the names ("TRIANGLE_LIST", "PATCH_3") are those of model chunk files.
    enum PrimType : unsigned
    {
        PRIM_POINT_LIST = 0,
        PRIM_LINE_LIST = 1,
        PRIM_LINE_STRIP = 2,
        PRIM_TRIANGLE_LIST = 3,
        PRIM_TRIANGLE_STRIP = 4,
        PRIM_LINE_LIST_ADJ = 5,
        PRIM_LINE_STRIP_ADJ = 6,
        PRIM_TRIANGLE_LIST_ADJ = 7,
        PRIM_TRIANGLE_STRIP_ADJ = 8,
        PRIM_PATCH_1 = 9, // 1 to 32 control points: PRIM_PATCH_1 + (points - 1)
        PRIM_PATCH_32 = 40,
        PRIM_NUM_TYPES = 41
    };
    static const unsigned kMaxWorkers = 32;

    // The platform topology of a primitive type (the Direct3D primitive topology values: point list 1 ...
    // triangle strip with adjacency 13, patch lists 33 to 64); 0 (undefined) for values outside the enumeration.
    static unsigned GetTopology(PrimType type);
    // The topology a draw uses: with tessellation on, point, line and triangle lists become the 1-, 2- and 3-point
    // patch lists; other non-patch types warn ("Has tesselation, and cannot convert non-patch primitive %d to an
    // equivalent patch primitive.") and keep their ordinary topology.
    static unsigned ConvertTopology(PrimType type, bool tessellation);
    // "POINT_LIST" ... "TRIANGLE_STRIP_ADJ", "PATCH_1" ... "PATCH_32"; null outside the enumeration.
    static const char* PrimTypeToString(PrimType type);
    // False (nothing logged) for an unknown name.
    static bool PrimTypeFromString(const LxString& name, PrimType* type);

    typedef LxRenderManager* (*CreateFunction)();
    static LxRenderManager* GetPtr();
    static LxRenderManager& GetRef() { return *GetPtr(); }
    // The instance if there is one (never creates it).
    static LxRenderManager* GetExistingPtr() { return ms_pInstance; }
    static void ShutDown();
    // The factory GetPtr uses for the instance (the platform registers its render manager). Null restores the
    // device-less base class.
    static void SetCreateFunction(CreateFunction create);

    LxRenderManager();
    virtual ~LxRenderManager();
    LxRenderManager(const LxRenderManager&) = delete;
    LxRenderManager& operator=(const LxRenderManager&) = delete;

    // --- frame ----------------------------------------------------------------------------------------------------
    // Advances the frame ring (waiting for the slot's previous frame), clears the statistics, resets the slot and
    // moves the back buffer to the render-target state. False when the frame could not begin.
    virtual bool BeginScene();
    // Moves the back buffer back to present, closes and submits the current list, presents, refreshes the
    // workers' back buffers and closes the frame (frame-end listeners, fence).
    virtual bool EndScene();
    virtual void Clear(bool color, bool depth, bool stencil, int targetIndex = -1);
    virtual void SetClearColor(const LxVector4& color) { m_clearColor = color; }
    void SetClearColor(float r, float g, float b, float a) { SetClearColor(LxVector4(r, g, b, a)); }
    virtual void SetClearDepth(float depth) { m_fClearDepth = depth; }
    virtual void SetClearStencil(unsigned char stencil) { m_nClearStencil = stencil; }
    const LxVector4& GetClearColor() const { return m_clearColor; }
    float GetClearDepth() const { return m_fClearDepth; }
    unsigned char GetClearStencil() const { return m_nClearStencil; }
    void SetVerticalSync(bool on) { m_bVerticalSync = on; }
    bool GetVerticalSync() const { return m_bVerticalSync; }

    // --- targets and rasteriser state -----------------------------------------------------------------------------
    virtual void SetRenderTargets(unsigned count, LxCountedPtr<LxGPURenderableResourceView>* views,
                                  LxCountedPtr<LxGPUDepthStencilResourceView> depth);
    void GetRenderTargets(LxArray<LxCountedPtr<LxGPURenderableResourceView>>* views,
                          LxCountedPtr<LxGPUDepthStencilResourceView>* depth) const;
    unsigned GetNumRenderTargets() const { return m_renderTargets.GetCount(); }
    virtual void Viewport(float x, float y, float width, float height);
    virtual void GetViewport(float* x, float* y, float* width, float* height) const;
    virtual void Scissor(unsigned x, unsigned y, unsigned width, unsigned height);
    virtual void GetScissor(unsigned* x, unsigned* y, unsigned* width, unsigned* height) const;
    void ViewportAndScissor(unsigned x, unsigned y, unsigned width, unsigned height);
    virtual void SetTessellationLevel(float edge, float inside);
    void GetTessellationLevel(float* edge, float* inside) const;
    // Per worker: convert primitive types to patch lists (set by the pass being bound).
    void SetTessellation(bool on);
    bool GetTessellation() const;

    // --- draws (statistics always; GPU calls unless draw blocking is on) -----------------------------------------
    virtual void DrawIndexed(PrimType type, unsigned indexCount, unsigned startIndex, int baseVertex);
    virtual void DrawIndexedInstanced(PrimType type, unsigned indexCount, unsigned instanceCount, unsigned startIndex,
                                      int baseVertex, unsigned startInstance);
    virtual void DrawNonIndexed(PrimType type, unsigned vertexCount, unsigned startVertex);
    virtual void DrawNonIndexedInstanced(PrimType type, unsigned vertexCount, unsigned startVertex,
                                         unsigned instanceCount);
    virtual void DrawAuto(PrimType type);
    void SetDrawBlocking(bool on) { m_bDrawBlocking.store(on, std::memory_order_relaxed); }
    bool GetDrawBlocking() const { return m_bDrawBlocking.load(std::memory_order_relaxed); }

    // --- compute --------------------------------------------------------------------------------------------------
    virtual void Dispatch(int x, int y, int z);
    virtual void DispatchIndirect(LxGPUBuffer* args, unsigned offset);
    // Draws whose arguments lie in `args` at `offset` (the platform's indirect argument layouts), through the
    // command signatures CreateIndirectCommandSignature made. Statistics count the call only. Base: IMPLEMENT ME.
    virtual void DrawInstancedIndirect(PrimType type, LxGPUBuffer* args, unsigned offset);
    virtual void DrawIndexedInstancedIndirect(PrimType type, LxGPUBuffer* args, unsigned offset);

    // --- command lists and queues ---------------------------------------------------------------------------------
    virtual LxCountedPtr<LxCommandList> CreateCommandList(LxCommandList::Type type, bool forCurrentFrame = true);
    // The calling worker's current list.
    virtual LxCountedPtr<LxCommandList> GetCurrentCommandList();
    virtual void SetCurrentCommandList(LxCountedPtr<LxCommandList> list);
    // Closes `list` and appends it to the calling worker's submission array.
    virtual bool CloseAndAppendCommandList(LxCountedPtr<LxCommandList> list);
    // Submits the calling worker's array to the frame queue in one call and empties it.
    virtual bool ExecuteCommandLists();
    virtual bool ExecuteBundle(LxCountedPtr<LxCommandList> bundle);
    // Refuses the bundle kind ("Queue type cannot be BUNDLE").
    virtual LxCommandQueue* CreateCommandQueue(LxCommandList::Type type);
    virtual LxCommandQueue* GetFrameCommandQueue() { return m_pFrameQueue; }
    // ExecuteCommandLists, then WaitOnExecution.
    virtual bool Flush();
    // Waits until everything submitted so far has completed.
    virtual bool WaitOnExecution();
    // The calling thread's worker index (0..31); out-of-range values are refused and logged.
    virtual void SetWorkerIndex(int index);
    int GetWorkerIndex() const;

    // --- synchronisation and queries ------------------------------------------------------------------------------
    virtual LxFence* CreateFence(unsigned long long initialValue);
    virtual int CreateGPUTimer(const LxString& name);
    virtual void StartGPUTimer(int timer);
    virtual void StopGPUTimer(int timer);
    virtual const LxGPUTimerResults& GetGPUTimerResults();
    // Creates the command signatures of the indirect draws and dispatches; false when the platform refuses.
    virtual bool CreateIndirectCommandSignature();
    // Not provided by every platform: the base logs IMPLEMENT ME and answers null (or does nothing).
    virtual LxOcclusionQuery* CreateOcclusionQuery();
    virtual LxSOStatisticsQuery* CreateSOStatisticsQuery();
    virtual LxGPUPerformanceCounter* CreateGPUPerformanceCounter(LxGPUCounterType type);
    virtual LxRenderingPredicate* CreateRenderingPredicate(LxRenderingPredicateType type, bool hint);
    virtual void SetPredication(LxRenderingPredicate* predicate, bool value);

    // Allocates upload memory, flushing once and retrying when the heap is full ("Flushed upload heap but
    // allocation still failed\n" when even that fails).
    bool AllocateUpload(LxUploadHeap& heap, unsigned long long bytes, unsigned long long alignment,
                        LxUploadAllocation* out);

    LxFrameStats& GetFrameStats() { return m_frameStats; }
    const LxFrameStats& GetFrameStats() const { return m_frameStats; }
    LxFrameRing& GetFrameRing() { return m_frameRing; }

protected:
    // Sets up the frame ring and the frame queue (not owned) once the platform has made its device objects.
    bool InitializeFrames(unsigned framesInFlight, LxFence* fence, LxCommandQueue* frameQueue);

    // --- platform hooks (base: IMPLEMENT ME, failure) --------------------------------------------------------------
    // A frame slot is reused: reset its allocators and begin its GPU timer block.
    virtual bool APIBeginFrameSlot(unsigned slot);
    // End the slot's GPU timer block.
    virtual bool APIEndFrameSlot(unsigned slot);
    // Record the back buffer's transition on the current list (all subresources).
    virtual bool APITransitionBackBuffer(LxGPUResource::StateType before, LxGPUResource::StateType after);
    virtual bool APIPresent(unsigned syncInterval);
    // Read the new back-buffer index and point every worker's back-buffer target at it.
    virtual bool APIUpdateBackBuffers();
    virtual void APISetPrimitiveTopology(unsigned topology);
    virtual void APIDrawIndexedInstanced(unsigned indexCount, unsigned instanceCount, unsigned startIndex,
                                         int baseVertex, unsigned startInstance);
    virtual void APIDrawInstanced(unsigned vertexCount, unsigned instanceCount, unsigned startVertex,
                                  unsigned startInstance);
    virtual void APIDispatch(unsigned x, unsigned y, unsigned z);
    virtual void APIDispatchIndirect(LxGPUBuffer* args, unsigned offset);
    virtual void APIClear(bool color, bool depth, bool stencil, int targetIndex);
    virtual void APISetRenderTargets();
    virtual void APISetViewport();
    virtual void APISetScissor();
    virtual LxCommandList* APICreateCommandList(LxCommandList::Type type, bool forCurrentFrame);
    virtual bool APIExecuteBundle(LxCommandList* bundle);
    virtual LxCommandQueue* APICreateCommandQueue(LxCommandList::Type type);

    // Statistics of one draw of n = count x instances elements; logs "Unknown primitive type??" for other types.
    // Added to the calling worker's own counters (`worker`, its index).
    void CountDraw(PrimType type, bool indexed, unsigned count, unsigned instanceCount, int worker);
    static void ReportNotImplemented(const char* operation);

    struct Worker
    {
        LxCountedPtr<LxCommandList> currentList;
        LxArray<LxCountedPtr<LxCommandList>> closedLists; // under listLock
        LxMutex listLock;
        bool tessellation = false;
        LxCountedPtr<LxGPURenderableResourceView> backBuffer;
    };
    Worker& CurrentWorker() { return m_workers[GetWorkerIndex()]; }
    const Worker& CurrentWorker() const { return m_workers[GetWorkerIndex()]; }

    Worker m_workers[kMaxWorkers];
    LxFrameRing m_frameRing;
    LxCommandQueue* m_pFrameQueue = nullptr;
    LxFrameStats m_frameStats;

    LxVector4 m_clearColor;
    float m_fClearDepth = 1.0f;
    unsigned char m_nClearStencil = 0;
    bool m_bVerticalSync = true;
    std::atomic<bool> m_bDrawBlocking{false};
    LxArray<LxCountedPtr<LxGPURenderableResourceView>> m_renderTargets;
    LxCountedPtr<LxGPUDepthStencilResourceView> m_depthStencil;
    float m_viewport[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    unsigned m_scissor[4] = {0, 0, 0, 0};
    float m_fTessellationEdge = 1.0f;
    float m_fTessellationInside = 1.0f;
    LxGPUTimerResults m_timerResults;

private:
    static LxRenderManager* ms_pInstance;
    static CreateFunction ms_pfnCreate;
};
