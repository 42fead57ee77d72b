// expect: Unterminated art notes!
ArtNotes { these notes never end
