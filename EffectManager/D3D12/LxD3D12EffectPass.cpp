#include "EffectManager/D3D12/LxD3D12EffectPass.h"

#include "Common/LxLogManager.h"
#include "EffectManager/D3D12/LxD3D12DescriptorBinding.h"
#include "EffectManager/D3D12/LxD3D12Effect.h"
#include "EffectManager/D3D12/LxD3D12Shader.h"
#include "EffectManager/D3D12/LxD3D12StateNames.h"
#include "EffectManager/LxEffect.h"
#include "EffectManager/LxEffectBuilder.h"
#include "EffectManager/LxEffectTechnique.h"
#include "GPUResourceManager/D3D12/LxD3D12Format.h"
#include "GPUResourceManager/D3D12/LxD3D12IndexBuffer.h"
#include "GPUResourceManager/D3D12/LxD3D12VertexBuffer.h"
#include "RenderManager/D3D12/LxD3D12RenderManager.h"

#include <cfloat>
#include <cstring>

namespace
{
const LxD3D12StateName kFillModes[] = {
    {"POINT", D3D12_FILL_MODE_WIREFRAME}, // Direct3D 12 draws no point fill: wireframe is the nearest
    {"WIREFRAME", D3D12_FILL_MODE_WIREFRAME},
    {"SOLID", D3D12_FILL_MODE_SOLID},
    {nullptr, 0}};
const LxD3D12StateName kCullModes[] = {
    {"NONE", D3D12_CULL_MODE_NONE}, {"FRONT", D3D12_CULL_MODE_FRONT}, {"BACK", D3D12_CULL_MODE_BACK}, {nullptr, 0}};
const LxD3D12StateName kStencilOps[] = {{"KEEP", D3D12_STENCIL_OP_KEEP},
                                        {"ZERO", D3D12_STENCIL_OP_ZERO},
                                        {"REPLACE", D3D12_STENCIL_OP_REPLACE},
                                        {"INCRSAT", D3D12_STENCIL_OP_INCR_SAT},
                                        {"DECRSAT", D3D12_STENCIL_OP_DECR_SAT},
                                        {"INVERT", D3D12_STENCIL_OP_INVERT},
                                        {"INCR", D3D12_STENCIL_OP_INCR},
                                        {"DECR", D3D12_STENCIL_OP_DECR},
                                        {nullptr, 0}};
const LxD3D12StateName kBlends[] = {{"ZERO", D3D12_BLEND_ZERO},
                                    {"ONE", D3D12_BLEND_ONE},
                                    {"SRCCOLOR", D3D12_BLEND_SRC_COLOR},
                                    {"INVSRCCOLOR", D3D12_BLEND_INV_SRC_COLOR},
                                    {"SRCALPHA", D3D12_BLEND_SRC_ALPHA},
                                    {"INVSRCALPHA", D3D12_BLEND_INV_SRC_ALPHA},
                                    {"DESTALPHA", D3D12_BLEND_DEST_ALPHA},
                                    {"INVDESTALPHA", D3D12_BLEND_INV_DEST_ALPHA},
                                    {"DESTCOLOR", D3D12_BLEND_DEST_COLOR},
                                    {"INVDESTCOLOR", D3D12_BLEND_INV_DEST_COLOR},
                                    {"SRCALPHASAT", D3D12_BLEND_SRC_ALPHA_SAT},
                                    {"BLENDFACTOR", D3D12_BLEND_BLEND_FACTOR},
                                    {"INVBLENDFACTOR", D3D12_BLEND_INV_BLEND_FACTOR},
                                    {"SRC1COLOR", D3D12_BLEND_SRC1_COLOR},
                                    {"INVSRC1COLOR", D3D12_BLEND_INV_SRC1_COLOR},
                                    {"SRC1ALPHA", D3D12_BLEND_SRC1_ALPHA},
                                    {"INVSRC1ALPHA", D3D12_BLEND_INV_SRC1_ALPHA},
                                    {nullptr, 0}};
// The operation names keep the doubled S of the effect language.
const LxD3D12StateName kBlendOps[] = {{"ADD", D3D12_BLEND_OP_ADD},
                                      {"SUBSTRACT", D3D12_BLEND_OP_SUBTRACT},
                                      {"REVSUBSTRACT", D3D12_BLEND_OP_REV_SUBTRACT},
                                      {"FACTORMIN", D3D12_BLEND_OP_MIN},
                                      {"FACTORMAX", D3D12_BLEND_OP_MAX},
                                      {nullptr, 0}};
const LxD3D12StateName kTessellationModes[] = {{"CONTINUOUS", 0}, {"ADAPTIVE", 1}, {"DISABLED", 2}, {nullptr, 0}};
const LxD3D12StateName kTessellationPrimitives[] = {{"TRIANGLE", 0}, {"QUAD", 1}, {"LINE", 2}, {nullptr, 0}};
const LxD3D12StateName kTopologyTypes[] = {{"POINT", D3D12_PRIMITIVE_TOPOLOGY_TYPE_POINT},
                                           {"LINE", D3D12_PRIMITIVE_TOPOLOGY_TYPE_LINE},
                                           {"TRIANGLE", D3D12_PRIMITIVE_TOPOLOGY_TYPE_TRIANGLE},
                                           {"PATCH", D3D12_PRIMITIVE_TOPOLOGY_TYPE_PATCH},
                                           {nullptr, 0}};

enum ValueKind
{
    KIND_ENUM,
    KIND_BOOL,
    KIND_NUMBER, // an int; a float is accepted and truncated
    KIND_FLOAT,  // a float; an int is accepted
    KIND_VECTOR,
    KIND_FORMAT // an enum naming an LX_FORMAT_
};

enum StateId
{
    RS_FILL_MODE,
    RS_CULL_MODE,
    RS_Z_BIAS,
    RS_Z_BIAS_CLAMP,
    RS_SLOPE_SCALED_Z_BIAS,
    RS_DEPTH_CLIP,
    RS_MULTISAMPLE,
    RS_ANTIALIASED_LINE,
    RS_SAMPLE_MASK,
    RS_Z_ENABLE,
    RS_Z_WRITE_ENABLE,
    RS_Z_FUNC,
    RS_STENCIL_ENABLE,
    RS_STENCIL_READ_MASK,
    RS_STENCIL_WRITE_MASK,
    RS_STENCIL_FAIL_OP,
    RS_STENCIL_Z_FAIL_OP,
    RS_STENCIL_PASS_OP,
    RS_STENCIL_FUNC,
    RS_BACK_STENCIL_FAIL_OP,
    RS_BACK_STENCIL_Z_FAIL_OP,
    RS_BACK_STENCIL_PASS_OP,
    RS_BACK_STENCIL_FUNC,
    RS_STENCIL_REF,
    RS_STENCIL_OP_VALUE,
    RS_ALPHA_TO_COVERAGE,
    RS_BLEND_ENABLE,
    RS_SRC_BLEND,
    RS_DST_BLEND,
    RS_BLEND_OP,
    RS_SRC_BLEND_ALPHA,
    RS_DST_BLEND_ALPHA,
    RS_BLEND_OP_ALPHA,
    RS_COLOR_WRITE_R,
    RS_COLOR_WRITE_G,
    RS_COLOR_WRITE_B,
    RS_COLOR_WRITE_A,
    RS_BLEND_FACTOR,
    RS_ALPHA_TEST_ENABLE,
    RS_ALPHA_REF,
    RS_ALPHA_FUNC,
    RS_TESSELLATION_MODE,
    RS_TESSELLATION_PRIMITIVE,
    RS_TESSELLATION_SUPER_PRIM,
    RS_NUM_RENDER_TARGETS,
    RS_RENDER_TARGET_FORMAT,
    RS_DEPTH_STENCIL_FORMAT,
    RS_SAMPLE_COUNT,
    RS_SAMPLE_QUALITY,
    RS_TOPOLOGY_TYPE
};

struct StateInfo
{
    const char* name;
    StateId id;
    ValueKind kind;
    const LxD3D12StateName* values;
    bool perTarget; // takes a suffix 0-7 ("All" as well where allowsAll)
    bool allowsAll;
};

const StateInfo kStates[] = {
    {"FillMode", RS_FILL_MODE, KIND_ENUM, kFillModes, false, false},
    {"CullMode", RS_CULL_MODE, KIND_ENUM, kCullModes, false, false},
    {"ZBias", RS_Z_BIAS, KIND_NUMBER, nullptr, false, false},
    {"ZBiasClamp", RS_Z_BIAS_CLAMP, KIND_FLOAT, nullptr, false, false},
    {"SlopeScaledZBias", RS_SLOPE_SCALED_Z_BIAS, KIND_FLOAT, nullptr, false, false},
    {"DepthZClipEnable", RS_DEPTH_CLIP, KIND_BOOL, nullptr, false, false},
    {"DepthZClipNearEnable", RS_DEPTH_CLIP, KIND_BOOL, nullptr, false, false},
    {"DepthZClipFarEnable", RS_DEPTH_CLIP, KIND_BOOL, nullptr, false, false},
    {"MultisampleEnable", RS_MULTISAMPLE, KIND_BOOL, nullptr, false, false},
    {"AntialiasedLineEnable", RS_ANTIALIASED_LINE, KIND_BOOL, nullptr, false, false},
    {"SampleMask", RS_SAMPLE_MASK, KIND_NUMBER, nullptr, false, false},
    {"ZEnable", RS_Z_ENABLE, KIND_BOOL, nullptr, false, false},
    {"ZWriteEnable", RS_Z_WRITE_ENABLE, KIND_BOOL, nullptr, false, false},
    {"ZFunc", RS_Z_FUNC, KIND_ENUM, kLxD3D12ComparisonNames, false, false},
    {"StencilEnable", RS_STENCIL_ENABLE, KIND_BOOL, nullptr, false, false},
    {"StencilReadMask", RS_STENCIL_READ_MASK, KIND_NUMBER, nullptr, false, false},
    {"StencilWriteMask", RS_STENCIL_WRITE_MASK, KIND_NUMBER, nullptr, false, false},
    {"StencilFailOp", RS_STENCIL_FAIL_OP, KIND_ENUM, kStencilOps, false, false},
    {"StencilZFailOp", RS_STENCIL_Z_FAIL_OP, KIND_ENUM, kStencilOps, false, false},
    {"StencilPassOp", RS_STENCIL_PASS_OP, KIND_ENUM, kStencilOps, false, false},
    {"StencilFunc", RS_STENCIL_FUNC, KIND_ENUM, kLxD3D12ComparisonNames, false, false},
    {"BackStencilFailOp", RS_BACK_STENCIL_FAIL_OP, KIND_ENUM, kStencilOps, false, false},
    {"BackStencilZFailOp", RS_BACK_STENCIL_Z_FAIL_OP, KIND_ENUM, kStencilOps, false, false},
    {"BackStencilPassOp", RS_BACK_STENCIL_PASS_OP, KIND_ENUM, kStencilOps, false, false},
    {"BackStencilFunc", RS_BACK_STENCIL_FUNC, KIND_ENUM, kLxD3D12ComparisonNames, false, false},
    {"StencilRef", RS_STENCIL_REF, KIND_NUMBER, nullptr, false, false},
    {"StencilOpValue", RS_STENCIL_OP_VALUE, KIND_NUMBER, nullptr, false, false},
    {"BackStencilOpValue", RS_STENCIL_OP_VALUE, KIND_NUMBER, nullptr, false, false},
    {"AlphaToCoverage", RS_ALPHA_TO_COVERAGE, KIND_BOOL, nullptr, false, false},
    {"BlendEnable", RS_BLEND_ENABLE, KIND_BOOL, nullptr, true, true},
    {"SrcBlend", RS_SRC_BLEND, KIND_ENUM, kBlends, true, false},
    {"DstBlend", RS_DST_BLEND, KIND_ENUM, kBlends, true, false},
    {"BlendOp", RS_BLEND_OP, KIND_ENUM, kBlendOps, true, false},
    {"SrcBlendAlpha", RS_SRC_BLEND_ALPHA, KIND_ENUM, kBlends, true, false},
    {"DstBlendAlpha", RS_DST_BLEND_ALPHA, KIND_ENUM, kBlends, true, false},
    {"BlendOpAlpha", RS_BLEND_OP_ALPHA, KIND_ENUM, kBlendOps, true, false},
    {"ColorWriteEnableR", RS_COLOR_WRITE_R, KIND_BOOL, nullptr, true, true},
    {"ColorWriteEnableG", RS_COLOR_WRITE_G, KIND_BOOL, nullptr, true, true},
    {"ColorWriteEnableB", RS_COLOR_WRITE_B, KIND_BOOL, nullptr, true, true},
    {"ColorWriteEnableA", RS_COLOR_WRITE_A, KIND_BOOL, nullptr, true, true},
    {"BlendFactor", RS_BLEND_FACTOR, KIND_VECTOR, nullptr, false, false},
    {"AlphaTestEnable", RS_ALPHA_TEST_ENABLE, KIND_BOOL, nullptr, false, false},
    {"AlphaRef", RS_ALPHA_REF, KIND_FLOAT, nullptr, false, false},
    {"AlphaFunc", RS_ALPHA_FUNC, KIND_ENUM, kLxD3D12ComparisonNames, false, false},
    {"TessellationMode", RS_TESSELLATION_MODE, KIND_ENUM, kTessellationModes, false, false},
    {"TessellationPrimitiveType", RS_TESSELLATION_PRIMITIVE, KIND_ENUM, kTessellationPrimitives, false, false},
    {"TessellationUseSuperPrimIndices", RS_TESSELLATION_SUPER_PRIM, KIND_BOOL, nullptr, false, false},
    {"NumRenderTargets", RS_NUM_RENDER_TARGETS, KIND_NUMBER, nullptr, false, false},
    {"RenderTargetFormat", RS_RENDER_TARGET_FORMAT, KIND_FORMAT, nullptr, true, false},
    {"DepthStencilFormat", RS_DEPTH_STENCIL_FORMAT, KIND_FORMAT, nullptr, false, false},
    {"SampleCount", RS_SAMPLE_COUNT, KIND_NUMBER, nullptr, false, false},
    {"SampleQuality", RS_SAMPLE_QUALITY, KIND_NUMBER, nullptr, false, false},
    {"PrimitiveTopologyType", RS_TOPOLOGY_TYPE, KIND_ENUM, kTopologyTypes, false, false},
};

// The state `name` names, with its render-target suffix: -1 none, 0-7, 8 for "All".
const StateInfo* FindState(const LxString& name, int* target)
{
    *target = -1;
    for (const StateInfo& info : kStates)
    {
        const size_t length = std::strlen(info.name);
        if (std::strncmp(name.c_str(), info.name, length) != 0)
            continue;
        const char* suffix = name.c_str() + length;
        if (*suffix == '\0')
            return &info;
        if (!info.perTarget)
            continue;
        if (suffix[0] >= '0' && suffix[0] <= '7' && suffix[1] == '\0')
        {
            *target = suffix[0] - '0';
            return &info;
        }
        if (info.allowsAll && std::strcmp(suffix, "All") == 0)
        {
            *target = 8;
            return &info;
        }
    }
    return nullptr;
}

const char* KindWord(ValueKind kind)
{
    switch (kind)
    {
    case KIND_ENUM:
    case KIND_FORMAT:
        return "an enum";
    case KIND_BOOL:
        return "a bool";
    case KIND_NUMBER:
        return "an int or float";
    case KIND_FLOAT:
        return "a float";
    case KIND_VECTOR:
        return "a vector";
    }
    return "a";
}

// Whether `value` has a kind the state accepts; on a mismatch the message names the value's kind.
bool CheckKind(const char* what, const LxString& name, ValueKind kind, const LxStateValue& value, LxString* error)
{
    bool ok = false;
    switch (kind)
    {
    case KIND_ENUM:
    case KIND_FORMAT:
        ok = value.type == LxStateValue::TYPE_ENUM;
        break;
    case KIND_BOOL:
        ok = value.type == LxStateValue::TYPE_BOOL;
        break;
    case KIND_NUMBER:
    case KIND_FLOAT:
        ok = value.type == LxStateValue::TYPE_INT || value.type == LxStateValue::TYPE_FLOAT;
        break;
    case KIND_VECTOR:
        ok = value.type == LxStateValue::TYPE_VECTOR;
        break;
    }
    if (ok)
        return true;
    ValueKind given = KIND_ENUM;
    switch (value.type)
    {
    case LxStateValue::TYPE_ENUM:
        given = KIND_ENUM;
        break;
    case LxStateValue::TYPE_BOOL:
        given = KIND_BOOL;
        break;
    case LxStateValue::TYPE_INT:
        given = KIND_NUMBER;
        break;
    case LxStateValue::TYPE_FLOAT:
        given = KIND_FLOAT;
        break;
    case LxStateValue::TYPE_VECTOR:
        given = KIND_VECTOR;
        break;
    }
    error->Format("%s %s does not take %s parameter", what, name.c_str(), KindWord(given));
    return false;
}

float NumberOf(const LxStateValue& value)
{
    return value.type == LxStateValue::TYPE_INT ? float(value.intValue) : value.floatValue;
}

int IntOf(const LxStateValue& value)
{
    return value.type == LxStateValue::TYPE_INT ? value.intValue : int(value.floatValue);
}

const LxShaderType kGraphicsStages[] = {LX_VERTEX_SHADER, LX_GEOMETRY_SHADER, LX_PIXEL_SHADER, LX_HULL_SHADER,
                                        LX_DOMAIN_SHADER};

D3D12_SHADER_VISIBILITY VisibilityOf(LxShaderType type)
{
    switch (type)
    {
    case LX_VERTEX_SHADER:
        return D3D12_SHADER_VISIBILITY_VERTEX;
    case LX_GEOMETRY_SHADER:
        return D3D12_SHADER_VISIBILITY_GEOMETRY;
    case LX_PIXEL_SHADER:
        return D3D12_SHADER_VISIBILITY_PIXEL;
    case LX_HULL_SHADER:
        return D3D12_SHADER_VISIBILITY_HULL;
    case LX_DOMAIN_SHADER:
        return D3D12_SHADER_VISIBILITY_DOMAIN;
    default:
        return D3D12_SHADER_VISIBILITY_ALL;
    }
}

// Input-element formats by LxVertexElement::DataType; UNKNOWN where Direct3D has none.
const DXGI_FORMAT kElementFormats[LxVertexElement::NUM_DATA_TYPES] = {DXGI_FORMAT_R32_FLOAT,
                                                                      DXGI_FORMAT_R32G32_FLOAT,
                                                                      DXGI_FORMAT_R32G32B32_FLOAT,
                                                                      DXGI_FORMAT_R32G32B32A32_FLOAT,
                                                                      DXGI_FORMAT_R8G8B8A8_UINT,
                                                                      DXGI_FORMAT_R10G10B10A2_UNORM,
                                                                      DXGI_FORMAT_R16_FLOAT,
                                                                      DXGI_FORMAT_R16G16_FLOAT,
                                                                      DXGI_FORMAT_UNKNOWN, // half3
                                                                      DXGI_FORMAT_R16G16B16A16_FLOAT,
                                                                      DXGI_FORMAT_R10G10B10A2_UINT,
                                                                      DXGI_FORMAT_R16_SINT,
                                                                      DXGI_FORMAT_R16G16_SINT,
                                                                      DXGI_FORMAT_UNKNOWN, // short3
                                                                      DXGI_FORMAT_R16G16B16A16_SINT,
                                                                      DXGI_FORMAT_R8G8B8A8_UNORM,
                                                                      DXGI_FORMAT_R16G16_UNORM,
                                                                      DXGI_FORMAT_R16G16B16A16_UNORM,
                                                                      DXGI_FORMAT_R16G16_SNORM,
                                                                      DXGI_FORMAT_R16G16B16A16_SNORM,
                                                                      DXGI_FORMAT_R16G16_UINT,
                                                                      DXGI_FORMAT_R16G16B16A16_UINT,
                                                                      DXGI_FORMAT_R32G32B32A32_SINT,
                                                                      DXGI_FORMAT_R32G32B32A32_UINT,
                                                                      DXGI_FORMAT_R8G8_SINT,
                                                                      DXGI_FORMAT_R8G8_SNORM,
                                                                      DXGI_FORMAT_R8G8_UINT,
                                                                      DXGI_FORMAT_R8G8_UNORM,
                                                                      DXGI_FORMAT_R16_UINT,
                                                                      DXGI_FORMAT_R16_UNORM,
                                                                      DXGI_FORMAT_R16_SNORM,
                                                                      DXGI_FORMAT_R32_UINT,
                                                                      DXGI_FORMAT_R32_SINT,
                                                                      DXGI_FORMAT_UNKNOWN, // uintn
                                                                      DXGI_FORMAT_UNKNOWN, // intn
                                                                      DXGI_FORMAT_R32G32_UINT,
                                                                      DXGI_FORMAT_R32G32_SINT,
                                                                      DXGI_FORMAT_UNKNOWN,  // uint2n
                                                                      DXGI_FORMAT_UNKNOWN}; // int2n
} // namespace

