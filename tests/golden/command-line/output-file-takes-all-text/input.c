#define A 1
A
