// expect: syntax.fx(6) : syntax error, unexpected T_ID, expecting '{'
// expect: syntax.fx(9) : syntax error, unexpected T_SEMICOLON, expecting '<'
// expect: syntax.fx(11) : Invalid character: @ (ASCII: 64)
// expect: syntax.fx(12) : Vertex stream redefinition: S
Stream S { float3 POSITION }
Sampler sBroken Filter = POINT }
Float fAfterError (1.0)
Texture2D tGood < >
Texture2D tNoAnnotations;
Float fAlsoFine (2.0)
@
Stream S { float3 POSITION }
