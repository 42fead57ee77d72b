#include "RenderManager/include/LxRenderManager.h"

#include "Common/LxLogManager.h"
#include "GPUResourceManager/LxGPUBuffer.h"
#include "GPUResourceManager/LxUploadHeap.h"

#include <cstdio>
#include <cstring>

LxRenderManager* LxRenderManager::ms_pInstance = nullptr;
LxRenderManager::CreateFunction LxRenderManager::ms_pfnCreate = nullptr;

namespace
{
// Each recording thread's worker index; threads that never set one record as worker 0 (the main thread).
thread_local int t_workerIndex = 0;

const char* const kPrimNames[LxRenderManager::PRIM_PATCH_1] = {
    "POINT_LIST",    "LINE_LIST",      "LINE_STRIP",        "TRIANGLE_LIST",     "TRIANGLE_STRIP",
    "LINE_LIST_ADJ", "LINE_STRIP_ADJ", "TRIANGLE_LIST_ADJ", "TRIANGLE_STRIP_ADJ"};
const char* const kPatchNames[32] = {"PATCH_1",  "PATCH_2",  "PATCH_3",  "PATCH_4",  "PATCH_5",  "PATCH_6",  "PATCH_7",
                                     "PATCH_8",  "PATCH_9",  "PATCH_10", "PATCH_11", "PATCH_12", "PATCH_13", "PATCH_14",
                                     "PATCH_15", "PATCH_16", "PATCH_17", "PATCH_18", "PATCH_19", "PATCH_20", "PATCH_21",
                                     "PATCH_22", "PATCH_23", "PATCH_24", "PATCH_25", "PATCH_26", "PATCH_27", "PATCH_28",
                                     "PATCH_29", "PATCH_30", "PATCH_31", "PATCH_32"};

// Direct3D primitive topology values of the first nine primitive types.
const unsigned kTopologies[LxRenderManager::PRIM_PATCH_1] = {1, 2, 3, 4, 5, 10, 11, 12, 13};
const unsigned kFirstPatchTopology = 33;

// Hands out the four values of a viewport or scissor rectangle; a null pointer skips its value.
template <class T>
void CopyRect(const T (&rect)[4], T* x, T* y, T* width, T* height)
{
    T* const out[4] = {x, y, width, height};
    for (int i = 0; i < 4; ++i)
    {
        if (out[i])
        {
            *out[i] = rect[i];
        }
    }
}
} // namespace

// --- primitive types -------------------------------------------------------------------------------------------------

unsigned LxRenderManager::GetTopology(PrimType type)
{
    if (type < PRIM_PATCH_1)
    {
        return kTopologies[type];
    }
    if (type <= PRIM_PATCH_32)
    {
        return kFirstPatchTopology + (type - PRIM_PATCH_1);
    }
    return 0;
}

unsigned LxRenderManager::ConvertTopology(PrimType type, bool tessellation)
{
    if (tessellation && type < PRIM_PATCH_1)
    {
        switch (type)
        {
        case PRIM_POINT_LIST:
            return kFirstPatchTopology;
        case PRIM_LINE_LIST:
            return kFirstPatchTopology + 1;
        case PRIM_TRIANGLE_LIST:
            return kFirstPatchTopology + 2;
        default:
            LX_WARNING("Has tesselation, and cannot convert non-patch primitive %d to an equivalent patch primitive.",
                       static_cast<int>(type));
            break;
        }
    }
    return GetTopology(type);
}

const char* LxRenderManager::PrimTypeToString(PrimType type)
{
    if (type < PRIM_PATCH_1)
    {
        return kPrimNames[type];
    }
    if (type <= PRIM_PATCH_32)
    {
        return kPatchNames[type - PRIM_PATCH_1];
    }
    return nullptr;
}

