#include "EffectManager/LxShaderResourceSlot.h"

#include "Common/LxLogManager.h"
#include "EffectManager/LxScriptVariableSource.h"
#include "GPUResourceManager/LxGPUBuffer.h"
#include "GPUResourceManager/LxGPUResource.h"

#include <cmath>

namespace
{
LxScriptVariableSource* g_scriptSource = nullptr;

const char* const kFieldNames[LxSlotViewParams::NUM_NUMERIC_FIELDS] = {"MipSlice",        "MipLevels", "ArraySize",
                                                                       "FirstArraySlice", "WSize",     "FirstWSlice"};
const char* const kElementFormats[] = {"float", "float2", "float3", "float4", "int",   "int2",
                                       "int3",  "int4",   "uint",   "uint2",  "uint3", "uint4"};

unsigned int ToUnsigned(double v)
{
    if (!(v > 0.0)) // negative and NaN
        return 0;
    if (v >= 4294967295.0)
        return 0xFFFFFFFFu;
    return static_cast<unsigned int>(v);
}
} // namespace

void LxScriptVariableSource::SetGlobal(LxScriptVariableSource* source)
{
    g_scriptSource = source;
}
LxScriptVariableSource* LxScriptVariableSource::GetGlobal()
{
    return g_scriptSource;
}

const char* LxSlotViewParams::FieldName(Field field)
{
    return static_cast<unsigned int>(field) < NUM_NUMERIC_FIELDS ? kFieldNames[field] : "";
}

LxShaderResourceSlot::LxShaderResourceSlot(const LxString& name, const LxAnnotationMap* annotations) : m_name(name)
{
    if (annotations)
        m_annotations = *annotations;
}

bool LxShaderResourceSlot::IsKnownElementFormat(const LxString& format)
{
    for (const char* f : kElementFormats)
        if (format == f)
            return true;
    return false;
}

bool LxShaderResourceSlot::ReadViewParams(LxSlotViewParams* out) const
{
    *out = LxSlotViewParams();
    LxCountedPtr<LxAnnotationValue> viewParams = m_annotations.LookupValue("ViewParams");
    if (!viewParams)
        return true;
    if (!viewParams->IsMap())
    {
        LX_ERROR("'ViewParams' slot annotation must have type 'MAP'");
        return false;
    }
    bool ok = true;
    const LxAnnotationMap& map = *viewParams->GetMap();
    for (unsigned int f = 0; f < LxSlotViewParams::NUM_NUMERIC_FIELDS; ++f)
    {
        LxCountedPtr<LxAnnotationValue> v = map.LookupValue(kFieldNames[f]);
        if (!v)
            continue;
        if (v->IsFloat())
        {
            out->values[f] = ToUnsigned(v->GetFloat());
            out->present[f] = true;
            continue;
        }
        const LxString path = LxString("ViewParams.") + kFieldNames[f] + ".ScriptVariable";
        LxCountedPtr<LxAnnotationValue> var = m_annotations.LookupValue(path);
        if (!v->IsMap() || !var || !var->IsString())
        {
            LX_ERROR("Value of view parameter '%s' must either be of type FLOAT or be bound to a script variable",
                     kFieldNames[f]);
            ok = false;
            continue;
        }
        const LxString variable = LxString("DrawScriptEnv.") + var->GetString();
        double number = 0.0;
        LxScriptVariableSource* source = LxScriptVariableSource::GetGlobal();
        if (!source || !source->GetNumber(variable, number) || !std::isfinite(number))
        {
            LX_ERROR("Script variable named: %s does not exist, or does not refer to a number", variable.c_str());
            ok = false;
            continue;
        }
        out->values[f] = ToUnsigned(number);
        out->present[f] = true;
    }

    LxCountedPtr<LxAnnotationValue> format = map.LookupValue("ElementFormat");
    if (format)
    {
        if (!format->IsString())
        {
            LX_ERROR("Value of 'ElementFormat' view parameter must be of type STRING");
            ok = false;
        }
        else if (!IsKnownElementFormat(format->GetString()))
        {
            LX_ERROR("Unrecognized view format: '%s'", format->GetString().c_str());
            ok = false;
        }
        else
        {
            out->elementFormat = format->GetString();
            out->hasElementFormat = true;
        }
    }

    LxCountedPtr<LxAnnotationValue> counter = map.LookupValue("Counter");
    if (counter && AcceptsCounter())
    {
        if (!counter->IsBool())
        {
            LX_ERROR("Value of 'Counter' view parameter must be of type BOOL");
            ok = false;
        }
        else
        {
            out->counter = counter->GetBool();
            out->hasCounter = true;
        }
    }
    CheckViewParamsForType(*out);
    return ok;
}

