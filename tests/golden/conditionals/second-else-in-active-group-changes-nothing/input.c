#if 0
#else
a
#else
b
#endif
