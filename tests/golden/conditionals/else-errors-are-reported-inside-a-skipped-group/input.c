#if 0
#if 1
#else
#elif 1
#else
a
#endif
#endif
