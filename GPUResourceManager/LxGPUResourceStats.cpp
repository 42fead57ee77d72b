#include "GPUResourceManager/LxGPUResourceStats.h"

LxGPUResourceStats::LxGPUResourceStats()
{
    Clear();
}

void LxGPUResourceStats::Clear()
{
    for (unsigned& v : m_values)
    {
        v = 0;
    }
}

void LxGPUResourceStats::IncrementValue(LxGPUResourceStatField field, unsigned n)
{
    if (field < LX_STAT_NUM_FIELDS)
    {
        m_values[field] += n;
    }
}

void LxGPUResourceStats::DecrementValue(LxGPUResourceStatField field, unsigned n)
{
    if (field < LX_STAT_NUM_FIELDS)
    {
        m_values[field] -= n;
    }
}

unsigned LxGPUResourceStats::GetValue(LxGPUResourceStatField field) const
{
    return field < LX_STAT_NUM_FIELDS ? m_values[field] : 0;
}

unsigned LxGPUResourceStats::GetGPUMemoryUsage() const
{
    return m_values[LX_STAT_VERTEX_BUFFER_BYTES] + m_values[LX_STAT_INDEX_BUFFER_BYTES] +
           m_values[LX_STAT_CONSTANT_BUFFER_BYTES] + m_values[LX_STAT_TEXTURE_2D_BYTES] +
           m_values[LX_STAT_TEXTURE_3D_BYTES] + m_values[LX_STAT_TEXTURE_CUBE_BYTES] +
           m_values[LX_STAT_DATA_BUFFER_BYTES];
}
