#define x 3
#define G(x) x
#define F(F) F+F
G(5) x F(1)
