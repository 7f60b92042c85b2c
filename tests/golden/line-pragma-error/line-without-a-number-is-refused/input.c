#line
#line foo
#line "x.c"
#line -5
#line +5
#line NOTHING
#line '5'
a
