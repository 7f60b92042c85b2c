#line 10 "x.c"
a
b
