a
b
#line 1
c
#line 3
#line 4
d
