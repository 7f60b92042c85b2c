#line 10 "x.c"
a __LINE__
#foo
