// Keeps LxPlatformLimitations.h honest for the entries that can be checked without drawing: where an entry
// applies, the gap must still be there (a fixed platform fails here, and the entry is then removed); where it does
// not apply (real Windows), the same code must work.
#include "D3D12/LxD3D12TestHelpers.h"
#include "D3D12/LxPlatformLimitations.h"

#include <d3d12sdklayers.h>
#include <d3d12shader.h>
#include <d3dcompiler.h>
#include <gtest/gtest.h>

#include <string>

namespace LxLimits = LxPlatformLimitations;
using LxD3D12Test::ComPtr;

namespace
{
// Compiles and reports whether the compile succeeded; the messages are printed, so that the platform's wording
// is visible in the test log.
bool Compiles(const char* what, const std::string& source, const char* entry, const char* target,
              std::string* errors = nullptr)
{
    std::string messages;
    const bool ok = LxD3D12Test::CompileShader(source, entry, target, &messages) != nullptr;
    std::printf("[  COMPILE ] %s (%s %s): %s%s\n", what, entry, target,
                ok ? "compiles" : "fails: ", ok ? "" : messages.c_str());
    if (errors)
        *errors = messages;
    return ok;
}

void ExpectCompiles(bool limited, const char* what, const std::string& source, const char* entry, const char* target)
{
    EXPECT_NE(limited, Compiles(what, source, entry, target))
        << what << (limited ? " compiles now: drop the limitation" : " does not compile");
}

const char* const kGeometryShader = R"hlsl(
struct V { float4 p : SV_Position; };
[maxvertexcount(3)]
void GSMain(triangle V input[3], inout TriangleStream<V> stream)
{
    for (int i = 0; i < 3; ++i)
        stream.Append(input[i]);
}
)hlsl";

const char* const kTessellationShaders = R"hlsl(
struct CP { float4 p : POSITION; };
struct PatchConstants { float edges[3] : SV_TessFactor; float inside : SV_InsideTessFactor; };
PatchConstants Constants(InputPatch<CP, 3> patch)
{
    PatchConstants o;
    o.edges[0] = o.edges[1] = o.edges[2] = o.inside = 2.0;
    return o;
}
[domain("tri")] [partitioning("integer")] [outputtopology("triangle_cw")] [outputcontrolpoints(3)]
[patchconstantfunc("Constants")]
CP HSMain(InputPatch<CP, 3> patch, uint i : SV_OutputControlPointID) { return patch[i]; }
[domain("tri")]
float4 DSMain(PatchConstants pc, float3 uvw : SV_DomainLocation, const OutputPatch<CP, 3> patch) : SV_Position
{
    return patch[0].p * uvw.x + patch[1].p * uvw.y + patch[2].p * uvw.z;
}
)hlsl";

const char* const kStructuredRead = R"hlsl(
StructuredBuffer<float4> g_Items : register(t0);
float4 PSMain(float4 p : SV_Position) : SV_Target { return g_Items[uint(p.x)]; }
)hlsl";

const char* const kStructuredStore = R"hlsl(
RWStructuredBuffer<float4> g_Out : register(u0);
[numthreads(8, 1, 1)]
void CSMain(uint3 id : SV_DispatchThreadID) { g_Out[id.x] = float4(id, 1.0); }
)hlsl";

const char* const kAppend = R"hlsl(
AppendStructuredBuffer<float4> g_Out : register(u0);
[numthreads(8, 1, 1)]
void CSMain(uint3 id : SV_DispatchThreadID) { g_Out.Append(float4(id, 1.0)); }
)hlsl";

const char* const kGroupSync = R"hlsl(
RWBuffer<float> g_Out : register(u0);
groupshared float s_values[8];
[numthreads(8, 1, 1)]
void CSMain(uint3 id : SV_GroupThreadID)
{
    s_values[id.x] = id.x;
    GroupMemoryBarrierWithGroupSync();
    g_Out[id.x] = s_values[7 - id.x];
}
)hlsl";

const char* const kAtomic = R"hlsl(
RWByteAddressBuffer g_Counter : register(u0);
[numthreads(8, 1, 1)]
void CSMain(uint3 id : SV_DispatchThreadID) { uint before; g_Counter.InterlockedAdd(0, 1, before); }
)hlsl";

TEST(D3D12PlatformLimitations, DebugLayer)
{
    ComPtr<ID3D12Debug> debug;
    const HRESULT hr = D3D12GetDebugInterface(IID_PPV_ARGS(&debug));
    // On Windows the layer exists only where the Graphics Tools are installed: no expectation there.
    EXPECT_TRUE(!LxLimits::Applies(LxLimits::kNoDebugLayer) || FAILED(hr))
        << "D3D12GetDebugInterface works now: drop the limitation";
    std::printf("[    INFO  ] D3D12GetDebugInterface returned %s\n", LxD3D12Test::HrText(hr).c_str());
}

TEST(D3D12PlatformLimitations, GeometryAndTessellationShaders)
{
    const bool limited = LxLimits::Applies(LxLimits::kNoGeometryOrTessellationShaders);
    ExpectCompiles(limited, "geometry shader", kGeometryShader, "GSMain", "gs_5_0");
    ExpectCompiles(limited, "hull shader", kTessellationShaders, "HSMain", "hs_5_0");
    ExpectCompiles(limited, "domain shader", kTessellationShaders, "DSMain", "ds_5_0");
}

