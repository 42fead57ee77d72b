// expect: override_refusals.fx(16) : Code blocks not supported for override technique effect files.
// expect: override_refusals.fx(18) : Texture declarations not supported for override technique effect files.
// expect: override_refusals.fx(19) : Texture declarations not supported for override technique effect files.
// expect: override_refusals.fx(20) : Effect parameter declarations not supported for override technique effect files.
// expect: override_refusals.fx(21) : Vertex stream declarations not supported for override technique effect files.
// expect: override_refusals.fx(22) : Stream map declarations not supported for override technique effect files.
// expect: override_refusals.fx(23) : Sampler declarations not supported for override technique effect files.
// expect: override_refusals.fx(24) : Base techniques not supported for override technique effect files.
// expect: override_refusals.fx(25) : Technique inheritance not supported for override technique effect files.
// expect: override_refusals.fx(28) : Technique properties not supported for override technique effect files.
// expect: override_refusals.fx(31) : StreamMap setting not supported for override technique effect files.
// expect: override_refusals.fx(32) : StreamOutMap setting not supported for override technique effect files.
// expect: override_refusals.fx(33) : Only pixel shaders are supported for override technique effect files.
// expect: override_refusals.fx(34) : Setting shader stages to NULL isn't currently supported in override technique effect files.
// expect: override_refusals.fx(37) : Only one override pass per technique is allowed in override technique effect files.
StartHLSL Block
EndHLSL
Texture2D t < >
RWTexture2D u < >
Float f
Stream S { float3 POSITION }
StreamMap M { }
Sampler s { Filter = POINT }
BaseTechnique B { Pass P { PixelShader() float4 main() : SV_Target { return 1; } EndPixelShader } }
Technique D : Other { Pass P { PixelShader() float4 main() : SV_Target { return 1; } EndPixelShader } }
Technique T
{
  Properties { Opaque }
  Pass P
  {
    StreamMap = M
    StreamOutMap2 = NULL
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    GeometryShader(NULL)
    PixelShader() float4 main() : SV_Target { return 1; } EndPixelShader
  }
  Pass Second { PixelShader() float4 main() : SV_Target { return 1; } EndPixelShader }
}
