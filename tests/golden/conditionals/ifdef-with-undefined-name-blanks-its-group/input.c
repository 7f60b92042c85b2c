#ifdef X
a
#endif
b
