#line 10 "x.c"
__FILE__ __LINE__
