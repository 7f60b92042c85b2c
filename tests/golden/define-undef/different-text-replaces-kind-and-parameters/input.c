#define A 1
#define A(x) x x
A(2)
