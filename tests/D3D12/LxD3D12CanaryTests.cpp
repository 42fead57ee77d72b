// Canary for the Windows lane: a real Direct3D 12 device, real shader compiles and reflection, a real draw read
// back to the CPU. It guards the lane itself (Wine, vkd3d, lavapipe, the cross toolchain's headers and import
// libraries) until the render manager's own tests cover the same ground. Nothing here may be skipped.
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

// ---------------------------------------------------------------------------------------------------------------
// Root signature, pipeline state and an offscreen draw read back

constexpr UINT kSize = 64;
constexpr DXGI_FORMAT kColorFormat = DXGI_FORMAT_R8G8B8A8_UNORM;
constexpr DXGI_FORMAT kDepthFormat = DXGI_FORMAT_D32_FLOAT;
constexpr float kClearColor[4] = {0.2f, 0.4f, 0.6f, 1.0f};
constexpr int kTolerance = 2; // per 8-bit channel: rounding and interpolation differ between rasterisers

std::array<float, 4> ShadeOnCpu(const float base[4], int stage, const CanaryConstants& c, const CanaryShared& s)
{
    std::array<float, 4> out{};
    const float axis[4] = {s.axis[0], s.axis[1], s.axis[2], 0.0f};
    for (int i = 0; i < 4; ++i)
        out[i] = std::clamp(base[i] * c.weights[stage][i] * s.gains[stage * 4] + axis[i] * s.bias, 0.0f, 1.0f);
    return out;
}

std::array<int, 4> ToUnorm8(const std::array<float, 4>& color)
{
    std::array<int, 4> out{};
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<int>(std::lround(color[i] * 255.0f));
    return out;
}

std::array<int, 4> ExpectedColor(const CanaryConstants& c, const CanaryShared& s)
{
    const std::array<float, 4> vertexColor = ShadeOnCpu(c.tint, 0, c, s);
    return ToUnorm8(ShadeOnCpu(vertexColor.data(), 1, c, s));
}

std::string ColorText(const std::array<int, 4>& c)
{
    return "(" + std::to_string(c[0]) + ", " + std::to_string(c[1]) + ", " + std::to_string(c[2]) + ", " +
           std::to_string(c[3]) + ")";
}

