#ifdef 1 2 3
a
#endif
b
