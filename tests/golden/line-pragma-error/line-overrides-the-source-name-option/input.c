a
#line 7 "y.c"
#error e
