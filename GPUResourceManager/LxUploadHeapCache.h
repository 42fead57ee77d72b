// LxUploadHeapCache: a per-thread front of an LxUploadHeap for threads that make many small uploads (constants per
// draw). It takes a block of the heap with one heap allocation and hands out pieces of it with no shared memory
// traffic at all, so recording threads do not contend for the heap's counter on every piece.
//
// A block belongs to the frame it was taken in: once the heap's frame has ended (its frame counter moved) the
// cache drops the block and takes a new one, and what was left of the old block is recycled with that frame.
// Requests larger than a quarter of the block size go to the heap directly, as does every request when the block
// is more than a quarter of the heap, and any request when a new block cannot be had. Results and failures are those of
// LxUploadHeap::Allocate. Threading: one cache per thread (the render manager's workers each own one); the cache itself
// is not shared. The heap must outlive the cache.
#pragma once

#include "Common/LxApi.h"
#include "GPUResourceManager/LxUploadHeap.h"

class LX_API LxUploadHeapCache
{
public:
    static const unsigned long long kDefaultBlockSize = 64 * 1024;
    // Blocks are aligned to this; larger alignments are honoured inside the block at the cost of padding.
    static const unsigned long long kBlockAlignment = 256;

    explicit LxUploadHeapCache(LxUploadHeap& heap, unsigned long long blockSize = kDefaultBlockSize);

    bool Allocate(unsigned long long bytes, unsigned long long alignment, LxUploadAllocation* out);
    // Forgets the current block (its unused rest is recycled with its frame).
    void Reset();

    unsigned long long GetBlockSize() const { return m_nBlockSize; }

private:
    LxUploadHeap* m_pHeap;
    unsigned long long m_nBlockSize;
    unsigned long long m_nBlockFrame = 0;
    LxUploadAllocation m_block;
    unsigned long long m_nUsed = 0;
};
