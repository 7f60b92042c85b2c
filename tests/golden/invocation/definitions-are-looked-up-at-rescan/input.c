#define A B
A
#define B 1
A
#undef B
A