// --- construction and states -----------------------------------------------------------------------------------------

LxD3D12EffectPass::LxD3D12EffectPass(const LxString& name, LxEffectTechnique* technique, LxEffectBuilder* reporter)
    : LxEffectPass(name, technique), m_pReporter(reporter)
{
    SetDefaults(&m_block);
}

LxD3D12EffectPass::~LxD3D12EffectPass()
{
    // A reload or an unload may drop a pass whose pipeline state frames still in flight draw with: the GPU
    // finishes what was submitted before the objects go.
    LxD3D12RenderManager* renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    if ((m_pPipelineState || m_pRootSignature) && renderManager && renderManager->IsInitialized())
        renderManager->WaitOnExecution();
    if (m_pPipelineState)
        m_pPipelineState->Release();
    if (m_pRootSignature)
        m_pRootSignature->Release();
}

void LxD3D12EffectPass::SetDefaults(PipelineStateBlock* block)
{
    std::memset(block, 0, sizeof(*block));
    D3D12_RASTERIZER_DESC& r = block->rasterizer;
    r.FillMode = D3D12_FILL_MODE_SOLID;
    r.CullMode = D3D12_CULL_MODE_NONE;
    r.FrontCounterClockwise = TRUE;
    r.DepthBias = 0;
    r.DepthBiasClamp = 0.0f;
    r.SlopeScaledDepthBias = 0.0f;
    r.DepthClipEnable = TRUE;
    r.MultisampleEnable = TRUE;
    r.AntialiasedLineEnable = FALSE;
    r.ForcedSampleCount = 0;
    r.ConservativeRaster = D3D12_CONSERVATIVE_RASTERIZATION_MODE_OFF;
    block->blend.AlphaToCoverageEnable = FALSE;
    block->blend.IndependentBlendEnable = FALSE;
    for (D3D12_RENDER_TARGET_BLEND_DESC& t : block->blend.RenderTarget)
    {
        t.BlendEnable = FALSE;
        t.LogicOpEnable = FALSE;
        t.SrcBlend = D3D12_BLEND_SRC_ALPHA;
        t.DestBlend = D3D12_BLEND_INV_SRC_ALPHA;
        t.BlendOp = D3D12_BLEND_OP_ADD;
        t.SrcBlendAlpha = D3D12_BLEND_SRC_ALPHA;
        t.DestBlendAlpha = D3D12_BLEND_INV_SRC_ALPHA;
        t.BlendOpAlpha = D3D12_BLEND_OP_ADD;
        t.LogicOp = D3D12_LOGIC_OP_NOOP;
        t.RenderTargetWriteMask = D3D12_COLOR_WRITE_ENABLE_ALL;
    }
    for (DXGI_FORMAT& f : block->renderTargetFormats)
        f = DXGI_FORMAT_R8G8B8A8_UNORM;
    D3D12_DEPTH_STENCIL_DESC& d = block->depthStencil;
    d.DepthEnable = TRUE;
    d.DepthWriteMask = D3D12_DEPTH_WRITE_MASK_ALL;
    d.DepthFunc = D3D12_COMPARISON_FUNC_LESS_EQUAL;
    d.StencilEnable = FALSE;
    d.StencilReadMask = 0xFF;
    d.StencilWriteMask = 0xFF;
    for (D3D12_DEPTH_STENCILOP_DESC* face : {&d.FrontFace, &d.BackFace})
    {
        face->StencilFailOp = D3D12_STENCIL_OP_KEEP;
        face->StencilDepthFailOp = D3D12_STENCIL_OP_KEEP;
        face->StencilPassOp = D3D12_STENCIL_OP_KEEP;
        face->StencilFunc = D3D12_COMPARISON_FUNC_ALWAYS;
    }
    block->depthStencilFormat = DXGI_FORMAT_D32_FLOAT;
    block->topologyType = D3D12_PRIMITIVE_TOPOLOGY_TYPE_TRIANGLE;
    block->numRenderTargets = 1;
    block->sampleDesc.Count = 1;
    block->sampleDesc.Quality = 0;
    block->sampleMask = 0xFFFFFFFFu;
    block->stencilRef = 0;
    for (float& f : block->blendFactor)
        f = 1.0f;
}

