#if 08
x
#endif
