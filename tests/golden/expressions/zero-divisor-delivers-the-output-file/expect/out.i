#line 1 "input.c"
before