bool LxRenderManager::PrimTypeFromString(const LxString& name, PrimType* type)
{
    for (unsigned i = 0; i < PRIM_NUM_TYPES; ++i)
    {
        if (name == PrimTypeToString(static_cast<PrimType>(i)))
        {
            *type = static_cast<PrimType>(i);
            return true;
        }
    }
    return false;
}

// --- singleton -------------------------------------------------------------------------------------------------------

LxRenderManager* LxRenderManager::GetPtr()
{
    if (ms_pInstance == nullptr)
    {
        ms_pInstance = ms_pfnCreate ? ms_pfnCreate() : new LxRenderManager();
    }
    return ms_pInstance;
}

void LxRenderManager::ShutDown()
{
    delete ms_pInstance;
    ms_pInstance = nullptr;
}

void LxRenderManager::SetCreateFunction(CreateFunction create)
{
    ms_pfnCreate = create;
}

LxRenderManager::LxRenderManager() = default;

LxRenderManager::~LxRenderManager() = default;

void LxRenderManager::ReportNotImplemented(const char* operation)
{
    LX_ERROR("%s ::: IMPLEMENT ME!", operation);
}

bool LxRenderManager::InitializeFrames(unsigned framesInFlight, LxFence* fence, LxCommandQueue* frameQueue)
{
    if (frameQueue == nullptr)
    {
        LX_ERROR("LxRenderManager::InitializeFrames.  No frame command queue.");
        return false;
    }
    if (!m_frameRing.Initialize(framesInFlight, fence))
    {
        return false;
    }
    m_pFrameQueue = frameQueue;
    return true;
}

// --- frame -----------------------------------------------------------------------------------------------------------

bool LxRenderManager::BeginScene()
{
    const int slot = m_frameRing.BeginFrame();
    if (slot < 0)
    {
        return false;
    }
    m_frameStats.Clear();
    if (!APIBeginFrameSlot(static_cast<unsigned>(slot)))
    {
        return false;
    }
    return APITransitionBackBuffer(LxGPUResource::STATE_PRESENT, LxGPUResource::STATE_RENDER_TARGET);
}

bool LxRenderManager::EndScene()
{
    if (!m_frameRing.IsInitialized())
    {
        LX_ERROR("LxRenderManager::EndScene.  No frame to end: the render manager is not initialised.");
        return false;
    }
    bool ok = APIEndFrameSlot(m_frameRing.GetCurrentSlot());
    ok = APITransitionBackBuffer(LxGPUResource::STATE_RENDER_TARGET, LxGPUResource::STATE_PRESENT) && ok;
    LxCountedPtr<LxCommandList> list = GetCurrentCommandList();
    if (list)
    {
        ok = CloseAndAppendCommandList(list) && ok;
    }
    ok = ExecuteCommandLists() && ok;
    ok = APIPresent(m_bVerticalSync ? 1 : 0) && ok;
    ok = APIUpdateBackBuffers() && ok;
    // The frame is closed even after a failure above: its slot and the recyclers must see its fence value.
    ok = m_frameRing.EndFrame() != 0 && ok;
    return ok;
}

void LxRenderManager::Clear(bool color, bool depth, bool stencil, int targetIndex)
{
    APIClear(color, depth, stencil, targetIndex);
}

// --- targets and rasteriser state --------------------------------------------------------------------------------

void LxRenderManager::SetRenderTargets(unsigned count, LxCountedPtr<LxGPURenderableResourceView>* views,
                                       LxCountedPtr<LxGPUDepthStencilResourceView> depth)
{
    m_renderTargets.Clear();
    for (unsigned i = 0; views != nullptr && i < count; ++i)
    {
        m_renderTargets.Add(views[i]);
    }
    m_depthStencil = depth;
    APISetRenderTargets();
}

void LxRenderManager::GetRenderTargets(LxArray<LxCountedPtr<LxGPURenderableResourceView>>* views,
                                       LxCountedPtr<LxGPUDepthStencilResourceView>* depth) const
{
    if (views)
    {
        *views = m_renderTargets;
    }
    if (depth)
    {
        *depth = m_depthStencil;
    }
}

