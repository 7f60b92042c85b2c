#define F(x) "x\n" x
F(1)
