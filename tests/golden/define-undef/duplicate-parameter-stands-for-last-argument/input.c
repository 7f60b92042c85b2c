#define F(a,a) a
F(1,2)
