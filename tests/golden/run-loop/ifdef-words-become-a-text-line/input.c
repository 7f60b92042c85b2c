#define X
#ifdef X  junk more
#endif
