#if 1
a
#elif 1
b
#else
c
#endif
