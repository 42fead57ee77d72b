// expect: Can't find matching texture slot for HLSL variable: 'tMissing'
// expect: Can't find matching sampler for HLSL variable: 'sMissing'
// expect: Indexable shader resources are not supported by the Lumex effect system!
// expect: Indexable samplers are not supported by the Lumex effect system!
// expect: Shader declares a 3D texture named: 'tAs3D' but the matching texture slot is not a 3D texture
// expect: Shader declares a cubemap named: 'tAsCube' but the matching texture slot is not a cubemap
// expect: Shader declares a 2D texture named: 'tAs2D' but the matching texture slot is not a 2D texture
// expect: Shader declares a 2D texture array named: 'tAs2DArray' but the matching texture slot is not a 2D texture
// expect: Shader declares a buffer resource named: 'tAsBuffer' but the matching texture slot is not a (supported) buffer
Texture2D tAs3D < >
Texture2D tAsCube < >
Texture3D tAs2D < >
Texture3D tAs2DArray < >
Texture2D tAsBuffer < >
Texture2D tArr < >
Texture2D tOk < >
Sampler sOk { Texture = tOk; }
Sampler sArr { Filter = MIN_MAG_MIP_POINT; }
Technique T
{
  Pass P
  {
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    PixelShader()
      Texture3D tAs3D;
      TextureCube tAsCube;
      Texture2D tAs2D;
      Texture2DArray tAs2DArray;
      Buffer<float4> tAsBuffer;
      Texture2D tArr[2];
      Texture2D tMissing;
      Texture2D tOk;
      SamplerState sOk;
      SamplerState sMissing;
      SamplerState sArr[2];
      float4 main() : SV_Target
      {
        float4 c = tAs3D.SampleLevel(sOk, float3(0, 0, 0), 0);
        c += tAsCube.SampleLevel(sOk, float3(1, 0, 0), 0);
        c += tAs2D.SampleLevel(sOk, float2(0, 0), 0);
        c += tAs2DArray.SampleLevel(sOk, float3(0, 0, 0), 0);
        c += tAsBuffer.Load(0);
        c += tArr[1].SampleLevel(sOk, float2(0, 0), 0);
        c += tMissing.SampleLevel(sMissing, float2(0, 0), 0);
        c += tOk.SampleLevel(sArr[1], float2(0, 0), 0);
        return c;
      }
    EndPixelShader
  }
}
