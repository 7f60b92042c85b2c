#define A 1
#define #undef A
A
