#if 0
#else
a
#elif 0
b
#endif
