Matrix mWorldViewProj
Vector vColor (1.0, 0.5, 0.25, 1.0)
Texture2D tDiffuse < ViewParams = < MipLevels = 1.0 > >
Sampler sLinear { Texture = tDiffuse; Filter = MIN_MAG_MIP_LINEAR; AddressU = WRAP; }
Stream Vertices { float3 POSITION, float3 NORMAL, float2 TEXCOORD }
StreamMap DefaultMap { Vertices }
StartHLSL Common
  float4 Shade(float4 c) { return c; }
EndHLSL
Technique Render
{
  Pass P0
  {
    StreamMap = DefaultMap
    ZEnable = true
    CullMode = BACK
    VertexShader( EntryPoint = "VS" )
      $include Common
    EndVertexShader
    PixelShader( EntryPoint = "PS" )
      $include Common
    EndPixelShader
  }
}
