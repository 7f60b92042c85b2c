#else
#elif 1
#endif
#if 1
a
#else
b
#endif
