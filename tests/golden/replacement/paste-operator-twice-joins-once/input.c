#define F(a,b) a ## ## b
F(1,2)
