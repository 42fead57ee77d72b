// The default effect the Direct3D 12 effect tests load first.
Sampler DEFAULT_SAMPLER { Filter = MIN_MAG_MIP_LINEAR; AddressU = WRAP; AddressV = WRAP; }
Technique DEFAULT_TECHNIQUE
{
  Pass DEFAULT_PASS
  {
    VertexShader() float4 main() : SV_Position { return float4(0, 0, 0.5, 1); } EndVertexShader
    PixelShader() float4 main() : SV_Target { return float4(1, 0, 1, 1); } EndPixelShader
  }
}
