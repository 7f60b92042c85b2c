#line 20 foo
#foo
