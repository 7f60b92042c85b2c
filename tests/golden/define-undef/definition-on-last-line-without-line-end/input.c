A
#define A 1