#define F(x) F x
F(1)
