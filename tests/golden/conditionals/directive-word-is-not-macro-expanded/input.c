#define else junk
#if 0
#else
a
#endif