void LxRenderManager::Viewport(float x, float y, float width, float height)
{
    m_viewport[0] = x;
    m_viewport[1] = y;
    m_viewport[2] = width;
    m_viewport[3] = height;
    APISetViewport();
}

void LxRenderManager::GetViewport(float* x, float* y, float* width, float* height) const
{
    CopyRect(m_viewport, x, y, width, height);
}

void LxRenderManager::Scissor(unsigned x, unsigned y, unsigned width, unsigned height)
{
    m_scissor[0] = x;
    m_scissor[1] = y;
    m_scissor[2] = width;
    m_scissor[3] = height;
    APISetScissor();
}

void LxRenderManager::GetScissor(unsigned* x, unsigned* y, unsigned* width, unsigned* height) const
{
    CopyRect(m_scissor, x, y, width, height);
}

void LxRenderManager::ViewportAndScissor(unsigned x, unsigned y, unsigned width, unsigned height)
{
    Viewport(static_cast<float>(x), static_cast<float>(y), static_cast<float>(width), static_cast<float>(height));
    Scissor(x, y, width, height);
}

void LxRenderManager::SetTessellationLevel(float edge, float inside)
{
    m_fTessellationEdge = edge;
    m_fTessellationInside = inside;
}

void LxRenderManager::GetTessellationLevel(float* edge, float* inside) const
{
    if (edge)
        *edge = m_fTessellationEdge;
    if (inside)
        *inside = m_fTessellationInside;
}

void LxRenderManager::SetTessellation(bool on)
{
    CurrentWorker().tessellation = on;
}

bool LxRenderManager::GetTessellation() const
{
    return CurrentWorker().tessellation;
}

// --- draws -----------------------------------------------------------------------------------------------------------

void LxRenderManager::CountDraw(PrimType type, bool indexed, unsigned count, unsigned instanceCount, int worker)
{
    const unsigned n = count * instanceCount;
    const unsigned w = static_cast<unsigned>(worker);
    m_frameStats.IncrementWorkerValue(w, indexed ? LX_FRAME_STAT_INDEXED_DRAWS : LX_FRAME_STAT_NON_INDEXED_DRAWS, 1);
    m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_INSTANCES, instanceCount);
    switch (type)
    {
    case PRIM_POINT_LIST:
        m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_POINTS, n);
        break;
    case PRIM_LINE_LIST:
    case PRIM_LINE_LIST_ADJ:
        m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_LINES, n / 2);
        break;
    case PRIM_LINE_STRIP:
    case PRIM_LINE_STRIP_ADJ:
        m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_LINES, n >= 1 ? n - 1 : 0);
        break;
    case PRIM_TRIANGLE_LIST:
    case PRIM_TRIANGLE_LIST_ADJ:
        m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_TRIANGLES, n / 3);
        break;
    case PRIM_TRIANGLE_STRIP:
    case PRIM_TRIANGLE_STRIP_ADJ:
        m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_TRIANGLES, n >= 2 ? n - 2 : 0);
        break;
    default:
        if (type >= PRIM_PATCH_1 && type <= PRIM_PATCH_32)
        {
            m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_PATCH_CONTROL_POINTS, n);
        }
        else
        {
            LX_ERROR("Unknown primitive type??");
        }
        break;
    }
    if (GetDrawBlocking())
    {
        m_frameStats.IncrementWorkerValue(w, LX_FRAME_STAT_BLOCKED_DRAWS, 1);
    }
}

void LxRenderManager::DrawIndexed(PrimType type, unsigned indexCount, unsigned startIndex, int baseVertex)
{
    DrawIndexedInstanced(type, indexCount, 1, startIndex, baseVertex, 0);
}

