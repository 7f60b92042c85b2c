#define A
#undef A
#if 1
x
y
#endif
