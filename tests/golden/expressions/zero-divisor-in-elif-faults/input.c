#if 0
x
#elif 1/0
#endif
