#include "GPUResourceManager/LxUploadHeapCache.h"

#include "Common/LxLogManager.h"

#include <cstdint>

LxUploadHeapCache::LxUploadHeapCache(LxUploadHeap& heap, unsigned long long blockSize)
    : m_pHeap(&heap), m_nBlockSize(blockSize >= kBlockAlignment ? blockSize : kBlockAlignment)
{
}

void LxUploadHeapCache::Reset()
{
    m_block = LxUploadAllocation();
    m_nUsed = 0;
}

bool LxUploadHeapCache::Allocate(unsigned long long bytes, unsigned long long alignment, LxUploadAllocation* out)
{
    if (bytes > m_nBlockSize / 4 || m_nBlockSize > m_pHeap->GetCapacity() / 4 || alignment == 0 ||
        (alignment & (alignment - 1)) != 0)
    {
        // Large pieces would waste a block, and blocks would waste a small heap; bad alignments get the heap's
        // report.
        return m_pHeap->Allocate(bytes, alignment, out);
    }
    for (int attempt = 0; attempt < 2; ++attempt)
    {
        if (m_block.base != nullptr && m_nBlockFrame == m_pHeap->GetFrameCounter())
        {
            const uintptr_t start = reinterpret_cast<uintptr_t>(m_block.GetCPUAddress());
            const unsigned long long position = LxUploadHeap::AlignUp(start + m_nUsed, alignment) - start;
            if (position + bytes <= m_block.size)
            {
                m_nUsed = position + bytes;
                out->resource = m_block.resource;
                out->base = m_block.base;
                out->offset = m_block.offset + position;
                out->size = bytes;
                return true;
            }
        }
        if (attempt == 1)
        {
            break;
        }
        // A new block, in the frame under way.
        Reset();
        m_nBlockFrame = m_pHeap->GetFrameCounter();
        if (!m_pHeap->Allocate(m_nBlockSize, kBlockAlignment, &m_block))
        {
            Reset();
            break;
        }
    }
    // No block: the piece on its own may still fit.
    return m_pHeap->Allocate(bytes, alignment, out);
}
