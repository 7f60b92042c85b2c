#if 0
a
#else
b
#endif
c
