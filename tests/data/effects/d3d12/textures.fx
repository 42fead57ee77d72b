// A texture read through the effect's samplers across a full-screen triangle, with texture coordinates running
// from 0 to 2 across the screen: the wrapping sampler repeats the texture, the clamping one stretches its last
// texel. The compute technique writes a texture through a UAV slot.
Texture2D tImage < >
Sampler sWrap { Texture = tImage; Filter = MIN_MAG_MIP_POINT; AddressU = WRAP; AddressV = WRAP; }
Sampler sClamp { Texture = tImage; Filter = MIN_MAG_MIP_POINT; AddressU = CLAMP; AddressV = CLAMP; }
RWTexture2D uOutput < >
Vector vFill (0.0, 0.5, 1.0, 1.0)

StartHLSL FullScreen
  struct VSOut { float4 position : SV_Position; float2 uv : TEXCOORD0; };
  static const float2 kCorners[3] = { float2(-1.0, -1.0), float2(-1.0, 3.0), float2(3.0, -1.0) };
  VSOut main(uint id : SV_VertexID)
  {
    VSOut o;
    o.position = float4(kCorners[id], 0.5, 1.0);
    o.uv = float2(kCorners[id].x + 1.0, 1.0 - kCorners[id].y);
    return o;
  }
EndHLSL

Technique Wrap
{
  Pass P0
  {
    VertexShader() $include FullScreen EndVertexShader
    PixelShader()
      Texture2D tImage;
      SamplerState sWrap;
      float4 main(float4 position : SV_Position, float2 uv : TEXCOORD0) : SV_Target
      {
        return tImage.Sample(sWrap, uv);
      }
    EndPixelShader
  }
}

Technique Clamp
{
  Pass P0
  {
    VertexShader() $include FullScreen EndVertexShader
    PixelShader()
      Texture2D tImage;
      SamplerState sClamp;
      float4 main(float4 position : SV_Position, float2 uv : TEXCOORD0) : SV_Target
      {
        return tImage.Sample(sClamp, uv);
      }
    EndPixelShader
  }
}

ComputeTechnique Fill
{
  Pass P0
  {
    ComputeShader()
      RWTexture2D<float4> uOutput;
      cbuffer FillValues { float4 vFill; };
      [numthreads(8, 8, 1)] void main(uint3 id : SV_DispatchThreadID)
      {
        uOutput[id.xy] = float4(vFill.rgb * (id.x < 4 ? 1.0 : 0.5), 1.0);
      }
    EndComputeShader
  }
}