bool LxD3D12EffectPass::ApplyRenderState(const LxString& name, const LxStateValue& value, PipelineStateBlock* block,
                                         LxString* error)
{
    int target = -1;
    const StateInfo* info = FindState(name, &target);
    if (!info)
    {
        error->Format("Unknown render state: %s", name.c_str());
        return false;
    }
    if (!CheckKind("Render state", name, info->kind, value, error))
        return false;
    int e = 0;
    DXGI_FORMAT format = DXGI_FORMAT_UNKNOWN;
    if (info->kind == KIND_ENUM && !LxD3D12FindStateName(info->values, value.text, &e))
    {
        error->Format("Invalid parameter for render state %s: %s", name.c_str(), value.text.c_str());
        return false;
    }
    if (info->kind == KIND_FORMAT)
    {
        LxGPUResourceFormat lxFormat;
        if (!LxGetFormatFromName(value.text, &lxFormat))
        {
            error->Format("Invalid parameter for render state %s: %s", name.c_str(), value.text.c_str());
            return false;
        }
        format = LxGetDXGIFormat(lxFormat);
    }
    // The render targets a per-target state edits; one with a suffix other than 0 needs independent blending.
    const unsigned int first = target < 0 ? 0 : (target == 8 ? 0 : unsigned(target));
    const unsigned int last = target == 8 ? 7 : first;
    if (info->perTarget && first > 0 && info->id != RS_RENDER_TARGET_FORMAT)
        block->blend.IndependentBlendEnable = TRUE;
    D3D12_RASTERIZER_DESC& r = block->rasterizer;
    D3D12_DEPTH_STENCIL_DESC& d = block->depthStencil;
    const BOOL flag = value.boolValue ? TRUE : FALSE;
    for (unsigned int t = first; t <= last; ++t)
    {
        D3D12_RENDER_TARGET_BLEND_DESC& rt = block->blend.RenderTarget[t];
        const UINT8 channel = info->id == RS_COLOR_WRITE_R   ? D3D12_COLOR_WRITE_ENABLE_RED
                              : info->id == RS_COLOR_WRITE_G ? D3D12_COLOR_WRITE_ENABLE_GREEN
                              : info->id == RS_COLOR_WRITE_B ? D3D12_COLOR_WRITE_ENABLE_BLUE
                                                             : D3D12_COLOR_WRITE_ENABLE_ALPHA;
        switch (info->id)
        {
        case RS_BLEND_ENABLE:
            rt.BlendEnable = flag;
            break;
        case RS_SRC_BLEND:
            rt.SrcBlend = D3D12_BLEND(e);
            break;
        case RS_DST_BLEND:
            rt.DestBlend = D3D12_BLEND(e);
            break;
        case RS_BLEND_OP:
            rt.BlendOp = D3D12_BLEND_OP(e);
            break;
        case RS_SRC_BLEND_ALPHA:
            rt.SrcBlendAlpha = D3D12_BLEND(e);
            break;
        case RS_DST_BLEND_ALPHA:
            rt.DestBlendAlpha = D3D12_BLEND(e);
            break;
        case RS_BLEND_OP_ALPHA:
            rt.BlendOpAlpha = D3D12_BLEND_OP(e);
            break;
        case RS_COLOR_WRITE_R:
        case RS_COLOR_WRITE_G:
        case RS_COLOR_WRITE_B:
        case RS_COLOR_WRITE_A:
            rt.RenderTargetWriteMask = value.boolValue ? UINT8(rt.RenderTargetWriteMask | channel)
                                                       : UINT8(rt.RenderTargetWriteMask & ~channel);
            break;
        case RS_RENDER_TARGET_FORMAT:
            block->renderTargetFormats[t] = format;
            break;
        default:
            break;
        }
    }
    switch (info->id)
    {
    case RS_FILL_MODE:
        r.FillMode = D3D12_FILL_MODE(e);
        break;
    case RS_CULL_MODE:
        r.CullMode = D3D12_CULL_MODE(e);
        break;
    case RS_Z_BIAS:
        r.DepthBias = IntOf(value);
        break;
    case RS_Z_BIAS_CLAMP:
        r.DepthBiasClamp = NumberOf(value);
        break;
    case RS_SLOPE_SCALED_Z_BIAS:
        r.SlopeScaledDepthBias = NumberOf(value);
        break;
    case RS_DEPTH_CLIP:
        r.DepthClipEnable = flag;
        break;
    case RS_MULTISAMPLE:
        r.MultisampleEnable = flag;
        break;
    case RS_ANTIALIASED_LINE:
        r.AntialiasedLineEnable = flag;
        break;
    case RS_SAMPLE_MASK:
        block->sampleMask = unsigned(IntOf(value));
        break;
    case RS_Z_ENABLE:
        d.DepthEnable = flag;
        break;
    case RS_Z_WRITE_ENABLE:
        d.DepthWriteMask = value.boolValue ? D3D12_DEPTH_WRITE_MASK_ALL : D3D12_DEPTH_WRITE_MASK_ZERO;
        break;
    case RS_Z_FUNC:
        d.DepthFunc = D3D12_COMPARISON_FUNC(e);
        break;
    case RS_STENCIL_ENABLE:
        d.StencilEnable = flag;
        break;
    case RS_STENCIL_READ_MASK:
        d.StencilReadMask = UINT8(IntOf(value));
        break;
    case RS_STENCIL_WRITE_MASK:
        d.StencilWriteMask = UINT8(IntOf(value));
        break;
    case RS_STENCIL_FAIL_OP:
        d.FrontFace.StencilFailOp = D3D12_STENCIL_OP(e);
        break;
    case RS_STENCIL_Z_FAIL_OP:
        d.FrontFace.StencilDepthFailOp = D3D12_STENCIL_OP(e);
        break;
    case RS_STENCIL_PASS_OP:
        d.FrontFace.StencilPassOp = D3D12_STENCIL_OP(e);
        break;
    case RS_STENCIL_FUNC:
        d.FrontFace.StencilFunc = D3D12_COMPARISON_FUNC(e);
        break;
    case RS_BACK_STENCIL_FAIL_OP:
        d.BackFace.StencilFailOp = D3D12_STENCIL_OP(e);
        break;
    case RS_BACK_STENCIL_Z_FAIL_OP:
        d.BackFace.StencilDepthFailOp = D3D12_STENCIL_OP(e);
        break;
    case RS_BACK_STENCIL_PASS_OP:
        d.BackFace.StencilPassOp = D3D12_STENCIL_OP(e);
        break;
    case RS_BACK_STENCIL_FUNC:
        d.BackFace.StencilFunc = D3D12_COMPARISON_FUNC(e);
        break;
    case RS_STENCIL_REF:
        block->stencilRef = unsigned(IntOf(value));
        break;
    case RS_ALPHA_TO_COVERAGE:
        block->blend.AlphaToCoverageEnable = flag;
        break;
    case RS_BLEND_FACTOR:
        block->blendFactor[0] = value.vectorValue.x;
        block->blendFactor[1] = value.vectorValue.y;
        block->blendFactor[2] = value.vectorValue.z;
        block->blendFactor[3] = value.vectorValue.w;
        break;
    case RS_TESSELLATION_SUPER_PRIM:
        error->Format("TessellationUseSuperPrimIndices is deprecated in D3D12");
        return false;
    case RS_NUM_RENDER_TARGETS:
    {
        int count = IntOf(value);
        if (count > MAX_RENDER_TARGETS)
        {
            LX_WARNING("Num render targets > maximum: %d\n", int(MAX_RENDER_TARGETS));
            count = MAX_RENDER_TARGETS;
        }
        block->numRenderTargets = count < 0 ? 0u : unsigned(count);
        break;
    }
    case RS_DEPTH_STENCIL_FORMAT:
        block->depthStencilFormat = format;
        break;
    case RS_SAMPLE_COUNT:
        block->sampleDesc.Count = unsigned(IntOf(value));
        break;
    case RS_SAMPLE_QUALITY:
        block->sampleDesc.Quality = unsigned(IntOf(value));
        break;
    case RS_TOPOLOGY_TYPE:
        block->topologyType = D3D12_PRIMITIVE_TOPOLOGY_TYPE(e);
        break;
    default:
        // Alpha test, stencil-op values and the tessellator settings have no Direct3D 12 state: the shaders do it.
        break;
    }
    return true;
}

