// The one list of what the Windows test lane cannot do. That lane runs Direct3D 12 under Wine 10 (its bundled
// vkd3d and vkd3d-shader) on Mesa's lavapipe; a test that meets one of these gaps consults the named entry here
// instead of carrying its own skip, so the list stays complete and each gap is removed in one place once the
// platform closes it (LxPlatformLimitationsTests fails when an entry no longer holds).
//
// Contract for a test that consults an entry: run every step that can run (record and execute the bundle,
// reflect and bind the slot, compile and check the message) and leave out only the assertion the platform cannot
// meet, and only where Applies() says so. On real Windows no entry applies and every test checks everything.
#pragma once

namespace LxPlatformLimitations
{
struct Limitation
{
    const char* name;
    const char* detail;
};

// ExecuteBundle is a stub: a bundle records, closes and executes without error, but its draws leave no pixels.
inline constexpr Limitation kBundlesDrawNothing{"BundlesDrawNothing", "ExecuteBundle executes nothing"};

// There is no debug layer: D3D12GetDebugInterface fails, so nothing can turn on GPU validation or the
// info queue. Code that enables the layer on request must treat the failure as "not available", not as fatal.
inline constexpr Limitation kNoDebugLayer{"NoDebugLayer", "D3D12GetDebugInterface fails"};

// Geometry, hull and domain shaders (gs_5_0, hs_5_0, ds_5_0) fail to compile; only vs, ps and cs do.
inline constexpr Limitation kNoGeometryOrTessellationShaders{"NoGeometryOrTessellationShaders",
                                                             "gs/hs/ds profiles do not compile"};

// StructuredBuffer reads, RWStructuredBuffer stores and append/consume buffers fail to compile. Their slots
// can still be declared in root signatures and bound; a shader that uses them cannot be built.
inline constexpr Limitation kNoStructuredBuffers{"NoStructuredBuffers", "structured buffers do not compile"};

// Group-shared memory barriers (GroupMemoryBarrierWithGroupSync and friends) and Interlocked* atomics fail to
// compile in compute shaders.
inline constexpr Limitation kNoGroupSyncOrAtomics{"NoGroupSyncOrAtomics",
                                                  "group-shared barriers and atomics do not compile"};

// The compiler ignores #line: its messages name the source name given to D3DCompile and the line within the text
// as compiled. Whoever prepends or splices text must map message lines back to the original file itself.
inline constexpr Limitation kLineDirectiveIgnored{"LineDirectiveIgnored", "#line is ignored in compiler messages"};

// Compiler messages come from vkd3d-shader in its own format, "name:line:column: E5005: text" (warnings
// "W5300"), where fxc writes "name(line,column): error X3004: text"; a source compiled without a name is called
// "<anonymous>". The texts differ too. Whatever parses or matches compiler messages must accept both forms.
inline constexpr Limitation kCompilerMessagesInOwnFormat{"CompilerMessagesInOwnFormat",
                                                         "compiler messages are not in fxc's format"};

// One entry point that fails to compile makes every entry point of the same source fail, so a valid shader
// next to a broken one reports errors too. Tests of per-shader error reporting must use separate sources.
inline constexpr Limitation kOneFailureFailsWholeSource{"OneFailureFailsWholeSource",
                                                        "a failing shader fails every entry point of its source"};

// The adapter description (name, vendor and device ids, memory sizes) is made up: never assert on it.
inline constexpr Limitation kAdapterDescriptionIsFake{"AdapterDescriptionIsFake", "adapter name and ids are fake"};

// True when the process runs under Wine (ntdll exports wine_get_version); the answer is computed once.
bool RunningUnderWine();

// Reflection reports a RWByteAddressBuffer as a typed UAV (D3D_SIT_UAV_RWTYPED instead of
// D3D_SIT_UAV_RWBYTEADDRESS), so a raw-buffer declaration cannot be told from a typed one by its reflected type.
inline constexpr Limitation kByteAddressUAVReflectedAsTyped{"ByteAddressUAVReflectedAsTyped",
                                                            "RWByteAddressBuffer reflects as a typed UAV"};

// True when `limitation` applies to this process. Each true answer prints one "[  LIMITED ]" line with the
// entry's name and the calling test, so that a left-out assertion is visible in the test output, never silent.
bool Applies(const Limitation& limitation);
} // namespace LxPlatformLimitations
