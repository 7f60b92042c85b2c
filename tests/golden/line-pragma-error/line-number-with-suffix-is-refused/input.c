#line 10L
#line 10l
#line 10U
#line 10ul
a
