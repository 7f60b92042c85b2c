#if 1 ? : 2
x
#endif
