// LxFrameStats: twelve unsigned 32-bit counters of what a frame drew, indexed by LxFrameStatField. The render
// manager holds one, clears it when a frame begins and adds to it on every draw, dispatch and submission; the
// object manager reads it around each object to build its per-object report.
//
// Counters wrap like any unsigned 32-bit value. Increments may come from several recording threads at once: the
// shared counters take one relaxed atomic add each; the draw path adds into its worker's own counters instead
// (IncrementWorkerValue: a plain load and store, no locked instruction, because only that worker's thread writes
// them), and a read sums the shared counters and every worker's. Reading while others add gives some value in
// between, exact once they are done.
#pragma once

#include "Common/LxApi.h"

#include <atomic>

enum LxFrameStatField : unsigned
{
    LX_FRAME_STAT_POINTS = 0,
    LX_FRAME_STAT_LINES = 1,
    LX_FRAME_STAT_TRIANGLES = 2,
    LX_FRAME_STAT_INDEXED_DRAWS = 3,
    LX_FRAME_STAT_NON_INDEXED_DRAWS = 4,
    LX_FRAME_STAT_DISPATCHES = 5,          // Dispatch calls
    LX_FRAME_STAT_INDIRECT_DISPATCHES = 6, // DispatchIndirect calls
    LX_FRAME_STAT_COMMAND_LISTS = 7,       // command lists submitted to the frame queue
    LX_FRAME_STAT_BUNDLES = 8,             // bundles executed inside lists
    LX_FRAME_STAT_INSTANCES = 9,           // instances drawn (1 per non-instanced draw)
    LX_FRAME_STAT_PATCH_CONTROL_POINTS = 10,
    LX_FRAME_STAT_BLOCKED_DRAWS = 11, // draws counted but not issued (draw blocking)
    LX_FRAME_STAT_NUM_FIELDS = 12
};

class LX_API LxFrameStats
{
public:
    LxFrameStats() { Clear(); }
    static const unsigned kWorkers = 32;

    LxFrameStats(const LxFrameStats& other) { *this = other; }
    // Copies the totals (into the shared counters).
    LxFrameStats& operator=(const LxFrameStats& other)
    {
        Clear();
        for (unsigned i = 0; i < LX_FRAME_STAT_NUM_FIELDS; ++i)
        {
            m_values[i].store(other.GetValue(static_cast<LxFrameStatField>(i)), std::memory_order_relaxed);
        }
        return *this;
    }

    void Clear()
    {
        for (std::atomic<unsigned>& v : m_values)
        {
            v.store(0, std::memory_order_relaxed);
        }
        for (WorkerValues& w : m_workers)
        {
            for (std::atomic<unsigned>& v : w.values)
            {
                v.store(0, std::memory_order_relaxed);
            }
        }
    }
    // For the one thread that records as `worker` (0..31); other workers are ignored.
    void IncrementWorkerValue(unsigned worker, LxFrameStatField field, unsigned n)
    {
        if (field < LX_FRAME_STAT_NUM_FIELDS && worker < kWorkers)
        {
            std::atomic<unsigned>& v = m_workers[worker].values[field];
            v.store(v.load(std::memory_order_relaxed) + n, std::memory_order_relaxed);
        }
    }
    // Fields outside the enumeration are ignored (reads answer 0).
    void IncrementValue(LxFrameStatField field, unsigned n)
    {
        if (field < LX_FRAME_STAT_NUM_FIELDS)
        {
            m_values[field].fetch_add(n, std::memory_order_relaxed);
        }
    }
    unsigned GetValue(LxFrameStatField field) const
    {
        if (field >= LX_FRAME_STAT_NUM_FIELDS)
        {
            return 0u;
        }
        unsigned sum = m_values[field].load(std::memory_order_relaxed);
        for (const WorkerValues& w : m_workers)
        {
            sum += w.values[field].load(std::memory_order_relaxed);
        }
        return sum;
    }

private:
    // One cache line per worker, so workers never write a line another worker writes.
    struct alignas(64) WorkerValues
    {
        std::atomic<unsigned> values[LX_FRAME_STAT_NUM_FIELDS];
    };
    std::atomic<unsigned> m_values[LX_FRAME_STAT_NUM_FIELDS];
    WorkerValues m_workers[kWorkers];
};