TEST(D3D12Canary, DrawsDepthTestedTrianglesOffscreenAndReadsThemBack)
{
    std::string why;
    LxD3D12Test::Context* context = LxD3D12Test::SharedContext(&why);
    ASSERT_NE(context, nullptr) << why;
    ID3D12Device* device = context->device.Get();

    // Root signature: the two constant buffers as root CBVs, visible to every stage.
    D3D12_ROOT_PARAMETER params[2] = {};
    for (UINT i = 0; i < 2; ++i)
    {
        params[i].ParameterType = D3D12_ROOT_PARAMETER_TYPE_CBV;
        params[i].Descriptor.ShaderRegister = i;
        params[i].ShaderVisibility = D3D12_SHADER_VISIBILITY_ALL;
    }
    const D3D12_ROOT_SIGNATURE_DESC rootDesc = {2, params, 0, nullptr, D3D12_ROOT_SIGNATURE_FLAG_NONE};
    ComPtr<ID3DBlob> rootBlob, rootErrors;
    ASSERT_HRESULT_SUCCEEDED(
        D3D12SerializeRootSignature(&rootDesc, D3D_ROOT_SIGNATURE_VERSION_1_0, &rootBlob, &rootErrors));
    ComPtr<ID3D12RootSignature> rootSignature;
    ASSERT_HRESULT_SUCCEEDED(device->CreateRootSignature(0, rootBlob->GetBufferPointer(), rootBlob->GetBufferSize(),
                                                         IID_PPV_ARGS(&rootSignature)));

    // Pipeline state: both stages, no input layout (positions come from SV_VertexID), depth test LESS.
    std::string errors;
    ComPtr<ID3DBlob> vs = LxD3D12Test::CompileShader(kCanarySource, "VSMain", "vs_5_0", &errors);
    ASSERT_NE(vs, nullptr) << errors;
    ComPtr<ID3DBlob> ps = LxD3D12Test::CompileShader(kCanarySource, "PSMain", "ps_5_0", &errors);
    ASSERT_NE(ps, nullptr) << errors;
    D3D12_GRAPHICS_PIPELINE_STATE_DESC psoDesc = {};
    psoDesc.pRootSignature = rootSignature.Get();
    psoDesc.VS = {vs->GetBufferPointer(), vs->GetBufferSize()};
    psoDesc.PS = {ps->GetBufferPointer(), ps->GetBufferSize()};
    psoDesc.BlendState.RenderTarget[0].RenderTargetWriteMask = D3D12_COLOR_WRITE_ENABLE_ALL;
    psoDesc.SampleMask = UINT_MAX;
    psoDesc.RasterizerState.FillMode = D3D12_FILL_MODE_SOLID;
    psoDesc.RasterizerState.CullMode = D3D12_CULL_MODE_NONE;
    psoDesc.RasterizerState.DepthClipEnable = TRUE;
    psoDesc.DepthStencilState.DepthEnable = TRUE;
    psoDesc.DepthStencilState.DepthWriteMask = D3D12_DEPTH_WRITE_MASK_ALL;
    psoDesc.DepthStencilState.DepthFunc = D3D12_COMPARISON_FUNC_LESS;
    psoDesc.PrimitiveTopologyType = D3D12_PRIMITIVE_TOPOLOGY_TYPE_TRIANGLE;
    psoDesc.NumRenderTargets = 1;
    psoDesc.RTVFormats[0] = kColorFormat;
    psoDesc.DSVFormat = kDepthFormat;
    psoDesc.SampleDesc.Count = 1;
    ComPtr<ID3D12PipelineState> pso;
    ASSERT_HRESULT_SUCCEEDED(device->CreateGraphicsPipelineState(&psoDesc, IID_PPV_ARGS(&pso)));

    // Targets, each created in the state the draw needs, with matching optimised clear values.
    D3D12_CLEAR_VALUE colorClear = {kColorFormat, {}};
    std::memcpy(colorClear.Color, kClearColor, sizeof(kClearColor));
    ComPtr<ID3D12Resource> color, depth;
    ASSERT_HRESULT_SUCCEEDED(LxD3D12Test::CreateTexture2D(device, kColorFormat, kSize, kSize,
                                                          D3D12_RESOURCE_FLAG_ALLOW_RENDER_TARGET,
                                                          D3D12_RESOURCE_STATE_RENDER_TARGET, &colorClear, &color));
    D3D12_CLEAR_VALUE depthClear = {kDepthFormat, {}};
    depthClear.DepthStencil.Depth = 1.0f;
    ASSERT_HRESULT_SUCCEEDED(LxD3D12Test::CreateTexture2D(device, kDepthFormat, kSize, kSize,
                                                          D3D12_RESOURCE_FLAG_ALLOW_DEPTH_STENCIL,
                                                          D3D12_RESOURCE_STATE_DEPTH_WRITE, &depthClear, &depth));
    ComPtr<ID3D12DescriptorHeap> rtvHeap, dsvHeap;
    ASSERT_HRESULT_SUCCEEDED(LxD3D12Test::CreateDescriptorHeap(device, D3D12_DESCRIPTOR_HEAP_TYPE_RTV, 1, &rtvHeap));
    ASSERT_HRESULT_SUCCEEDED(LxD3D12Test::CreateDescriptorHeap(device, D3D12_DESCRIPTOR_HEAP_TYPE_DSV, 1, &dsvHeap));
    const D3D12_CPU_DESCRIPTOR_HANDLE rtv = rtvHeap->GetCPUDescriptorHandleForHeapStart();
    const D3D12_CPU_DESCRIPTOR_HANDLE dsv = dsvHeap->GetCPUDescriptorHandleForHeapStart();
    device->CreateRenderTargetView(color.Get(), nullptr, rtv);
    device->CreateDepthStencilView(depth.Get(), nullptr, dsv);

    // Constants: the near triangle (drawn first) and the far, larger one each get their own CanaryConstants,
    // both share one CanaryShared. Root CBV addresses must be 256-byte aligned.
    // Tint, (unused), scale, offset, weights, depth, (tail).
    CanaryConstants nearTri = {{0.8f, 0.4f, 0.2f, 1.0f}, 0, 0.5f, {0.1f, -0.05f}, {}, 0.25f, {}};
    CanaryConstants farTri = {{0.2f, 0.6f, 0.9f, 1.0f}, 0, 0.9f, {0.0f, 0.0f}, {}, 0.75f, {}};
    const float weights[2][4] = {{0.5f, 1.0f, 1.5f, 1.0f}, {1.0f, 0.5f, 2.0f, 1.0f}};
    std::memcpy(nearTri.weights, weights, sizeof(weights));
    std::memcpy(farTri.weights, weights, sizeof(weights));
    // Axis, bias, nudge, (unused), gains (elements 0, 4 and 8), depth bias, (tail).
    const CanaryShared shared = {
        {1.0f, 0.5f, 0.0f}, 0.1f, {0.02f, 0.03f}, {}, {1.0f, 0, 0, 0, 0.75f, 0, 0, 0, 0.0f}, 0.05f, {}};

    constexpr UINT64 kCbStride = D3D12_CONSTANT_BUFFER_DATA_PLACEMENT_ALIGNMENT;
    ComPtr<ID3D12Resource> constants = LxD3D12Test::CreateBuffer(device, D3D12_HEAP_TYPE_UPLOAD, 3 * kCbStride);
    ASSERT_NE(constants, nullptr);
    {
        void* mapped = nullptr;
        const D3D12_RANGE noRead = {0, 0};
        ASSERT_HRESULT_SUCCEEDED(constants->Map(0, &noRead, &mapped));
        auto* bytes = static_cast<unsigned char*>(mapped);
        std::memcpy(bytes, &nearTri, sizeof(nearTri));
        std::memcpy(bytes + kCbStride, &farTri, sizeof(farTri));
        std::memcpy(bytes + 2 * kCbStride, &shared, sizeof(shared));
        constants->Unmap(0, nullptr);
    }
    const D3D12_GPU_VIRTUAL_ADDRESS cbBase = constants->GetGPUVirtualAddress();

    // Readback: colour then depth, each placed as the copy engine wants it.
    D3D12_PLACED_SUBRESOURCE_FOOTPRINT colorFootprint = {}, depthFootprint = {};
    UINT64 colorBytes = 0, depthBytes = 0;
    const D3D12_RESOURCE_DESC colorDesc = color->GetDesc(), depthDesc = depth->GetDesc();
    device->GetCopyableFootprints(&colorDesc, 0, 1, 0, &colorFootprint, nullptr, nullptr, &colorBytes);
    const UINT64 depthOffset =
        (colorBytes + D3D12_TEXTURE_DATA_PLACEMENT_ALIGNMENT - 1) & ~UINT64(D3D12_TEXTURE_DATA_PLACEMENT_ALIGNMENT - 1);
    device->GetCopyableFootprints(&depthDesc, 0, 1, depthOffset, &depthFootprint, nullptr, nullptr, &depthBytes);
    ASSERT_EQ(colorFootprint.Footprint.Width, kSize);
    ASSERT_GE(colorFootprint.Footprint.RowPitch, kSize * 4);
    ASSERT_EQ(colorFootprint.Footprint.RowPitch % D3D12_TEXTURE_DATA_PITCH_ALIGNMENT, 0u);
    ASSERT_EQ(depthFootprint.Offset, depthOffset);
    ComPtr<ID3D12Resource> readback =
        LxD3D12Test::CreateBuffer(device, D3D12_HEAP_TYPE_READBACK, depthOffset + depthBytes);
    ASSERT_NE(readback, nullptr);

    ComPtr<ID3D12CommandAllocator> allocator;
    ASSERT_HRESULT_SUCCEEDED(device->CreateCommandAllocator(D3D12_COMMAND_LIST_TYPE_DIRECT, IID_PPV_ARGS(&allocator)));
    ComPtr<ID3D12GraphicsCommandList> list;
    ASSERT_HRESULT_SUCCEEDED(
        device->CreateCommandList(0, D3D12_COMMAND_LIST_TYPE_DIRECT, allocator.Get(), pso.Get(), IID_PPV_ARGS(&list)));

    const D3D12_VIEWPORT viewport = {0.0f, 0.0f, float(kSize), float(kSize), 0.0f, 1.0f};
    const D3D12_RECT scissor = {0, 0, LONG(kSize), LONG(kSize)};
    list->ClearRenderTargetView(rtv, kClearColor, 0, nullptr);
    list->ClearDepthStencilView(dsv, D3D12_CLEAR_FLAG_DEPTH, 1.0f, 0, 0, nullptr);
    list->OMSetRenderTargets(1, &rtv, FALSE, &dsv);
    list->RSSetViewports(1, &viewport);
    list->RSSetScissorRects(1, &scissor);
    list->SetGraphicsRootSignature(rootSignature.Get());
    list->IASetPrimitiveTopology(D3D_PRIMITIVE_TOPOLOGY_TRIANGLELIST);
    list->SetGraphicsRootConstantBufferView(1, cbBase + 2 * kCbStride);
    // Near first: the far triangle, drawn over it afterwards, must lose the depth test where they overlap.
    list->SetGraphicsRootConstantBufferView(0, cbBase);
    list->DrawInstanced(3, 1, 0, 0);
    list->SetGraphicsRootConstantBufferView(0, cbBase + kCbStride);
    list->DrawInstanced(3, 1, 0, 0);

    const D3D12_RESOURCE_BARRIER toCopy[2] = {
        LxD3D12TransitionBarrier(color.Get(), D3D12_RESOURCE_STATE_RENDER_TARGET, D3D12_RESOURCE_STATE_COPY_SOURCE),
        LxD3D12TransitionBarrier(depth.Get(), D3D12_RESOURCE_STATE_DEPTH_WRITE, D3D12_RESOURCE_STATE_COPY_SOURCE)};
    list->ResourceBarrier(2, toCopy);
    D3D12_TEXTURE_COPY_LOCATION dst = {readback.Get(), D3D12_TEXTURE_COPY_TYPE_PLACED_FOOTPRINT, {colorFootprint}};
    D3D12_TEXTURE_COPY_LOCATION src = {color.Get(), D3D12_TEXTURE_COPY_TYPE_SUBRESOURCE_INDEX, {}}; // subresource 0
    list->CopyTextureRegion(&dst, 0, 0, 0, &src, nullptr);
    dst.PlacedFootprint = depthFootprint;
    src.pResource = depth.Get();
    list->CopyTextureRegion(&dst, 0, 0, 0, &src, nullptr);
    ASSERT_HRESULT_SUCCEEDED(list->Close());
    ASSERT_TRUE(context->ExecuteAndWait(list.Get()));
    ASSERT_HRESULT_SUCCEEDED(device->GetDeviceRemovedReason());

    void* mapped = nullptr;
    const D3D12_RANGE readAll = {0, static_cast<SIZE_T>(depthOffset + depthBytes)};
    ASSERT_HRESULT_SUCCEEDED(readback->Map(0, &readAll, &mapped));
    const unsigned char* pixels = static_cast<const unsigned char*>(mapped);
    auto colorAt = [&](UINT x, UINT y)
    {
        const unsigned char* p = pixels + colorFootprint.Offset + y * colorFootprint.Footprint.RowPitch + x * 4;
        return std::array<int, 4>{p[0], p[1], p[2], p[3]};
    };
    auto depthAt = [&](UINT x, UINT y)
    {
        float d = 0.0f;
        std::memcpy(&d, pixels + depthFootprint.Offset + y * depthFootprint.Footprint.RowPitch + x * 4, sizeof(d));
        return d;
    };
    auto expectColor = [&](const char* where, UINT x, UINT y, const std::array<int, 4>& expected)
    {
        const std::array<int, 4> got = colorAt(x, y);
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(got[c], expected[c], kTolerance)
                << where << " pixel (" << x << ", " << y << ") channel " << c << ": read " << ColorText(got)
                << ", expected " << ColorText(expected);
        std::printf("[   PIXEL  ] %-7s (%2u, %2u) read %-20s expected %s\n", where, x, y, ColorText(got).c_str(),
                    ColorText(expected).c_str());
    };

    const std::array<int, 4> clearColor = ToUnorm8({kClearColor[0], kClearColor[1], kClearColor[2], kClearColor[3]});
    const std::array<int, 4> nearColor = ExpectedColor(nearTri, shared);
    const std::array<int, 4> farColor = ExpectedColor(farTri, shared);
    // The three colours must differ by far more than the tolerance, or a wrong winner could pass.
    auto distance = [](const std::array<int, 4>& a, const std::array<int, 4>& b)
    {
        int most = 0;
        for (int c = 0; c < 4; ++c)
            most = std::max(most, std::abs(a[c] - b[c]));
        return most;
    };
    ASSERT_GT(distance(nearColor, farColor), 10 * kTolerance);
    ASSERT_GT(distance(nearColor, clearColor), 10 * kTolerance);
    ASSERT_GT(distance(farColor, clearColor), 10 * kTolerance);

    // Pixel (32, 32) sits at NDC (0.016, -0.016): inside both triangles, where the near one wins.
    expectColor("centre", kSize / 2, kSize / 2, nearColor);
    // Pixel (32, 58) sits at NDC (0.016, -0.83): below the near triangle (bottom edge at -0.52), inside the far one.
    expectColor("far", kSize / 2, 58, farColor);
    // The corners lie outside both triangles.
    expectColor("corner", 0, 0, clearColor);
    expectColor("corner", kSize - 1, kSize - 1, clearColor);

    // Depth: g_Depth + g_DepthBias of the winning triangle, the clear value elsewhere.
    EXPECT_NEAR(depthAt(kSize / 2, kSize / 2), nearTri.depth + shared.depthBias, 1e-5f);
    EXPECT_NEAR(depthAt(kSize / 2, 58), farTri.depth + shared.depthBias, 1e-5f);
    EXPECT_EQ(depthAt(0, 0), 1.0f);
    const D3D12_RANGE noWrite = {0, 0};
    readback->Unmap(0, &noWrite);
}
} // namespace
