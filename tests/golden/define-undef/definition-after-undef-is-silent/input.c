#define A 1
#undef A
#define A 2
A
