// expect: misplaced.fx(12) : Trying to add a technique property outside of a Technique {...} block
// expect: misplaced.fx(13) : SetStreamMap outside of a Pass {...} block
// expect: misplaced.fx(14) : Trying to set render state outside of a Pass {...} block
// expect: misplaced.fx(15) : Trying to create shader outside of a Pass {...} block
// expect: misplaced.fx(16) : Trying to reset a shader outside of a Pass {...} block
// expect: misplaced.fx(17) : Trying to create binary shader pair outside of a Pass {...} block
// expect: misplaced.fx(18) : Trying to set sampler texture outside of a Sampler {...} block
// expect: misplaced.fx(19) : Pass block cannot be outside a Technique block
// expect: misplaced.fx(23) : Trying to set render state outside of a Pass {...} block
Stream S { float3 POSITION }
StreamMap M { S }
Properties { Opaque }
StreamMap = M
ZEnable = true
PixelShader() float4 main() : SV_Target { return 1; } EndPixelShader
VertexShader(NULL)
BinaryShaderPair("x.bin")
Texture = tDiffuse
Pass Stray { }
Texture2D tDiffuse < >
Technique T
{
  CullMode = NONE
  Pass P { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }
}
