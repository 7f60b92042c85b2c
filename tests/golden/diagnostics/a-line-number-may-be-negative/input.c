#line 2147483647
#foo
