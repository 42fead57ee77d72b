// The demo's default effect: what the library draws with when an effect is missing or broken (magenta, so that it
// is seen), and the default sampler.
Sampler DEFAULT_SAMPLER { Filter = MIN_MAG_MIP_LINEAR; AddressU = WRAP; AddressV = WRAP; }
Technique DEFAULT_TECHNIQUE
{
  Pass DEFAULT_PASS
  {
    VertexShader() float4 main() : SV_Position { return float4(0, 0, 0.5, 1); } EndVertexShader
    PixelShader() float4 main() : SV_Target { return float4(1, 0, 1, 1); } EndPixelShader
  }
}
