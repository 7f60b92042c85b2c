#if 0
#else
#if 1
#endif
#else
a
#endif
