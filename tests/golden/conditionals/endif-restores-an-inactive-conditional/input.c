#if 0
#if 1
#if 1
#endif
#else
a
#endif
#endif
b
