#if 0
#else x
y
#endif
