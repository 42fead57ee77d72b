// LxShaderResourceSlot: what texture slots and unordered-access slots share: a name, annotations and the view
// parameters read from the "ViewParams" annotation map when a resource is bound.
//
// "ViewParams" holds "MipSlice", "MipLevels", "ArraySize", "FirstArraySlice", "WSize", "FirstWSlice" (floats, or
// maps whose string "ScriptVariable" names a script variable read at bind time with the prefix "DrawScriptEnv."),
// "ElementFormat" (a string naming a buffer element type) and, for UAVs, "Counter" (a bool). Malformed entries are
// reported and left out; reading never fails as a whole.
#pragma once

#include "Common/LxApi.h"
#include "Common/LxString.h"
#include "EffectManager/LxAnnotationMap.h"
#include "GPUResourceManager/LxGPUResourceViewDescription.h"

class LxGPUResource;

// The view parameters of one bind; a field is meaningful only when its flag is set.
struct LxSlotViewParams
{
    enum Field
    {
        MIP_SLICE = 0,
        MIP_LEVELS,
        ARRAY_SIZE,
        FIRST_ARRAY_SLICE,
        W_SIZE,
        FIRST_W_SLICE,
        NUM_NUMERIC_FIELDS
    };
    unsigned int values[NUM_NUMERIC_FIELDS] = {0, 0, 0, 0, 0, 0};
    bool present[NUM_NUMERIC_FIELDS] = {false, false, false, false, false, false};
    // "float", "float2", "float3", "float4", "int", "int2", "int3", "int4", "uint", "uint2", "uint3", "uint4".
    LxString elementFormat;
    bool hasElementFormat = false;
    bool counter = false;
    bool hasCounter = false;

    static const char* FieldName(Field field);
};

class LX_API LxShaderResourceSlot
{
public:
    LxShaderResourceSlot(const LxString& name, const LxAnnotationMap* annotations);
    virtual ~LxShaderResourceSlot() = default;

    const LxString& GetName() const { return m_name; }
    const LxAnnotationMap& GetAnnotations() const { return m_annotations; }

    // Reads the slot's "ViewParams" (absent: all flags false, true returned). False when anything was malformed;
    // the well-formed entries are still filled in.
    bool ReadViewParams(LxSlotViewParams* out) const;
    static bool IsKnownElementFormat(const LxString& format);
    // The format of a buffer element type ("float3" gives LX_FORMAT_R32G32B32_FLOAT); LX_FORMAT_UNKNOWN if unknown.
    static LxGPUResourceFormat ElementFormatToFormat(const LxString& format);

    // The description of the view this slot makes of `resource`: the resource's default view of `viewType`,
    // narrowed by the slot's view parameters (mips, slices, buffer element format, UAV counter).
    LxGPUResourceViewDescription MakeViewDescription(const LxGPUResource& resource,
                                                     LxGPUResourceViewType viewType) const;

protected:
    // Reports entries that make no sense for the slot's kind (they are ignored).
    virtual void CheckViewParamsForType(const LxSlotViewParams& params) const { (void)params; }
    virtual bool AcceptsCounter() const { return false; }

    LxString m_name;
    LxAnnotationMap m_annotations;
};