void LxRenderManager::DrawIndexedInstanced(PrimType type, unsigned indexCount, unsigned instanceCount,
                                           unsigned startIndex, int baseVertex, unsigned startInstance)
{
    if (!GetDrawBlocking() && type < PRIM_NUM_TYPES)
    {
        APISetPrimitiveTopology(ConvertTopology(type, CurrentWorker().tessellation));
        APIDrawIndexedInstanced(indexCount, instanceCount, startIndex, baseVertex, startInstance);
    }
    CountDraw(type, true, indexCount, instanceCount, GetWorkerIndex());
}

void LxRenderManager::DrawNonIndexed(PrimType type, unsigned vertexCount, unsigned startVertex)
{
    DrawNonIndexedInstanced(type, vertexCount, startVertex, 1);
}

void LxRenderManager::DrawNonIndexedInstanced(PrimType type, unsigned vertexCount, unsigned startVertex,
                                              unsigned instanceCount)
{
    if (!GetDrawBlocking() && type < PRIM_NUM_TYPES)
    {
        APISetPrimitiveTopology(ConvertTopology(type, CurrentWorker().tessellation));
        APIDrawInstanced(vertexCount, instanceCount, startVertex, 0);
    }
    CountDraw(type, false, vertexCount, instanceCount, GetWorkerIndex());
}

void LxRenderManager::DrawAuto(PrimType)
{
    ReportNotImplemented("LxRenderManager::DrawAuto");
}

// --- compute ---------------------------------------------------------------------------------------------------------

void LxRenderManager::Dispatch(int x, int y, int z)
{
    if (x < 0 || y < 0 || z < 0)
    {
        LX_ERROR("LxRenderManager::Dispatch.  Negative thread-group count (%d, %d, %d).", x, y, z);
        return;
    }
    if (!GetDrawBlocking())
    {
        APIDispatch(static_cast<unsigned>(x), static_cast<unsigned>(y), static_cast<unsigned>(z));
    }
    m_frameStats.IncrementValue(LX_FRAME_STAT_DISPATCHES, 1);
}

void LxRenderManager::DispatchIndirect(LxGPUBuffer* args, unsigned offset)
{
    if (args == nullptr)
    {
        LX_ERROR("LxRenderManager::DispatchIndirect.  No argument buffer.");
        return;
    }
    if (!GetDrawBlocking())
    {
        APIDispatchIndirect(args, offset);
    }
    m_frameStats.IncrementValue(LX_FRAME_STAT_INDIRECT_DISPATCHES, 1);
}

// --- command lists and queues ------------------------------------------------------------------------------------

LxCountedPtr<LxCommandList> LxRenderManager::CreateCommandList(LxCommandList::Type type, bool forCurrentFrame)
{
    return LxCountedPtr<LxCommandList>(APICreateCommandList(type, forCurrentFrame));
}

LxCountedPtr<LxCommandList> LxRenderManager::GetCurrentCommandList()
{
    return CurrentWorker().currentList;
}

void LxRenderManager::SetCurrentCommandList(LxCountedPtr<LxCommandList> list)
{
    CurrentWorker().currentList = list;
}

bool LxRenderManager::CloseAndAppendCommandList(LxCountedPtr<LxCommandList> list)
{
    if (!list)
    {
        LX_ERROR("LxRenderManager::CloseAndAppendCommandList.  No command list.");
        return false;
    }
    if (list->GetType() == LxCommandList::BUNDLE)
    {
        LX_ERROR("LxRenderManager::CloseAndAppendCommandList.  A bundle is executed inside a list, never submitted.");
        return false;
    }
    if (!list->IsClosed() && !list->Close())
    {
        return false;
    }
    Worker& worker = CurrentWorker();
    LxMutex::ScopedLock lock(worker.listLock);
    worker.closedLists.Add(list);
    return true;
}

