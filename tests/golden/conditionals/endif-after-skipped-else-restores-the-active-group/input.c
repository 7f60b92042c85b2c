#if 1
#if 1
#else
a
#endif
b
#endif
