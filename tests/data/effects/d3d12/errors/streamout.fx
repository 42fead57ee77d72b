// expect: streamout.fx(7) : Gap found in SO stream maps.  SO stream maps must be assigned in order (0, then 1, then 2, etc)
// expect: streamout.fx(7) : Error finalizing effect pass named: 'P' in technique named: 'T'
Stream S { float4 POSITION }
StreamMap M { S }
Technique T
{
  Pass P
  {
    StreamOutMap1 = M
    VertexShader()
      float4 main(float4 p : POSITION) : SV_Position { return p; }
    EndVertexShader
    PixelShader()
      float4 main() : SV_Target { return 1; }
    EndPixelShader
  }
}
