// expect: samplers.fx(9) : Sampler redefinition: s
// expect: samplers.fx(11) : Sampler s2 already has a texture
// expect: samplers.fx(12) : Trying to set undefined texture "tMissing" in sampler declaration "s3"
// expect: samplers.fx(15) : Sampler declaration must be outside pass and technique blocks
// expect: samplers.fx(19) : Sampler declaration must be outside pass and technique blocks
Texture2D t < >
Texture2D t2 < >
Sampler s { Texture = t }
Sampler s
{ Filter = ANISOTROPIC }
Sampler s2 { Texture = t, Texture = t2 }
Sampler s3 { Texture = tMissing }
Technique T
{
  Sampler sInTechnique { Filter = POINT }
  Pass P
  {
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    Sampler sInPass { Filter = POINT }
  }
}
