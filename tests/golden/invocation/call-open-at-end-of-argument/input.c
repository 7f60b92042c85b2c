#define F(x) x
#define H F(
#define G(y) [y]
G(H 1)
