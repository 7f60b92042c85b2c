#if 0
a
#endif X
b
