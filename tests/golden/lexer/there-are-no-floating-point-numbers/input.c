#if 1.5
x
#endif
