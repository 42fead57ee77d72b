// expect: Unterminated #ifdef/#ifndef block!
#ifdef NOT_DEFINED
Float f (1.0)