void LxD3D12EffectPass::Report(const LxString& message)
{
    if (m_pReporter)
        m_pReporter->ParseError("%s", message.c_str());
    else
        LX_ERROR("%s", message.c_str());
}

bool LxD3D12EffectPass::AddRenderState(const LxString& name, const LxStateValue& value)
{
    LxString error;
    if (!ApplyRenderState(name, value, &m_block, &error))
    {
        Report(error);
        return false;
    }
    return LxEffectPass::AddRenderState(name, value);
}

void LxD3D12EffectPass::CopyFrom(const LxEffectPass& other)
{
    LxEffectPass::CopyFrom(other);
    const LxD3D12EffectPass* d3d = dynamic_cast<const LxD3D12EffectPass*>(&other);
    if (d3d)
        m_block = d3d->m_block;
    else
    {
        // A generic pass: its recorded states replayed onto the defaults.
        SetDefaults(&m_block);
        LxString ignored;
        for (unsigned int i = 0; i < other.GetNumRenderStates(); ++i)
            ApplyRenderState(other.GetRenderState(i).name, other.GetRenderState(i).value, &m_block, &ignored);
    }
}

// --- finalization ----------------------------------------------------------------------------------------------------

const LxD3D12Shader* LxD3D12EffectPass::GetD3D12Shader(LxShaderType type) const
{
    return dynamic_cast<const LxD3D12Shader*>(GetShader(type).Get());
}

