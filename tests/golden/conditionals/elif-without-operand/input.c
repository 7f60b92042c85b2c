#if 1
#elif
a
#endif
#if 0
#elif
b
#endif
c
