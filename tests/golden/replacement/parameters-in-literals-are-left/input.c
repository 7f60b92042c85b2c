#define F(x) "x" 'x' x
F(1)
