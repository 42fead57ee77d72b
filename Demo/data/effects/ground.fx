// The ground: a checker pattern from the texture coordinates, fading into the sky colour with distance from the
// centre, placed by the object's world transform and seen through the active camera.
Matrix mViewProj < AppUpdate = "ViewProjMatrix" >
Matrix mWorld < AppUpdate = "WorldTransform" >
Vector vFar (0.20, 0.10, 0.15, 1.0)

Stream VERTEX { float3 POSITION, float2 TEXCOORD0 }
StreamMap GroundMap { VERTEX }

Technique Checker
{
  Pass P0
  {
    StreamMap = GroundMap
    VertexShader()
      cbuffer Placement { float4x4 mViewProj; float4x4 mWorld; };
      struct Out { float4 position : SV_Position; float2 uv : TEXCOORD0; float distance : TEXCOORD1; };
      Out main(float3 position : POSITION, float2 uv : TEXCOORD0)
      {
        Out o;
        o.position = mul(mViewProj, mul(mWorld, float4(position, 1)));
        o.uv = uv;
        o.distance = length(position.xz);
        return o;
      }
    EndVertexShader
    PixelShader()
      cbuffer Look { float4 vFar; };
      float4 main(float4 position : SV_Position, float2 uv : TEXCOORD0, float distance : TEXCOORD1) : SV_Target
      {
        const float2 cell = floor(uv);
        const float checker = fmod(cell.x + cell.y, 2.0);
        const float3 near = lerp(float3(0.16, 0.13, 0.20), float3(0.24, 0.20, 0.28), checker);
        return float4(lerp(near, vFar.rgb, saturate(distance / 6.0)), 1);
      }
    EndPixelShader
  }
}
