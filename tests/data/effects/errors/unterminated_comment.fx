// expect: Unterminated block comment!
Float f (1.0)
/* this comment /* holds a nested one */ and never ends
