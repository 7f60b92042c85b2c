#define F(x) x
#define F 9
F(2)
