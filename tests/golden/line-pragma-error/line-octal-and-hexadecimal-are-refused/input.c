#line 0x10
#line 010
#line 0
a
