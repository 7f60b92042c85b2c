#define a Z
'a\e'
'a\8'
'a\x'
'a\xg'
