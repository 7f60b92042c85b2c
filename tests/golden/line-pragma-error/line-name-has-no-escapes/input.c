#line 5 "a\\b.c"
__FILE__
#error e
