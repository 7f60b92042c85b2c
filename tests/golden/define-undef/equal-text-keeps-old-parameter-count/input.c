#define F(a) 1
#define F(a,b) 1
F(5) F(5,6)
