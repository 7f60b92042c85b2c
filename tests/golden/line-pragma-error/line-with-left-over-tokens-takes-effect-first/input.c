#line 20 "x.c" junk more
a
