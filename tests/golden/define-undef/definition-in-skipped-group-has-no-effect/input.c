#if 0
#define A 1
#undef B
#endif
A B