bool LxRenderManager::ExecuteCommandLists()
{
    Worker& worker = CurrentWorker();
    LxArray<LxCountedPtr<LxCommandList>> lists;
    {
        LxMutex::ScopedLock lock(worker.listLock);
        lists = static_cast<LxArray<LxCountedPtr<LxCommandList>>&&>(worker.closedLists);
        worker.closedLists.Clear();
    }
    if (lists.IsEmpty())
    {
        return true;
    }
    if (m_pFrameQueue == nullptr)
    {
        LX_ERROR("LxRenderManager::ExecuteCommandLists.  No frame command queue to submit to.");
        return false;
    }
    m_frameStats.IncrementValue(LX_FRAME_STAT_COMMAND_LISTS, lists.GetCount());
    return m_pFrameQueue->ExecuteCommandLists(lists);
}

bool LxRenderManager::ExecuteBundle(LxCountedPtr<LxCommandList> bundle)
{
    if (!bundle || bundle->GetType() != LxCommandList::BUNDLE)
    {
        LX_ERROR("LxRenderManager::ExecuteBundle.  Not a bundle.");
        return false;
    }
    m_frameStats.IncrementValue(LX_FRAME_STAT_BUNDLES, 1);
    return APIExecuteBundle(bundle.Get());
}

LxCommandQueue* LxRenderManager::CreateCommandQueue(LxCommandList::Type type)
{
    if (type == LxCommandList::BUNDLE)
    {
        LX_ERROR("Queue type cannot be BUNDLE");
        return nullptr;
    }
    return APICreateCommandQueue(type);
}

bool LxRenderManager::Flush()
{
    const bool executed = ExecuteCommandLists();
    return WaitOnExecution() && executed;
}

bool LxRenderManager::WaitOnExecution()
{
    if (!m_frameRing.IsInitialized())
    {
        LX_ERROR("LxRenderManager::WaitOnExecution.  No fence: the render manager is not initialised.");
        return false;
    }
    return m_frameRing.Flush();
}

void LxRenderManager::SetWorkerIndex(int index)
{
    if (index < 0 || index >= static_cast<int>(kMaxWorkers))
    {
        LX_ERROR("LxRenderManager::SetWorkerIndex.  Worker index %d outside 0..%u.", index, kMaxWorkers - 1);
        return;
    }
    t_workerIndex = index;
}

int LxRenderManager::GetWorkerIndex() const
{
    return t_workerIndex;
}

bool LxRenderManager::AllocateUpload(LxUploadHeap& heap, unsigned long long bytes, unsigned long long alignment,
                                     LxUploadAllocation* out)
{
    if (heap.Allocate(bytes, alignment, out))
    {
        return true;
    }
    Flush();
    if (heap.Allocate(bytes, alignment, out))
    {
        return true;
    }
    LX_ERROR("Flushed upload heap but allocation still failed\n");
    return false;
}

// --- platform hooks ----------------------------------------------------------------------------------------------

LxFence* LxRenderManager::CreateFence(unsigned long long)
{
    ReportNotImplemented("LxRenderManager::CreateFence");
    return nullptr;
}

int LxRenderManager::CreateGPUTimer(const LxString&)
{
    ReportNotImplemented("LxRenderManager::CreateGPUTimer");
    return -1;
}

void LxRenderManager::StartGPUTimer(int)
{
    ReportNotImplemented("LxRenderManager::StartGPUTimer");
}

void LxRenderManager::StopGPUTimer(int)
{
    ReportNotImplemented("LxRenderManager::StopGPUTimer");
}

const LxGPUTimerResults& LxRenderManager::GetGPUTimerResults()
{
    ReportNotImplemented("LxRenderManager::GetGPUTimerResults");
    return m_timerResults;
}

bool LxRenderManager::CreateIndirectCommandSignature()
{
    ReportNotImplemented("LxRenderManager::CreateIndirectCommandSignature");
    return false;
}

LxOcclusionQuery* LxRenderManager::CreateOcclusionQuery()
{
    ReportNotImplemented("LxRenderManager::CreateOcclusionQuery");
    return nullptr;
}

LxSOStatisticsQuery* LxRenderManager::CreateSOStatisticsQuery()
{
    ReportNotImplemented("LxRenderManager::CreateSOStatisticsQuery");
    return nullptr;
}

