#if 0
#if 1
a
#elif 1/0
b
#elif 1
c
#endif
#endif
