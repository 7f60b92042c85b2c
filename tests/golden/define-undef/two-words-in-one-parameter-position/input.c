#define F(a a) 1
F(2)
