#if 0
#if 0
a
#else
b
#endif
c
#endif
d
