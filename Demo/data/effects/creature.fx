// The creature: each vertex carried by up to four bones of the palette of the object being drawn ("Bones"), placed
// by the object's world transform and seen through the active camera. Matrices arrive as the library stores them
// (row vectors), so mul(matrix, vector) applies them. The skin texture comes from the model archive (the chunk maps
// it to DiffuseMap); the tint is set by the demo's script every frame.
Matrix mViewProj < AppUpdate = "ViewProjMatrix" >
Matrix mWorld < AppUpdate = "WorldTransform" >
Matrix amBones[8] < AppUpdate = "Bones" >
Vector vTint (0.35, 0.80, 0.65, 1.0)
Texture2D DiffuseMap < >
Sampler sDiffuse { Texture = DiffuseMap; Filter = MIN_MAG_MIP_POINT; AddressU = CLAMP; AddressV = CLAMP; }

Stream VERTEX { float3 POSITION, float2 TEXCOORD0 }
Stream SKIN { ubyte4 BLENDINDICES, float4 BLENDWEIGHT }
StreamMap SkinnedMap { VERTEX, SKIN }

Technique Skinned
{
  Pass P0
  {
    StreamMap = SkinnedMap
    VertexShader()
      cbuffer Object { float4x4 mViewProj; float4x4 mWorld; float4x4 amBones[8]; };
      struct Out { float4 position : SV_Position; float2 uv : TEXCOORD0; };
      Out main(float3 position : POSITION, float2 uv : TEXCOORD0, uint4 bones : BLENDINDICES,
               float4 weights : BLENDWEIGHT)
      {
        const float4 p = float4(position, 1);
        const float4 skinned = weights.x * mul(amBones[bones.x], p) + weights.y * mul(amBones[bones.y], p) +
                               weights.z * mul(amBones[bones.z], p) + weights.w * mul(amBones[bones.w], p);
        Out o;
        o.position = mul(mViewProj, mul(mWorld, skinned));
        o.uv = uv;
        return o;
      }
    EndVertexShader
    PixelShader()
      cbuffer Look { float4 vTint; };
      Texture2D DiffuseMap;
      SamplerState sDiffuse;
      float4 main(float4 position : SV_Position, float2 uv : TEXCOORD0) : SV_Target
      {
        // The skin's texture from the model archive, rings along the body and a darker rim towards the edges.
        const float ring = 0.8 + 0.2 * step(0.5, frac(uv.y * 6));
        const float rim = 1 - 0.6 * pow(abs(uv.x * 2 - 1), 2);
        return float4(DiffuseMap.Sample(sDiffuse, uv).rgb * vTint.rgb * ring * rim, 1);
      }
    EndPixelShader
  }
}
