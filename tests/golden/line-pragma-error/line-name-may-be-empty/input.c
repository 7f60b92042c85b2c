#line 5 ""
a
#error e
