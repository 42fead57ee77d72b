// Every construct of the effect language, used by the grammar tests and as a fuzzing seed.
#include "include/common.fxh"
#include "include/common.fxh"
#define BLUR_TAPS 4
#define TAPS_PLUS_ONE BLUR_TAPS + 1
#ifdef SHARED_DEFINED
Int nFromIfdef (7)
#endif
#ifndef SHARED_DEFINED
Int nSkipped (this is skipped $%^ entirely)
#endif

ArtNotes
// a comment between the keyword and the text
{
  Notes for artists: braces \} and backslashes \\ are escaped.
}
{second block}

Options < ShadowQuality = "High", Enabled, Version = 2, Tint = (1, 0.5, 0.25, 1.0) >

/* Block comment /* with a nested comment */ still inside the outer one */
Matrix mWorld < AppUpdate = "WorldMatrix" >
Matrix mIdentity (1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0)
Float fScale (2.0 * 3.0 + 1.0)
Float fFromInt (3)
Vector vShort (1.0, 2.0)
Vector vTint (0.5, 0.5, 0.5, 0.5) < colorConversion = < mask = "RGB", exponent = 2.2 > >
Int nTaps (TAPS_PLUS_ONE * 2 - 0x10 % 3)
Int nMask (0b1010)
VectorI viCounts (1, 2, 3, 4)
#undef BLUR_TAPS
Bool bEnabled (true)
VectorB vbFlags (true, false, true, false)
Float afWeights[2 + 2] (0.25) < UIName = "Weights" >
Vector avPalette[3] (1.0, 0.0, 0.0, 1.0)
Matrix amBones[2];

Buffer tBuffer < ViewParams = < ElementFormat = "float4" > >
Texture2D tDiffuse < ViewParams = < MipLevels = 1.0, MipSlice = 0 > >
Texture3D tVolume < >
TextureCube tSky < >
TextureCUBE tSky2 < >
Texture2DArray tLayers < >
TextureCubeArray tSkies < >
TextureCUBEArray tSkies2 < >
StructuredBuffer tStructs < >
ByteAddressBuffer tRaw < >
RWBuffer uTyped < >
RWTexture2D uImage < ViewParams = < Counter = false > >
RWTexture3D uVolume < >
RWStructuredBuffer uStructs < >
AppendStructuredBuffer uAppend < >
RWByteAddressBuffer uRaw < >
AppendByteAddressBuffer uAppendRaw < >

Sampler sLinear < Comment = "bilinear" >
{
  Texture = tDiffuse
  Filter = MIN_MAG_MIP_LINEAR, AddressU = WRAP; AddressV = CLAMP
  MaxAnisotropy = 8
  MipLODBias = -0.5
  BorderColor = (0.0, 0.0, 0.0, 1.0)
  UseMips = true
}

Stream Vertices < Comment = "positions" >
{
  float3 POSITION position,
  float3 NORMAL,
  float2 TEXCOORD0 uv < Scale = 1.0 >,
  ubyte4n COLOR,
}
Stream Instances < InstanceData >
{
  float4 TEXCOORD4, float4 TEXCOORD5, float4 TEXCOORD6, float4 TEXCOORD7
}
Stream AllTypes
{
  float A0, float2 A1, float3 A2, float4 A3, ubyte4 A4, dec3n A5, half A6, half2 A7, half3 A8, half4 A9,
  udec3 A10, short A11, short2 A12, short3 A13, short4 A14, ubyte4n A15, ushort2n A16, ushort4n A17,
  short2n A18, short4n A19, ushort2 A20, ushort4 A21, int4 A22, uint4 A23, byte2 A24, byte2n A25, ubyte2 A26,
  ubyte2n A27, ushort A28, ushortn A29, shortn A30, uint A31, int A32, uintn A33, intn A34, uint2 A35,
  int2 A36, uint2n A37, int2n A38
}
Stream VerticesMimic < Mimic = "Vertices" > { float4 A, float4 B, float C }
StreamMap DefaultMap { Vertices }
StreamMap InstancedMap < Instanced > { Vertices, Instances }
StreamMap EmptyMap { }

StartHLSL Lighting
  float3 Lambert(float3 n, float3 l) { return saturate(dot(n, l)); }
  // this comment line is captured with the code
EndHLSL

StartGLSL GlslHelpers
  vec3 lambert(vec3 n, vec3 l) { return vec3(max(dot(n, l), 0.0)); }
EndGLSL

BaseTechnique Lit
{
  Properties { Opaque, "Casts Shadows" Lit }
  Pass Main
  {
    StreamMap = DefaultMap
    CullMode = BACK; ZEnable = true
    DepthBias = 2
    SlopeScaledZBias = 1.5
    BlendFactor = (1.0, 1.0, 1.0, 1.0)
    VertexShader( EntryPoint = "VS", Profile = "vs_5_0" )
      $include Lighting
      $include SharedCode
      float4 VS(float3 p : POSITION) : SV_Position { return mul(mWorld, float4(p, 1)); }
    EndVertexShader
  }
}

BaseTechnique Abstract { Pass Empty { } }

Technique LitRed : Lit
{
  Pass Main
  {
    PixelShader( EntryPoint = "PS" )
      $include Lighting
      float4 PS() : SV_Target { return float4(1, 0, 0, 1); }
    EndPixelShader
  }
}

Technique Everything
{
  Pass Full
  {
    StreamMap = InstancedMap
    StreamOutMap = DefaultMap
    StreamOutMap1 = NULL
    StreamOutMap2 = EmptyMap
    StreamOutMap3 = NULL
    VertexShader( EntryPoint = "VS", AvoidFlowControl, SkipOptimization, Debug )
      float4 VS() : SV_Position { return 0; } // EndVertexShader
    GeometryShader( EntryPoint = "GS" )
      [maxvertexcount(3)] void GS() {}
    EndGeometryShader
    HullShader( EntryPoint = "HS" )
      void HS() {}
    EndHullShader
    DomainShader( EntryPoint = "DS" )
      void DS() {}
    EndDomainShader
    PixelShader( EntryPoint = "PS", HLSL ) float4 PS() : SV_Target { return 1; } EndPixelShader
  }
  Pass Disabled
  {
    VertexShader( EntryPoint = "VS" )
      float4 VS() : SV_Position { return 0; }
    EndVertexShader
    GeometryShader( NULL )
    PixelShader( NULL );
  }
  Pass Binary
  {
    BinaryShaderPair( "binary/pair.bin" )
  }
  Pass BinaryNull
  {
    BinaryShaderPair( NULL )
    VertexShader( ) float4 main() : SV_Position { return 0; } EndVertexShader
  };
};

ComputeTechnique Simulate
{
  Pass Step
  {
    ComputeShader( EntryPoint = "CS" )
      [numthreads(64, 1, 1)] void CS() {}
    EndComputeShader
  }
}
