#line 5 "a\b.c"
a
