#if 1
#if 0
a
#endif
b
#else
c
#endif
