#if 1
a
#else
b
#endif
c
