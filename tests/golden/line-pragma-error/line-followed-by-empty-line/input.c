#line 10 "x.c"

y
