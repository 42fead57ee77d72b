// expect: Can't find matching effect parameter for HLSL variable "fMissing"
// expect: Type of HLSL variable "iAsFloat" doesn't match effect parameter type
// expect: Type of HLSL variable "vAsMatrix" doesn't match effect parameter type
// expect: Dimension of HLSL matrix "m3" is 3x3, but Lumex effects currently only support 4x4 matrices
// expect: HLSL variable "fNotArray" is an array, but the corresponding effect parameter isn't
// expect: Array size mismatch between HLSL variable "afArr" and corresponding effect parameter
// expect: HLSL array variable "afSmall" has more elements than corresponding effect parameter
Int iAsFloat (1)
Vector vAsMatrix (1.0, 1.0, 1.0, 1.0)
Matrix m3
Float fNotArray (1.0)
Float afArr[2] (1.0)
Float afSmall[2] (1.0)
Technique T
{
  Pass P
  {
    VertexShader() float4 main() : SV_Position { return 0; } EndVertexShader
    PixelShader()
      cbuffer Values
      {
        float fMissing;
        float iAsFloat;
        float4x4 vAsMatrix;
        float3x3 m3;
        float fNotArray[2];
        float afArr;
        float afSmall[4];
      };
      float4 main() : SV_Target
      {
        return fMissing + iAsFloat + vAsMatrix[0].x + m3[0].x + fNotArray[1] + afArr + afSmall[3];
      }
    EndPixelShader
  }
}
