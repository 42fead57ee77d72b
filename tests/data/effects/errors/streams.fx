// expect: streams.fx(6) : Vertex stream redefinition: Positions
// expect: streams.fx(8) : Undefined vertex stream "Normals" in stream map definition "Map"
// expect: Stride of mimic stream: 'Copy' does not match source stream: 'Positions'
Stream Positions { float3 POSITION }
Stream Copy < Mimic = "Positions" > { float4 POSITION }
Stream Positions
{ float2 TEXCOORD }
StreamMap Map { Positions, Normals }
StreamMap Good { Positions, Copy }
