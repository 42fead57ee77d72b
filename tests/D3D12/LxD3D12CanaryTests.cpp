// Canary for the Windows lane: a real Direct3D 12 device and real shader compiles and reflection, independent of the
// library. It guards the lane itself (Wine, vkd3d, lavapipe, the cross toolchain's headers and import libraries):
// when it fails, the platform moved, not our code. Drawing, presenting and reading back are the render manager's
// own tests. Nothing here may be skipped.
#include "D3D12/LxD3D12TestHelpers.h"

#include <d3d12shader.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>

using LxD3D12Test::ComPtr;

namespace
{
// One source, two entry points sharing Shade(): the compiler must emit the helper into both stages. The first
// constant buffer is laid out by hand (packoffset down to single components), the second by the default
// packing rules, whose traps the C++ mirrors below spell out.
const char* const kCanarySource = R"hlsl(
cbuffer CanaryConstants : register(b0)
{
    float4 g_Tint       : packoffset(c0);
    float  g_Scale      : packoffset(c1.y);
    float2 g_Offset     : packoffset(c1.z);
    float4 g_Weights[2] : packoffset(c2);
    float  g_Depth      : packoffset(c4.x);
};

cbuffer CanaryShared : register(b1)
{
    float3 g_Axis;
    float  g_Bias;
    float2 g_Nudge;
    float  g_Gains[3];
    float  g_DepthBias;
};

struct VSOutput
{
    float4 position : SV_Position;
    float4 color    : COLOR0;
};

float4 Shade(float4 base, int stage)
{
    return saturate(base * g_Weights[stage] * g_Gains[stage] + float4(g_Axis * g_Bias, 0.0));
}

static const float2 kCorners[3] = { float2(-1.0, -1.0), float2(0.0, 1.0), float2(1.0, -1.0) };

VSOutput VSMain(uint vertexId : SV_VertexID)
{
    VSOutput o;
    o.position = float4(kCorners[vertexId] * g_Scale + g_Offset + g_Nudge, g_Depth + g_DepthBias, 1.0);
    o.color = Shade(g_Tint, 0);
    return o;
}

float4 PSMain(VSOutput i) : SV_Target
{
    return Shade(i.color, 1);
}
)hlsl";

// CPU mirrors of the two constant buffers; the reflection test ties every offset below to what the compiler
// reports, so a drift on either side fails there rather than as a wrong colour.
struct CanaryConstants
{
    float tint[4];       // c0
    float unused0;       // c1.x: left free by packoffset(c1.y)
    float scale;         // c1.y
    float offset[2];     // c1.zw
    float weights[2][4]; // c2, c3
    float depth;         // c4.x
    float tail[3];       // pads the buffer to whole registers
};
static_assert(offsetof(CanaryConstants, scale) == 20, "g_Scale sits at c1.y");
static_assert(offsetof(CanaryConstants, offset) == 24, "g_Offset sits at c1.z");
static_assert(offsetof(CanaryConstants, weights) == 32, "g_Weights starts at c2");
static_assert(offsetof(CanaryConstants, depth) == 64, "g_Depth sits at c4.x");
static_assert(sizeof(CanaryConstants) == 80, "five registers");

struct CanaryShared
{
    float axis[3];  // 0
    float bias;     // 12: a scalar packs into the float3's register
    float nudge[2]; // 16
    float unused0[2];
    // float g_Gains[3]: every element starts a register (32, 48, 64), but the last one ends after its own float,
    // so the next variable packs behind it at 68 instead of at 80. Only gains[0], [4] and [8] are elements.
    float gains[9];
    float depthBias; // 68
    float tail[2];
};
static_assert(offsetof(CanaryShared, bias) == 12, "g_Bias packs behind g_Axis");
static_assert(offsetof(CanaryShared, nudge) == 16, "g_Nudge starts c1");
static_assert(offsetof(CanaryShared, gains) == 32, "g_Gains starts c2");
static_assert(offsetof(CanaryShared, depthBias) == 68, "g_DepthBias packs into the last element's register");
static_assert(sizeof(CanaryShared) == 80, "five registers");