TEST(D3D12PlatformLimitations, StructuredBuffersAndGroupSync)
{
    const bool noStructured = LxLimits::Applies(LxLimits::kNoStructuredBuffers);
    ExpectCompiles(noStructured, "StructuredBuffer read", kStructuredRead, "PSMain", "ps_5_0");
    ExpectCompiles(noStructured, "RWStructuredBuffer store", kStructuredStore, "CSMain", "cs_5_0");
    ExpectCompiles(noStructured, "AppendStructuredBuffer", kAppend, "CSMain", "cs_5_0");
    const bool noSync = LxLimits::Applies(LxLimits::kNoGroupSyncOrAtomics);
    ExpectCompiles(noSync, "group-shared barrier", kGroupSync, "CSMain", "cs_5_0");
    ExpectCompiles(noSync, "InterlockedAdd", kAtomic, "CSMain", "cs_5_0");
}

TEST(D3D12PlatformLimitations, LineDirective)
{
    // The error sits on the third line of the text, which #line renames to line 41 of "Included.fx".
    const std::string source = "#line 40 \"Included.fx\"\n"
                               "float4 PSMain() : SV_Target\n"
                               "{ return undeclaredThing; }\n";
    std::string errors;
    ASSERT_FALSE(Compiles("#line", source, "PSMain", "ps_5_0", &errors));
    ASSERT_NE(errors.find("undeclaredThing"), std::string::npos) << errors;
    // fxc writes "Included.fx(41,10)", vkd3d-shader would write "Included.fx:41:10".
    const bool mapped =
        errors.find("Included.fx(41,") != std::string::npos || errors.find("Included.fx:41:") != std::string::npos;
    const bool limited = LxLimits::Applies(LxLimits::kLineDirectiveIgnored);
    EXPECT_NE(limited, mapped) << (limited ? "#line is honoured now: drop the limitation\n" : "") << errors;
}

TEST(D3D12PlatformLimitations, CompilerMessageFormat)
{
    std::string errors;
    ASSERT_FALSE(Compiles("message format", "float4 PSMain() : SV_Target\n{ return undeclaredThing; }\n", "PSMain",
                          "ps_5_0", &errors));
    const bool fxcForm =
        errors.find("LxTestShader.hlsl(2,") != std::string::npos && errors.find("error X") != std::string::npos;
    const bool limited = LxLimits::Applies(LxLimits::kCompilerMessagesInOwnFormat);
    EXPECT_NE(limited, fxcForm) << (limited ? "messages are in fxc's format now: drop the limitation\n" : "") << errors;
    EXPECT_TRUE(!limited || errors.find("LxTestShader.hlsl:2:") != std::string::npos) << errors;
}

TEST(D3D12PlatformLimitations, OneFailingEntryPointFailsTheWholeSource)
{
    // A vertex shader that any compiler accepts, next to a geometry shader that this platform cannot build.
    const std::string source =
        std::string(kGeometryShader) + "float4 VSMain(float4 p : POSITION) : SV_Position { return p * 2.0; }\n";
    ExpectCompiles(LxLimits::Applies(LxLimits::kOneFailureFailsWholeSource), "vertex shader beside a geometry shader",
                   source, "VSMain", "vs_5_0");
}

TEST(D3D12PlatformLimitations, ByteAddressUAVReflection)
{
    const char* const source = "RWByteAddressBuffer g_Raw : register(u0);\n"
                               "[numthreads(1, 1, 1)] void CSMain() { g_Raw.Store(0, 7u); }\n";
    std::string errors;
    ComPtr<ID3DBlob> code = LxD3D12Test::CompileShader(source, "CSMain", "cs_5_0", &errors);
    ASSERT_NE(code, nullptr) << errors;
    ComPtr<ID3D12ShaderReflection> reflection;
    ASSERT_HRESULT_SUCCEEDED(D3DReflect(code->GetBufferPointer(), code->GetBufferSize(), IID_PPV_ARGS(&reflection)));
    D3D12_SHADER_INPUT_BIND_DESC bind = {};
    ASSERT_HRESULT_SUCCEEDED(reflection->GetResourceBindingDescByName("g_Raw", &bind));
    const bool limited = LxLimits::Applies(LxLimits::kByteAddressUAVReflectedAsTyped);
    EXPECT_EQ(bind.Type, limited ? D3D_SIT_UAV_RWTYPED : D3D_SIT_UAV_RWBYTEADDRESS)
        << (limited ? "the raw buffer reflects as raw now: drop the limitation" : "");
}

TEST(D3D12PlatformLimitations, DetectsWineOnlyWhereItRuns)
{
    // The lane's emulator is Wine; a build run by hand on Windows must see no limitations at all.
    const char* const wineVersion = []
    {
        const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
        using Fn = const char*(CDECL*)();
        auto fn =
            ntdll ? reinterpret_cast<Fn>(reinterpret_cast<void*>(GetProcAddress(ntdll, "wine_get_version"))) : nullptr;
        return fn ? fn() : nullptr;
    }();
    EXPECT_EQ(LxLimits::RunningUnderWine(), wineVersion != nullptr);
    std::printf("[    INFO  ] Wine %s\n", wineVersion ? wineVersion : "not detected");
}
} // namespace