bool LxD3D12EffectPass::CreateRootSignature(ID3D12Device* device, const LxShaderType* stages, unsigned int numStages,
                                            unsigned int firstUAVRegister)
{
    m_rootParameters.Clear();
    LxArray<D3D12_ROOT_PARAMETER> params;
    LxArray<D3D12_DESCRIPTOR_RANGE> ranges;
    ranges.Reserve(numStages * 3); // pointers into it are taken below: it must not move
    for (int kind = ROOT_CBV; kind <= ROOT_SAMPLER_TABLE; ++kind)
    {
        for (unsigned int s = 0; s < numStages; ++s)
        {
            const LxD3D12Shader* shader = GetD3D12Shader(stages[s]);
            if (!shader)
                continue;
            D3D12_ROOT_PARAMETER p = {};
            p.ShaderVisibility = VisibilityOf(stages[s]);
            if (kind == ROOT_CBV)
            {
                for (unsigned int i = 0; i < shader->GetConstantBuffers().GetCount(); ++i)
                {
                    p.ParameterType = D3D12_ROOT_PARAMETER_TYPE_CBV;
                    p.Descriptor.ShaderRegister = shader->GetConstantBuffers()[i].reg;
                    p.Descriptor.RegisterSpace = 0;
                    params.Add(p);
                    m_rootParameters.Add(RootParameter{ROOT_CBV, shader, i});
                }
                continue;
            }
            // UAV registers below the first one belong to the render targets; the table starts after them.
            const unsigned int uavs = shader->GetUAVs().GetCount();
            const unsigned int count = kind == ROOT_SRV_TABLE ? shader->GetTextures().GetCount()
                                       : kind == ROOT_UAV_TABLE
                                           ? (uavs > firstUAVRegister ? uavs - firstUAVRegister : 0)
                                           : shader->GetSamplers().GetCount();
            if (count == 0)
                continue;
            D3D12_DESCRIPTOR_RANGE range = {};
            range.RangeType = kind == ROOT_SRV_TABLE   ? D3D12_DESCRIPTOR_RANGE_TYPE_SRV
                              : kind == ROOT_UAV_TABLE ? D3D12_DESCRIPTOR_RANGE_TYPE_UAV
                                                       : D3D12_DESCRIPTOR_RANGE_TYPE_SAMPLER;
            range.NumDescriptors = count;
            range.BaseShaderRegister = kind == ROOT_UAV_TABLE ? firstUAVRegister : 0;
            range.OffsetInDescriptorsFromTableStart = 0;
            ranges.Add(range);
            p.ParameterType = D3D12_ROOT_PARAMETER_TYPE_DESCRIPTOR_TABLE;
            p.DescriptorTable.NumDescriptorRanges = 1;
            p.DescriptorTable.pDescriptorRanges = &ranges[ranges.GetCount() - 1];
            params.Add(p);
            m_rootParameters.Add(RootParameter{RootKind(kind), shader, kind == ROOT_UAV_TABLE ? firstUAVRegister : 0});
        }
    }
    D3D12_ROOT_SIGNATURE_DESC desc = {};
    desc.NumParameters = params.GetCount();
    desc.pParameters = params.GetData();
    desc.Flags = D3D12_ROOT_SIGNATURE_FLAG_ALLOW_INPUT_ASSEMBLER_INPUT_LAYOUT;
    ID3DBlob* blob = nullptr;
    ID3DBlob* errors = nullptr;
    HRESULT hr = D3D12SerializeRootSignature(&desc, D3D_ROOT_SIGNATURE_VERSION_1, &blob, &errors);
    if (errors)
        errors->Release();
    if (FAILED(hr))
    {
        LX_ERROR("D3D12SerializeRootSignature failed. ret=%x\n", unsigned(hr));
        return false;
    }
    hr = device->CreateRootSignature(0, blob->GetBufferPointer(), blob->GetBufferSize(),
                                     IID_PPV_ARGS(&m_pRootSignature));
    blob->Release();
    if (FAILED(hr))
    {
        LX_ERROR("D3D12 CreateRootSignature failed. ret=%x\n", unsigned(hr));
        m_pRootSignature = nullptr;
        return false;
    }
    return true;
}