struct ExpectedVariable
{
    const char* name;
    UINT offset;
    UINT size;
    D3D_SHADER_VARIABLE_CLASS varClass;
    UINT columns;
    UINT elements;
};

void ExpectConstantBuffer(ID3D12ShaderReflection* reflection, const char* name, UINT bindPoint, UINT size,
                          const std::initializer_list<ExpectedVariable>& variables)
{
    SCOPED_TRACE(name);
    ID3D12ShaderReflectionConstantBuffer* cb = reflection->GetConstantBufferByName(name);
    ASSERT_NE(cb, nullptr);
    D3D12_SHADER_BUFFER_DESC cbDesc = {};
    ASSERT_HRESULT_SUCCEEDED(cb->GetDesc(&cbDesc)); // fails for the null object returned for an unknown name
    EXPECT_STREQ(cbDesc.Name, name);
    EXPECT_EQ(cbDesc.Type, D3D_CT_CBUFFER);
    EXPECT_EQ(cbDesc.Size, size);
    ASSERT_EQ(cbDesc.Variables, static_cast<UINT>(variables.size()));

    UINT index = 0;
    for (const ExpectedVariable& expected : variables)
    {
        SCOPED_TRACE(expected.name);
        ID3D12ShaderReflectionVariable* var = cb->GetVariableByIndex(index++);
        ASSERT_NE(var, nullptr);
        D3D12_SHADER_VARIABLE_DESC varDesc = {};
        ASSERT_HRESULT_SUCCEEDED(var->GetDesc(&varDesc));
        EXPECT_STREQ(varDesc.Name, expected.name);
        EXPECT_EQ(varDesc.StartOffset, expected.offset);
        EXPECT_EQ(varDesc.Size, expected.size);
        D3D12_SHADER_TYPE_DESC typeDesc = {};
        ASSERT_HRESULT_SUCCEEDED(var->GetType()->GetDesc(&typeDesc));
        EXPECT_EQ(typeDesc.Class, expected.varClass);
        EXPECT_EQ(typeDesc.Type, D3D_SVT_FLOAT);
        EXPECT_EQ(typeDesc.Columns, expected.columns);
        EXPECT_EQ(typeDesc.Elements, expected.elements);
        // Lookup by name must find the same variable as lookup by index.
        D3D12_SHADER_VARIABLE_DESC byName = {};
        ASSERT_HRESULT_SUCCEEDED(cb->GetVariableByName(expected.name)->GetDesc(&byName));
        EXPECT_EQ(byName.StartOffset, varDesc.StartOffset);
    }

    D3D12_SHADER_INPUT_BIND_DESC bind = {};
    ASSERT_HRESULT_SUCCEEDED(reflection->GetResourceBindingDescByName(name, &bind));
    EXPECT_EQ(bind.Type, D3D_SIT_CBUFFER);
    EXPECT_EQ(bind.BindPoint, bindPoint);
    EXPECT_EQ(bind.BindCount, 1u);
    EXPECT_EQ(bind.Space, 0u);
}

void ExpectCanaryLayout(ID3D12ShaderReflection* reflection)
{
    D3D12_SHADER_DESC desc = {};
    ASSERT_HRESULT_SUCCEEDED(reflection->GetDesc(&desc));
    EXPECT_EQ(desc.ConstantBuffers, 2u);
    EXPECT_EQ(desc.BoundResources, 2u);
    ExpectConstantBuffer(reflection, "CanaryConstants", 0, sizeof(CanaryConstants),
                         {{"g_Tint", 0, 16, D3D_SVC_VECTOR, 4, 0},
                          {"g_Scale", offsetof(CanaryConstants, scale), 4, D3D_SVC_SCALAR, 1, 0},
                          {"g_Offset", offsetof(CanaryConstants, offset), 8, D3D_SVC_VECTOR, 2, 0},
                          {"g_Weights", offsetof(CanaryConstants, weights), 32, D3D_SVC_VECTOR, 4, 2},
                          {"g_Depth", offsetof(CanaryConstants, depth), 4, D3D_SVC_SCALAR, 1, 0}});
    ExpectConstantBuffer(reflection, "CanaryShared", 1, sizeof(CanaryShared),
                         {{"g_Axis", 0, 12, D3D_SVC_VECTOR, 3, 0},
                          {"g_Bias", offsetof(CanaryShared, bias), 4, D3D_SVC_SCALAR, 1, 0},
                          {"g_Nudge", offsetof(CanaryShared, nudge), 8, D3D_SVC_VECTOR, 2, 0},
                          // two full registers and one float
                          {"g_Gains", offsetof(CanaryShared, gains), 36, D3D_SVC_SCALAR, 1, 3},
                          {"g_DepthBias", offsetof(CanaryShared, depthBias), 4, D3D_SVC_SCALAR, 1, 0}});
}

