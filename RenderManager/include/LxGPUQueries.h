// The GPU query and predicate kinds the render manager's interface names. Occlusion queries, stream-output
// statistics, performance counters and rendering predicates have no Direct3D 12 implementation here: their
// creation calls log IMPLEMENT ME and answer null, so the classes stay declared only.
#pragma once

class LxOcclusionQuery;
class LxSOStatisticsQuery;
class LxGPUPerformanceCounter;
class LxRenderingPredicate;

enum LxGPUCounterType : unsigned
{
    LX_GPU_COUNTER_GPU_IDLE = 0,
    LX_GPU_COUNTER_VERTEX_PROCESSING = 1,
    LX_GPU_COUNTER_PIXEL_PROCESSING = 2,
};

enum LxRenderingPredicateType : unsigned
{
    LX_PREDICATE_OCCLUSION = 0,
    LX_PREDICATE_SO_OVERFLOW = 1,
};
