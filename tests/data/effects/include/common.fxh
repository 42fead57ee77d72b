// Shared declarations, included by full_grammar.fx (twice, so the second include must be skipped).
Float fShared (0.5)
#define SHARED_DEFINED 1
StartHLSL SharedCode
  float SharedHelper(float x) { return x * fShared; }
EndHLSL