bool LxD3D12EffectPass::Finalize(ID3D12Device* device)
{
    const bool ok = FinalizeGraphics(device);
    m_pReporter = nullptr;
    return ok;
}

bool LxD3D12EffectPass::BuildStreamOutput(LxArray<D3D12_SO_DECLARATION_ENTRY>* entries, LxArray<UINT>* strides,
                                          LxArray<LxString>* semantics)
{
    // Map i feeds stream i; each vertex stream of a map is one output slot. Maps come in order: no gaps.
    bool gap = false;
    unsigned int total = 0;
    for (unsigned int i = 0; i < MAX_STREAM_OUT_MAPS; ++i)
    {
        const LxStreamMap* map = GetStreamOutMap(i);
        for (unsigned int j = 0; map && j < map->GetNumStreams(); ++j)
            total += map->GetStreamDecl(j) ? map->GetStreamDecl(j)->GetNumElements() : 0;
    }
    semantics->Reserve(total); // the entries point into it
    for (unsigned int i = 0; i < MAX_STREAM_OUT_MAPS; ++i)
    {
        const LxStreamMap* map = GetStreamOutMap(i);
        if (!map)
        {
            gap = true;
            continue;
        }
        if (gap)
        {
            Report("Gap found in SO stream maps.  SO stream maps must be assigned in order (0, then 1, then 2, etc)");
            return false;
        }
        if (map->GetNumStreams() > D3D12_SO_BUFFER_SLOT_COUNT)
        {
            Report("Too many streams in Stream out StreamMap");
            return false;
        }
        for (unsigned int j = 0; j < map->GetNumStreams(); ++j)
        {
            const LxVertexStreamDecl* decl = map->GetStreamDecl(j);
            if (!decl)
            {
                LxString message;
                message.Format("Error creating stream output declaration for SO stream map: %u", i);
                Report(message);
                return false;
            }
            while (strides->GetCount() <= j)
                strides->Add(0);
            (*strides)[j] = decl->GetStride();
            for (unsigned int e = 0; e < decl->GetNumElements(); ++e)
            {
                const LxVertexElement* element = decl->GetElement(e);
                LxString semantic;
                unsigned int index = 0;
                element->GetSemantic(&semantic, &index);
                semantics->Add(semantic);
                D3D12_SO_DECLARATION_ENTRY entry = {};
                entry.Stream = i;
                entry.SemanticName = (*semantics)[semantics->GetCount() - 1].c_str();
                entry.SemanticIndex = index;
                entry.StartComponent = 0;
                entry.ComponentCount = static_cast<BYTE>(element->GetComponentCount());
                entry.OutputSlot = static_cast<BYTE>(j);
                entries->Add(entry);
            }
        }
    }
    return true;
}

