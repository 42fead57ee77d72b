// expect: scanner.fx(8) : Invalid hex literal
// expect: scanner.fx(9) : Invalid binary literal
// expect: scanner.fx(10) : Unterminated string!
// expect: scanner.fx(12) : Missing file name string after #include
// expect: scanner.fx(13) : Cannot find include file "does_not_exist.fxh"
// expect: scanner.fx(14) : Missing identifier after #define
// expect: scanner.fx(15) : Missing identifier after #undef
Int nHex (0xZZ)
Int nBin (0b102)
Options < Name = "no end
  >
#include missing_quotes.fxh
#include "does_not_exist.fxh"
#define
#undef
