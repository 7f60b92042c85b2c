#define A 1
#undef "A"
A