// The shader version word: program type in the high 16 bits, major version in bits 4-7 (mingw's d3d12shader.h
// lacks the D3D12_SHVER_GET_* macros).
UINT ShaderType(UINT version)
{
    return version >> 16;
}
UINT ShaderMajor(UINT version)
{
    return (version >> 4) & 0xF;
}

ComPtr<ID3D12ShaderReflection> Reflect(ID3DBlob* code)
{
    ComPtr<ID3D12ShaderReflection> reflection;
    if (FAILED(D3DReflect(code->GetBufferPointer(), code->GetBufferSize(), IID_PPV_ARGS(&reflection))))
        return nullptr;
    return reflection;
}

// ---------------------------------------------------------------------------------------------------------------
// Device

TEST(D3D12CanaryDevice, CreatesFactoryAndDeviceAtFeatureLevel11_0)
{
    ComPtr<IDXGIFactory4> factory;
    ASSERT_HRESULT_SUCCEEDED(CreateDXGIFactory2(0, IID_PPV_ARGS(&factory)));
    ComPtr<IDXGIAdapter1> adapter;
    ASSERT_HRESULT_SUCCEEDED(factory->EnumAdapters1(0, &adapter));
    DXGI_ADAPTER_DESC1 adapterDesc = {};
    ASSERT_HRESULT_SUCCEEDED(adapter->GetDesc1(&adapterDesc)); // its contents are made up under Wine
    // Past the last adapter the enumeration ends with DXGI_ERROR_NOT_FOUND, the loop end the window manager uses.
    UINT count = 0;
    for (ComPtr<IDXGIAdapter1> a; factory->EnumAdapters1(count, &a) != DXGI_ERROR_NOT_FOUND; a.Reset())
        ASSERT_LT(++count, 64u);
    EXPECT_GE(count, 1u);

    ComPtr<ID3D12Device> device;
    ASSERT_HRESULT_SUCCEEDED(D3D12CreateDevice(adapter.Get(), D3D_FEATURE_LEVEL_11_0, IID_PPV_ARGS(&device)));
    ASSERT_NE(device, nullptr);

    const D3D_FEATURE_LEVEL asked[] = {D3D_FEATURE_LEVEL_11_0, D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_12_0,
                                       D3D_FEATURE_LEVEL_12_1};
    D3D12_FEATURE_DATA_FEATURE_LEVELS levels = {};
    levels.NumFeatureLevels = static_cast<UINT>(std::size(asked));
    levels.pFeatureLevelsRequested = asked;
    ASSERT_HRESULT_SUCCEEDED(device->CheckFeatureSupport(D3D12_FEATURE_FEATURE_LEVELS, &levels, sizeof(levels)));
    EXPECT_GE(levels.MaxSupportedFeatureLevel, D3D_FEATURE_LEVEL_11_0);

    // The device answers for the adapter it was made on.
    const LUID luid = device->GetAdapterLuid();
    EXPECT_EQ(luid.LowPart, adapterDesc.AdapterLuid.LowPart);
    EXPECT_EQ(luid.HighPart, adapterDesc.AdapterLuid.HighPart);
    EXPECT_EQ(device->GetNodeCount(), 1u);
    EXPECT_GT(device->GetDescriptorHandleIncrementSize(D3D12_DESCRIPTOR_HEAP_TYPE_RTV), 0u);
}

