// expect: techniques.fx(12) : Technique redefinition: T
// expect: techniques.fx(16) : Technique "D" is trying to derive from undefined base technique "Missing"
// expect: techniques.fx(20) : Nested techniques are not allowed. Currently active technique is "Outer"
// expect: techniques.fx(24) : EndTechnique() without corresponding StartTechnique()
// expect: Pass does not have a vertex shader!  All non-abstract effect passes must define or inherit a vertex shader
// expect: Effect pass defines a hull shader without a domain shader (or vice versa).  Hull and domain shaders must appear together
Technique T
{
  Pass P { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }
}

Technique T
{
  Pass P { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }
}
Technique D : Missing { Pass P { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader } }

Technique Outer
{
  Technique Inner
  {
    Pass P { VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader }
  }
}
BaseTechnique Abstract { Pass NoVS { PixelShader() float4 main() : SV_Target { return 1; } EndPixelShader } }
Technique Concrete : Abstract { }
Technique Tess
{
  Pass P
  {
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    HullShader() void main() {} EndHullShader
  }
}
