#if 1 <<= 1
x
#endif
