// expect: passes.fx(16) : Undefined stream map: Nope
// expect: passes.fx(18) : Vertex shader redefinition in pass "%"
// expect: passes.fx(20) : Binary shader pair redefinition in pass "%"
// expect: passes.fx(22) : Error opening binary shader file "%"
// expect: passes.fx(25) : Nested passes are not allowed. Currently active pass is "Outer"
// expect: passes.fx(26) : Trying to create shader outside of a Pass {...} block
// expect: passes.fx(23) : EndPass() without corresponding StartPass()
// expect: passes.fx(29) : Pass redefinition: Twice
// expect: passes.fx(35) : Computer Shaders do not support render state.
// expect: passes.fx(36) : Compute techniques can only have Compute Shader passes
// expect: passes.fx(39) : Compute techniques can only have Compute Shader passes
Technique T
{
  Pass P
  {
    StreamMap = Nope
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    BinaryShaderPair(NULL)
    BinaryShaderPair("missing.bin")
  }
  Pass MissingFile { BinaryShaderPair("missing.bin") }
  Pass Outer
  {
    Pass Inner { }
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
  }
  Pass Twice { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }
  Pass Twice { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }
}
ComputeTechnique C
{
  Pass P
  {
    ZEnable = true
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    ComputeShader() [numthreads(1,1,1)] void main() {} EndComputeShader
  }
  Pass NoCompute { }
}
