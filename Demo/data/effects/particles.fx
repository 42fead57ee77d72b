// Sparks: camera-facing quads built by the particle group (position, colour, corner coordinates), blended over the
// scene with the default alpha blending, round and soft-edged.
Matrix mViewProj < AppUpdate = "ViewProjMatrix" >
Matrix mWorld < AppUpdate = "WorldTransform" >

Stream Particles { float3 POSITION, float4 COLOR, float2 TEXCOORD0 }
StreamMap ParticleMap { Particles }

Technique Billboards
{
  Pass P0
  {
    StreamMap = ParticleMap
    BlendEnable = true
    ZWriteEnable = false
    VertexShader()
      cbuffer Placement { float4x4 mViewProj; float4x4 mWorld; };
      struct Out { float4 position : SV_Position; float4 color : COLOR; float2 uv : TEXCOORD0; };
      Out main(float3 position : POSITION, float4 color : COLOR, float2 uv : TEXCOORD0)
      {
        Out o;
        o.position = mul(mViewProj, mul(mWorld, float4(position, 1)));
        o.color = color;
        o.uv = uv;
        return o;
      }
    EndVertexShader
    PixelShader()
      float4 main(float4 position : SV_Position, float4 color : COLOR, float2 uv : TEXCOORD0) : SV_Target
      {
        const float edge = saturate(1 - length(uv * 2 - 1));
        return float4(color.rgb, color.a * edge);
      }
    EndPixelShader
  }
}