bool LxD3D12EffectPass::FinalizeGraphics(ID3D12Device* device)
{
    if (!device)
    {
        LX_ERROR("LxD3D12EffectPass::Finalize.  No Direct3D 12 device");
        return false;
    }
    LxArray<D3D12_SO_DECLARATION_ENTRY> soEntries;
    LxArray<UINT> soStrides;
    LxArray<LxString> soSemantics;
    if (!BuildStreamOutput(&soEntries, &soStrides, &soSemantics))
        return false;
    if (!CreateRootSignature(device, kGraphicsStages, 5, m_block.numRenderTargets))
        return false;

    // Input layout from the stream map: stream i is input slot i.
    LxArray<D3D12_INPUT_ELEMENT_DESC> elements;
    LxArray<LxString> semantics;
    LxStreamMap* map = GetStreamMap();
    if (map)
    {
        unsigned int total = 0;
        for (unsigned int i = 0; i < map->GetNumStreams(); ++i)
        {
            const LxVertexStreamDecl* decl = map->GetStreamDecl(i);
            total += decl ? decl->GetNumElements() : 0;
        }
        semantics.Reserve(total); // the element descriptions point into it
        for (unsigned int i = 0; i < map->GetNumStreams(); ++i)
        {
            const LxVertexStreamDecl* decl = map->GetStreamDecl(i);
            if (!decl)
            {
                LX_ERROR("Invalid stream name in stream map");
                return false;
            }
            const bool instanced = map->IsStreamInstanced(i);
            unsigned int offset = 0;
            for (unsigned int e = 0; e < decl->GetNumElements(); ++e)
            {
                const LxVertexElement* element = decl->GetElement(e);
                LxString semantic;
                unsigned int index = 0;
                element->GetSemantic(&semantic, &index);
                semantics.Add(semantic);
                D3D12_INPUT_ELEMENT_DESC desc = {};
                desc.SemanticName = semantics[semantics.GetCount() - 1].c_str();
                desc.SemanticIndex = index;
                desc.Format = unsigned(element->GetDataType()) < LxVertexElement::NUM_DATA_TYPES
                                  ? kElementFormats[element->GetDataType()]
                                  : DXGI_FORMAT_UNKNOWN;
                desc.InputSlot = i;
                desc.AlignedByteOffset = offset;
                desc.InputSlotClass = instanced ? D3D12_INPUT_CLASSIFICATION_PER_INSTANCE_DATA
                                                : D3D12_INPUT_CLASSIFICATION_PER_VERTEX_DATA;
                desc.InstanceDataStepRate = instanced ? 1 : 0;
                elements.Add(desc);
                offset += element->GetSize();
            }
        }
    }

    m_bUsesBlendFactor = false;
    for (const D3D12_RENDER_TARGET_BLEND_DESC& t : m_block.blend.RenderTarget)
    {
        for (D3D12_BLEND b : {t.SrcBlend, t.DestBlend, t.SrcBlendAlpha, t.DestBlendAlpha})
            m_bUsesBlendFactor =
                m_bUsesBlendFactor ||
                (t.BlendEnable && (b == D3D12_BLEND_BLEND_FACTOR || b == D3D12_BLEND_INV_BLEND_FACTOR));
    }

    D3D12_GRAPHICS_PIPELINE_STATE_DESC desc = {};
    desc.pRootSignature = m_pRootSignature;
    const LxD3D12Shader* vs = GetD3D12Shader(LX_VERTEX_SHADER);
    const LxD3D12Shader* gs = GetD3D12Shader(LX_GEOMETRY_SHADER);
    const LxD3D12Shader* ps = GetD3D12Shader(LX_PIXEL_SHADER);
    const LxD3D12Shader* hs = GetD3D12Shader(LX_HULL_SHADER);
    const LxD3D12Shader* ds = GetD3D12Shader(LX_DOMAIN_SHADER);
    if (vs)
        desc.VS = vs->GetD3D12ByteCode();
    if (gs)
        desc.GS = gs->GetD3D12ByteCode();
    if (ps)
        desc.PS = ps->GetD3D12ByteCode();
    if (hs)
        desc.HS = hs->GetD3D12ByteCode();
    if (ds)
        desc.DS = ds->GetD3D12ByteCode();
    desc.StreamOutput.pSODeclaration = soEntries.GetData();
    desc.StreamOutput.NumEntries = soEntries.GetCount();
    desc.StreamOutput.pBufferStrides = soStrides.GetData();
    desc.StreamOutput.NumStrides = soStrides.GetCount();
    desc.StreamOutput.RasterizedStream = 0;
    desc.BlendState = m_block.blend;
    desc.SampleMask = m_block.sampleMask;
    desc.RasterizerState = m_block.rasterizer;
    desc.DepthStencilState = m_block.depthStencil;
    desc.InputLayout.pInputElementDescs = elements.GetData();
    desc.InputLayout.NumElements = elements.GetCount();
    desc.IBStripCutValue = D3D12_INDEX_BUFFER_STRIP_CUT_VALUE_DISABLED;
    desc.PrimitiveTopologyType = m_block.topologyType;
    desc.NumRenderTargets = m_block.numRenderTargets;
    for (unsigned int i = 0; i < m_block.numRenderTargets && i < MAX_RENDER_TARGETS; ++i)
        desc.RTVFormats[i] = m_block.renderTargetFormats[i];
    desc.DSVFormat = m_block.depthStencilFormat;
    desc.SampleDesc = m_block.sampleDesc;
    const HRESULT hr = device->CreateGraphicsPipelineState(&desc, IID_PPV_ARGS(&m_pPipelineState));
    if (FAILED(hr))
    {
        LX_ERROR("CreateGraphicsPipelineState failed. ret=%x\n", unsigned(hr));
        m_pPipelineState = nullptr;
        return false;
    }
    return true;
}

