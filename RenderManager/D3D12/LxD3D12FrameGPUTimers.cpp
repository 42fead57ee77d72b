#include "RenderManager/D3D12/LxD3D12FrameGPUTimers.h"

#include "Common/LxLogManager.h"

bool LxD3D12FrameGPUTimers::Initialize(ID3D12Device* device, ID3D12CommandQueue* queue, unsigned frames,
                                       unsigned capacity)
{
    Release();
    UINT64 frequency = 0;
    if (FAILED(queue->GetTimestampFrequency(&frequency)) || frequency == 0)
    {
        LX_ERROR("LxD3D12FrameGPUTimers::Initialize.  The queue has no timestamp frequency.");
        return false;
    }
    const unsigned queries = frames * capacity * 2;
    D3D12_QUERY_HEAP_DESC heapDesc = {};
    heapDesc.Type = D3D12_QUERY_HEAP_TYPE_TIMESTAMP;
    heapDesc.Count = queries;
    if (FAILED(device->CreateQueryHeap(&heapDesc, IID_PPV_ARGS(&m_queryHeap))))
    {
        LX_ERROR("LxD3D12FrameGPUTimers::Initialize.  CreateQueryHeap failed.");
        return false;
    }
    D3D12_HEAP_PROPERTIES heap = {};
    heap.Type = D3D12_HEAP_TYPE_READBACK;
    D3D12_RESOURCE_DESC desc = {};
    desc.Dimension = D3D12_RESOURCE_DIMENSION_BUFFER;
    desc.Width = UINT64(queries) * sizeof(UINT64);
    desc.Height = desc.DepthOrArraySize = desc.MipLevels = desc.SampleDesc.Count = 1;
    desc.Layout = D3D12_TEXTURE_LAYOUT_ROW_MAJOR;
    void* mapped = nullptr;
    if (FAILED(device->CreateCommittedResource(&heap, D3D12_HEAP_FLAG_NONE, &desc, D3D12_RESOURCE_STATE_COPY_DEST,
                                               nullptr, IID_PPV_ARGS(&m_readback))) ||
        FAILED(m_readback->Map(0, nullptr, &mapped)))
    {
        LX_ERROR("LxD3D12FrameGPUTimers::Initialize.  The timestamp readback buffer could not be made.");
        Release();
        return false;
    }
    m_pMapped = static_cast<const unsigned long long*>(mapped);
    m_fTicksPerMs = double(frequency) / 1000.0;
    m_nFrames = frames;
    m_nCapacity = capacity;
    m_pairStates.Clear();
    m_pairStates.Resize(frames * capacity);
    for (unsigned i = 0; i < m_pairStates.GetCount(); ++i)
    {
        m_pairStates[i] = PAIR_IDLE;
    }
    m_results.timers.Reserve(capacity);
    return true;
}

void LxD3D12FrameGPUTimers::Release()
{
    if (m_readback && m_pMapped)
    {
        m_readback->Unmap(0, nullptr);
    }
    m_pMapped = nullptr;
    m_readback.Reset();
    m_queryHeap.Reset();
    m_nFrames = m_nCapacity = 0;
    m_nCount.store(0);
    m_pairStates.Clear();
    m_results.timers.Clear();
    m_results.framesMeasured = 0;
}

int LxD3D12FrameGPUTimers::CreateTimer(const LxString& name)
{
    const int handle = m_nCount.fetch_add(1);
    if (handle >= static_cast<int>(m_nCapacity))
    {
        m_nCount.store(static_cast<int>(m_nCapacity));
        return -1;
    }
    LxGPUTimerResult result;
    result.name = name;
    m_results.timers.Add(result);
    return handle;
}

bool LxD3D12FrameGPUTimers::IsValid(int timer) const
{
    return m_queryHeap && timer >= 0 && timer < m_nCount.load() && timer < static_cast<int>(m_nCapacity);
}

void LxD3D12FrameGPUTimers::StartTimer(ID3D12GraphicsCommandList* list, unsigned slot, int timer)
{
    if (!IsValid(timer) || list == nullptr)
    {
        LX_ERROR("LxD3D12FrameGPUTimers::StartTimer.  No timer %d, or no list to record it on.", timer);
        return;
    }
    list->EndQuery(m_queryHeap.Get(), D3D12_QUERY_TYPE_TIMESTAMP, QueryIndex(slot, timer));
    m_pairStates[slot * m_nCapacity + timer] = PAIR_STARTED;
}

void LxD3D12FrameGPUTimers::StopTimer(ID3D12GraphicsCommandList* list, unsigned slot, int timer)
{
    if (!IsValid(timer) || list == nullptr)
    {
        LX_ERROR("LxD3D12FrameGPUTimers::StopTimer.  No timer %d, or no list to record it on.", timer);
        return;
    }
    unsigned char& state = m_pairStates[slot * m_nCapacity + timer];
    if (state != PAIR_STARTED)
    {
        LX_ERROR("LxD3D12FrameGPUTimers::StopTimer timer not yet started");
        return;
    }
    list->EndQuery(m_queryHeap.Get(), D3D12_QUERY_TYPE_TIMESTAMP, QueryIndex(slot, timer) + 1);
    state = PAIR_STOPPED;
}

void LxD3D12FrameGPUTimers::EndFrame(ID3D12GraphicsCommandList* list, unsigned slot)
{
    if (!m_queryHeap || list == nullptr)
    {
        return;
    }
    const int count = m_nCount.load();
    for (int t = 0; t < count && t < static_cast<int>(m_nCapacity); ++t)
    {
        unsigned char& state = m_pairStates[slot * m_nCapacity + t];
        if (state == PAIR_STOPPED)
        {
            // Only written pairs are resolved: resolving a query never ended is invalid.
            const unsigned first = QueryIndex(slot, t);
            list->ResolveQueryData(m_queryHeap.Get(), D3D12_QUERY_TYPE_TIMESTAMP, first, 2, m_readback.Get(),
                                   UINT64(first) * sizeof(UINT64));
            state = PAIR_RESOLVED;
        }
        else
        {
            // Started and never stopped: the frame's measurement is dropped.
            state = PAIR_IDLE;
        }
    }
}

void LxD3D12FrameGPUTimers::BeginFrame(unsigned slot)
{
    if (!m_queryHeap)
    {
        return;
    }
    const int count = m_nCount.load();
    bool any = false;
    for (int t = 0; t < count && t < static_cast<int>(m_nCapacity); ++t)
    {
        unsigned char& state = m_pairStates[slot * m_nCapacity + t];
        if (state == PAIR_RESOLVED)
        {
            const unsigned first = QueryIndex(slot, t);
            const unsigned long long begin = m_pMapped[first];
            const unsigned long long end = m_pMapped[first + 1];
            const double ms = end >= begin ? double(end - begin) / m_fTicksPerMs : 0.0;
            LxGPUTimerResult& r = m_results.timers[t];
            r.lastMs = ms;
            r.minMs = r.frames == 0 || ms < r.minMs ? ms : r.minMs;
            r.maxMs = r.frames == 0 || ms > r.maxMs ? ms : r.maxMs;
            r.averageMs = (r.averageMs * r.frames + ms) / (r.frames + 1);
            ++r.frames;
            any = true;
        }
        state = PAIR_IDLE;
    }
    if (any)
    {
        ++m_results.framesMeasured;
    }
}
