#define F(a,) 1
F(2)
