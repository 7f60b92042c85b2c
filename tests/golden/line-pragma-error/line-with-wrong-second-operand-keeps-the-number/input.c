#line 20 foo
a
