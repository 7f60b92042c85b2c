#define F(x) x
F
__LINE__
