#include "GPUResourceManager/LxDescriptorHeap.h"

#include "Common/LxLogManager.h"
#include "RenderManager/include/LxFence.h"

LxDescriptorHeap::LxDescriptorHeap(unsigned maxDescriptors)
{
    Reset(maxDescriptors);
}

LxDescriptorHeap::~LxDescriptorHeap() = default;

void LxDescriptorHeap::Reset(unsigned maxDescriptors)
{
    LxMutex::ScopedLock lock(m_lock);
    m_nMax = maxDescriptors;
    m_nFreeCount = maxDescriptors;
    m_allocated.Clear();
    m_allocated.Resize(maxDescriptors);
    for (unsigned char& a : m_allocated)
    {
        a = 0;
    }
    m_free.Clear();
    if (maxDescriptors > 0)
    {
        m_free.Add(Range{0, maxDescriptors});
    }
    m_freedThisFrame.Clear();
    m_pendingFrames.Clear();
}

void LxDescriptorHeap::MarkAllocated(unsigned first, unsigned count, bool allocated)
{
    for (unsigned i = first; i < first + count; ++i)
    {
        m_allocated[i] = allocated ? 1 : 0;
    }
}

int LxDescriptorHeap::TakeRange(unsigned count)
{
    for (unsigned i = 0; i < m_free.GetCount(); ++i)
    {
        Range& r = m_free[i];
        if (r.count >= count)
        {
            const unsigned first = r.first;
            r.first += count;
            r.count -= count;
            if (r.count == 0)
            {
                m_free.RemoveAt(i);
            }
            m_nFreeCount -= count;
            MarkAllocated(first, count, true);
            return static_cast<int>(first);
        }
    }
    return -1;
}

void LxDescriptorHeap::ReturnRange(Range range)
{
    MarkAllocated(range.first, range.count, false);
    m_nFreeCount += range.count;
    // Insert sorted, then merge with the neighbours it touches.
    unsigned i = 0;
    while (i < m_free.GetCount() && m_free[i].first < range.first)
    {
        ++i;
    }
    m_free.Insert(i, range);
    if (i + 1 < m_free.GetCount() && m_free[i].first + m_free[i].count == m_free[i + 1].first)
    {
        m_free[i].count += m_free[i + 1].count;
        m_free.RemoveAt(i + 1);
    }
    if (i > 0 && m_free[i - 1].first + m_free[i - 1].count == m_free[i].first)
    {
        m_free[i - 1].count += m_free[i].count;
        m_free.RemoveAt(i);
    }
}

bool LxDescriptorHeap::RetireCompletedFrames()
{
    bool retired = false;
    while (!m_pendingFrames.IsEmpty())
    {
        PendingFrame& oldest = m_pendingFrames[0];
        if (oldest.fence == nullptr || oldest.fence->GetCompletedValue() < oldest.fenceValue)
        {
            break;
        }
        for (const Range& r : oldest.ranges)
        {
            ReturnRange(r);
        }
        m_pendingFrames.RemoveAt(0);
        retired = true;
    }
    return retired;
}

int LxDescriptorHeap::Allocate(unsigned count)
{
    if (count == 0)
    {
        count = 1;
    }
    LxMutex::ScopedLock lock(m_lock);
    int first = TakeRange(count);
    if (first < 0 && RetireCompletedFrames())
    {
        first = TakeRange(count);
    }
    if (first >= 0)
    {
        return first;
    }
    if (m_pendingFrames.IsEmpty() && m_freedThisFrame.IsEmpty())
    {
        LX_ERROR("No buffers to free, out of heap space. heap max descriptors: %ld allocated: %ld",
                 static_cast<long>(m_nMax), static_cast<long>(m_nMax - m_nFreeCount));
    }
    else
    {
        LX_ERROR("Out of memory for descriptors!");
    }
    return -1;
}

bool LxDescriptorHeap::CheckAllocated(const char* who, unsigned first, unsigned count)
{
    if (count == 0 || first >= m_nMax || count > m_nMax - first)
    {
        LX_ERROR("%s.  Descriptors [%u, %u) lie outside the heap of %u.", who, first, first + count, m_nMax);
        return false;
    }
    for (unsigned i = first; i < first + count; ++i)
    {
        if (!m_allocated[i])
        {
            LX_ERROR("%s.  Descriptor %u is not allocated.", who, i);
            return false;
        }
    }
    // Already freed this frame or waiting for the GPU counts as not allocated.
    auto overlaps = [first, count](const LxArray<Range>& ranges)
    {
        for (const Range& r : ranges)
        {
            if (first < r.first + r.count && r.first < first + count)
            {
                return true;
            }
        }
        return false;
    };
    bool pending = overlaps(m_freedThisFrame);
    for (const PendingFrame& frame : m_pendingFrames)
    {
        pending = pending || overlaps(frame.ranges);
    }
    if (pending)
    {
        LX_ERROR("%s.  Descriptors [%u, %u) were already freed.", who, first, first + count);
        return false;
    }
    return true;
}

bool LxDescriptorHeap::Free(unsigned first, unsigned count)
{
    LxMutex::ScopedLock lock(m_lock);
    if (!CheckAllocated("LxDescriptorHeap::Free", first, count))
    {
        return false;
    }
    m_freedThisFrame.Add(Range{first, count});
    return true;
}

bool LxDescriptorHeap::FreeNow(unsigned first, unsigned count)
{
    LxMutex::ScopedLock lock(m_lock);
    if (!CheckAllocated("LxDescriptorHeap::FreeNow", first, count))
    {
        return false;
    }
    ReturnRange(Range{first, count});
    return true;
}

void LxDescriptorHeap::OnFrameEnd(LxFence* fence, unsigned long long fenceValue)
{
    LxMutex::ScopedLock lock(m_lock);
    // Frames whose fences have passed go back first, so the pending list stays short.
    RetireCompletedFrames();
    if (m_freedThisFrame.IsEmpty())
    {
        return;
    }
    PendingFrame& frame = m_pendingFrames.Emplace();
    frame.fence = fence;
    frame.fenceValue = fenceValue;
    frame.ranges = static_cast<LxArray<Range>&&>(m_freedThisFrame);
    m_freedThisFrame.Clear();
}

unsigned LxDescriptorHeap::GetAllocatedCount()
{
    LxMutex::ScopedLock lock(m_lock);
    return m_nMax - m_nFreeCount;
}

unsigned LxDescriptorHeap::GetPendingCount()
{
    LxMutex::ScopedLock lock(m_lock);
    unsigned n = 0;
    for (const Range& r : m_freedThisFrame)
    {
        n += r.count;
    }
    for (const PendingFrame& frame : m_pendingFrames)
    {
        for (const Range& r : frame.ranges)
        {
            n += r.count;
        }
    }
    return n;
}

bool LxDescriptorHeap::IsAllocated(unsigned index)
{
    LxMutex::ScopedLock lock(m_lock);
    return index < m_nMax && m_allocated[index] != 0;
}
