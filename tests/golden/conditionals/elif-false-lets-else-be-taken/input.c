#if 0
#elif 0
a
#else
b
#endif
