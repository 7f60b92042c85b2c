#if 0
#elif (1
a
#elif 1
b
#endif
