// expect: Compute Shader declares a typed resource named: 'uRaw' but the matching UAV slot is not typed.
// expect: Can't find matching UAV slot for HLSL variable: 'uMissing'
// expect: SetStreamMap() invalid for LxD3D12ComputePass.
RWTexture2D uTyped < >
RWByteAddressBuffer uRaw < >
Stream S { float4 POSITION }
StreamMap M { S }
ComputeTechnique C
{
  Pass P
  {
    StreamMap = M
    ComputeShader()
      RWByteAddressBuffer uTyped;
      RWTexture2D<float4> uRaw;
      RWTexture2D<float4> uMissing;
      [numthreads(1, 1, 1)] void main()
      {
        uTyped.Store(0, 1);
        uRaw[uint2(0, 0)] = 1;
        uMissing[uint2(0, 0)] = 1;
      }
    EndComputeShader
  }
}