// --- drawing ---------------------------------------------------------------------------------------------------------

bool LxD3D12EffectPass::BindRootParameters(ID3D12GraphicsCommandList* list, LxEffect& effect, bool compute,
                                           const char* who)
{
    bool ok = true;
    for (unsigned int i = 0; i < m_rootParameters.GetCount(); ++i)
    {
        const RootParameter& p = m_rootParameters[i];
        if (p.kind == ROOT_CBV)
        {
            const D3D12_GPU_VIRTUAL_ADDRESS address =
                LxConstantBufferCache::Upload(*p.shader->GetConstantBuffers()[p.index].buffer);
            if (!address)
            {
                ok = false;
                continue;
            }
            if (compute)
                list->SetComputeRootConstantBufferView(i, address);
            else
                list->SetGraphicsRootConstantBufferView(i, address);
            continue;
        }
        D3D12_GPU_DESCRIPTOR_HANDLE table = {0};
        bool bound = false;
        if (p.kind == ROOT_SRV_TABLE)
            bound = LxD3D12DescriptorBinding::BindTextures(effect, p.shader->GetTextures(), who, list, &table);
        else if (p.kind == ROOT_UAV_TABLE)
            bound = LxD3D12DescriptorBinding::BindUAVs(effect, p.shader->GetUAVs(), p.index, who, list, &table);
        else
            bound = LxD3D12DescriptorBinding::BindSamplers(p.shader->GetSamplers(), &table);
        if (!bound)
        {
            ok = false;
            continue;
        }
        if (compute)
            list->SetComputeRootDescriptorTable(i, table);
        else
            list->SetGraphicsRootDescriptorTable(i, table);
    }
    return ok;
}

bool LxD3D12EffectPass::Bind(LxEffect& effect)
{
    LxD3D12RenderManager* renderManager = LxD3D12RenderManager::GetD3D12Ptr();
    ID3D12GraphicsCommandList* list = renderManager ? renderManager->GetCurrentD3D12CommandList() : nullptr;
    if (!list || !m_pPipelineState || !m_pRootSignature)
    {
        LX_ERROR("LxD3D12EffectPass::Bind.  No command list to record on, or the pass was not finalized");
        return false;
    }
    list->SetGraphicsRootSignature(m_pRootSignature);
    list->SetPipelineState(m_pPipelineState);
    // Blend factor and stencil reference are list state, not pipeline state: set only by passes that read them.
    if (m_bUsesBlendFactor)
        list->OMSetBlendFactor(m_block.blendFactor);
    if (m_block.depthStencil.StencilEnable)
        list->OMSetStencilRef(m_block.stencilRef);
    bool ok = BindRootParameters(list, effect, false, "LxD3D12EffectPass");

    LxStreamMap* map = GetStreamMap();
    if (map && map->GetNumStreams() > 0)
    {
        D3D12_VERTEX_BUFFER_VIEW views[D3D12_IA_VERTEX_INPUT_RESOURCE_SLOT_COUNT] = {};
        const unsigned int count = map->GetNumStreams() < D3D12_IA_VERTEX_INPUT_RESOURCE_SLOT_COUNT
                                       ? map->GetNumStreams()
                                       : D3D12_IA_VERTEX_INPUT_RESOURCE_SLOT_COUNT;
        for (unsigned int i = 0; i < count; ++i)
        {
            const LxVertexStreamDecl* decl = map->GetStreamDecl(i);
            unsigned int offset = 0;
            LxCountedPtr<LxGPUVertexBuffer> buffer = decl ? effect.GetBoundVertexBuffer(decl, &offset) : nullptr;
            const LxD3D12VertexBuffer* vb = dynamic_cast<const LxD3D12VertexBuffer*>(buffer.Get());
            if (vb && offset < vb->GetSize())
            {
                views[i].BufferLocation = vb->GetGPUAddress() + offset;
                views[i].SizeInBytes = vb->GetSize() - offset;
                views[i].StrideInBytes = decl->GetStride();
            }
        }
        list->IASetVertexBuffers(0, count, views);
    }
    const LxD3D12IndexBuffer* ib = dynamic_cast<const LxD3D12IndexBuffer*>(effect.GetBoundIndexBuffer().Get());
    if (ib)
    {
        D3D12_INDEX_BUFFER_VIEW view;
        view.BufferLocation = ib->GetGPUAddress();
        view.SizeInBytes = ib->GetSize();
        view.Format = ib->GetIndexSize() == 2 ? DXGI_FORMAT_R16_UINT : DXGI_FORMAT_R32_UINT;
        list->IASetIndexBuffer(&view);
    }
    return ok;
}

void LxD3D12EffectPass::Unbind(LxEffect& effect)
{
    (void)effect;
}