// ---------------------------------------------------------------------------------------------------------------
// Shader compile and reflection

TEST(D3D12CanaryShaders, CompilesSharedHelperIntoBothStagesAndReflectsConstantBuffers)
{
    std::string errors;
    ComPtr<ID3DBlob> vs = LxD3D12Test::CompileShader(kCanarySource, "VSMain", "vs_5_0", &errors);
    ASSERT_NE(vs, nullptr) << errors;
    ComPtr<ID3DBlob> ps = LxD3D12Test::CompileShader(kCanarySource, "PSMain", "ps_5_0", &errors);
    ASSERT_NE(ps, nullptr) << errors;

    ComPtr<ID3D12ShaderReflection> vsReflection = Reflect(vs.Get());
    ComPtr<ID3D12ShaderReflection> psReflection = Reflect(ps.Get());
    ASSERT_NE(vsReflection, nullptr);
    ASSERT_NE(psReflection, nullptr);
    {
        SCOPED_TRACE("vertex shader");
        ExpectCanaryLayout(vsReflection.Get());
    }
    {
        SCOPED_TRACE("pixel shader");
        ExpectCanaryLayout(psReflection.Get());
    }

    D3D12_SHADER_DESC vsDesc = {};
    ASSERT_HRESULT_SUCCEEDED(vsReflection->GetDesc(&vsDesc));
    EXPECT_EQ(ShaderType(vsDesc.Version), UINT(D3D12_SHVER_VERTEX_SHADER));
    EXPECT_EQ(ShaderMajor(vsDesc.Version), 5u);
    ASSERT_EQ(vsDesc.InputParameters, 1u);
    ASSERT_EQ(vsDesc.OutputParameters, 2u);
    D3D12_SIGNATURE_PARAMETER_DESC param = {};
    ASSERT_HRESULT_SUCCEEDED(vsReflection->GetInputParameterDesc(0, &param));
    EXPECT_EQ(param.SystemValueType, D3D_NAME_VERTEX_ID);
    ASSERT_HRESULT_SUCCEEDED(vsReflection->GetOutputParameterDesc(0, &param));
    EXPECT_EQ(param.SystemValueType, D3D_NAME_POSITION);
    ASSERT_HRESULT_SUCCEEDED(vsReflection->GetOutputParameterDesc(1, &param));
    EXPECT_STREQ(param.SemanticName, "COLOR");
    EXPECT_EQ(param.SemanticIndex, 0u);

    D3D12_SHADER_DESC psDesc = {};
    ASSERT_HRESULT_SUCCEEDED(psReflection->GetDesc(&psDesc));
    EXPECT_EQ(ShaderType(psDesc.Version), UINT(D3D12_SHVER_PIXEL_SHADER));
    ASSERT_EQ(psDesc.OutputParameters, 1u);
    ASSERT_HRESULT_SUCCEEDED(psReflection->GetOutputParameterDesc(0, &param));
    EXPECT_EQ(param.SystemValueType, D3D_NAME_TARGET);
    EXPECT_EQ(param.Register, 0u);

    // A name the shader does not declare yields the reflection's null object, whose GetDesc fails.
    D3D12_SHADER_BUFFER_DESC missing = {};
    EXPECT_TRUE(FAILED(vsReflection->GetConstantBufferByName("NoSuchBuffer")->GetDesc(&missing)));
}

TEST(D3D12CanaryShaders, ReportsCompileErrorsWithTheSourceName)
{
    std::string errors;
    ComPtr<ID3DBlob> broken = LxD3D12Test::CompileShader("float4 PSMain() : SV_Target { return undeclared; }", "PSMain",
                                                         "ps_5_0", &errors, "LxBroken.hlsl");
    EXPECT_EQ(broken, nullptr);
    EXPECT_NE(errors.find("LxBroken.hlsl"), std::string::npos) << errors;
    EXPECT_NE(errors.find("undeclared"), std::string::npos) << errors;
}

} // namespace
