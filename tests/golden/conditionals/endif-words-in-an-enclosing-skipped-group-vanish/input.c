#if 0
#if 1
#endif X
#endif
b
