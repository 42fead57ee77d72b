#include "EffectManager/D3D12/LxD3D12Sampler.h"

#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12StateNames.h"
#include "EffectManager/LxEffectBuilder.h"

#include <cfloat>
#include <cstring>

namespace
{
struct FilterName
{
    const char* name;
    D3D12_FILTER filter;
};
const FilterName kFilters[] = {
    {"MIN_MAG_MIP_POINT", D3D12_FILTER_MIN_MAG_MIP_POINT},
    {"MIN_MAG_POINT_MIP_LINEAR", D3D12_FILTER_MIN_MAG_POINT_MIP_LINEAR},
    {"MIN_POINT_MAG_LINEAR_MIP_POINT", D3D12_FILTER_MIN_POINT_MAG_LINEAR_MIP_POINT},
    {"MIN_POINT_MAG_MIP_LINEAR", D3D12_FILTER_MIN_POINT_MAG_MIP_LINEAR},
    {"MIN_LINEAR_MAG_MIP_POINT", D3D12_FILTER_MIN_LINEAR_MAG_MIP_POINT},
    {"MIN_LINEAR_MAG_POINT_MIP_LINEAR", D3D12_FILTER_MIN_LINEAR_MAG_POINT_MIP_LINEAR},
    {"MIN_MAG_LINEAR_MIP_POINT", D3D12_FILTER_MIN_MAG_LINEAR_MIP_POINT},
    {"MIN_MAG_MIP_LINEAR", D3D12_FILTER_MIN_MAG_MIP_LINEAR},
    {"ANISOTROPIC", D3D12_FILTER_ANISOTROPIC},
    {"COMPARISON_MIN_MAG_MIP_POINT", D3D12_FILTER_COMPARISON_MIN_MAG_MIP_POINT},
    {"COMPARISON_MIN_MAG_POINT_MIP_LINEAR", D3D12_FILTER_COMPARISON_MIN_MAG_POINT_MIP_LINEAR},
    {"COMPARISON_MIN_POINT_MAG_LINEAR_MIP_POINT", D3D12_FILTER_COMPARISON_MIN_POINT_MAG_LINEAR_MIP_POINT},
    {"COMPARISON_MIN_POINT_MAG_MIP_LINEAR", D3D12_FILTER_COMPARISON_MIN_POINT_MAG_MIP_LINEAR},
    {"COMPARISON_MIN_LINEAR_MAG_MIP_POINT", D3D12_FILTER_COMPARISON_MIN_LINEAR_MAG_MIP_POINT},
    {"COMPARISON_MIN_LINEAR_MAG_POINT_MIP_LINEAR", D3D12_FILTER_COMPARISON_MIN_LINEAR_MAG_POINT_MIP_LINEAR},
    {"COMPARISON_MIN_MAG_LINEAR_MIP_POINT", D3D12_FILTER_COMPARISON_MIN_MAG_LINEAR_MIP_POINT},
    {"COMPARISON_MIN_MAG_MIP_LINEAR", D3D12_FILTER_COMPARISON_MIN_MAG_MIP_LINEAR},
    {"COMPARISON_ANISOTROPIC", D3D12_FILTER_COMPARISON_ANISOTROPIC},
};
const LxD3D12StateName kAddressModes[] = {{"WRAP", D3D12_TEXTURE_ADDRESS_MODE_WRAP},
                                          {"MIRROR", D3D12_TEXTURE_ADDRESS_MODE_MIRROR},
                                          {"CLAMP", D3D12_TEXTURE_ADDRESS_MODE_CLAMP},
                                          {"BORDER", D3D12_TEXTURE_ADDRESS_MODE_BORDER},
                                          {"MIRRORONCE", D3D12_TEXTURE_ADDRESS_MODE_MIRROR_ONCE},
                                          {nullptr, 0}};

enum Kind
{
    KIND_ENUM,
    KIND_NUMBER,
    KIND_FLOAT,
    KIND_VECTOR
};

const char* TypeWord(LxStateValue::Type type)
{
    switch (type)
    {
    case LxStateValue::TYPE_ENUM:
        return "an enum";
    case LxStateValue::TYPE_BOOL:
        return "a bool";
    case LxStateValue::TYPE_INT:
        return "an int or float";
    case LxStateValue::TYPE_FLOAT:
        return "a float";
    case LxStateValue::TYPE_VECTOR:
        return "a vector";
    }
    return "a";
}

float NumberOf(const LxStateValue& value)
{
    return value.type == LxStateValue::TYPE_INT ? float(value.intValue) : value.floatValue;
}
} // namespace

LxD3D12Sampler::LxD3D12Sampler(const LxString& name, LxEffect* effect, const LxAnnotationMap* annotations,
                               const LxSampler* templateSampler, LxEffectBuilder* reporter)
    : LxSampler(name, effect, annotations), m_pReporter(reporter)
{
    const LxD3D12Sampler* base = dynamic_cast<const LxD3D12Sampler*>(templateSampler);
    if (base)
        m_desc = base->m_desc;
    else
        SetDefaults(&m_desc);
}