LxGPUResourceFormat LxShaderResourceSlot::ElementFormatToFormat(const LxString& format)
{
    static const struct
    {
        const char* name;
        LxGPUResourceFormat format;
    } table[] = {{"float", LX_FORMAT_R32_FLOAT},        {"float2", LX_FORMAT_R32G32_FLOAT},
                 {"float3", LX_FORMAT_R32G32B32_FLOAT}, {"float4", LX_FORMAT_R32G32B32A32_FLOAT},
                 {"int", LX_FORMAT_R32_SINT},           {"int2", LX_FORMAT_R32G32_SINT},
                 {"int3", LX_FORMAT_R32G32B32_SINT},    {"int4", LX_FORMAT_R32G32B32A32_SINT},
                 {"uint", LX_FORMAT_R32_UINT},          {"uint2", LX_FORMAT_R32G32_UINT},
                 {"uint3", LX_FORMAT_R32G32B32_UINT},   {"uint4", LX_FORMAT_R32G32B32A32_UINT}};
    for (const auto& e : table)
        if (format == e.name)
            return e.format;
    return LX_FORMAT_UNKNOWN;
}

LxGPUResourceViewDescription LxShaderResourceSlot::MakeViewDescription(const LxGPUResource& resource,
                                                                       LxGPUResourceViewType viewType) const
{
    LxGPUResourceViewDescription desc = resource.GetDefaultViewDescription(viewType);
    LxSlotViewParams params;
    ReadViewParams(&params); // malformed entries were reported; the well-formed ones still apply
    auto narrow = [](unsigned int v) { return static_cast<unsigned short>(v > 0xFFFFu ? 0xFFFFu : v); };
    if (resource.GetType() == LxGPUResource::BUFFER)
    {
        if (params.hasElementFormat)
        {
            desc.format = ElementFormatToFormat(params.elementFormat);
            const unsigned int bytes = LxGetFormatBitsPerElement(desc.format) / 8;
            const LxGPUBuffer* buffer = dynamic_cast<const LxGPUBuffer*>(&resource);
            if (buffer && bytes)
            {
                desc.resourceDesc.buffer.firstElement = 0;
                desc.resourceDesc.buffer.numElements = buffer->GetSize() / bytes;
            }
        }
        if (params.hasCounter && params.counter)
            desc.flags = static_cast<unsigned short>(desc.flags | LxGPUResourceViewDescription::FLAG_APPEND);
        return desc;
    }
    LxGPUResourceDescription& t = desc.resourceDesc;
    // A first mip or slice without a count views everything from there on: the count shrinks by the skipped
    // part (unless the start is already past the end, which the view's validity check then reports).
    auto remaining = [](unsigned short count, unsigned short first)
    { return static_cast<unsigned short>(first < count ? count - first : count); };
    if (params.present[LxSlotViewParams::MIP_SLICE])
    {
        t.texture.firstMip = narrow(params.values[LxSlotViewParams::MIP_SLICE]);
        t.texture.mipCount = remaining(t.texture.mipCount, t.texture.firstMip);
    }
    if (params.present[LxSlotViewParams::MIP_LEVELS])
        t.texture.mipCount = narrow(params.values[LxSlotViewParams::MIP_LEVELS]);
    const bool volume = resource.GetType() == LxGPUResource::TEXTURE_3D;
    const LxSlotViewParams::Field first =
        volume ? LxSlotViewParams::FIRST_W_SLICE : LxSlotViewParams::FIRST_ARRAY_SLICE;
    const LxSlotViewParams::Field size = volume ? LxSlotViewParams::W_SIZE : LxSlotViewParams::ARRAY_SIZE;
    if (params.present[first])
    {
        t.texture.firstSlice = narrow(params.values[first]);
        t.texture.sliceCount = remaining(t.texture.sliceCount, t.texture.firstSlice);
    }
    if (params.present[size])
        t.texture.sliceCount = narrow(params.values[size]);
    return desc;
}
