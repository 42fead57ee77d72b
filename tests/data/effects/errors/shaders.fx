// expect: shaders.fx(12) : Shading language redefinition in shader options
// expect: shaders.fx(13) : Shader option "EntryPoint" must be a string
// expect: shaders.fx(14) : Shader option "Dump" must be a string
// expect: shaders.fx(15) : Shading language undefined for this shader
// expect: shaders.fx(16) : AvoidFlowControl and PreferFlowControl are mutually exclusive.
// expect: shaders.fx(17) : D3D9 compatibility mode is no longer supported for D3D12.
// expect: shaders.fx(19) : Trying to $include undefined code block "Missing", or shading language does not match
Technique T
{
  Pass P
  {
    VertexShader( HLSL, GLSL ) float4 main() : SV_Position { return 0; } EndVertexShader
    PixelShader( EntryPoint = 3 ) float4 main() : SV_Target { return 1; } EndPixelShader
    GeometryShader( Dump = true ) void main() {} EndGeometryShader
    HullShader( Language = "Cg" ) void main() {} EndHullShader
    DomainShader( AvoidFlowControl, PreferFlowControl ) void main() {} EndDomainShader
    PixelShader( EnableD3D9Compatibility ) float4 main() : SV_Target { return 1; } EndPixelShader
    PixelShader( )
      $include Missing
    EndPixelShader
  }
}
