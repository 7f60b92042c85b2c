#if 0
#if 1
a
#else
b
#endif
c
#endif
d
