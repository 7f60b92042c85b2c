#define A(x) x
#define B(y) A(y)
B(B(1))
