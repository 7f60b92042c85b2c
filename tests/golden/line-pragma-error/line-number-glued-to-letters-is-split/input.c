#line 12abc
a
#line 1.5
b
