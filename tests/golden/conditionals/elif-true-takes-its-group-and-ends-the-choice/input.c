#if 0
a
#elif 1
b
#elif 1
c
#else
d
#endif