LxGPUPerformanceCounter* LxRenderManager::CreateGPUPerformanceCounter(LxGPUCounterType)
{
    ReportNotImplemented("LxRenderManager::CreateGPUPerformanceCounter");
    return nullptr;
}

LxRenderingPredicate* LxRenderManager::CreateRenderingPredicate(LxRenderingPredicateType, bool)
{
    ReportNotImplemented("LxRenderManager::CreateRenderingPredicate");
    return nullptr;
}

void LxRenderManager::SetPredication(LxRenderingPredicate*, bool)
{
    ReportNotImplemented("LxRenderManager::SetPredication");
}

void LxRenderManager::DrawInstancedIndirect(PrimType, LxGPUBuffer*, unsigned)
{
    ReportNotImplemented("LxRenderManager::DrawInstancedIndirect");
}

void LxRenderManager::DrawIndexedInstancedIndirect(PrimType, LxGPUBuffer*, unsigned)
{
    ReportNotImplemented("LxRenderManager::DrawIndexedInstancedIndirect");
}

bool LxRenderManager::APIBeginFrameSlot(unsigned)
{
    ReportNotImplemented("LxRenderManager::BeginFrameSlot");
    return false;
}

bool LxRenderManager::APIEndFrameSlot(unsigned)
{
    ReportNotImplemented("LxRenderManager::EndFrameSlot");
    return false;
}

bool LxRenderManager::APITransitionBackBuffer(LxGPUResource::StateType, LxGPUResource::StateType)
{
    ReportNotImplemented("LxRenderManager::TransitionBackBuffer");
    return false;
}

bool LxRenderManager::APIPresent(unsigned)
{
    ReportNotImplemented("LxRenderManager::Present");
    return false;
}

bool LxRenderManager::APIUpdateBackBuffers()
{
    ReportNotImplemented("LxRenderManager::UpdateBackBuffers");
    return false;
}

void LxRenderManager::APISetPrimitiveTopology(unsigned)
{
    ReportNotImplemented("LxRenderManager::SetPrimitiveTopology");
}

void LxRenderManager::APIDrawIndexedInstanced(unsigned, unsigned, unsigned, int, unsigned)
{
    ReportNotImplemented("LxRenderManager::DrawIndexedInstanced");
}

void LxRenderManager::APIDrawInstanced(unsigned, unsigned, unsigned, unsigned)
{
    ReportNotImplemented("LxRenderManager::DrawInstanced");
}

void LxRenderManager::APIDispatch(unsigned, unsigned, unsigned)
{
    ReportNotImplemented("LxRenderManager::Dispatch");
}

void LxRenderManager::APIDispatchIndirect(LxGPUBuffer*, unsigned)
{
    ReportNotImplemented("LxRenderManager::DispatchIndirect");
}

void LxRenderManager::APIClear(bool, bool, bool, int)
{
    ReportNotImplemented("LxRenderManager::Clear");
}

void LxRenderManager::APISetRenderTargets()
{
    ReportNotImplemented("LxRenderManager::SetRenderTargets");
}

void LxRenderManager::APISetViewport()
{
    ReportNotImplemented("LxRenderManager::Viewport");
}

void LxRenderManager::APISetScissor()
{
    ReportNotImplemented("LxRenderManager::Scissor");
}

LxCommandList* LxRenderManager::APICreateCommandList(LxCommandList::Type, bool)
{
    ReportNotImplemented("LxRenderManager::CreateCommandList");
    return nullptr;
}

bool LxRenderManager::APIExecuteBundle(LxCommandList*)
{
    ReportNotImplemented("LxRenderManager::ExecuteBundle");
    return false;
}

LxCommandQueue* LxRenderManager::APICreateCommandQueue(LxCommandList::Type)
{
    ReportNotImplemented("LxRenderManager::CreateCommandQueue");
    return nullptr;
}
