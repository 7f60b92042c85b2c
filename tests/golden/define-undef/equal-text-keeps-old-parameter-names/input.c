#define F(a) a b
#define F(b) a b
F(3)
