#line 00
#line 0L
#line 0U
#line 018
#line 08
#line 0x
#line 0 "z.c"
a
