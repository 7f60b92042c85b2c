#if 0
#elif 0
a
#elif 2 - 1
b
#endif
