// The sky behind the scene: one triangle covering the screen at the far plane, a vertical gradient between two
// colours the demo's script sets every frame, with a soft glow that follows the script's pulse.
Vector vTop (0.05, 0.08, 0.20, 1.0)
Vector vBottom (0.20, 0.10, 0.15, 1.0)
Float fPulse (0.0)

Technique Backdrop
{
  Pass P0
  {
    ZWriteEnable = false
    VertexShader()
      struct Out { float4 position : SV_Position; float2 uv : TEXCOORD0; };
      Out main(uint id : SV_VertexID)
      {
        const float2 corner = float2((id << 1) & 2, id & 2);
        Out o;
        o.position = float4(corner * float2(2, -2) + float2(-1, 1), 1, 1);
        o.uv = corner;
        return o;
      }
    EndVertexShader
    PixelShader()
      cbuffer Sky { float4 vTop; float4 vBottom; float fPulse; };
      float4 main(float4 position : SV_Position, float2 uv : TEXCOORD0) : SV_Target
      {
        const float glow = fPulse * 0.25 * saturate(1 - 2 * length(uv - float2(0.5, 0.55)));
        return float4(lerp(vTop.rgb, vBottom.rgb, uv.y) + glow, 1);
      }
    EndPixelShader
  }
}
