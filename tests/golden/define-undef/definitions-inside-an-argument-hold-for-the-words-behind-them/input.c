#define F(x) x
F(A B X A B)
