// LxD3D12StateNames: the value names that render states and sampler states share, and the lookup both use.
// A table is an array of LxD3D12StateName ending with a null name. Tables are constant; lookups are thread-safe.
#pragma once

#include "Common/LxString.h"

#include <d3d12.h>

struct LxD3D12StateName
{
    const char* name;
    int value;
};

// The comparison functions ("ZFunc", "StencilFunc", a sampler's "ComparisonFunction"), by their effect-file names.
inline constexpr LxD3D12StateName kLxD3D12ComparisonNames[] = {{"NEVER", D3D12_COMPARISON_FUNC_NEVER},
                                                               {"LESS", D3D12_COMPARISON_FUNC_LESS},
                                                               {"EQUAL", D3D12_COMPARISON_FUNC_EQUAL},
                                                               {"LESSEQUAL", D3D12_COMPARISON_FUNC_LESS_EQUAL},
                                                               {"GREATER", D3D12_COMPARISON_FUNC_GREATER},
                                                               {"NOTEQUAL", D3D12_COMPARISON_FUNC_NOT_EQUAL},
                                                               {"GREATEREQUAL", D3D12_COMPARISON_FUNC_GREATER_EQUAL},
                                                               {"ALWAYS", D3D12_COMPARISON_FUNC_ALWAYS},
                                                               {nullptr, 0}};

// The value of `text` in `table` (null: no table); false, *value untouched, for a name the table lacks.
inline bool LxD3D12FindStateName(const LxD3D12StateName* table, const LxString& text, int* value)
{
    for (; table && table->name; ++table)
    {
        if (text == table->name)
        {
            *value = table->value;
            return true;
        }
    }
    return false;
}
