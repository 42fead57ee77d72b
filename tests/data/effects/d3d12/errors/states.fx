// expect: Unknown render state: Sharpness
// expect: Unknown render state: BlendEnable8
// expect: Invalid parameter for render state CullMode: SIDEWAYS
// expect: Invalid parameter for render state BlendOp: SUBTRACT
// expect: Invalid parameter for render state RenderTargetFormat1: LX_FORMAT_NOT_A_FORMAT
// expect: Render state ZEnable does not take an enum parameter
// expect: Render state ZFunc does not take a bool parameter
// expect: Render state CullMode does not take an int or float parameter
// expect: Render state StencilEnable does not take a float parameter
// expect: Render state ZBias does not take a vector parameter
// expect: TessellationUseSuperPrimIndices is deprecated in D3D12
// expect: D3D12 Shaders may only be written in HLSL!
Technique T
{
  Pass P
  {
    Sharpness = 2
    BlendEnable8 = true
    CullMode = SIDEWAYS
    BlendOp = SUBTRACT
    RenderTargetFormat1 = LX_FORMAT_NOT_A_FORMAT
    ZEnable = LESS
    ZFunc = true
    CullMode = 1
    StencilEnable = 0.5
    ZBias = (1, 2, 3, 4)
    TessellationUseSuperPrimIndices = true
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    PixelShader( Language = "GLSL" ) void main() { } EndPixelShader
  }
}