void LxD3D12Sampler::SetDefaults(D3D12_SAMPLER_DESC* desc)
{
    std::memset(desc, 0, sizeof(*desc));
    desc->Filter = D3D12_FILTER_MIN_MAG_MIP_LINEAR;
    desc->AddressU = D3D12_TEXTURE_ADDRESS_MODE_WRAP;
    desc->AddressV = D3D12_TEXTURE_ADDRESS_MODE_WRAP;
    desc->AddressW = D3D12_TEXTURE_ADDRESS_MODE_WRAP;
    desc->MipLODBias = 0.0f;
    desc->MaxAnisotropy = 0;
    desc->ComparisonFunc = D3D12_COMPARISON_FUNC_ALWAYS;
    desc->MinLOD = 0.0f;
    desc->MaxLOD = FLT_MAX;
}

bool LxD3D12Sampler::ApplyState(const LxString& name, const LxStateValue& value, D3D12_SAMPLER_DESC* desc,
                                LxString* error)
{
    Kind kind;
    if (name == "Filter" || name == "AddressU" || name == "AddressV" || name == "AddressW" ||
        name == "ComparisonFunction" || name == "ComparisonFunc")
        kind = KIND_ENUM;
    else if (name == "MaxAnisotropy" || name == "MaxAniso")
        kind = KIND_NUMBER;
    else if (name == "MinLOD" || name == "MaxLOD" || name == "MipLODBias")
        kind = KIND_FLOAT;
    else if (name == "BorderColor")
        kind = KIND_VECTOR;
    else
    {
        error->Format("Unknown sampler state: %s", name.c_str());
        return false;
    }
    const bool numeric = value.type == LxStateValue::TYPE_INT || value.type == LxStateValue::TYPE_FLOAT;
    const bool kindOk = (kind == KIND_ENUM && value.type == LxStateValue::TYPE_ENUM) ||
                        ((kind == KIND_NUMBER || kind == KIND_FLOAT) && numeric) ||
                        (kind == KIND_VECTOR && value.type == LxStateValue::TYPE_VECTOR);
    if (!kindOk)
    {
        error->Format("Sampler state %s does not take %s parameter", name.c_str(), TypeWord(value.type));
        return false;
    }
    if (name == "Filter")
    {
        for (const FilterName& f : kFilters)
        {
            if (value.text == f.name)
            {
                desc->Filter = f.filter;
                return true;
            }
        }
        error->Format("Invalid parameter for sampler state %s: %s", name.c_str(), value.text.c_str());
        return false;
    }
    int e = 0;
    if (kind == KIND_ENUM)
    {
        const bool address = name.c_str()[0] == 'A';
        if (!LxD3D12FindStateName(address ? kAddressModes : kLxD3D12ComparisonNames, value.text, &e))
        {
            error->Format("Invalid parameter for sampler state %s: %s", name.c_str(), value.text.c_str());
            return false;
        }
        if (name == "AddressU")
            desc->AddressU = D3D12_TEXTURE_ADDRESS_MODE(e);
        else if (name == "AddressV")
            desc->AddressV = D3D12_TEXTURE_ADDRESS_MODE(e);
        else if (name == "AddressW")
            desc->AddressW = D3D12_TEXTURE_ADDRESS_MODE(e);
        else
            desc->ComparisonFunc = D3D12_COMPARISON_FUNC(e);
        return true;
    }
    if (kind == KIND_NUMBER)
        desc->MaxAnisotropy = unsigned(NumberOf(value));
    else if (name == "MinLOD")
        desc->MinLOD = NumberOf(value);
    else if (name == "MaxLOD")
        desc->MaxLOD = NumberOf(value);
    else if (name == "MipLODBias")
        desc->MipLODBias = NumberOf(value);
    else
    {
        desc->BorderColor[0] = value.vectorValue.x;
        desc->BorderColor[1] = value.vectorValue.y;
        desc->BorderColor[2] = value.vectorValue.z;
        desc->BorderColor[3] = value.vectorValue.w;
    }
    return true;
}

bool LxD3D12Sampler::AddState(const LxString& name, const LxStateValue& value)
{
    LxString error;
    if (!ApplyState(name, value, &m_desc, &error))
    {
        if (m_pReporter)
            m_pReporter->ParseError("%s", error.c_str());
        else
            LX_ERROR("%s", error.c_str());
        return false;
    }
    return LxSampler::AddState(name, value);
}

bool LxD3D12Sampler::CreateResources()
{
    LxEffectBuilder* reporter = m_pReporter;
    m_pReporter = nullptr;
    // The device takes 1 to 16 anisotropic samples (0, the default, is raised to 1 when the descriptor is made).
    if (m_desc.MaxAnisotropy > 16 || m_desc.MinLOD > m_desc.MaxLOD)
    {
        if (reporter)
            reporter->ParseError("Error finalizing DX12 sampler!");
        else
            LX_ERROR("Error finalizing DX12 sampler!");
        return false;
    }
    return true;
}
