#if 1
#else
a
#elif 1
b
#endif
