// Triangles from SV_VertexID placed by effect parameters: vPlace = (scale, x, y, depth), then mTransform; coloured
// by vColor times fBrightness. The techniques differ in the render states they set.
Vector vColor (1.0, 0.0, 0.0, 1.0)
Vector vPlace (0.25, 0.0, 0.0, 0.5)
Matrix mTransform (1, 0, 0, 0,  0, 1, 0, 0,  0, 0, 1, 0,  0, 0, 0, 1)
Float fBrightness (1.0)
Float afWeights[3] (1.0)

StartHLSL Placement
  cbuffer Placement
  {
    float4 vPlace;
    float4x4 mTransform;
  };
  static const float2 kCorners[3] = { float2(-1.0, -1.0), float2(-1.0, 3.0), float2(3.0, -1.0) };
  float4 Place(uint id)
  {
    return mul(mTransform, float4(kCorners[id] * vPlace.x + vPlace.yz, vPlace.w, 1.0));
  }
EndHLSL

StartHLSL Shading
  cbuffer Shading
  {
    float4 vColor;
    float fBrightness;
    float afWeights[3];
  };
  float4 Shade() { return float4(vColor.rgb * fBrightness * afWeights[1], vColor.a); }
EndHLSL

Technique Draw
{
  Pass P0
  {
    VertexShader()
      $include Placement
      float4 main(uint id : SV_VertexID) : SV_Position { return Place(id); }
    EndVertexShader
    PixelShader()
      $include Shading
      float4 main() : SV_Target { return Shade(); }
    EndPixelShader
  }
}

Technique Blended : Draw
{
  Pass P0
  {
    BlendEnable = true
  }
}

Technique StrictDepth : Draw
{
  Pass P0
  {
    ZFunc = LESS
  }
}

Technique CullBack : Draw
{
  Pass P0
  {
    CullMode = BACK
  }
}

Stream Corners { float2 POSITION }
Stream Offsets < InstanceData > { float2 TEXCOORD1, ubyte4n COLOR }
StreamMap InstancedMap { Corners, Offsets }

Technique Instanced
{
  Pass P0
  {
    StreamMap = InstancedMap
    VertexShader()
      struct Out { float4 position : SV_Position; float4 color : COLOR; };
      Out main(float2 corner : POSITION, float2 offset : TEXCOORD1, float4 color : COLOR)
      {
        Out o;
        o.position = float4(corner + offset, 0.5, 1.0);
        o.color = color;
        return o;
      }
    EndVertexShader
    PixelShader()
      float4 main(float4 position : SV_Position, float4 color : COLOR) : SV_Target { return color; }
    EndPixelShader
  }
}
