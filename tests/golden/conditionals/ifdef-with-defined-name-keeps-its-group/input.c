#define X
#ifdef X
a
#endif
b
