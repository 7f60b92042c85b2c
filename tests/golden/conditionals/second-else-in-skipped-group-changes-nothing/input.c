#if 1
a
#else
b
#else
c
#endif
d
