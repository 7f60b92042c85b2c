#define A 5
#define F(x) x##1 x
F(A)
