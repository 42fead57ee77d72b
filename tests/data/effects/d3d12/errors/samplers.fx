// expect: Sampler bind points from DX12 are not sequential!  This is insane, and will lead to bugs!
// expect: Unknown sampler state: Sharpness
// expect: Invalid parameter for sampler state AddressU: SIDEWAYS
// expect: Invalid parameter for sampler state Filter: BLURRY
// expect: Sampler state Filter does not take a bool parameter
// expect: Sampler state MinLOD does not take an enum parameter
// expect: Sampler state BorderColor does not take a float parameter
// expect: Sampler state AddressV does not take an int or float parameter
// expect: Sampler state MaxAniso does not take a vector parameter
// expect: Error finalizing DX12 sampler!
Texture2D tOk < >
Sampler sOk { Texture = tOk; }
Sampler sBad { Sharpness = 2; AddressU = SIDEWAYS; Filter = BLURRY; Filter = true; MinLOD = LINEAR; BorderColor = 0.5;
               AddressV = 3; MaxAniso = (1, 2, 3, 4) }
Sampler sRange { MinLOD = 4.0; MaxLOD = 1.0 }
Technique T
{
  Pass P
  {
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    PixelShader()
      Texture2D tOk;
      SamplerState sOk : register(s1);
      float4 main() : SV_Target { return tOk.SampleLevel(sOk, float2(0, 0), 0); }
    EndPixelShader
  }
}
