#if 0
#if 1
#endif
#else
a
#endif
