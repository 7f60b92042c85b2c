#line 20 foo "x.c"
a
#line 30 L"y.c"
b
